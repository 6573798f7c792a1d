#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include <geometry/PolyCurve.h>
#include <raster/Buffer.h>
#include <renderer/core/BitmapRenderTarget.h>
#include <renderer/paint/FillDescriptorConst.h>

namespace Renderer {

using Raster::PixelRGBA8;
using RGBA8Buffer =
    Raster::Buffer<Raster::Red8, Raster::Green8, Raster::Blue8, Raster::Alpha8, Raster::X5>;

/// An RGBA8 target of 40 × 30 pixels and the means to look at what was drawn.
class TargetTest : public testing::Test
{
protected:
    static constexpr int Width = 40;
    static constexpr int Height = 30;
    static constexpr PixelRGBA8 Nothing{{0, 0, 0, 0}};
    static constexpr PixelRGBA8 Red{{255, 0, 0, 255}};
    static constexpr PixelRGBA8 Green{{0, 255, 0, 255}};
    static constexpr PixelRGBA8 Blue{{0, 0, 255, 255}};

    TargetTest() : target(Make()) {}

    static Kernel::Counted<BitmapRenderTarget> Make(unsigned width = Width,
                                                    unsigned height = Height)
    {
        Kernel::Counted<BitmapRenderTarget> result(
            BitmapRenderTarget::Create(Raster::Format::RGBA8, {}));
        EXPECT_TRUE(result->CreateBuffer(width, height));
        return result;
    }

    PixelRGBA8 At(int x, int y) const { return PixelOf(target, x, y); }

    static PixelRGBA8 PixelOf(const Kernel::Counted<BitmapRenderTarget>& from, int x, int y)
    {
        RGBA8Buffer view;
        EXPECT_TRUE(view.Attach(from->GetBuffer()));
        return view.GetRow(unsigned(y))[x];
    }

    static std::vector<unsigned char> BytesOf(const Kernel::Counted<BitmapRenderTarget>& from)
    {
        const auto buffer = from->GetBuffer();
        std::vector<unsigned char> bytes;
        for (unsigned y = 0; y < buffer->GetHeight(); ++y)
            bytes.insert(bytes.end(), buffer->GetRow(y),
                         buffer->GetRow(y) + buffer->GetWidth() * buffer->GetPixelSize());
        return bytes;
    }

    /// The sum of alpha over all pixels, in pixels.
    double Area() const
    {
        double sum = 0;
        const auto bytes = BytesOf(target);
        for (std::size_t i = 3; i < bytes.size(); i += 4)
            sum += bytes[i] / 255.0;
        return sum;
    }

    static FillDescriptorConst Solid(const PixelRGBA8& colour)
    {
        return FillDescriptorConst::CreateSolid(colour);
    }

    static Kernel::Counted<const Geometry::PolyCurveDbl> Rectangle(double left, double top,
                                                                   double right, double bottom)
    {
        return Kernel::MakeCounted<Geometry::PolyCurveDbl>(
            Kernel::RectT<double>{left, top, right, bottom});
    }

    /// Fills a rectangle, anti-aliased with and without clip paths.
    void Fill(const Kernel::RectT<double>& rect, const PixelRGBA8& colour, float opacity = 1.0F,
              FillBlendMode::BlendMode mode = FillBlendMode::Normal)
    {
        target->DrawPolyCurve(Kernel::MakeCounted<Geometry::PolyCurveDbl>(rect), opacity, mode,
                              BlendOptions::Identity(), Solid(colour), {}, {}, {},
                              Geometry::WindingOrderMode::EvenOdd, true, true);
    }

    Kernel::Counted<BitmapRenderTarget> target;
};

} // namespace Renderer
