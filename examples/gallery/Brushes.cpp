#include <algorithm>
#include <cmath>
#include <numbers>

#include <raster/Buffer.h>
#include <raster/RasterBrush.h>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

using Raster::RasterBrush;
using Tip = Kernel::Counted<const Raster::DynamicBitmap>;
using Pressure = Kernel::Counted<const Geometry::CurveDbl>;
using Settings = Raster::BrushSettings;
using Mode = Settings::Mode;

/// A picture whose premultiplied pixels a function of the place, 0 … 1 both ways, gives.
template<class GetPixel>
Tip MakeTip(unsigned width, unsigned height, const GetPixel& getPixel)
{
    Raster::Buffer<Raster::Red8, Raster::Green8, Raster::Blue8, Raster::Alpha8, Raster::X5> pixels;
    pixels.Create(width, height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            pixels.GetRow(y)[x] = getPixel((x + 0.5) / width, (y + 0.5) / height);
    return Kernel::MakeCounted<Raster::DynamicBitmap>(pixels.GetDynamicBuffer());
}

Raster::PixelRGBA8 MakePixel(double red, double green, double blue, double alpha)
{
    const auto store = [alpha](double value) {
        return static_cast<std::uint8_t>(
            std::lround(255.0 * std::clamp(value, 0.0, 1.0) * std::clamp(alpha, 0.0, 1.0)));
    };
    return {{store(red), store(green), store(blue), store(1.0)}};
}

/// A soft disc.
Tip Soft()
{
    return MakeTip(64, 64, [](double x, double y) {
        return MakePixel(0, 0, 0, 1.4 * (1.0 - 2.0 * std::hypot(x - 0.5, y - 0.5)));
    });
}

/// The marks of bristles, which go on at the right edge where they end at the left one.
Tip Bristles()
{
    return MakeTip(160, 48, [](double x, double y) {
        const double hair = std::floor(y * 24);
        const double strength = 0.5 + 0.5 * std::sin(hair * 2.4);
        const double wave =
            std::sin(2 * std::numbers::pi * (x * (1 + int(hair) % 3) + hair * 0.37));
        const double edge = 6.0 * std::min(y, 1.0 - y);
        return MakePixel(0, 0, 0, edge * (0.25 + 0.5 * strength + 0.35 * wave));
    });
}

Tip Leaf()
{
    return MakeTip(72, 40, [](double x, double y) {
        const double away = std::abs(2 * y - 1), half = std::sin(std::numbers::pi * x);
        const double vein = away < 0.06 ? 0.25 : 0.0;
        return MakePixel(0.25 + 0.5 * x, 0.4 + 0.35 * x - vein, 0.12, 12 * (half - away));
    });
}

/// Two strands of a rope, as long as they are wide.
Tip Rope()
{
    return MakeTip(64, 64, [](double x, double y) {
        const double twist = x + 0.45 * std::sin(std::numbers::pi * (y - 0.5));
        const double groove = std::abs(std::sin(2 * std::numbers::pi * twist));
        const double round = std::sin(std::numbers::pi * y);
        const double light = std::sqrt(groove) * (0.35 + 0.65 * round) + 0.1;
        return MakePixel(0.85 * light, 0.68 * light, 0.42 * light, 24 * std::min(y, 1.0 - y));
    });
}

LineStyleDescriptorConst BrushStyle(double weight, const Tip& tip, const Settings& settings,
                                    const Pressure& pressure = {})
{
    LineStyle style(weight);
    style.SetType(LineStyle::RasterBrush);
    style.SetBrush(Kernel::MakeCounted<const RasterBrush>(tip, settings));
    LineStyleDescriptorConst line(LineStyle::Consolidate(style));
    line.SetPressure(pressure);
    return line;
}

/// A curve that bends both ways.
Path Swing()
{
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    path->MoveTo({18, 76});
    path->CurveTo({36, -20}, {58, 6}, {64, 48});
    path->CurveTo({70, 90}, {92, 116}, {110, 20});
    return path;
}

void BrushStamps(RenderTarget& target, double spacing, Settings::Overlap overlap)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    Settings settings;
    settings.spacing = spacing;
    settings.opacity = 0.6;
    settings.overlap = overlap;
    target.DrawPolyCurve(Swing(), 1.0F, {}, Solid(0x21618c), BrushStyle(20, Soft(), settings));
}

