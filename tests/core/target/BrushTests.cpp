// Strokes of raster brushes.

#include <cmath>
#include <random>

#include <kernel/Dispatch.h>
#include <renderer/paint/LineStyle.h>

#include "FormatFixture.h"

namespace Renderer {
namespace {

using Brush = Raster::RasterBrush;
using Settings = Raster::BrushSettings;
using Mode = Settings::Mode;
using Path = Kernel::Counted<Geometry::PolyCurveDbl>;
using Pressure = Kernel::Counted<const Geometry::CurveDbl>;
using Target = Kernel::Counted<BitmapRenderTarget>;
using Tip = Kernel::Counted<const Raster::DynamicBitmap>;

constexpr unsigned PageSide = 300;

template<class GetPixel>
Tip MakeTip(unsigned width, unsigned height, const GetPixel& getPixel)
{
    RGBA8Buffer view;
    EXPECT_TRUE(view.Create(width, height));
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            view.GetRow(y)[x] = getPixel(x, y);
    return Kernel::MakeCounted<Raster::DynamicBitmap>(view.GetDynamicBuffer());
}

Tip MakeFlatTip(PixelRGBA8 colour, unsigned width = 8, unsigned height = 8)
{
    return MakeTip(width, height, [&](unsigned, unsigned) { return colour; });
}

Tip MakeNoiseTip(unsigned width = 40, unsigned height = 24)
{
    std::mt19937 random(9);
    return MakeTip(width, height, [&](unsigned, unsigned) {
        const unsigned alpha = random() % 256;
        const auto channel = [&] { return std::uint8_t(random() % (alpha + 1)); };
        return PixelRGBA8{{channel(), channel(), channel(), std::uint8_t(alpha)}};
    });
}

LineStyleDescriptorConst MakeStyle(const Tip& tip, const Settings& settings, double weight,
                                   LineStyle::LineJoin join = LineStyle::RoundJoin,
                                   const Pressure& pressure = {})
{
    LineStyle style(weight);
    style.SetType(LineStyle::RasterBrush);
    style.SetJoin(join);
    style.SetMiterLimit(3.0);
    style.SetBrush(Kernel::MakeCounted<const Brush>(tip, settings));
    LineStyleDescriptorConst descriptor(LineStyle::Consolidate(style));
    descriptor.SetPressure(pressure);
    return descriptor;
}

Pressure MakePressure(double start, double middle, double end)
{
    const auto curve = Kernel::MakeCounted<Geometry::CurveDbl>(Geometry::Point{0, start});
    curve->QuadTo({0.5, middle}, {1, end});
    return curve;
}

class Random
{
public:
    explicit Random(unsigned seed) : m_engine(seed) {}
    double In(double from, double to)
    {
        return std::uniform_real_distribution<double>(from, to)(m_engine);
    }
    unsigned Below(unsigned count) { return unsigned(m_engine() % count); }
    Geometry::Point MakePoint() { return {In(-20, PageSide + 20), In(-20, PageSide + 20)}; }
    Path MakePath()
    {
        const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        path->MoveTo(MakePoint());
        for (unsigned count = 1 + Below(4); count > 0; --count) {
            if (Below(3) == 0)
                path->LineTo(MakePoint());
            else
                path->CurveTo(MakePoint(), MakePoint(), MakePoint());
        }
        if (Below(3) == 0)
            path->Close();
        return path;
    }
    /// A path from left to right, which does not come near itself.
    Path MakeWave()
    {
        const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        Geometry::Point last{25, In(60, 240)};
        path->MoveTo(last);
        while (last.x < 200) {
            const Geometry::Point next{last.x + In(45, 70), last.y + In(-40, 40)};
            const double handle = (next.x - last.x) / 2;
            if (Below(3) == 0)
                path->LineTo(next);
            else
                path->CurveTo({last.x + handle, last.y + In(-30, 30)},
                              {next.x - handle, next.y + In(-30, 30)}, next);
            last = next;
        }
        return path;
    }
    Settings MakeSettings()
    {
        Settings settings;
        settings.mode = static_cast<Mode>(Below(3));
        settings.tipUse = static_cast<Settings::TipUse>(Below(3));
        settings.overlap = static_cast<Settings::Overlap>(Below(2));
        settings.spacing = In(0.1, 2);
        settings.rotation = In(-4, 4);
        settings.followsPath = Below(2) == 0;
        settings.opacity = In(0.3, 1.2);
        settings.positionJitter = Below(2) * In(0, 2);
        settings.angleJitter = Below(2) * In(0, 3);
        settings.sizeJitter = Below(2) * In(0, 1);
        settings.opacityJitter = Below(2) * In(0, 1);
        settings.opacityByPressure = Below(2);
        settings.seed = Below(1000);
        return settings;
    }
    LineStyleDescriptorConst MakeLine()
    {
        const Pressure pressure =
            Below(2) == 0 ? Pressure() : MakePressure(In(0, 1), In(0, 3), In(0, 2));
        LineStyleDescriptorConst line =
            MakeStyle(MakeNoiseTip(), MakeSettings(), In(0.5, 40),
                      static_cast<LineStyle::LineJoin>(Below(4)), pressure);
        // Which brushes do without.
        line.SetStrokeAlignment(static_cast<LineStyleDescriptorConst::StrokeAlignment>(Below(3)));
        return line;
    }

private:
    std::mt19937 m_engine;
};

class BrushTest : public TargetTest
{
protected:
    ~BrushTest() override { Kernel::Dispatch::SetThreadLimit(0); }

