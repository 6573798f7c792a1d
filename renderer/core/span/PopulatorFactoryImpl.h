#pragma once

// The definitions of PopulatorFactory, for the files that instantiate it.

#include <algorithm>
#include <utility>

#include <raster/Convert.h>
#include <renderer/core/span/BackBufferPopulator.h>
#include <renderer/core/span/BitmapPopulator.h>
#include <renderer/core/span/ColourTransformPopulator.h>
#include <renderer/core/span/DeepBitmapPopulator.h>
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
    return Finish<BackBufferPopulator<Processor>>(call, *buffer, call.context.backBufferOrigin,
                                                  call.context.isBackBufferPlain);
}

/// A buffer to paint with: itself, or a copy where it is the one that is painted on, of which a
/// span would read what another has written.
inline Kernel::Counted<const Raster::DynamicBuffer>
GetStillPixels(const Kernel::Counted<const Raster::DynamicBuffer>& buffer,
               const PopulatorContext& context)
{
    if (buffer.Get() != context.backBuffer)
        return buffer;
    const auto copy =
        Raster::DynamicBuffer::Create(buffer->GetFormat(), buffer->GetWidth(), buffer->GetHeight());
    for (unsigned y = 0; copy && y < buffer->GetHeight(); ++y)
        std::copy_n(buffer->GetRow(y), std::size_t{buffer->GetWidth()} * buffer->GetPixelSize(),
                    copy->GetRow(y));
    return copy;
}

template<class Processor>
bool PopulatorFactory<Processor>::MakeBitmap(const FillBitmap& fill, const Call& call)
{
    const auto& bitmap = fill.GetBitmap();
    if (!bitmap || !bitmap->GetBuffer())
        return false;
    const PopulatorContext& context = call.context;
    const bool reduces = context.downResampler != Raster::ResamplerType::NearestNeighbour;
    const auto getPixels = [&](Raster::Format format, const auto& profiles, const Params& map) {
        return reduces ? context.bitmaps.GetReduced(bitmap, format, profiles, fill.GetIgnoreAlpha(),
                                                    map, context.degradesBitmaps)
                       : context.bitmaps.Get(bitmap, format, profiles, fill.GetIgnoreAlpha());
    };
    return MakeFromPixels(fill, *bitmap->GetBuffer(), bitmap->GetProfile(), getPixels, call);
}

template<class Processor>
bool PopulatorFactory<Processor>::MakeBuffer(const FillBuffer& fill, const Call& call)
{
    if (!fill.GetBuffer())
        return false;
    const auto buffer = GetStillPixels(fill.GetBuffer(), call.context);
    if (!buffer)
        return false;
    // Buffers change between calls: nothing that is derived from one is kept.
    const auto getPixels = [&](Raster::Format format, const auto& profiles, const Params&) {
        return Raster::ConvertBuffer(buffer, {}, format, profiles);
    };
    return MakeFromPixels(fill, *buffer, {}, getPixels, call);
}

/// \p getPixels brings the fill's pixels into a format and the profiles of a set, perhaps reduced
/// for a map from the device to the unit square.
template<class Processor>
template<class FillT, class GetPixels>
bool PopulatorFactory<Processor>::MakeFromPixels(
    const FillT& fill, const Raster::DynamicBuffer& buffer,
    const Kernel::Counted<const Raster::ICCProfile>& profile, const GetPixels& getPixels,
    const Call& call)
{
    if constexpr (Processor::CanDither) {
        if (call.context.dithers && IsDeepFormat(buffer.GetFormat())) {
            return Raster::WithPixelOfFormat(buffer.GetFormat(), false, [&]<class Source>(Source) {
                return MakeFromDeepPixels<Source>(fill, profile, getPixels, call);
            });
        }
    }
    return MakeSampled<BitmapPopulator<Processor>>(fill, Raster::FormatOfPixel<Pixel>,
                                                   call.context.profiles, getPixels, call);
}

