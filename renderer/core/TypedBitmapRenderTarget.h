#pragma once

#include <utility>

#include <raster/Buffer.h>
#include <renderer/core/blend/BlendTable.h>
#include <renderer/core/PixelRenderTarget.h>
#include <renderer/core/span/BlendRangePopulator.h>
#include <renderer/core/span/SolidPopulator.h>

namespace Renderer {

/// The bitmap target of one pixel layout.
///
/// \tparam C1,C2,C3,C4,C5 the channels of the pixel.
/// \tparam PixProcessor the populators' arithmetic, PixProcessor_Alpha the same for alpha alone.
/// \tparam RenderTargetBlender the blend functions of the format.
template<class C1, class C2, class C3, class C4, class C5, class PixProcessor,
         class PixProcessor_Alpha, class RenderTargetBlender>
class TypedBitmapRenderTarget : public PixelRenderTarget
{
public:
    using Pixel = Raster::Pixel<C1, C2, C3, C4, C5>;
    using Bitmap = Raster::Buffer<C1, C2, C3, C4, C5>;

    explicit TypedBitmapRenderTarget(Raster::ICCManager::ICCProfileSet profiles)
        : PixelRenderTarget(Raster::FormatOfPixel<Pixel>, RenderTargetBlender::GetBlends(false),
                            RenderTargetBlender::GetBlends(true), std::move(profiles))
    {}

    /// The typed view of the destination; empty when none is attached.
    Bitmap GetBitmap() const
    {
        Bitmap bitmap;
        bitmap.Attach(GetBuffer());
        return bitmap;
    }

    using PixelRenderTarget::Clear;
    /// Fills the whole destination with one premultiplied pixel, whatever the clips.
    void Clear(const Pixel& pixel)
    {
        const auto buffer = GetBuffer();
        GetBitmap().Clear(pixel);
        if (buffer)
            buffer->InvalidateHardwareCache(
                {0, 0, int(buffer->GetWidth()), int(buffer->GetHeight())});
    }

protected:
    bool MakeFillPopulator(const Fill& fill, const Transform& fillToDevice, PopulatorRole role,
                           SpanPopulator& out) override
    {
        const PopulatorContext context = GetPopulatorContext();
        return PaintsAlphaOnly() ? MakePopulator<PixProcessor_Alpha>(fill, fillToDevice, role,
                                                                     context, GetPopulators(), out)
                                 : MakePopulator<PixProcessor>(fill, fillToDevice, role, context,
                                                               GetPopulators(), out);
    }

    SpanPopulator MakeAlphaPopulator(unsigned char alpha) override
    {
        typename PixProcessor_Alpha::FloatPixel colour{};
        colour[Pixel::AlphaIndex] = static_cast<float>(alpha) / 255.0F;
        using Populator = SolidPopulator<PixProcessor_Alpha, false>;
        return PopulatorForms<Populator>::Make(
            GetPopulators().template Emplace<Populator>(PixProcessor_Alpha::Store(colour)),
            PopulatorRole::Transparency);
    }

    bool MakeColourTransformPopulator(SpanPopulator& out) override
    {
        return Renderer::MakeColourTransformPopulator<PixProcessor>(
            GetActiveColourTransforms(), GetProfiles(), GetPopulators(), out);
    }

    SpanScaler MakeBlendRangeScaler(const BlendOptions& options) override
    {
        using Populator = BlendRangePopulator<PixProcessor>;
        const PopulatorContext context = GetPopulatorContext();
        const typename Populator::Below below{*context.backBuffer, context.backBufferOrigin,
                                              context.isBackBufferPlain};
        const auto& populator =
            GetPopulators().template Emplace<Populator>(options, below, GetPopulators());
        return populator.IsIdentity() ? SpanScaler{} : populator.GetScaler();
    }
};

/// The bitmap target of a pixel type.
template<class PixelT>
struct TargetOfPixel;

template<class C1, class C2, class C3, class C4, class C5>
struct TargetOfPixel<Raster::Pixel<C1, C2, C3, C4, C5>>
{
    using Pixel = Raster::Pixel<C1, C2, C3, C4, C5>;
    using Type = TypedBitmapRenderTarget<C1, C2, C3, C4, C5, PixProcessor<Pixel, false>,
                                         PixProcessor<Pixel, true>, RenderTargetBlender<Pixel>>;
};

template<class PixelT>
using TargetOf = typename TargetOfPixel<PixelT>::Type;

} // namespace Renderer
