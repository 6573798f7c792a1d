// Cheaper bitmaps, hairlines on pixel middles, and what Clear clears.

#include <random>

#include "TargetFixture.h"

namespace Renderer {
namespace {

using Raster::ResamplerType;

class SwitchTest : public TargetTest
{
protected:
    static Kernel::Counted<const Raster::DynamicBitmap> MakeNoise(unsigned width, unsigned height)
    {
        std::mt19937 random(1);
        const auto buffer = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, width, height);
        for (unsigned y = 0; y < height; ++y)
            for (unsigned x = 0; x < width * 4; ++x)
                buffer->GetRow(y)[x] = x % 4 == 3 ? 255 : static_cast<unsigned char>(random());
        return Kernel::MakeCounted<Raster::DynamicBitmap>(buffer);
    }

    std::vector<unsigned char>
    DrawResampled(const Kernel::Counted<const Raster::DynamicBitmap>& what, ResamplerType up,
                  bool isDegraded)
    {
        target = Make();
        target->SetUpResamplerType(up);
        target->SetIsAllowDegradedBitmaps(isDegraded);
        target->DrawBitmap({1.3, 2.6, 38.2, 29.1}, what, 1.0F, FillBlendMode::Normal,
                           BlendOptions::Identity(), true);
        return BytesOf(target);
    }

    /// Strokes a path with a resolution-independent line, or one of the document.
    void Stroke(Kernel::Counted<const Geometry::PolyCurveDbl> path, double weight,
                bool isHairline = true)
    {
        LineStyle style(weight, isHairline);
        style.SetJoin(LineStyle::MitreJoin);
        target->DrawPolyCurve(std::move(path), 1.0F, {}, Solid(Red),
                              LineStyleDescriptorConst(LineStyle::Consolidate(style)));
    }

    /// The pixels of full alpha, and all others that are not clear.
    std::pair<int, int> CountPixels() const
    {
        std::pair<int, int> counts;
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x)
                ++(At(x, y).Alpha() == 255 ? counts.first
                   : At(x, y).Alpha() > 0  ? counts.second
                                           : m_clear);
        return counts;
    }

private:
    mutable int m_clear = 0;
};

TEST_F(SwitchTest, DegradedBitmapsTakeTheNextCheaperResampler)
{
    const auto small = MakeNoise(9, 7);
    const ResamplerType types[] = {ResamplerType::NearestNeighbour, ResamplerType::Bilinear,
                                   ResamplerType::Bicubic, ResamplerType::Lanczos3};
    for (std::size_t i = 0; i < std::size(types); ++i) {
        const auto degraded = DrawResampled(small, types[i], true);
        EXPECT_EQ(degraded, DrawResampled(small, types[i > 0 ? i - 1 : 0], false));
        if (i > 0) {
            EXPECT_NE(degraded, DrawResampled(small, types[i], false));
        }
    }
    // Smaller, from a halved copy: still means over pixels, not single ones of them.
    const auto large = MakeNoise(1024, 1024);
    DrawResampled(large, ResamplerType::Bilinear, true);
    int largest = 0;
    for (int y = 4; y < 28; ++y)
        for (int x = 3; x < 37; ++x)
            largest = std::max(largest, std::abs(At(x, y)[0] - 128));
    EXPECT_LT(largest, 40);
}

