#pragma once

#include <geometry/Polygon.h>
#include <raster/AffineTransform.h>
#include <renderer/core/coverage/CoverageStore.h>

namespace Renderer::Coverage {

/// Adds the edges of polygons, each closed, their points mapped by \p transform to the page's
/// pixels. A set with a point that is not finite adds nothing.
void AddPolygons(CoverageStore& store, const Geometry::PolyPolygonType<double>& polygons,
                 const Raster::AffineTransform::Params& transform);

} // namespace Renderer::Coverage
