#pragma once

#include <vector>

#include <geometry/Curve.h>
#include <kernel/Rect.h>

namespace Geometry {

/// A path: several runs of curves, each open or closed. Filling closes open runs implicitly.
class GEOMETRY_EXPORT PolyCurveDbl : public Kernel::Countable
{
public:
    PolyCurveDbl() = default;
    /// A closed rectangle, clockwise from its left top corner (y down).
    explicit PolyCurveDbl(const Kernel::RectT<double>& rect);
    explicit PolyCurveDbl(CurveDbl curve);

    /// \name Building, in the manner of a pen
    /// @{
    void MoveTo(Point start);
    /// Goes on with the last run. After Close, drawing goes on from the start of the closed run, as
    /// a new run; without any run, the first point given starts one (so for the next two).
    void LineTo(Point end);
    void CurveTo(Point control1, Point control2, Point end);
    void QuadTo(Point control, Point end);
    /// Closes the last run. One that was only started stays, as a closed run of one point.
    void Close();
    /// Adds a run as it is; an empty one adds nothing. An open one can be drawn on.
    void AddCurve(CurveDbl curve);
    /// A closed ellipse of four cubics (radial error 2.0e-4 of the radius; see GetArcHandleLength),
    /// clockwise from its right end (y down).
    void AddEllipse(Point centre, double radiusX, double radiusY);
    /// @}

    /// Maps every run; see CurveDbl::Transform.
    template<class Map>
    void Transform(const Map& map)
    {
        for (CurveDbl& curve : m_curves)
            curve.Transform(map);
    }

    bool IsEmpty() const noexcept { return m_curves.empty(); }
    const std::vector<CurveDbl>& GetCurves() const noexcept { return m_curves; }

    /// A deep copy that nobody shares.
    Kernel::Counted<PolyCurveDbl> Clone() const;

    /// The exact box of all runs.
    BoundingBoxT<double> GetBoundingBox() const noexcept;

    /// Appends every run to \p out as a polygon; see CurveDbl::ExpandAdaptive.
    void ExpandAdaptive(double tolerance, PolyPolygonType<double>& out) const;

private:
    /// The run that drawing goes on with; \p fallback starts the first one.
    CurveDbl& OpenRun(Point fallback);

    std::vector<CurveDbl> m_curves;
};

} // namespace Geometry