void BrushBent(RenderTarget& target, Settings::Mode mode)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    Settings settings;
    settings.mode = mode;
    target.DrawPolyCurve(Swing(), 1.0F, {}, Solid(0x6c3483), BrushStyle(24, Bristles(), settings));
}

void BrushJitter(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xeef4e8));
    Settings leaves;
    leaves.tipUse = Settings::TipUse::OwnColours;
    leaves.spacing = 0.4;
    leaves.positionJitter = 0.35;
    leaves.angleJitter = 0.9;
    leaves.sizeJitter = 0.5;
    leaves.seed = 7;
    target.DrawPolyCurve(Disc({64, 48}, 32), 1.0F, {}, {}, BrushStyle(12, Leaf(), leaves));
}

void BrushRope(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0x2c3e50));
    Settings rope;
    rope.mode = Mode::Repeated;
    rope.tipUse = Settings::TipUse::OwnColours;
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    path->MoveTo({6, 84});
    path->CurveTo({150, -10}, {-22, -10}, {122, 84});
    target.DrawPolyCurve(path, 1.0F, {}, {}, BrushStyle(16, Rope(), rope));
    target.DrawPolyCurve(Star({26, 24}, 19, 10, 5), 1.0F, {}, {}, BrushStyle(6, Rope(), rope));
}

void BrushPressure(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    const auto pressure = Kernel::MakeCounted<Geometry::CurveDbl>(Point{0, 0.1});
    pressure->CurveTo({0.2, 1.6}, {0.6, 0.9}, {1, 0});
    const auto ink = Linear({20, 0}, {108, 0}, {{0, 0x922b21}, {1, 0xd68910}});
    Settings settings;
    settings.mode = Mode::Stretched;
    settings.opacityByPressure = 0.6;
    target.DrawPolyCurve(Swing(), 1.0F, {}, ink, BrushStyle(24, Bristles(), settings, pressure));
}

} // namespace

void ShowBrushes(Page& page)
{
    page.Chapter("Brushes", "A soft disc stamped along a path, by spacing and overlap:");
    page.Code("BrushStamps");
    using Overlap = Settings::Overlap;
    const auto stamps = [&page](int number, double spacing, Overlap overlap, const char* text) {
        page.Tile("brush-stamps-" + std::to_string(number),
                  std::string("BrushStamps(target, ") + text + ')',
                  [=](RenderTarget& target) { BrushStamps(target, spacing, overlap); });
    };
    stamps(1, 1.0, Overlap::BuildUp, "1, Overlap::BuildUp");
    stamps(2, 0.3, Overlap::BuildUp, "0.3, Overlap::BuildUp");
    stamps(3, 0.05, Overlap::MaxOpacity, "0.05, Overlap::MaxOpacity");
    page.Text("The marks of bristles, bent along the path one after another, and once over all of "
              "it:");
    page.Code("BrushBent");
    page.Tile("brush-repeated", "BrushBent(target, Mode::Repeated)",
              [](RenderTarget& target) { BrushBent(target, Mode::Repeated); });
    page.Tile("brush-stretched", "BrushBent(target, Mode::Stretched)",
              [](RenderTarget& target) { BrushBent(target, Mode::Stretched); });
    page.Text("Jitter, which is the same whenever the line is drawn; tips of their own colours; "
              "size and opacity by pressure:");
    page.Sample("brush-jitter", "BrushJitter", BrushJitter);
    page.Sample("brush-rope", "BrushRope", BrushRope);
    page.Sample("brush-pressure", "BrushPressure", BrushPressure);
}

} // namespace Gallery
