#pragma once

#include <geometry/Outliner.h>
#include <geometry/PolyCurve.h>
#include <geometry/Polygon.h>
#include <geometry/Stroker.h>
#include <geometry/WidthProfile.h>
#include <geometry/WindingOrderMode.h>
#include <kernel/Counted.h>
#include <raster/AffineTransform.h>
#include <renderer/Export.h>
#include <renderer/paint/LineStyleDescriptorConst.h>

namespace Renderer {

/// Where a stroke is drawn, as far as its geometry depends on it.
struct StrokeFrame
{
    Raster::AffineTransform::Params current; ///< from the path to the device
    double weight = 0.0; ///< in device pixels; see LineStyleDescriptorConst::GetEffectiveWeight
    /// Largest distance of the outline from the exact one, in device pixels and in the units of the
    /// path.
    double deviceTolerance = 0.1;
    double logicalTolerance = 0.1;
    /// Whether resolution-independent lines of at most a pixel move to pixel middles where they run
    /// along an axis.
    bool roundMidPixel = false;
    /// What is inside of the path, for strokes that are aligned inside or outside.
    Geometry::WindingOrderMode winding = Geometry::WindingOrderMode::EvenOdd;
    /// The width of the pen in weights; dashes keep their lengths.
    double penScale = 1.0;
    /// How far caps reach beyond the ends of lines, in half widths of the pen.
    double capLength = 1.0;
};

/// Turns paths and line styles into the geometry of strokes: shapes to be filled non-zero.
///
/// Strokes are built in the units of the path, with the weight over AffineTransform::GetScale of
/// the current transform, so that the pen follows that transform when the shape is mapped;
/// resolution-independent ones are built in device pixels (GetShapeTransform tells).
///
/// Strokes of closed runs that are aligned inside or outside are strokes of twice the width, less
/// what lies outside or inside of the filled path, open runs included, as it is flattened to be
/// filled. Those of open runs are centred. Aligned strokes do not move to pixel middles. A path
/// that crosses itself or its stroke a million times gets a centred stroke.
///
/// A helper keeps its memory: one that has made the like before allocates nothing for polygons of
/// plain, centred strokes.
class RENDERER_EXPORT LineStyleStrokeHelper
{
public:
    using PolyPolygon = Geometry::PolyPolygonType<double>;
    using Transform = Raster::AffineTransform::Params;

    /// The transform that maps what is produced to the device: the identity for
    /// resolution-independent styles, else the current one.
    static Transform GetShapeTransform(const LineStyleDescriptorConst& lineStyle,
                                       const StrokeFrame& frame);

    /// The pen of a line style: width, caps, joins, mitre limit and dashes (of type Dashed, scaled
    /// like the weight), in the units that the shape is built in. It refers to the style's dashes.
    static Geometry::StrokeParameters ResolveEnds(const LineStyleDescriptorConst& lineStyle,
                                                  const StrokeFrame& frame);

    /// The profile of the width of a line style with pressure; null where that changes nothing.
    /// Valid until the next call.
    const Geometry::WidthProfile* PostProcessForPressure(const LineStyleDescriptorConst& lineStyle);

    /// Appends the stroke of a path to \p out. Strokes with pressure, and those of vector brushes,
    /// are their outlines, flattened. \return false when the style draws nothing.
    bool ProducePolygons(const Geometry::PolyCurveDbl& path,
                         const LineStyleDescriptorConst& lineStyle, const StrokeFrame& frame,
                         PolyPolygon& out);
    /// The same for polylines, all of them open.
    bool ProducePolygons(const PolyPolygon& polylines, const LineStyleDescriptorConst& lineStyle,
                         const StrokeFrame& frame, PolyPolygon& out);
    /// The same for a path of one run.
    bool ProducePolygon(const Geometry::CurveDbl& run, const LineStyleDescriptorConst& lineStyle,
                        const StrokeFrame& frame, PolyPolygon& out);

    /// The stroke of a path as closed runs of lines and cubics in the units of the path, to be
    /// filled non-zero; see Geometry::PathOutliner. Empty for raster brushes, for styles that draw
    /// nothing, and for resolution-independent ones where the current transform has no inverse.
    Kernel::Counted<const Geometry::PolyCurveDbl>
    ProduceOutline(const Geometry::PolyCurveDbl& path, const LineStyleDescriptorConst& lineStyle,
                   const StrokeFrame& frame);

private:
    /// Outlines runs (as below) centred on them, in the units of the shape.
    template<class Runs>
    bool OutlineRuns(Runs&& runs, const LineStyleDescriptorConst& lineStyle,
                     const StrokeFrame& frame, Geometry::PolyCurveDbl& out);
    /// Strokes runs (of CurveDbl, or views of polylines) centred on them.
    template<class Runs>
    bool StrokeRuns(Runs&& runs, const LineStyleDescriptorConst& lineStyle,
                    const StrokeFrame& frame, PolyPolygon& out);

    Geometry::PathStroker m_stroker;
    Geometry::PathOutliner m_outliner;
    Kernel::Counted<const Geometry::CurveDbl> m_pressure; // what the profile was made of
    Geometry::WidthProfile m_profile;
    PolyPolygon m_wide;  // the strokes of closed runs, twice as wide,
    PolyPolygon m_shape; // and the filled path, for aligned strokes
};

} // namespace Renderer
