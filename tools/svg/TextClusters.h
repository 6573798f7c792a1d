#pragma once

#include <cstdint>
#include <vector>

#include <geometry/text/ShapeText.h>

#include "TextContent.h"

namespace Svg {

/// Characters that are drawn together: one with its marks, a ligature.
struct TextCluster
{
    std::size_t first = 0; ///< of the characters
    std::size_t last = 0;  ///< exclusive
    std::size_t span = 0;
    bool startsChunk = false;                  ///< it has an absolute position
    double size = 0.0;                         ///< of the em in user units
    double advance = 0.0;                      ///< in user units, spacing included
    const Geometry::FontFace* face;            ///< the nearest one of its font, which lines go by
    std::vector<Geometry::ShapedGlyph> glyphs; ///< from left to right, in units of the em

    /// \name Filled in by the layout, in user units
    /// @{
    Kernel::PointT<double> origin; ///< where its baseline begins
    double angle = 0.0;            ///< radians, from the x axis to the y axis
    double stretch = 1.0;          ///< of its glyphs along the baseline
    bool hidden = false;           ///< beyond the end of a path
    bool isUpright = false;        ///< in vertical text, where others lie on their side
    /// @}
};

/// Clusters that run in one direction.
struct TextRun
{
    std::size_t first = 0; ///< of the clusters
    std::size_t last = 0;  ///< exclusive
    std::uint8_t level = 0;
};

/// The clusters of a text element in the order of the text, and its runs.
struct TextClusters
{
    std::vector<TextCluster> clusters;
    std::vector<TextRun> runs;
    std::vector<Kernel::Counted<const Geometry::FontSelection>> fonts; ///< keeps the faces alive
};

/// Shapes the characters of a text element. What is wrong with fonts is noted.
TextClusters MakeClusters(Context& context, const TextContent& content);

} // namespace Svg
