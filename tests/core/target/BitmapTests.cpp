// Bitmaps and buffers as paint.

#include "TargetFixture.h"
#include <raster/DynamicBitmap.h>

namespace Renderer {
namespace {

class BitmapTest : public TargetTest
{
protected:
    /// 4 × 3 pixels, red growing to the right and green downwards.
    static Kernel::Counted<Raster::DynamicBuffer> MakePicture()
    {
        RGBA8Buffer view;
        EXPECT_TRUE(view.Create(4, 3));
        for (unsigned y = 0; y < 3; ++y)
            for (unsigned x = 0; x < 4; ++x)
                view.GetRow(y)[x] = {{std::uint8_t(60 * x), std::uint8_t(100 * y), 0, 255}};
        return view.GetDynamicBuffer();
    }
    void Draw(const Kernel::RectT<double>& dest, float opacity = 1.0F)
    {
        target->DrawBitmap(dest, Kernel::MakeCounted<Raster::DynamicBitmap>(MakePicture()), opacity,
                           FillBlendMode::Normal, BlendOptions::Identity());
    }
};

TEST_F(BitmapTest, DrawsPixelForPixel)
{
    Draw({10, 5, 14, 8});
    EXPECT_EQ(At(10, 5), (PixelRGBA8{{0, 0, 0, 255}}));
    EXPECT_EQ(At(13, 7), (PixelRGBA8{{180, 200, 0, 255}}));
    EXPECT_EQ(Area(), 12);
    target->Clear();
    target->DrawBuffer({10, 5, 14, 8}, MakePicture(), 0.5F, FillBlendMode::Normal,
                       BlendOptions::Identity());
    EXPECT_EQ(At(13, 7), (PixelRGBA8{{90, 100, 0, 127}}));
}

TEST_F(BitmapTest, MagnifiesByTheUpResampler)
{
    target->SetUpResamplerType(Raster::ResamplerType::NearestNeighbour);
    Draw({0, 0, 40, 30});
    EXPECT_EQ(At(9, 9), (PixelRGBA8{{0, 0, 0, 255}}));
    EXPECT_EQ(At(10, 10), (PixelRGBA8{{60, 100, 0, 255}}));
    target->SetUpResamplerType(Raster::ResamplerType::Bilinear);
    Draw({0, 0, 40, 30});
    EXPECT_NEAR(At(10, 10)[0], 33, 1); // 10.5/10 − ½ = 0.55 pixels to the right of the first centre
    EXPECT_NEAR(At(10, 10)[1], 55, 1);
    EXPECT_EQ(At(0, 0), (PixelRGBA8{{0, 0, 0, 255}})); // clamped outside the centres
}

TEST_F(BitmapTest, FollowsAnyTransform)
{
    target->SetUpResamplerType(Raster::ResamplerType::NearestNeighbour);
    // A quarter turn: right becomes down.
    target->SetWorldTransform({0, -1, 20, 1, 0, 0});
    Draw({0, 0, 4, 3});
    EXPECT_EQ(At(19, 0), (PixelRGBA8{{0, 0, 0, 255}}));
    EXPECT_EQ(At(19, 3), (PixelRGBA8{{180, 0, 0, 255}}));
    EXPECT_EQ(At(17, 0), (PixelRGBA8{{0, 200, 0, 255}}));
    EXPECT_EQ(Area(), 12);
    target->Clear();
    target->SetWorldTransform({0.5, 0, 3, 0, 0, 3});
    Draw({0, 0, 4, 3});
    EXPECT_EQ(Area(), 0);
}

TEST_F(BitmapTest, MinifyingAverages)
{
    RGBA8Buffer view;
    ASSERT_TRUE(view.Create(400, 300));
    for (unsigned y = 0; y < 300; ++y)
        for (unsigned x = 0; x < 400; ++x)
            view.GetRow(y)[x] =
                (x + y) % 2 ? PixelRGBA8{{255, 255, 255, 255}} : PixelRGBA8{{0, 0, 0, 255}};
    target->DrawBitmap({0, 0, 40, 30},
                       Kernel::MakeCounted<Raster::DynamicBitmap>(view.GetDynamicBuffer()), 1.0F,
                       FillBlendMode::Normal, BlendOptions::Identity());
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x)
            ASSERT_NEAR(At(x, y)[1], 128, 1) << x << ", " << y;
}

} // namespace
} // namespace Renderer
