#pragma once

#include <utility>

#include <raster/DynamicBitmap.h>

#include "FormatFixture.h"

namespace Renderer {

using AllPixels =
    testing::Types<Raster::PixelRGBA8, Raster::PixelRGBA16, Raster::PixelIA8, Raster::PixelIA16,
                   Raster::PixelCMYKA8, Raster::PixelLABA16, Raster::PixelRGBAUF>;

/// A row of backdrops of all alphas and paints to draw over them.
class PaintedFormat : public testing::Test
{
protected:
    static constexpr int Columns = 16; ///< a backdrop each
    static constexpr Kernel::RectT<double> Page{0, 0, Columns, 1};

    static constexpr int PaintCount = 5;

    /// A paint and its transparency: solid, gradient, bitmap, and a gradient scaled by the alpha of
    /// another.
    static std::pair<FillDescriptorConst, FillDescriptorConst> GetPaint(int paint)
    {
        const Raster::AffineTransform::Params frame{Columns, 0, 0, 0, Columns, 0};
        const auto gradient =
            MakeGradient(FillGradient::Linear,
                         {{{250, 20, 60, 255}}, {{20, 90, 200, 90}}, {{128, 128, 128, 0}}}, frame);
        switch (paint) {
        case 0:
            return {FillDescriptorConst::CreateSolid({{230, 120, 40, 255}}), {}};
        case 1:
            return {FillDescriptorConst::CreateSolid({{30, 160, 90, 140}}), {}};
        case 2:
            return {gradient, {}};
        case 3:
            return {FillDescriptorConst(
                        FillDescriptorConst::CreateBitmap(MakeBitmap(), Raster::ExtendType::Clamp,
                                                          Raster::ResamplerType::Bilinear),
                        frame),
                    {}};
        default:
            return {gradient,
                    MakeGradient(FillGradient::Radial, {{{0, 0, 0, 40}}, {{0, 0, 0, 255}}}, frame)};
        }
    }

    static Kernel::Counted<const Raster::DynamicBitmap> MakeBitmap()
    {
        RGBA8Buffer view;
        EXPECT_TRUE(view.Create(4, 1));
        view.GetRow(0)[0] = {{200, 10, 30, 255}};
        view.GetRow(0)[1] = {{10, 100, 30, 120}};
        view.GetRow(0)[2] = {{90, 90, 90, 90}};
        return Kernel::MakeCounted<Raster::DynamicBitmap>(view.GetDynamicBuffer());
    }

    static void DrawBackdrops(RenderTarget& target)
    {
        for (int x = 0; x < Columns; ++x) {
            const auto level = [&](int step) { return std::uint8_t(x * step % 256); };
            const PixelRGBA8 colour{{level(77), level(41), level(23), std::uint8_t(x % 4 * 85)}};
            target.DrawRectangle({double(x), 0.0, x + 1.0, 1.0}, 1.0F,
                                 FillDescriptorConst::CreateSolid(colour), {}, {});
        }
    }

    static void PushHalfClip(RenderTarget& target)
    {
        target.PushClipPath(
            Kernel::MakeCounted<PolyPolygon>(Kernel::RectT<double>{0, 0, Columns, 0.5}),
            Geometry::WindingOrderMode::NonZero);
    }
};

} // namespace Renderer
