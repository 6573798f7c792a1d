#include <cmath>
#include <numbers>
#include <vector>

#include <geometry/text/ShapeText.h>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

using Kernel::Font;

void DrawWord(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    const Font font("DejaVu Serif", 700);
    const LineStyleDescriptorConst outline(1.0);
    target.DrawText({6, 46}, "Office", font, 34, 1.0F,
                    Linear({6, 0}, {122, 0}, {{0, 0xb03a2e}, {1, 0xe5a13a}}), Solid(0x5a1d16),
                    outline);
    target.DrawText({8, 78}, "AVATAR To.", Font("DejaVu Sans"), 19, 1.0F, Solid(0x16203a));
}

void DrawDirections(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xfdf6e3));
    const Font font("DejaVu Sans");
    target.DrawText({6, 30}, "x\u0302\u0301 \u01ED e\u0331 ffi", font, 20, 1.0F, Solid(0x1a7a6d));
    target.DrawText({6, 58}, "\u0645\u0631\u062D\u0628\u0627 abc 12", font, 20, 1.0F,
                    Solid(0x16203a));
    target.DrawText({6, 84}, "\u05E9\u05DC\u05D5\u05DD \u03A9\u042F", font, 20, 1.0F,
                    Solid(0xb03a2e));
}

void DrawMeasured(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    const Font font("DejaVu Serif");
    const auto extents = RenderTarget::MeasureText("Typing", font, 34);
    target.PushTransform(Affine::Translation(6, 58), RenderTarget::TransformScalarMode::Inherit);
    target.DrawRectangle({0, -extents.ascent, extents.advance, extents.descent}, 1.0F,
                         Solid(0xe5cf9a), {}, {});
    target.DrawRectangle(extents.bounds, 1.0F, Solid(0xfdf6e3), Solid(0xb03a2e),
                         LineStyleDescriptorConst(0.5));
    target.DrawText({0, 0}, "Typing", font, 34, 1.0F, Solid(0x16203a));
    target.PopTransform();
}

void DrawRound(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0x16203a));
    const Font font("DejaVu Sans", 700);
    const double size = 16, radius = 26;
    const auto fonts = Geometry::FontSelection::Find(font);
    std::vector<Kernel::Counted<const Geometry::GlyphMetrics>> glyphs;
    std::vector<Geometry::GlyphPosition> positions;
    double along = -1.25 * radius;
    for (const auto& glyph : Geometry::ShapeText("round & round", *fonts).glyphs) {
        const double angle = (along + size * glyph.advance / 2) / radius;
        const double turned = angle - size * glyph.advance / 2 / radius;
        glyphs.push_back(glyph.glyph);
        positions.push_back({radius * std::sin(turned), -radius * std::cos(turned), angle});
        along += size * glyph.advance;
    }
    target.DrawGlyphMetrics({64, 48}, glyphs, font, size, positions.data(), 1.0F,
                            FillBlendMode::Normal, BlendOptions::Identity(), Rainbow({64, 48}), {},
                            {}, {}, true);
}

} // namespace

void ShowTexts(Page& page)
{
    page.Chapter("Text", "A line with its ligatures and kerning, in any paint:");
    page.Sample("text-word", "DrawWord", DrawWord);
    page.Text("Marks, letters that join, and runs of both directions, in any script that the "
              "installed fonts have:");
    page.Sample("text-directions", "DrawDirections", DrawDirections);
    page.Text("The extents of a line: how far it advances between the heights of its font, and the "
              "box of its outlines:");
    page.Sample("text-measured", "DrawMeasured", DrawMeasured);
    page.Text("Glyphs, each where it is put:");
    page.Sample("text-round", "DrawRound", DrawRound);
}

} // namespace Gallery
