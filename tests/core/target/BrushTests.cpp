// Strokes of raster brushes.

#include "BrushFixture.h"

namespace Renderer {
namespace {

/// A bent tip of one colour and full alpha gives the same picture as an ordinary stroke, however
/// the path turns: nothing shows of where slices meet. At half opacity it still is of one opacity
/// throughout.
TEST_F(BrushTest, FlatTipsShowNoSeams)
{
    Random random(1);
    for (int i = 0; i < 60; ++i) {
        SCOPED_TRACE(i);
        const bool isWave = i % 2 == 0;
        const Path path = isWave ? random.MakeWave() : random.MakePath();
        const double weight = random.In(3, isWave ? 16 : 30);
        const auto join = static_cast<LineStyle::LineJoin>(1 + i % 3);
        Settings settings;
        settings.mode = i % 4 < 2 ? Mode::Repeated : Mode::Stretched;
        settings.overlap = Settings::Overlap::MaxOpacity;
        const Target page = MakePage(), faint = MakePage(), plain = MakePage();
        const Tip tip = MakeFlatTip(Red, 8 + unsigned(i), 8);
        Stroke(page, path, MakeStyle(tip, settings, weight, join));
        settings.opacity = 0.6;
        Stroke(faint, path, MakeStyle(tip, settings, weight, join));
        LineStyle solid(weight);
        solid.SetJoin(join);
        solid.SetMiterLimit(3.0);
        Stroke(plain, path, LineStyleDescriptorConst(LineStyle::Consolidate(solid)));
        int different = 0, uneven = 0, inside = 0;
        for (int y = 0; y < int(PageSide); ++y)
            for (int x = 0; x < int(PageSide); ++x) {
                const int expected = PixelOf(plain, x, y).Alpha();
                different += std::abs(PixelOf(page, x, y).Alpha() - expected) > 7;
                if (!IsWellInside(plain, x, y))
                    continue;
                ++inside;
                uneven += PixelOf(page, x, y) != Blue || PixelOf(faint, x, y).Alpha() != 153;
            }
        // The union of two edges that cross in a pixel is not known: at the inside of corners, and
        // wherever lines cross themselves.
        EXPECT_LE(different, isWave ? 12 : 90);
        EXPECT_LE(uneven, isWave ? 0 : 8 + inside / 250);
    }
}

TEST_F(BrushTest, TipsTintOrBringTheirColours)
{
    const Tip tip = MakeTip(2, 1, [](unsigned x, unsigned) {
        return x == 0 ? PixelRGBA8{{51, 51, 51, 102}} : PixelRGBA8{{0, 0, 0, 204}};
    });
    const auto draw = [&](Settings::TipUse use, const FillDescriptorConst& fill) {
        Settings settings;
        settings.tipUse = use;
        settings.spacing = 100;
        const Target page = MakePage();
        const auto style = MakeStyle(tip, settings, 40);
        Stroke(page, MakeLine({100, 100}, {101, 100}), style, fill);
        EXPECT_EQ(style.GetLineStyle()->HasImplicitFill(), use == Settings::TipUse::OwnColours);
        return std::pair{PixelOf(page, 70, 100), PixelOf(page, 130, 100)};
    };
    using TipUse = Settings::TipUse;
    EXPECT_EQ(draw(TipUse::Alpha, Solid(Blue)),
              (std::pair{PixelRGBA8{{0, 0, 102, 102}}, PixelRGBA8{{0, 0, 204, 204}}}));
    EXPECT_EQ(draw(TipUse::Intensity, Solid(Blue)),
              (std::pair{PixelRGBA8{{0, 0, 51, 51}}, Nothing}));
    for (const auto& fill : {Solid(Blue), FillDescriptorConst()})
        EXPECT_EQ(draw(TipUse::OwnColours, fill),
                  (std::pair{PixelRGBA8{{51, 51, 51, 102}}, PixelRGBA8{{0, 0, 0, 204}}}));
    EXPECT_EQ(draw(TipUse::Alpha, {}), (std::pair{Nothing, Nothing}));
}

TEST_F(BrushTest, OverlapsBuildUpOrKeepTheLargestOpacity)
{
    Settings settings;
    settings.spacing = 0.25;
    settings.opacity = 0.5;
    for (const auto overlap : {Settings::Overlap::BuildUp, Settings::Overlap::MaxOpacity}) {
        settings.overlap = overlap;
        const Target page = MakePage();
        Stroke(page, MakeLine({50, 100}, {250, 100}), MakeStyle(MakeFlatTip(Red), settings, 40));
        EXPECT_EQ(PixelOf(page, 150, 100).Alpha(), // five stamps lie there, or four
                  overlap == Settings::Overlap::BuildUp ? 239 : 128);
        // A line that crosses itself does the same when the tip is bent.
        settings.mode = Mode::Stretched;
        const Path cross = MakeLine({50, 100}, {250, 100});
        cross->LineTo({250, 250});
        cross->LineTo({150, 250});
        cross->LineTo({150, 50});
        page->Clear();
        Stroke(page, cross, MakeStyle(MakeFlatTip(Red), settings, 20));
        EXPECT_EQ(PixelOf(page, 200, 100).Alpha(), 128);
        EXPECT_EQ(PixelOf(page, 248, 102).Alpha(), 128); // not at corners
        EXPECT_EQ(PixelOf(page, 150, 100).Alpha(),
                  overlap == Settings::Overlap::BuildUp ? 191 : 128);
        settings.mode = Mode::Stamped;
    }
}

/// The same bytes with one thread and many, in one pass and in tiles, the first time and the
/// second, in every format; and nothing beyond the bounds that the line style tells.
TEST_F(BrushTest, TilesThreadsAndPassesAgreeWithinTheBounds)
{
    Random random(3);
    for (int i = 0; i < 70; ++i) {
        SCOPED_TRACE(i);
        const Format format = AllFormats[i % 7];
        const Path path = random.MakePath();
        const LineStyleDescriptorConst line = random.MakeLine();
        const Raster::AffineTransform::Params map{random.In(0.5, 1),  random.In(-0.3, 0.3),
                                                  random.In(-20, 20), random.In(-0.3, 0.3),
                                                  random.In(0.5, 1),  random.In(-20, 20)};
        const auto draw = [&](const Target& page) {
            page->PushTransform(map, RenderTarget::TransformScalarMode::Concatenate);
            Stroke(page, path, line, Solid({{200, 120, 40, 255}}), 0.9F);
            page->PopTransform();
        };
        const Target whole = MakePage(format), tiled = MakePage(format);
        draw(whole);
        Kernel::Dispatch::SetThreadLimit(1);
        for (int y = 0; y < int(PageSide); y += 97)
            for (int x = 0; x < int(PageSide); x += 130) {
                tiled->PushLogicalDeviceClip({double(x), double(y), x + 130.0, y + 97.0});
                draw(tiled);
                tiled->PopDeviceClip();
            }
        Kernel::Dispatch::SetThreadLimit(0);
        const auto bytes = BytesOf(whole);
        ASSERT_TRUE(bytes == BytesOf(tiled));

        const auto reach = Raster::AffineTransform::MapRect(
            map, line.InflateBaseRect(path->GetBoundingBox().GetRect(), map, map));
        const std::size_t size = whole->GetBuffer()->GetPixelSize();
        for (std::size_t k = 0; k < bytes.size(); ++k) {
            const int x = int(k / size % PageSide), y = int(k / size / PageSide);
            ASSERT_TRUE(bytes[k] == 0 || (x + 1 > reach.left && x < reach.right &&
                                          y + 1 > reach.top && y < reach.bottom))
                << x << ' ' << y;
        }
    }
}

/// A brush is a paint like any other: clips, masks by transparency, groups and blend modes treat
/// what it paints as they treat the same pixels of a bitmap.
TEST_F(BrushTest, BlendsLikeABitmapOfItsPixels)
{
    Settings settings;
    settings.tipUse = Settings::TipUse::OwnColours;
    settings.mode = Mode::Repeated;
    Random random(4);
    const Path path = random.MakePath();
    const auto style = MakeStyle(MakeNoiseTip(), settings, 40);
    const auto brushed = MakePage();
    Stroke(brushed, path, style);
    const auto picture = Kernel::MakeCounted<Raster::DynamicBitmap>(brushed->GetBuffer());
    for (int mode = 0; mode < 30; ++mode) {
        const auto draw = [&](const Target& page, bool asBitmap) {
            page->DrawRectangle({10, 10, 200, 290}, 1.0F, Solid({{90, 140, 30, 200}}), {}, {});
            const auto clip = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
            clip->AddEllipse({150, 150}, 140, 120);
            page->PushClipCurvesPath(clip, Geometry::WindingOrderMode::NonZero);
            const auto blend = static_cast<FillBlendMode::BlendMode>(mode);
            if (asBitmap)
                page->DrawBitmap({0, 0, PageSide, PageSide}, picture, 0.7F, blend,
                                 BlendOptions::Identity(), mode % 2 == 0);
            else
                page->DrawPolyCurve(path, 0.7F, blend, BlendOptions::Identity(), {}, {}, {}, style,
                                    Geometry::WindingOrderMode::NonZero, true, mode % 2 == 0);
            page->PopClipPath();
        };
        const Target page = MakePage(), other = MakePage();
        draw(page, false);
        draw(other, true);
        EXPECT_TRUE(BytesOf(page) == BytesOf(other)) << mode;
    }
}

TEST_F(BrushTest, WhatIsAbsurdDrawsNothingOrEnds)
{
    const double huge = 1e300, large = 1e7;
    const double nan = std::nan("");
    for (int i = 0; i < 3 * 2; ++i) {
        Settings settings;
        settings.mode = static_cast<Mode>(i % 3);
        settings.tipUse = i < 3 ? Settings::TipUse::OwnColours : Settings::TipUse::Alpha;
        settings.spacing = 0.0;
        const Target page = MakePage();
        const auto line = [&](double weight) {
            return MakeStyle(MakeNoiseTip(64, 2), settings, weight);
        };
        Stroke(page, MakeLine({0, 0}, {nan, 3}), line(9));
        Stroke(page, MakeLine({-huge, 0}, {huge, huge}), line(9));
        Stroke(page, MakeLine({-huge, 0}, {huge, 1}), line(huge));
        Stroke(page, MakeLine({0, 0}, {9, 9}), line(1e-300));
        Stroke(page, MakeLine({0, 0}, {9, 9}), MakeStyle(Tip(), settings, 0.0));
        page->SetAbort(true);
        Stroke(page, MakeLine({0, 0}, {99, 99}), line(9));
        page->SetAbort(false);
        EXPECT_TRUE(BytesOf(page) == BytesOf(MakePage()));
        Stroke(page, MakeLine({-large, 99}, {large, 120}), line(9));
        Stroke(page, MakeLine({-large, 99}, {large, 120}), line(1e-3));
        Stroke(page, MakeLine({100, 99}, {200, 120}), line(large));
        EXPECT_FALSE(BytesOf(page) == BytesOf(MakePage()));
    }
    // Without a tip the line is solid.
    const Target page = MakePage(), solid = MakePage();
    Stroke(page, MakeLine({20, 30}, {200, 100}), MakeStyle(Tip(), {}, 9));
    Stroke(solid, MakeLine({20, 30}, {200, 100}), LineStyleDescriptorConst(9.0));
    EXPECT_TRUE(BytesOf(page) == BytesOf(solid));
}

} // namespace
} // namespace Renderer