/// \tparam Source the pixels as they are.
template<class Processor>
template<class Source, class FillT, class GetPixels>
bool PopulatorFactory<Processor>::MakeFromDeepPixels(
    const FillT& fill, const Kernel::Counted<const Raster::ICCProfile>& profile,
    const GetPixels& getPixels, const Call& call)
{
    const auto& profiles = call.context.profiles;
    if constexpr (!std::is_void_v<DeepPixelOf<Pixel>>) {
        using Deep = DeepPixelOf<Pixel>;
        using Channels = DeepChannels<Deep>;
        return MakeSampled<DeepBitmapPopulator<Processor, Deep, Channels>>(
            fill, Raster::FormatOfPixel<Deep>, profiles, getPixels, call, Channels());
    } else {
        // Buffers hold no deep inks: pixels stay in their space until they are painted. Masks are
        // greys; what has 8 bits does not come here.
        using Deep = std::conditional_t<(Source::ColourCount > 0 &&
                                         sizeof(typename Source::ChannelType) > 1),
                                        Source, Raster::PixelIA16>;
        constexpr Raster::Format format = Raster::FormatOfPixel<Deep>;
        constexpr Raster::ColourSpace space = SpaceOfDeepPixel<Deep>;
        auto own = profiles;
        if (profile)
            own.SetProfile(format, profile);
        auto from = own;
        if (space == Raster::ColourSpace::RGB)
            from.SetRGB(own.GetProfile(format)); // float pixels have a slot of their own
        using Inks = DeepInks<Deep>;
        return MakeSampled<DeepBitmapPopulator<Processor, Deep, Inks>>(
            fill, format, own, getPixels, call,
            Inks(space, Raster::ICCManager::GetInstance().GetFloatTransform(
                            space, from, Raster::ColourSpace::CMYK, profiles)));
    }
}

/// Makes a populator that reads pixels of a format and profiles through the fill's placement.
template<class Processor>
template<class Populator, class FillT, class GetPixels, class... Args>
bool PopulatorFactory<Processor>::MakeSampled(const FillT& fill, Raster::Format format,
                                              const typename Processor::Profiles& profiles,
                                              const GetPixels& getPixels, const Call& call,
                                              Args&&... args)
{
    Params deviceToUnit;
    if (!Raster::AffineTransform::Invert(call.fillToDevice, deviceToUnit))
        return false;
    const auto pixels = getPixels(format, profiles, deviceToUnit);
    if (!pixels)
        return false;
    // Only pixels of bitmaps stay as they are, so that it pays to know them.
    constexpr bool isBitmap = std::is_same_v<FillT, FillBitmap>;
    const PopulatorContext& context = call.context;
    const bool isOpaque = isBitmap && context.bitmaps.IsOpaque(pixels);
    auto up = fill.GetUpSampler();
    auto down = context.downResampler;
    if (context.degradesBitmaps) {
        up = Raster::GetCheaper(up);
        if (isBitmap) // halved pixels are read as they are
            down = Raster::ResamplerType::NearestNeighbour;
    }
    return Finish<Populator>(call, pixels, deviceToUnit, up, down, fill.GetExtendType(), isOpaque,
                             std::forward<Args>(args)...);
}

template<class Processor>
bool PopulatorFactory<Processor>::MakeGradient(const FillGradient& fill, const Call& call)
{
    if (fill.GetGradient()->GetColours().empty())
        return false;
    const auto geometry = GradientGeometry::Make(fill, call.fillToDevice, call.store);
    if (!geometry)
        return MakeLastStop(fill, call);
    if constexpr (Processor::CanDither) {
        if (call.context.dithers)
            return MakeGradientOf<true>(fill, *geometry, call);
    }
    return MakeGradientOf<false>(fill, *geometry, call);
}

template<class Processor>
template<bool IsDithered>
bool PopulatorFactory<Processor>::MakeGradientOf(const FillGradient& fill,
                                                 const GradientGeometry& geometry, const Call& call)
{
    auto colours = call.context.gradients.template Get<GradientColours<Processor>>(
        fill.GetGradient(), call.context.profiles);
    if constexpr (!Processor::IsAlphaOnly) { // grain leaves alpha alone
        if (colours->HasNoise())
            return Finish<GradientPopulator<Processor, true, IsDithered>>(call, geometry,
                                                                          std::move(colours));
    }
    return Finish<GradientPopulator<Processor, false, IsDithered>>(call, geometry,
                                                                   std::move(colours));
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
