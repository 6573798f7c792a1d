#include <string>
#include <utility>
#include <vector>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

LineStyleDescriptorConst MakeBrush(double weight, LineStyle::LineCap cap,
                                   std::vector<double> dashes, const std::vector<Point>& pressure)
{
    LineStyle style(weight);
    style.SetCap(cap);
    style.SetDashPattern(std::move(dashes));
    auto profile = Kernel::MakeCounted<Geometry::CurveDbl>(pressure.front());
    for (std::size_t i = 1; i + 2 < pressure.size(); i += 3)
        profile->CurveTo(pressure[i], pressure[i + 1], pressure[i + 2]);
    LineStyleDescriptorConst brush(LineStyle::Consolidate(style));
    brush.SetPressure(profile);
    return brush;
}

/// Three strokes side by side.
Path Waves()
{
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    for (const double y : {26.0, 50.0, 74.0}) {
        path->MoveTo({12, y});
        path->CurveTo({44, y - 44}, {76, y + 44}, {116, y - 6});
    }
    return path;
}

void StrokeWithPressure(RenderTarget& target, const std::vector<Point>& pressure,
                        std::vector<double> dashes)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    target.DrawPolyCurve(Waves(), 1.0F, {}, Solid(0x1b4f72),
                         MakeBrush(15, LineStyle::RoundCap, std::move(dashes), pressure));
}

/// A stroke's outline over the stroke, with the ends of its cubics.
void ShowOutline(RenderTarget& target, const Path& path, const LineStyleDescriptorConst& style)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    target.DrawPolyCurve(path, 1.0F, {}, Solid(0xf5cba7), style);
    const Path outline =
        style.GetPolyCurveOutline(*path, target.GetCurrentTransform(), target.GetScalarTransform());
    target.DrawPolyCurve(outline, 1.0F, {}, Solid(0x784212), LineStyleDescriptorConst(0.6));
    for (const Geometry::CurveDbl& run : outline->GetCurves())
        for (std::size_t i = 0; i < run.GetPoints().size(); i += 3)
            Paint(target, Disc(run.GetPoints()[i], 1.5), Solid(0xc0392b));
}

void OutlineCusp(RenderTarget& target)
{
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    path->MoveTo({16, 78});
    path->CurveTo({128, 0}, {0, 0}, {112, 78});
    ShowOutline(target, path, LineStyleDescriptorConst(22.0));
}

void OutlinePressure(RenderTarget& target)
{
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    path->MoveTo({14, 70});
    path->CurveTo({30, 0}, {60, 20}, {64, 76});
    path->CurveTo({76, 30}, {104, 10}, {114, 50});
    ShowOutline(target, path,
                MakeBrush(22, LineStyle::ButtCap, {}, {{0, 0}, {0.4, 1.4}, {0.6, 1.4}, {1, 0}}));
}

} // namespace

void ShowOutlines(Page& page)
{
    page.Chapter("Pressure and outlines",
                 "The width of a stroke follows a profile over the length of each run:");
    page.Code("StrokeWithPressure");
    const auto tile = [&page](const char* name, const char* text,
                              const std::vector<Point>& pressure, std::vector<double> dashes) {
        page.Tile(name, std::string("StrokeWithPressure(target, ") + text + ')',
                  [pressure, dashes](RenderTarget& target) {
                      StrokeWithPressure(target, pressure, dashes);
                  });
    };
    tile("pressure-taper", "{{0, 1}, {0.3, 1}, {0.7, 0}, {1, 0}}, {}",
         {{0, 1}, {0.3, 1}, {0.7, 0}, {1, 0}}, {});
    tile("pressure-leaf", "{{0, 0}, {0.3, 1.4}, {0.7, 1.4}, {1, 0}}, {}",
         {{0, 0}, {0.3, 1.4}, {0.7, 1.4}, {1, 0}}, {});
    tile("pressure-dashes", "{{0, 0}, {0.3, 0.3}, {0.7, 0.7}, {1, 1}}, {0, 14}",
         {{0, 0}, {0.3, 0.3}, {0.7, 0.7}, {1, 1}}, {0, 14});
    page.Text("A stroke is given as an outline of few Béziers, to be filled non-zero:");
    page.Code("ShowOutline");
    page.Sample("outline-cusp", "OutlineCusp", OutlineCusp);
    page.Sample("outline-pressure", "OutlinePressure", OutlinePressure);
}

} // namespace Gallery
