#pragma once

#include <memory>

#include <geometry/Export.h>
#include <geometry/PolyCurve.h>
#include <geometry/Stroker.h>
#include <geometry/WidthProfile.h>

namespace Geometry {

/// Draws the outlines of stroked runs as closed runs of lines and cubic Béziers, which are to be
/// filled non-zero: what PathStroker draws as polygons, with the same caps, joins and dashes, in
/// few pieces that can be edited and saved.
///
/// Offsets of curves are cubics fitted to the exact ones, within the tolerance: one to five per
/// smooth cubic and side at a thousandth of the width, some tens where a curve has cusps or is
/// rounder than the pen is wide. Dashes are cut from the curves themselves, by their exact lengths.
///
/// All parts of the outline have one orientation, so overlaps never cancel.
///
/// With a width profile, the width along a run is the factor at the share of the run's length times
/// the pen's width: the outline's edges lie half of it to either side, along the normals of the
/// path. Caps and joins have the width at their place; the dashes of a run share one profile.
///
/// What draws nothing is the same as for PathStroker. An outliner keeps its memory but for what it
/// hands out.
class GEOMETRY_EXPORT PathOutliner
{
public:
    PathOutliner();
    ~PathOutliner();
    PathOutliner(PathOutliner&&) noexcept;
    PathOutliner& operator=(PathOutliner&&) noexcept;

    /// Takes a pen for the runs that follow. \param profile of the width; null for a constant one;
    ///        kept by reference. \return false when it draws nothing; with a profile the widest
    ///        place counts.
    bool SetPen(const StrokeParameters& parameters, const WidthProfile* profile = nullptr);

    /// Appends the outline of a run to \p out. \pre SetPen returned true.
    void Outline(const CurveDbl& run, PolyCurveDbl& out);

private:
    class Pen;

    std::unique_ptr<Pen> m_pen;
};

} // namespace Geometry
