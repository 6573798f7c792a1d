#pragma once

#include <geometry/Export.h>
#include <geometry/PolyCurve.h>
#include <geometry/Polygon.h>
#include <geometry/WindingOrderMode.h>

namespace Geometry {

/// What is kept of two regions a and b.
enum class RegionOperation
{
    Unite,     ///< what lies in a or b
    Intersect, ///< what lies in both
    Subtract,  ///< what lies in a and not in b
    Exclude,   ///< what lies in just one of them
};

/// Combines the regions that two sets of polygons enclose, each by its own rule; open polygons
/// count as closed.
///
/// The result is exact but for its points, which lie on a grid of 2^-30 of the size of the input
/// (its step is a power of two), and edges, which move by up to a step where they pass points that
/// near. Nothing is left to luck: the edges of the input are broken up at their crossings on that
/// grid, by integer arithmetic, so that edges that coincide, touch or cross a thousand times are
/// ordinary input (those on the very same line are made one before that). The appended polygons do
/// not cross themselves or each other, and have the orientation of strokes (see PathStroker):
/// filled non-zero, they can be united with strokes by appending these. Polygons with a point that
/// is not finite are left out.
///
/// Takes O((n + k)·log n) for n edges with k crossings of the kind that drawings have.
///
/// \param out must not be \p a or \p b. \return false, with nothing appended, where more than a
///        million crossings, or pairs of edges whose boxes meet or edges that pass each other's
///        ends far beyond that, would have to be looked at: edges in a bundle that nearly coincide
///        do, at some thousands.
GEOMETRY_EXPORT bool CombineRegions(const PolyPolygonType<double>& a, WindingOrderMode ruleA,
                                    const PolyPolygonType<double>& b, WindingOrderMode ruleB,
                                    RegionOperation operation, PolyPolygonType<double>& out);

/// The same for paths. What comes from one segment of a path becomes one segment again: a part of
/// the same cubic or line, from one crossing to the next.
///
/// \param tolerance how far the curves may be moved, in the units of the paths: positive and
/// finite.
///        Parts of the result that are thinner are left out.
GEOMETRY_EXPORT bool CombineRegions(const PolyCurveDbl& a, WindingOrderMode ruleA,
                                    const PolyCurveDbl& b, WindingOrderMode ruleB,
                                    RegionOperation operation, double tolerance, PolyCurveDbl& out);

} // namespace Geometry
