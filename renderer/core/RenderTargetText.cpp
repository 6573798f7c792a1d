// Lines of text as glyphs.

#include <renderer/core/RenderTarget.h>

#include <cmath>

#include <geometry/text/ShapeText.h>
#include <kernel/FormatException.h>

namespace Renderer {

namespace {

/// A line of text as DrawGlyphMetrics takes it.
struct GlyphLine
{
    std::vector<Kernel::Counted<const Geometry::GlyphMetrics>> glyphs;
    std::vector<Geometry::GlyphPosition> positions;
    double advance = 0.0;
};

GlyphLine PlaceGlyphs(const Geometry::ShapedText& text, double size)
{
    GlyphLine line;
    line.glyphs.reserve(text.glyphs.size());
    line.positions.reserve(text.glyphs.size());
    double pen = 0.0;
    for (const Geometry::ShapedGlyph& glyph : text.glyphs) {
        line.glyphs.push_back(glyph.glyph);
        line.positions.push_back({size * (pen + glyph.offset.x), size * glyph.offset.y});
        pen += glyph.advance;
    }
    line.advance = size * pen;
    return line;
}

bool IsUsable(double size)
{
    return size > 0.0 && std::isfinite(size);
}

/// The glyphs of a line; none where a font file is damaged.
GlyphLine ShapeLine(std::string_view text, const Geometry::FontSelection& fonts, double size)
{
    try {
        return PlaceGlyphs(Geometry::ShapeText(text, fonts), size);
    } catch (const Kernel::FormatException&) {
        return {};
    }
}

} // namespace

void RenderTarget::DrawText(Kernel::PointT<double> origin, std::string_view text,
                            const Kernel::Font& font, double size, float opacity,
                            const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                            const LineStyleDescriptorConst& lineStyle)
{
    if (!IsUsable(size))
        return;
    const GlyphLine line = ShapeLine(text, *Geometry::FontSelection::Find(font), size);
    DrawGlyphMetrics(origin, line.glyphs, font, size, line.positions.data(), opacity,
                     FillBlendMode::Normal, BlendOptions::Identity(), fill, {}, lineFill, lineStyle,
                     true);
}

RenderTarget::TextExtents RenderTarget::MeasureText(std::string_view text, const Kernel::Font& font,
                                                    double size)
{
    const auto fonts = Geometry::FontSelection::Find(font);
    if (!IsUsable(size) || !fonts->GetFace())
        return {};
    const GlyphLine line = ShapeLine(text, *fonts, size);
    const Geometry::FontMetrics& metrics = fonts->GetFace()->GetMetrics();
    return {line.advance, size * metrics.ascent, size * metrics.descent,
            MeasureGlyphMetrics({}, line.glyphs, size, line.positions.data())};
}

} // namespace Renderer
