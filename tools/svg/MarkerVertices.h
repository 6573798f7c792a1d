#pragma once

#include <vector>

#include <geometry/PolyCurve.h>

#include "Element.h"

namespace Svg {

/// A vertex of a path.
struct MarkerVertex
{
    Geometry::Point point;
    double angle = 0.0; ///< the path's direction there, in radians, clockwise where y points down
};

/// The vertices of a shape in their order, with the directions that markers are turned to: that of
/// the path at the ends of open runs, and half way between those of the two segments elsewhere
/// (SVG 2, 13.7.3). Segments without length take the direction of what is before them, or else
/// after them.
/// \param element tells which joints of the path are no vertices: those inside of arcs.
std::vector<MarkerVertex> FindMarkerVertices(const Geometry::PolyCurveDbl& shape,
                                             const Element& element);

} // namespace Svg
