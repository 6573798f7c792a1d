#pragma once

// The definitions of PopulatorFactory, for the files that instantiate it.

#include <algorithm>
#include <utility>

#include <raster/Convert.h>
#include <renderer/core/span/BackBufferPopulator.h>
#include <renderer/core/span/BitmapPopulator.h>
#include <renderer/core/span/ColourTransformPopulator.h>
#include <renderer/core/span/GradientPopulator.h>
#include <renderer/core/span/PopulatorFactory.h>
#include <renderer/core/span/SolidPopulator.h>
#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillBuffer.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillSolid.h>

namespace Renderer {

template<class Processor>
struct PopulatorFactory<Processor>::Call
{
    const Params& fillToDevice;
    PopulatorRole role;
    const PopulatorContext& context;
    PopulatorStore& store;
    SpanPopulator& out;
};

template<class Processor>
bool PopulatorFactory<Processor>::Make(const Fill& fill, const Params& fillToDevice,
                                       PopulatorRole role, const PopulatorContext& context,
                                       PopulatorStore& store, SpanPopulator& out)
{
    if constexpr (!Processor::IsAlphaOnly) {
        if (role == PopulatorRole::Transparency)
            return PopulatorFactory<PixProcessor<Pixel, true>>::Make(fill, fillToDevice, role,
                                                                     context, store, out);
    }
    const Call call{fillToDevice, role, context, store, out};
    if (!fill.IsSpatiallyInvariant() && !Raster::AffineTransform::IsFinite(fillToDevice))
        return false;
    switch (fill.GetKind()) {
    case Fill::Kind::Solid:
        return MakeSolid(static_cast<const FillSolid&>(fill), call);
    case Fill::Kind::BackBuffer:
        return MakeBackBuffer(call);
    case Fill::Kind::Bitmap:
        return MakeBitmap(static_cast<const FillBitmap&>(fill), call);
    case Fill::Kind::Buffer:
        return MakeBuffer(static_cast<const FillBuffer&>(fill), call);
    case Fill::Kind::Gradient:
        return MakeGradient(static_cast<const FillGradient&>(fill), call);
    case Fill::Kind::None:
    case Fill::Kind::Multi:
        break;
    }
    return false;
}

template<class Processor>
bool PopulatorFactory<Processor>::GetSolid(const Fill& fill,
                                           const typename Processor::Profiles& profiles,
                                           Pixel& pixel)
{
    if (fill.GetKind() != Fill::Kind::Solid || fill.HasNoise())
        return false;
    pixel = Processor::Premultiply(Processor::GetPixel(*fill.GetColour(), profiles));
    return true;
}

template<class Processor>
bool PopulatorFactory<Processor>::MakeColourTransform(const Transforms& transforms,
                                                      const typename Processor::Profiles& profiles,
                                                      PopulatorStore& store, SpanPopulator& out)
{
    if constexpr (Processor::IsAlphaOnly) {
        return false;
    } else {
        if (std::all_of(transforms.begin(), transforms.end(), [](const auto& transform) {
                return !transform || transform->IsIdentity();
            }))
            return false;
        using Populator = ColourTransformPopulator<Processor>;
        out = PopulatorForms<Populator>::Make(store.Emplace<Populator>(transforms, profiles),
                                              PopulatorRole::Colour);
        return true;
    }
}

/// Makes the context in the store and hands out its function.
template<class Processor>
template<class Populator, class... Args>
bool PopulatorFactory<Processor>::Finish(const Call& call, Args&&... args)
{
    auto& populator = call.store.template Emplace<Populator>(std::forward<Args>(args)...);
    call.out = PopulatorForms<Populator>::Make(populator, call.role);
    return true;
}

template<class Processor>
bool PopulatorFactory<Processor>::MakeSolid(const FillSolid& fill, const Call& call)
{
    const Pixel pixel =
        Processor::Premultiply(Processor::GetPixel(*fill.GetColour(), call.context.profiles));
    if constexpr (!Processor::IsAlphaOnly) { // grain leaves alpha alone
        if (fill.HasNoise())
            return Finish<SolidPopulator<Processor, true>>(call, pixel, fill.GetNoise());
    }
    return Finish<SolidPopulator<Processor, false>>(call, pixel);
}

template<class Processor>
bool PopulatorFactory<Processor>::MakeBackBuffer(const Call& call)
{
    const Raster::DynamicBuffer* buffer = call.context.backBuffer;
    if (!buffer || buffer->GetFormat() != Raster::FormatOfPixel<Pixel>)
        return false;
    return Finish<BackBufferPopulator<Processor>>(call, *buffer, call.context.backBufferOrigin);
}

template<class Processor>
bool PopulatorFactory<Processor>::MakeBitmap(const FillBitmap& fill, const Call& call)
{
    if (!fill.GetBitmap())
        return false;
    Params deviceToUnit;
    if (!Raster::AffineTransform::Invert(call.fillToDevice, deviceToUnit))
        return false;
    const PopulatorContext& context = call.context;
    constexpr Raster::Format format = Raster::FormatOfPixel<Pixel>;
    const bool reduces = context.downResampler != Raster::ResamplerType::NearestNeighbour;
    const auto pixels = reduces
                            ? context.bitmaps.GetReduced(fill.GetBitmap(), format, context.profiles,
                                                         fill.GetIgnoreAlpha(), deviceToUnit)
                            : context.bitmaps.Get(fill.GetBitmap(), format, context.profiles,
                                                  fill.GetIgnoreAlpha());
    return pixels &&
           MakeSampled(fill, pixels, deviceToUnit, context.bitmaps.IsOpaque(pixels), call);
}

template<class Processor>
bool PopulatorFactory<Processor>::MakeBuffer(const FillBuffer& fill, const Call& call)
{
    if (!fill.GetBuffer())
        return false;
    Params deviceToUnit;
    if (!Raster::AffineTransform::Invert(call.fillToDevice, deviceToUnit))
        return false;
    // Buffers change between calls: nothing that is derived from one is kept.
    const auto pixels = Raster::ConvertBuffer(fill.GetBuffer(), {}, Raster::FormatOfPixel<Pixel>,
                                              call.context.profiles);
    return pixels && MakeSampled(fill, pixels, deviceToUnit, false, call);
}

template<class Processor>
template<class FillT>
bool PopulatorFactory<Processor>::MakeSampled(
    const FillT& fill, const Kernel::Counted<const Raster::DynamicBuffer>& pixels,
    const Params& deviceToUnit, bool isOpaque, const Call& call)
{
    return Finish<BitmapPopulator<Processor>>(call, pixels, deviceToUnit, fill.GetUpSampler(),
                                              call.context.downResampler, fill.GetExtendType(),
                                              isOpaque);
}

template<class Processor>
bool PopulatorFactory<Processor>::MakeGradient(const FillGradient& fill, const Call& call)
{
    if (fill.GetGradient()->GetColours().empty())
        return false;
    const auto geometry = GradientGeometry::Make(fill, call.fillToDevice, call.store);
    if (!geometry)
        return MakeLastStop(fill, call);
    auto colours = call.context.gradients.template Get<GradientColours<Processor>>(
        fill.GetGradient(), call.context.profiles);
    if constexpr (!Processor::IsAlphaOnly) { // grain leaves alpha alone
        if (colours->HasNoise())
            return Finish<GradientPopulator<Processor, true>>(call, *geometry, std::move(colours));
    }
    return Finish<GradientPopulator<Processor, false>>(call, *geometry, std::move(colours));
}

/// A gradient whose vector or radius has no length paints its last colour, as SVG has it.
template<class Processor>
bool PopulatorFactory<Processor>::MakeLastStop(const FillGradient& fill, const Call& call)
{
    const Colour& colour = *fill.GetGradient()->GetColours().back().colour;
    const Pixel pixel = Processor::Premultiply(Processor::GetPixel(colour, call.context.profiles));
    return Finish<SolidPopulator<Processor, false>>(call, pixel);
}

} // namespace Renderer
