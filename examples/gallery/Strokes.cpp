#include <cmath>
#include <numbers>
#include <string>
#include <utility>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

LineStyleDescriptorConst MakeStyle(double weight, LineStyle::LineCap cap, LineStyle::LineJoin join,
                                   std::vector<double> dashes = {})
{
    LineStyle style(weight);
    style.SetCap(cap);
    style.SetJoin(join);
    style.SetMiterLimit(8);
    style.SetDashPattern(std::move(dashes));
    return LineStyleDescriptorConst(LineStyle::Consolidate(style));
}

/// The path itself, thin, over its stroke.
void DrawSpine(RenderTarget& target, const Path& path)
{
    target.DrawPolyCurve(path, 0.9F, {}, Solid(0xffffff), LineStyleDescriptorConst(1.0));
}

void StrokeCorners(RenderTarget& target, LineStyle::LineCap cap, LineStyle::LineJoin join)
{
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    path->MoveTo({24, 74});
    path->LineTo({46, 26});
    path->LineTo({68, 72});
    path->CurveTo({76, 40}, {96, 20}, {106, 56});
    Paint(target, Sheet(), Solid(0xf6efe2));
    target.DrawPolyCurve(path, 1.0F, {}, Solid(0x21618c), MakeStyle(18, cap, join));
    DrawSpine(target, path);
}

void StrokeDashes(RenderTarget& target, LineStyle::LineCap cap, std::vector<double> dashes)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    for (int i = 0; i < 3; ++i)
        target.DrawPolyCurve(Disc({64, 48}, 42 - 13 * i), 1.0F, {},
                             Solid(i == 0   ? 0xc0392b
                                   : i == 1 ? 0xd68910
                                            : 0x21618c),
                             MakeStyle(6, cap, LineStyle::RoundJoin, dashes));
}

/// A star that crosses itself, and a ring beside it, with even-odd and non-zero insides.
void StrokeAligned(RenderTarget& target, LineStyleDescriptorConst::StrokeAlignment alignment,
                   Geometry::WindingOrderMode rule, std::vector<double> dashes)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    auto line = MakeStyle(4, LineStyle::ButtCap, LineStyle::MitreJoin, dashes);
    line.SetStrokeAlignment(alignment);
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    for (const double angle : {-90, 54, 198, -18, 126}) {
        const double radians = angle * std::numbers::pi / 180;
        path->LineTo({41 + 27 * std::cos(radians), 52 + 27 * std::sin(radians)});
    }
    path->Close();
    path->AddEllipse({100, 50}, 18, 30);
    path->AddEllipse({100, 50}, 7, 14);
    target.DrawPolyCurve(path, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                         Solid(0xf5cba7), {}, Solid(0x21618c), line, rule, true, true);
    DrawSpine(target, path);
}

void StrokeUnderTransform(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    target.PushTransform({1.3, 0.35, 64, 0, 0.65, 48},
                         RenderTarget::TransformScalarMode::Concatenate);
    target.DrawPolyCurve(Star({0, 0}, 38, 20, 6), 1.0F, {}, Solid(0x6c3483),
                         MakeStyle(7, LineStyle::ButtCap, LineStyle::MitreJoin));
    target.PopTransform();
}

void StrokeOnce(RenderTarget& target)
{
    DrawCheckerboard(target);
    target.DrawPolyCurve(Flower({64, 48}, 38, 6), 0.6F, Solid(0xf5b041), Solid(0x922b21),
                         MakeStyle(8, LineStyle::RoundCap, LineStyle::RoundJoin));
}

void StrokeHairlines(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0x101a33));
    for (int i = 0; i < 48; ++i)
        target.DrawLine({4.0 + 2.5 * i, 92}, {124.0 - 2.5 * i, 4}, 1.0F, Rainbow({64, 48}),
                        LineStyleDescriptorConst(0.35));
}

