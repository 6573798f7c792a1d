#pragma once

#include <memory>
#include <vector>

#include <geometry/BoundingBox.h>
#include <geometry/PolyCurve.h>

#include "Context.h"

namespace Svg {

/// What is painted at once of a text element: glyphs of one of its elements, or lines that decorate
/// them.
struct TextPiece
{
    Kernel::Counted<const Geometry::PolyCurveDbl> shape; ///< never null or empty
    std::shared_ptr<const Style> style;                  ///< that it is painted in
    double opacity = 1.0; ///< of the elements within the text element
};

/// A text element as shapes.
struct TextPieces
{
    std::vector<TextPiece> pieces; ///< the lowest first
    /// The cells of its glyphs: their advances by the heights of their fonts (SVG 2, 8.10).
    Geometry::BoundingBoxT<double> box;
};

/// Lays a text element out in its own coordinates. What is wrong with fonts is noted.
/// \param style of the element.
TextPieces MakeTextPieces(Context& context, const Element& text, const Style& style,
                          const LengthContext& lengths);

} // namespace Svg
