#include "TextLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "Scanner.h"
#include "Shapes.h"
#include "TextPaths.h"

namespace Svg {

using Geometry::FontMetrics;

namespace {

/// Where a baseline of a font lies below the one that glyphs stand on, in units of the em.
double GetBaseline(const FontMetrics& metrics, Baseline baseline)
{
    switch (baseline) {
    case Baseline::Ideographic:
        return metrics.ideographicBaseline;
    case Baseline::Hanging:
        return metrics.hangingBaseline;
    case Baseline::Mathematical:
        return metrics.mathematicalBaseline;
    case Baseline::Central:
        return metrics.centralBaseline;
    case Baseline::Middle:
        return -metrics.xHeight / 2.0;
    case Baseline::TextTop:
        return -metrics.ascent;
    case Baseline::TextBottom:
        return metrics.descent;
    case Baseline::Auto:
    case Baseline::Alphabetic:
        break;
    }
    return 0.0;
}

/// Whether a character stands upright in vertical text, where others lie on their side: those of
/// East Asia, brackets excepted (about as UAX #50 has it).
bool IsUpright(char32_t c)
{
    struct Range
    {
        char32_t first;
        char32_t last;
    };
    constexpr Range ranges[] = {
        {0x1100, 0x11FF},   {0x2E80, 0x3007},  {0x3012, 0x3013}, {0x3020, 0x302F}, {0x3031, 0xA4CF},
        {0xA960, 0xA97F},   {0xAC00, 0xD7FF},  {0xF900, 0xFAFF}, {0xFE10, 0xFE1F}, {0xFE30, 0xFE48},
        {0xFF01, 0xFF07},   {0xFF0A, 0xFF0C},  {0xFF0E, 0xFF19}, {0xFF1F, 0xFF3A}, {0xFF41, 0xFF5A},
        {0x1F000, 0x1FAFF}, {0x20000, 0x3FFFD}};
    return std::ranges::any_of(ranges, [&](const Range& r) { return c >= r.first && c <= r.last; });
}

} // namespace

TextLayout::TextLayout(Context& context, const Element& text, const Style& style,
                       const LengthContext& lengths)
    : m_context(context),
      m_content(context, text, style, lengths),
      m_text(MakeClusters(context, m_content))
{
    m_isVertical = style.text.vertical;
    FindShifts();
    if (m_isVertical)
        Raise();
    PlaceOnLine();
    FitLengths();
    Position();
    Anchor();
    PlaceOnPaths();
    if (m_isVertical)
        TurnDown();
}

const Geometry::FontFace* TextLayout::GetFace(std::size_t span) const
{
    return m_faces[span].Get();
}

const TextCharacter& TextLayout::GetHead(const TextCluster& cluster) const
{
    return m_content.GetCharacters()[cluster.first];
}

const Element* TextLayout::GetPath(const TextCluster& cluster) const
{
    return m_content.GetSpans()[cluster.span].path;
}

// ---- baselines ----

void TextLayout::FindShifts()
{
    for (std::size_t i = 0; i < m_content.GetSpans().size(); ++i) {
        const TextStyle& style = m_content.GetSpans()[i].style->text;
        m_faces.push_back(m_context.GetFonts().Find(style, {})->GetFace());
        m_shifts.push_back(FindOwnShift(i));
    }
}

/// Vertical text stands around the middle of its line.
Baseline TextLayout::GetDominant(std::size_t span) const
{
    const Baseline baseline = m_content.GetSpans()[span].style->text.dominantBaseline;
    return baseline == Baseline::Auto && m_isVertical ? Baseline::Central : baseline;
}

/// The text element's dominant baseline is what its position means. What is within is aligned to
/// that of the element around it, or as its own alignment says, and shifted from there.
double TextLayout::FindOwnShift(std::size_t index) const
{
    const TextSpan& span = m_content.GetSpans()[index];
    const InlineStyle& style = span.style->inlineText;
    const double size = span.style->fontSize;
    const FontMetrics none;
    const FontMetrics& metrics = m_faces[index] ? m_faces[index]->GetMetrics() : none;
    const Baseline dominant = GetDominant(index);
    if (index == 0) {
        const bool isAligned = dominant == Baseline::Auto;
        return -size * GetBaseline(metrics, isAligned ? style.alignmentBaseline : dominant);
    }
    const TextSpan& parent = m_content.GetSpans()[span.parent];
    const double parentSize = parent.style->fontSize;
    const FontMetrics& parentMetrics =
        m_faces[span.parent] ? m_faces[span.parent]->GetMetrics() : none;
    const bool isAligned = style.alignmentBaseline != Baseline::Auto;
    const Baseline parentLine = isAligned ? style.alignmentBaseline : GetDominant(span.parent);
    const Baseline ownLine = isAligned ? style.alignmentBaseline : dominant;
    double shift = m_shifts[span.parent] + parentSize * GetBaseline(parentMetrics, parentLine) -
                   size * GetBaseline(metrics, ownLine);
    switch (style.baselineShift.kind) {
    case BaselineShift::Kind::Sub:
        return shift + parentSize * parentMetrics.subscriptShift;
    case BaselineShift::Kind::Super:
        return shift + parentSize * parentMetrics.superscriptShift;
    case BaselineShift::Kind::Length:
        break;
    }
    // A percentage is one of the font size, whatever the viewport.
    return shift - style.baselineShift.length.Resolve({size, size, size}, LengthAxis::Vertical);
}

// ---- vertical text: laid out as a horizontal line, which is turned at the end ----

/// Characters that stand upright are as wide on the line as their font is high.
void TextLayout::Raise()
{
    for (TextCluster& cluster : m_text.clusters) {
        if (!IsUpright(GetHead(cluster).code))
            continue;
        cluster.isUpright = true;
        for (const Geometry::ShapedGlyph& glyph : cluster.glyphs)
            cluster.advance -= cluster.size * glyph.advance;
        cluster.advance += cluster.size;
    }
}

void TextLayout::TurnDown()
{
    for (TextCluster& cluster : m_text.clusters) {
        if (GetPath(cluster))
            continue;
        const Kernel::PointT<double> place = cluster.origin;
        cluster.origin = {-place.y, place.x};
        if (!cluster.isUpright) {
            cluster.angle += std::numbers::pi / 2.0;
            continue;
        }
        // The middle of its cell stands on the middle of the line.
        const FontMetrics& metrics = cluster.face->GetMetrics();
        double width = 0.0;
        for (const Geometry::ShapedGlyph& glyph : cluster.glyphs)
            width += cluster.size * glyph.advance;
        const double toMiddle = cluster.size * (metrics.ascent - metrics.descent) / 2.0;
        cluster.origin.x -= width / 2.0 - toMiddle;
        cluster.origin.y += cluster.size / 2.0 + toMiddle;
    }
}

// ---- the line ----

void TextLayout::PlaceOnLine()
{
    // Directions are put in order within a chunk; a chunk begins with a run.
    double pen = 0.0;
    const std::vector<TextRun>& runs = m_text.runs;
    for (std::size_t first = 0; first < runs.size();) {
        std::size_t last = first + 1;
        while (last < runs.size() && !m_text.clusters[runs[last].first].startsChunk)
            ++last;
        std::vector<std::uint8_t> levels;
        for (std::size_t i = first; i < last; ++i)
            levels.push_back(runs[i].level);
        for (const std::size_t i : Geometry::FindVisualOrder(levels)) {
            const TextRun& run = runs[first + i];
            for (std::size_t k = 0; k < run.last - run.first; ++k) {
                TextCluster& cluster =
                    m_text.clusters[run.level % 2 != 0 ? run.last - 1 - k : run.first + k];
                cluster.origin = {pen, m_shifts[cluster.span]};
                pen += cluster.advance;
            }
        }
        first = last;
    }
}

/// Stretches the text of elements to the lengths that they ask for, the innermost first.
void TextLayout::FitLengths()
{
    std::vector<bool> isRigid(m_text.clusters.size());
    for (auto span = m_content.GetSpans().rbegin(); span != m_content.GetSpans().rend(); ++span) {
        if (span->element->Has("textLength"))
            FitLength(*span, isRigid);
    }
}

/// The clusters within a span that are shown, from left to right.
std::vector<std::size_t> TextLayout::FindOrder(const TextSpan& span) const
{
    const auto& clusters = m_text.clusters;
    const auto first = std::ranges::lower_bound(clusters, span.first, {}, &TextCluster::first);
    std::vector<std::size_t> order;
    for (auto cluster = first; cluster != clusters.end() && cluster->first < span.last; ++cluster) {
        if (!GetHead(*cluster).isControl)
            order.push_back(std::size_t(cluster - clusters.begin()));
    }
    const auto getPlace = [&](std::size_t i) { return clusters[i].origin.x; };
    if (!std::ranges::is_sorted(order, {}, getPlace))
        std::ranges::sort(order, {}, getPlace);
    return order;
}

/// \param isRigid whether no space is put before a cluster, since the length of what it is in is
///        settled.
void TextLayout::FitLength(const TextSpan& span, std::vector<bool>& isRigid)
{
    const auto asked = ParseLength(span.element->Get("textLength"));
    if (!asked)
        return;
    const double length = asked->Resolve(m_content.GetLengths(span), LengthAxis::Horizontal);
    if (!(length > 0.0) || !std::isfinite(length) || !m_context.CountFitted(m_text.clusters.size()))
        return;
    const std::vector<std::size_t> order = FindOrder(span);
    if (order.empty())
        return;
    const double begin = m_text.clusters[order.front()].origin.x;
    const TextCluster& final = m_text.clusters[order.back()];
    const double end = final.origin.x + final.advance;
    const double scale = end > begin ? length / (end - begin) : 1.0;
    const auto isGap = [&](std::size_t i) { return i != order.front() && !isRigid[i]; };
    const auto gaps = double(std::ranges::count_if(order, isGap));
    const bool stretches = Trim(span.element->Get("lengthAdjust")) == "spacingAndGlyphs";
    for (TextCluster& cluster : m_text.clusters) { // what stands behind makes room
        if (cluster.origin.x >= end)
            cluster.origin.x += length - (end - begin);
    }
    double shift = 0.0;
    for (const std::size_t i : order) {
        TextCluster& cluster = m_text.clusters[i];
        if (stretches) {
            cluster.origin.x = begin + scale * (cluster.origin.x - begin);
            cluster.advance *= scale;
            cluster.stretch *= scale;
        } else {
            shift += isGap(i) ? (length - (end - begin)) / gaps : 0.0;
            cluster.origin.x += shift;
        }
    }
    for (std::size_t i = 1; i < order.size(); ++i)
        isRigid[order[i]] = true;
}

// ---- positions and chunks ----

/// Moves clusters to their absolute positions and by their shifts.
void TextLayout::Position()
{
    Kernel::PointT<double> shift;
    const Element* formerPath = nullptr;
    for (std::size_t i = 0; i < m_text.clusters.size(); ++i) {
        TextCluster& cluster = m_text.clusters[i];
        const TextCharacter& head = GetHead(cluster);
        const Element* const path = GetPath(cluster);
        const bool entersPath = path && path != formerPath;
        formerPath = path;
        if (i == 0 || entersPath) {
            cluster.startsChunk = true;
            shift = {-cluster.origin.x, 0.0};
        }
        const auto& along = m_isVertical ? head.y : head.x;
        const auto& across = m_isVertical ? head.x : head.y;
        if (along)
            shift.x = *along - cluster.origin.x;
        if (across && !path) // paths have no height but themselves
            shift.y = m_isVertical ? -*across : *across;
        shift = shift + FindShift(head);
        cluster.origin = cluster.origin + shift;
        cluster.angle = head.rotate;
        for (std::size_t k = cluster.first + 1; k < cluster.last; ++k) {
            shift = shift + FindShift(m_content.GetCharacters()[k]);
        }
    }
}

/// By how much a character and what follows it are shifted, along the line and across.
Kernel::PointT<double> TextLayout::FindShift(const TextCharacter& character) const
{
    return m_isVertical ? Kernel::PointT<double>{character.dy, -character.dx}
                        : Kernel::PointT<double>{character.dx, character.dy};
}

void TextLayout::Anchor()
{
    const std::size_t count = m_text.clusters.size();
    for (std::size_t first = 0; first < count;) {
        std::size_t last = first + 1;
        const Element* const path = GetPath(m_text.clusters[first]);
        while (last < count && !m_text.clusters[last].startsChunk &&
               GetPath(m_text.clusters[last]) == path)
            ++last;
        AnchorChunk(first, last);
        first = last;
    }
}

void TextLayout::AnchorChunk(std::size_t first, std::size_t last)
{
    double left = std::numeric_limits<double>::infinity(), right = -left;
    for (std::size_t i = first; i < last; ++i) {
        const TextCluster& cluster = m_text.clusters[i];
        if (GetHead(cluster).isControl)
            continue;
        left = std::min({left, cluster.origin.x, cluster.origin.x + cluster.advance});
        right = std::max({right, cluster.origin.x, cluster.origin.x + cluster.advance});
    }
    if (!(left <= right))
        return;
    const TextStyle& style = m_content.GetSpans()[m_text.clusters[first].span].style->text;
    const double start = style.rightToLeft ? right : left;
    const double end = style.rightToLeft ? left : right;
    double anchor = start;
    if (style.anchor == TextAnchor::Middle)
        anchor = (left + right) / 2.0;
    else if (style.anchor == TextAnchor::End)
        anchor = end;
    const double shift = m_text.clusters[first].origin.x - anchor;
    for (std::size_t i = first; i < last; ++i)
        m_text.clusters[i].origin.x += shift;
}

// ---- paths ----

void TextLayout::PlaceOnPaths()
{
    const std::size_t count = m_text.clusters.size();
    for (std::size_t first = 0; first < count;) {
        const Element* const path = GetPath(m_text.clusters[first]);
        std::size_t last = first + 1;
        while (last < count && GetPath(m_text.clusters[last]) == path)
            ++last;
        if (path)
            PlaceOnPath(first, last);
        first = last;
    }
}

void TextLayout::PlaceOnPath(std::size_t first, std::size_t last)
{
    const TextSpan& span = m_content.GetSpans()[m_text.clusters[first].span];
    const TextStyle& style = span.style->text;
    const TextPath path(m_context, *span.path, m_content.GetLengths(span));
    for (std::size_t i = first; i < last; ++i)
        path.Place(m_text.clusters[i], style.anchor);
    // Text behind a path goes on from its end, up to the next absolute position.
    if (!path.IsUsable() || last == m_text.clusters.size())
        return;
    Kernel::PointT<double> shift = path.GetEnd() - m_text.clusters[last].origin;
    shift.y += m_shifts[m_text.clusters[last].span];
    for (std::size_t i = last; i < m_text.clusters.size(); ++i) {
        TextCluster& cluster = m_text.clusters[i];
        if (GetPath(cluster))
            return;
        if (GetHead(cluster).x)
            shift.x = 0.0;
        if (GetHead(cluster).y)
            shift.y = 0.0;
        cluster.origin = cluster.origin + shift;
    }
}

} // namespace Svg
