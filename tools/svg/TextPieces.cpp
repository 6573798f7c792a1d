#include "TextPieces.h"

#include <cmath>

#include "Shapes.h"
#include "TextLayout.h"

namespace Svg {

using Geometry::PolyCurveDbl;
using Kernel::Counted;
using Kernel::RectT;
using Raster::AffineTransform;

namespace {

/// From the coordinates of a cluster, whose baseline begins at (0, 0), to those of the text.
Transform GetPlace(const TextCluster& cluster)
{
    const auto turned = AffineTransform::Concatenate(AffineTransform::Scaling(cluster.stretch, 1.0),
                                                     AffineTransform::Rotation(cluster.angle));
    return AffineTransform::Concatenate(
        turned, AffineTransform::Translation(cluster.origin.x, cluster.origin.y));
}

void AddMapped(PolyCurveDbl& out, const PolyCurveDbl& shape, const Transform& map)
{
    for (const Geometry::CurveDbl& run : shape.GetCurves()) {
        Geometry::CurveDbl mapped = run;
        mapped.Transform([&](Geometry::Point p) { return map.Map(p); });
        out.AddCurve(std::move(mapped));
    }
}

void AddGlyphs(PolyCurveDbl& out, const TextCluster& cluster)
{
    const Transform place = GetPlace(cluster);
    double pen = 0.0;
    for (const Geometry::ShapedGlyph& glyph : cluster.glyphs) {
        const Transform own{cluster.size, 0.0,          cluster.size * (pen + glyph.offset.x),
                            0.0,          cluster.size, cluster.size * glyph.offset.y};
        pen += glyph.advance;
        if (glyph.glyph->GetOutline())
            AddMapped(out, *glyph.glyph->GetOutline(), AffineTransform::Concatenate(own, place));
    }
}

/// A line that decorates glyphs: where its top is, from the baseline of the element that it belongs
/// to, in user units.
struct DecorationLine
{
    double top = 0.0;
    double thickness = 0.0;
};

/// Makes the pieces of a text that is laid out.
class PieceMaker
{
public:
    PieceMaker(Context& context, const TextLayout& layout) : m_context(context), m_layout(layout) {}

    TextPieces Make()
    {
        AddSpan(0);
        FlushGlyphs();
        for (const TextCluster& cluster : m_layout.GetClusters())
            AddCell(cluster);
        return std::move(m_result);
    }

private:
    const TextSpan& GetSpan(std::size_t index) const
    {
        return m_layout.GetContent().GetSpans()[index];
    }
    bool IsWithin(const TextCluster& cluster, const TextSpan& span) const
    {
        return cluster.first >= span.first && cluster.first < span.last;
    }

    void AddCell(const TextCluster& cluster)
    {
        if (cluster.hidden || !cluster.face || cluster.advance == 0.0)
            return;
        const Geometry::FontMetrics& metrics = cluster.face->GetMetrics();
        const double width = cluster.isUpright        ? cluster.size
                             : cluster.stretch != 0.0 ? cluster.advance / cluster.stretch
                                                      : 0.0;
        const PolyCurveDbl cell(RectT<double>{0.0, -cluster.size * metrics.ascent, width,
                                              cluster.size * metrics.descent});
        m_result.box.Add(MapPath(cell, GetPlace(cluster))->GetBoundingBox());
    }

    /// Adds what an element holds, from the cluster that comes next: its lines below, its glyphs
    /// and elements, its line above.
    void AddSpan(std::size_t index)
    {
        const TextSpan& span = GetSpan(index);
        const DecorationLines& lines = span.style->inlineText.decoration;
        const std::size_t first = m_next;
        if (lines.under)
            AddLine(index, first, FindUnderline(index));
        if (lines.over)
            AddLine(index, first, FindOverline(index));
        const auto& clusters = m_layout.GetClusters();
        while (m_next < clusters.size() && IsWithin(clusters[m_next], span)) {
            if (clusters[m_next].span == index)
                AddCluster(clusters[m_next++]);
            else
                AddSpan(FindChild(clusters[m_next].span, index));
        }
        if (lines.through)
            AddLine(index, first, FindStrikeout(index));
    }

    /// The child of \p ancestor that holds a span.
    std::size_t FindChild(std::size_t span, std::size_t ancestor) const
    {
        while (GetSpan(span).parent != ancestor)
            span = GetSpan(span).parent;
        return span;
    }

    void AddCluster(const TextCluster& cluster)
    {
        if (cluster.hidden || !GetSpan(cluster.span).style->visible)
            return;
        if (cluster.span != m_glyphSpan || m_glyphCount >= MaxGlyphs)
            FlushGlyphs();
        m_glyphSpan = cluster.span;
        m_glyphCount += cluster.glyphs.size();
        AddGlyphs(*m_glyphs, cluster);
    }

    void FlushGlyphs()
    {
        AddPiece(m_glyphSpan, m_glyphs);
        m_glyphs = Kernel::MakeCounted<PolyCurveDbl>();
        m_glyphCount = 0;
    }