constexpr std::pair<LineStyle::LineCap, const char*> Caps[] = {{LineStyle::ButtCap, "ButtCap"},
                                                               {LineStyle::SquareCap, "SquareCap"},
                                                               {LineStyle::RoundCap, "RoundCap"}};
constexpr std::pair<LineStyle::LineJoin, const char*> Joins[] = {
    {LineStyle::NoJoin, "NoJoin"},
    {LineStyle::MitreJoin, "MitreJoin"},
    {LineStyle::RoundJoin, "RoundJoin"},
    {LineStyle::BevelJoin, "BevelJoin"}};

void ShowCorners(Page& page)
{
    const auto show = [&page](const std::pair<LineStyle::LineCap, const char*>& cap,
                              const std::pair<LineStyle::LineJoin, const char*>& join) {
        page.Tile(std::string("stroke-") + cap.second + '-' + join.second,
                  std::string("StrokeCorners(target, LineStyle::") + cap.second +
                      ", LineStyle::" + join.second + ')',
                  [=](RenderTarget& target) { StrokeCorners(target, cap.first, join.first); });
    };
    page.Code("StrokeCorners");
    for (const auto& cap : Caps)
        show(cap, Joins[1]);
    for (const auto& join : Joins)
        if (join.first != LineStyle::MitreJoin)
            show(Caps[0], join);
}

void ShowDashes(Page& page)
{
    page.Code("StrokeDashes");
    const auto show = [&page](int number, const std::pair<LineStyle::LineCap, const char*>& cap,
                              const std::vector<double>& dashes, const char* text) {
        page.Tile("stroke-dashes-" + std::to_string(number),
                  std::string("StrokeDashes(target, LineStyle::") + cap.second + ", " + text + ')',
                  [=](RenderTarget& target) { StrokeDashes(target, cap.first, dashes); });
    };
    show(1, Caps[0], {9, 4}, "{9, 4}");
    show(2, Caps[2], {0, 9}, "{0, 9}");
    show(3, Caps[2], {12, 9, 0, 9}, "{12, 9, 0, 9}");
    show(4, Caps[1], {3, 10}, "{3, 10}");
    show(5, Caps[0], {1, 1.5}, "{1, 1.5}");
}

void ShowAlignment(Page& page)
{
    using enum LineStyleDescriptorConst::StrokeAlignment;
    using enum Geometry::WindingOrderMode;
    page.Code("StrokeAligned");
    const auto show = [&page](int number, auto alignment, auto rule, std::vector<double> dashes,
                              const char* text) {
        page.Tile("stroke-aligned-" + std::to_string(number),
                  std::string("StrokeAligned(target, ") + text + ')',
                  [=](RenderTarget& target) { StrokeAligned(target, alignment, rule, dashes); });
    };
    show(1, Inside, EvenOdd, {}, "Inside, EvenOdd, {}");
    show(2, Centre, EvenOdd, {}, "Centre, EvenOdd, {}");
    show(3, Outside, EvenOdd, {}, "Outside, EvenOdd, {}");
    show(4, Outside, NonZero, {}, "Outside, NonZero, {}");
    show(5, Inside, NonZero, {8, 4}, "Inside, NonZero, {8, 4}");
}

} // namespace

void ShowStrokes(Page& page)
{
    page.Chapter("Strokes", "Caps and joins; the path itself is drawn in white.");
    ShowCorners(page);
    page.Text("Dashes, in the units of the weight's document:");
    ShowDashes(page);
    page.Text("Inside and outside of closed paths, by the rule that fills them; the weight is the "
              "same throughout:");
    ShowAlignment(page);
    page.Text(
        "The pen follows the current transform; fill and stroke under one opacity are one object; "
        "lines of less than a pixel keep their true strength:");
    page.Sample("stroke-transform", "StrokeUnderTransform", StrokeUnderTransform);
    page.Sample("stroke-opacity", "StrokeOnce", StrokeOnce);
    page.Sample("stroke-hairlines", "StrokeHairlines", StrokeHairlines);
}

} // namespace Gallery
