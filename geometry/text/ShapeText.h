#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <geometry/Export.h>
#include <geometry/GlyphMetrics.h>
#include <geometry/text/BidiRuns.h>
#include <geometry/text/FontSelection.h>
#include <geometry/text/ShapeOptions.h>
#include <kernel/Counted.h>
#include <kernel/Point.h>

namespace Geometry {

/// A glyph of a shaped text, in units of the em (a font size of 1), y downwards.
struct ShapedGlyph
{
    Kernel::Counted<const GlyphMetrics> glyph;
    Kernel::Counted<const FontFace> face; ///< which the glyph is one of
    std::uint32_t cluster = 0;            ///< the byte of the text where its characters begin
    bool rightToLeft = false;
    double advance = 0.0;          ///< how far the pen moves on
    Kernel::PointT<double> offset; ///< where the glyph stands, from the pen
};

/// A line of text as glyphs from left to right.
struct ShapedText
{
    std::vector<ShapedGlyph> glyphs;
    double advance = 0.0; ///< of the whole, in units of the em
};

/// Shapes a line of text: orders its runs of both directions, chooses a face for each character,
/// and lets HarfBuzz make glyphs of each run of one face, direction and script.
/// \param text UTF-8; line ends and other controls count as blanks.
/// \throws Kernel::FormatException when the file of a face turns out to be damaged.
GEOMETRY_EXPORT ShapedText ShapeText(std::string_view text, const FontSelection& fonts,
                                     const ShapeOptions& options = {},
                                     TextDirection direction = TextDirection::Auto);

/// Shapes a piece of a text that runs in one direction; letters join with those before and behind
/// it. \param begin,end in bytes. \return the glyphs from left to right.
/// \throws Kernel::FormatException as ShapeText.
GEOMETRY_EXPORT std::vector<ShapedGlyph> ShapeRun(std::string_view text, std::size_t begin,
                                                  std::size_t end, bool rightToLeft,
                                                  const FontSelection& fonts,
                                                  const ShapeOptions& options = {});

/// Whether a character begins a cluster: marks and joiners go with what stands before them.
GEOMETRY_EXPORT bool BeginsCluster(char32_t character) noexcept;

} // namespace Geometry