    void AddPiece(std::size_t span, const Counted<const PolyCurveDbl>& shape)
    {
        if (shape->IsEmpty())
            return;
        if (!IsInRange(*shape))
            m_context.GetNotices().Add("text out of all range is left out");
        else
            m_result.pieces.push_back({shape, GetSpan(span).style, GetSpan(span).opacity});
    }

    // ---- decoration ----

    const Geometry::FontMetrics& GetMetrics(std::size_t span) const
    {
        static const Geometry::FontMetrics none;
        const Geometry::FontFace* const face = m_layout.GetFace(span);
        return face ? face->GetMetrics() : none;
    }

    DecorationLine FindUnderline(std::size_t span) const
    {
        const double size = GetSpan(span).style->fontSize;
        const Geometry::FontMetrics& metrics = GetMetrics(span);
        return {size * metrics.underlineTop, size * metrics.underlineThickness};
    }
    DecorationLine FindOverline(std::size_t span) const
    {
        const double size = GetSpan(span).style->fontSize;
        const Geometry::FontMetrics& metrics = GetMetrics(span);
        return {-size * metrics.ascent, size * metrics.underlineThickness};
    }
    DecorationLine FindStrikeout(std::size_t span) const
    {
        const double size = GetSpan(span).style->fontSize;
        const Geometry::FontMetrics& metrics = GetMetrics(span);
        return {size * metrics.strikeoutTop, size * metrics.strikeoutThickness};
    }

    /// Adds a line of an element along its clusters, in one stroke where they stand side by side.
    void AddLine(std::size_t index, std::size_t first, const DecorationLine& line)
    {
        FlushGlyphs();
        const TextSpan& span = GetSpan(index);
        if (!span.style->visible)
            return;
        const auto shape = Kernel::MakeCounted<PolyCurveDbl>();
        const auto& clusters = m_layout.GetClusters();
        for (std::size_t i = first; i < clusters.size() && IsWithin(clusters[i], span);) {
            std::size_t last = i + 1;
            if (++m_lineParts > MaxLineParts) {
                m_context.GetNotices().Add("lines under text in too many parts are cut");
                break;
            }
            RectT<double> rect = FindRect(clusters[i], index, line);
            while (last < clusters.size() && IsWithin(clusters[last], span) &&
                   Extend(rect, clusters[i], clusters[last]))
                ++last;
            if (!rect.IsEmpty())
                AddMapped(*shape, PolyCurveDbl(rect), GetLinePlace(clusters[i]));
            i = last;
        }
        AddPiece(index, shape);
    }

    /// A line under a cluster, in its coordinates without its stretch.
    RectT<double> FindRect(const TextCluster& cluster, std::size_t index,
                           const DecorationLine& line) const
    {
        if (cluster.hidden || cluster.advance <= 0.0)
            return {};
        const double baseline = m_layout.GetShift(index) - m_layout.GetShift(cluster.span);
        return {0.0, baseline + line.top, cluster.advance, baseline + line.top + line.thickness};
    }

    static Transform GetLinePlace(const TextCluster& cluster)
    {
        return AffineTransform::Concatenate(
            AffineTransform::Rotation(cluster.angle),
            AffineTransform::Translation(cluster.origin.x, cluster.origin.y));
    }

    /// Lengthens a line by the next cluster where that stands beside it, to the right or the left.
    bool Extend(RectT<double>& rect, const TextCluster& first, const TextCluster& next) const
    {
        constexpr double tolerance = 1e-6;
        const double x = next.origin.x - first.origin.x;
        const double height = (next.origin.y - m_layout.GetShift(next.span)) -
                              (first.origin.y - m_layout.GetShift(first.span));
        const bool onLine = !next.hidden && first.angle == 0.0 && next.angle == 0.0 &&
                            std::abs(height) <= tolerance * first.size;
        if (next.advance == 0.0 && !next.hidden)
            return true; // it has no line
        if (!onLine || rect.IsEmpty())
            return false;
        if (std::abs(x - rect.right) <= tolerance * first.size)
            rect.right = x + next.advance;
        else if (std::abs(x + next.advance - rect.left) <= tolerance * first.size)
            rect.left = x;
        else
            return false;
        return true;
    }

    /// Glyphs of one piece; longer ones are cut, so that shapes don't grow without end.
    static constexpr std::size_t MaxGlyphs = 2000;
    /// Lines that decorate one text are made of no more pieces than this.
    static constexpr int MaxLineParts = 200'000;

    Context& m_context;
    const TextLayout& m_layout;
    TextPieces m_result;
    std::size_t m_next = 0; ///< the cluster that comes next
    std::size_t m_glyphSpan = 0;
    std::size_t m_glyphCount = 0;
    int m_lineParts = 0;
    Counted<PolyCurveDbl> m_glyphs = Kernel::MakeCounted<PolyCurveDbl>();
};

} // namespace

TextPieces MakeTextPieces(Context& context, const Element& text, const Style& style,
                          const LengthContext& lengths)
{
    const TextLayout layout(context, text, style, lengths);
    return PieceMaker(context, layout).Make();
}

} // namespace Svg
