#include "TextLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "PathMeasure.h"
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

} // namespace

TextLayout::TextLayout(Context& context, const Element& text, const Style& style,
                       const LengthContext& lengths)
    : m_context(context),
      m_content(context, text, style, lengths),
      m_text(MakeClusters(context, m_content))
{
    if (style.text.vertical)
        context.GetNotices().Add("vertical text is drawn horizontally");
    FindShifts();
    PlaceOnLine();
    FitLengths();
    Position();
    Anchor();
    PlaceOnPaths();
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

/// The text element's dominant baseline is what its position means. What is within is aligned to
/// that of the element around it, or as its own alignment says, and shifted from there.
double TextLayout::FindOwnShift(std::size_t index) const
{
    const TextSpan& span = m_content.GetSpans()[index];
    const InlineStyle& style = span.style->inlineText;
    const double size = span.style->fontSize;
    const FontMetrics none;
    const FontMetrics& metrics = m_faces[index] ? m_faces[index]->GetMetrics() : none;
    const Baseline dominant = span.style->text.dominantBaseline;
    if (index == 0) {
        const bool isAligned = dominant == Baseline::Auto;
        return -size * GetBaseline(metrics, isAligned ? style.alignmentBaseline : dominant);
    }
    const TextSpan& parent = m_content.GetSpans()[span.parent];
    const double parentSize = parent.style->fontSize;
    const FontMetrics& parentMetrics =
        m_faces[span.parent] ? m_faces[span.parent]->GetMetrics() : none;
    const bool isAligned = style.alignmentBaseline != Baseline::Auto;
    const Baseline parentLine =
        isAligned ? style.alignmentBaseline : parent.style->text.dominantBaseline;
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
    constexpr int maxLengths = 1000; // each goes over all of the text
    std::vector<bool> isRigid(m_text.clusters.size());
    int count = 0;
    for (auto span = m_content.GetSpans().rbegin(); span != m_content.GetSpans().rend(); ++span) {
        if (span->element->Has("textLength") && ++count <= maxLengths)
            FitLength(*span, isRigid);
    }
    if (count > maxLengths)
        m_context.GetNotices().Add("text of more than a thousand lengths keeps its own");
}

/// \param isRigid whether no space is put before a cluster, since the length of what it is in is
///        settled.
void TextLayout::FitLength(const TextSpan& span, std::vector<bool>& isRigid)
{
    const auto asked = ParseLength(span.element->Get("textLength"));
    if (!asked)
        return;
    const double length = asked->Resolve(m_content.GetLengths(span), LengthAxis::Horizontal);
    std::vector<std::size_t> order; // from left to right
    for (std::size_t i = 0; i < m_text.clusters.size(); ++i) {
        const TextCluster& cluster = m_text.clusters[i];
        const bool isWithin = cluster.first >= span.first && cluster.first < span.last;
        if (isWithin && !GetHead(cluster).isControl)
            order.push_back(i);
    }
    if (order.empty() || !(length > 0.0) || !std::isfinite(length))
        return;
    std::ranges::sort(order, {}, [&](std::size_t i) { return m_text.clusters[i].origin.x; });
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
        if (head.x)
            shift.x = *head.x - cluster.origin.x;
        if (head.y && !path) // paths have no height but themselves
            shift.y = *head.y;
        shift = shift + Kernel::PointT<double>{head.dx, head.dy};
        cluster.origin = cluster.origin + shift;
        cluster.angle = head.rotate;
        for (std::size_t k = cluster.first + 1; k < cluster.last; ++k) {
            const TextCharacter& more = m_content.GetCharacters()[k];
            shift = shift + Kernel::PointT<double>{more.dx, more.dy};
        }
    }
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