TEST_F(SwitchTest, HairlinesGoToPixelMiddlesWhereTheyRunAlongAnAxis)
{
    // Whatever the fraction, a rectangle's outline is one pixel wide and closed.
    for (const double shift : {0.0, 0.25, 0.5, 0.99}) {
        target = Make();
        Stroke(Rectangle(5 + shift, 4 + shift, 25 + shift, 14 + shift), 1.0);
        EXPECT_EQ(CountPixels(), std::pair(60, 0)) << shift;
        EXPECT_EQ(At(5, 4), Red);
        EXPECT_EQ(At(25, 14), Red);
    }
    // Under a transform it is the device's pixels that count; polylines likewise.
    target = Make();
    target->PushTransform({0, -2, 30, 2, 0, 0}, RenderTarget::TransformScalarMode::Concatenate);
    Stroke(Rectangle(2.1, 1.1, 12.1, 11.1), 1.0);
    target->PopTransform();
    EXPECT_EQ(CountPixels(), std::pair(80, 0));
    target = Make();
    target->DrawPolyline(Geometry::PolygonType<double>({{3, 7.0}, {30, 7.0}, {30, 20}}, false),
                         1.0F, Solid(Red), LineStyleDescriptorConst(1.0, true));
    EXPECT_EQ(At(10, 7), Red);
    EXPECT_EQ(At(10, 6), Nothing);
    EXPECT_EQ(At(30, 15), Red);

    // A round rectangle stays closed and smooth: alpha along its outline sums up to its length.
    target = Make();
    auto round = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    round->MoveTo({10, 5});
    round->LineTo({30, 5});
    round->CurveTo({32.8, 5}, {35, 7.2}, {35, 10});
    round->LineTo({35, 20});
    round->LineTo({5, 20});
    round->LineTo({5, 10});
    round->CurveTo({5, 7.2}, {7.2, 5}, {10, 5});
    round->Close();
    Stroke(round, 1.0);
    EXPECT_EQ(At(20, 5), Red);
    EXPECT_EQ(At(20, 4), Nothing);
    EXPECT_NEAR(Area(), 20 + 10 + 30 + 10 + 5 * 3.1416, 1.0);
}

TEST_F(SwitchTest, OtherStrokesNeverMove)
{
    struct Case
    {
        double factor;
        double weight;
        bool isHairline;
    };
    for (const Case& stroke : {Case{2.0, 1.0, true}, {1.0, 1.0, false}, {1.0, 1.5, true}}) {
        target = Make();
        target->SetRasterizationScaleFactor(stroke.factor);
        Stroke(Rectangle(5, 4, 25, 14), stroke.weight, stroke.isHairline);
        EXPECT_EQ(At(15, 3).Alpha(), At(15, 4).Alpha());
        EXPECT_EQ(At(4, 9).Alpha(), At(5, 9).Alpha());
    }
    // Slanted lines have no pixel middles to go to.
    auto slanted = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    slanted->MoveTo({3, 4});
    slanted->LineTo({30, 20});
    slanted->CurveTo({35, 25}, {20, 28}, {10, 26});
    target = Make();
    Stroke(slanted, 1.0);
    const auto snapped = BytesOf(target);
    target = Make();
    target->SetRasterizationScaleFactor(2.0);
    Stroke(slanted, 1.0);
    EXPECT_EQ(BytesOf(target), snapped);
}

TEST_F(SwitchTest, ClearKeepsToTheDeviceClipAndTheGroup)
{
    Fill({0, 0, Width, Height}, Red);
    target->PushLogicalDeviceClip({5, 5, 25, 25});
    target->PushClipCurvesPath(Rectangle(7.5, 7.5, 9.5, 9.5), Geometry::WindingOrderMode::NonZero);
    target->PushComposite(RenderTarget::CompositeInit::Clear, FillBlendMode::Normal,
                          BlendOptions::Identity(), 1.0F);
    Fill({0, 0, Width, Height}, Blue);
    target->PushLogicalDeviceClip({8, 0, 25, 25});
    target->Clear(); // of the group's pixels
    target->PopDeviceClip();
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(At(7, 8), (PixelRGBA8{{127, 0, 128, 255}}));
    EXPECT_EQ(At(8, 8), Red);
    target->Clear(); // paths do not count
    target->PopClipPath();
    target->PopDeviceClip();
    EXPECT_EQ(Area(), Width * Height - 20 * 20);
    EXPECT_EQ(At(5, 5), Nothing);
    EXPECT_EQ(At(24, 24), Nothing);
    EXPECT_EQ(At(25, 24), Red);
}

} // namespace
} // namespace Renderer