    static Target MakePage(Format format = Format::RGBA8)
    {
        const Target page = MakeTarget(format, PageSide, PageSide);
        page->SetDeviceExpansionTolerance(0.01);
        return page;
    }
    static void Stroke(const Target& page, const Path& path, const LineStyleDescriptorConst& style,
                       const FillDescriptorConst& fill = Solid(Blue), float opacity = 1.0F)
    {
        page->DrawPolyCurve(path, opacity, FillBlendMode::Normal, BlendOptions::Identity(), {}, {},
                            fill, style, Geometry::WindingOrderMode::NonZero, true, true);
    }
    /// Whether a pixel and its neighbours have full alpha.
    static bool IsWellInside(const Target& page, int x, int y)
    {
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                const int px = x + dx, py = y + dy;
                if (px < 0 || py < 0 || px >= int(PageSide) || py >= int(PageSide) ||
                    PixelOf(page, px, py).Alpha() != 255)
                    return false;
            }
        return true;
    }
    static Path MakeLine(Geometry::Point from, Geometry::Point to)
    {
        const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        path->MoveTo(from);
        path->LineTo(to);
        return path;
    }
};

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

/// One stamp is a rectangle like any other.
TEST_F(BrushTest, StampsCoverWhatTheirRectanglesCover)
{
    Random random(2);
    for (int i = 0; i < 40; ++i) {
        const double angle = random.In(0, 6.3), weight = random.In(0.2, 90);
        const Geometry::Point centre{random.In(60, 240), random.In(60, 240)};
        Settings settings;
        settings.spacing = 100;
        settings.rotation = 0.4;
        settings.tipUse = Settings::TipUse::OwnColours;
        const Geometry::Point along{std::cos(angle), std::sin(angle)};
        const Target page = MakePage(), plain = MakePage();
        Stroke(page, MakeLine(centre, centre + along),
               MakeStyle(MakeFlatTip(Green, 6, 2), settings, weight), {});
        plain->PushTransform(Raster::AffineTransform::Concatenate(
                                 Raster::AffineTransform::Rotation(angle + 0.4),
                                 Raster::AffineTransform::Translation(centre.x, centre.y)),
                             RenderTarget::TransformScalarMode::Concatenate);
        plain->DrawRectangle({-1.5 * weight, -0.5 * weight, 1.5 * weight, 0.5 * weight}, 1.0F,
                             Solid(Green), {}, {});
        plain->PopTransform();
        for (int y = 0; y < int(PageSide); ++y)
            for (int x = 0; x < int(PageSide); ++x)
                ASSERT_NEAR(PixelOf(page, x, y).Alpha(), PixelOf(plain, x, y).Alpha(), 3)
                    << i << ' ' << x << ' ' << y;
    }
}

/// Where the stamps of a straight line are, by the columns that they touch.
std::vector<int> GetStampColumns(const Target& page, int y)
{
    RGBA8Buffer view;
    EXPECT_TRUE(view.Attach(page->GetBuffer()));
    std::vector<int> starts;
    for (int x = 1; x < int(PageSide); ++x)
        if (view.GetRow(unsigned(y))[x].Alpha() > 127 &&
            view.GetRow(unsigned(y))[x - 1].Alpha() <= 127)
            starts.push_back(x);
    return starts;
}

TEST_F(BrushTest, StampsLieBySpacingAndPressure)
{
    const Tip square = MakeFlatTip(Red);
    Settings settings;
    settings.spacing = 2.5;
    const Target page = MakePage();
    Stroke(page, MakeLine({20, 50}, {271, 50}), MakeStyle(square, settings, 10));
    EXPECT_EQ(GetStampColumns(page, 50),
              (std::vector{15, 40, 65, 90, 115, 140, 165, 190, 215, 240, 265}));
    EXPECT_EQ(GetStampColumns(page, 54).size(), 11U);
    EXPECT_TRUE(GetStampColumns(page, 55).empty());
    // Steps are as long as the tip is large: 25 · (1 − x / 250) from x on.
    Stroke(page, MakeLine({20, 150}, {270, 150}),
           MakeStyle(square, settings, 10, LineStyle::RoundJoin, MakePressure(1, 0.5, 0)));
    const auto starts = GetStampColumns(page, 150);
    ASSERT_GT(starts.size(), 12U);
    double place = 20.0;
    for (int i = 0; i < 12; ++i) {
        const double pressure = 1.0 - (place - 20) / 250;
        EXPECT_NEAR(starts[std::size_t(i)], place - 5 * pressure, 1.0);
        place += 25 * pressure;
    }
    // A closed run has a whole number of even steps: 200 · π / 25 is 25.1.
    const auto circle = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    circle->AddEllipse({150, 150}, 100, 100);
    const Target round = MakePage();
    Stroke(round, circle, MakeStyle(square, settings, 10));
    for (int i = 0; i < 50; ++i) {
        const double angle = 3.14159265358979 / 25 * i;
        const int x = int(150 + 100 * std::cos(angle)), y = int(150 + 100 * std::sin(angle));
        EXPECT_EQ(PixelOf(round, x, y).Alpha(), i % 2 == 0 ? 255 : 0) << i;
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
