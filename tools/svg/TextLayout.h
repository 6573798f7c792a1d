#pragma once

#include <vector>

#include "TextClusters.h"
#include "TextContent.h"
#include "TransformList.h"

namespace Svg {

/// A text element with the places of its clusters, by the algorithm of SVG 2, 11.5: a line, shifted
/// by dx and dy, torn into chunks by absolute positions, anchored, and laid along paths.
class TextLayout
{
public:
    /// \param style of the text element.
    TextLayout(Context& context, const Element& text, const Style& style,
               const LengthContext& lengths);

    const TextContent& GetContent() const noexcept { return m_content; }
    /// In the order of the text.
    const std::vector<TextCluster>& GetClusters() const noexcept { return m_text.clusters; }
    /// How far the baseline of a span's glyphs lies below that of the line, in user units.
    double GetShift(std::size_t span) const noexcept { return m_shifts[span]; }
    /// The face and size that a span's lines go by. The face may be null.
    const Geometry::FontFace* GetFace(std::size_t span) const;

private:
    void FindShifts();
    double FindOwnShift(std::size_t span) const;
    Baseline GetDominant(std::size_t span) const;
    void Raise();
    void TurnDown();
    void PlaceOnLine();
    void FitLengths();
    std::vector<std::size_t> FindOrder(const TextSpan& span) const;
    void FitLength(const TextSpan& span, std::vector<bool>& isRigid);
    void Position();
    Kernel::PointT<double> FindShift(const TextCharacter& character) const;
    void Anchor();
    void AnchorChunk(std::size_t first, std::size_t last);
    void PlaceOnPaths();
    void PlaceOnPath(std::size_t first, std::size_t last);
    const Element* GetPath(const TextCluster& cluster) const;
    const TextCharacter& GetHead(const TextCluster& cluster) const;

    Context& m_context;
    TextContent m_content;
    TextClusters m_text;
    bool m_isVertical = false;
    std::vector<double> m_shifts;                                   ///< of the spans
    std::vector<Kernel::Counted<const Geometry::FontFace>> m_faces; ///< of the spans
};

} // namespace Svg
