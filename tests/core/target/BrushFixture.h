#pragma once

// What tests of raster brushes draw with.

#include <algorithm>
#include <cmath>
#include <random>

#include <kernel/Dispatch.h>
#include <renderer/paint/LineStyle.h>

#include "FormatFixture.h"

namespace Renderer {
using Brush = Raster::RasterBrush;
using Settings = Raster::BrushSettings;
using Mode = Settings::Mode;
using Path = Kernel::Counted<Geometry::PolyCurveDbl>;
using Pressure = Kernel::Counted<const Geometry::CurveDbl>;
using Target = Kernel::Counted<BitmapRenderTarget>;
using Tip = Kernel::Counted<const Raster::DynamicBitmap>;

inline constexpr unsigned PageSide = 300;

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

inline Tip MakeFlatTip(PixelRGBA8 colour, unsigned width = 8, unsigned height = 8)
{
    return MakeTip(width, height, [&](unsigned, unsigned) { return colour; });
}

inline Tip MakeNoiseTip(unsigned width = 40, unsigned height = 24)
{
    std::mt19937 random(9);
    return MakeTip(width, height, [&](unsigned, unsigned) {
        const unsigned alpha = random() % 256;
        const auto channel = [&] { return std::uint8_t(random() % (alpha + 1)); };
        return PixelRGBA8{{channel(), channel(), channel(), std::uint8_t(alpha)}};
    });
}

inline LineStyleDescriptorConst MakeStyle(const Tip& tip, const Settings& settings, double weight,
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

inline Pressure MakePressure(double start, double middle, double end)
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

} // namespace Renderer
