#pragma once

#include <cmath>
#include <random>

#include <geometry/PolyCurve.h>

namespace TestSupport {

/// Random paths in a square, the same everywhere, that are hard on strokes.
class RandomCurves
{
public:
    enum Kind
    {
        Plain, ///< any controls
        Cusps, ///< cusps, and what nearly is one
        Loops,
        Degenerate, ///< controls that coincide, or nearly; straight curves that turn back
        Tight,      ///< bends tighter than most pens
        Polylines,
        Folded, ///< handles and segments of any tiny length, ways back, points at the start
        KindCount,
    };
    static constexpr double Side = 64.0;

    explicit RandomCurves(unsigned seed) : m_engine(seed) {}

    double Number(double low, double high)
    {
        return low + (high - low) * (static_cast<double>(m_engine()) / 4294967295.0);
    }
    int Index(int count) { return static_cast<int>(m_engine() % static_cast<unsigned>(count)); }
    /// Of any magnitude between two powers of ten.
    double Magnitude(double low, double high) { return std::pow(10.0, Number(low, high)); }

    /// A run of one to three segments, sometimes closed.
    Geometry::PolyCurveDbl MakePath(Kind kind)
    {
        Geometry::PolyCurveDbl path;
        Point from = MakePoint();
        const Point first = from;
        path.MoveTo(from);
        for (int i = Index(3); i >= 0; --i) {
            Point controls[3] = {MakePoint(), MakePoint(), MakePoint()};
            Bend(kind, from, controls);
            if (kind == Folded)
                Fold(first, from, controls);
            if (kind == Polylines)
                path.LineTo(controls[2]);
            else
                path.CurveTo(controls[0], controls[1], controls[2]);
            from = controls[2];
        }
        if (Index(3) == 0)
            path.Close();
        return path;
    }

private:
    using Point = Geometry::Point;

    Point MakePoint()
    {
        const double x = Number(0.125 * Side, 0.875 * Side);
        return {x, Number(0.125 * Side, 0.875 * Side)};
    }
    Point Around(Point centre, double reach)
    {
        const double x = Number(-reach, reach);
        return centre + Point{x, Number(-reach, reach)};
    }

    void Bend(Kind kind, Point from, Point (&p)[3])
    {
        if (kind == Cusps) { // both handles alike: the middle stands still
            const Point handle = p[0] - 0.5 * (from + p[2]);
            const double error = Index(3) == 0 ? 0.0 : Magnitude(-12.0, -1.0);
            p[0] = p[2] + handle + Point{error, 0.0};
            p[1] = from + handle;
        } else if (kind == Loops) {
            p[0] = Around(p[2], 20.0);
            p[1] = Around(from, 20.0);
        } else if (kind == Tight) {
            const double reach = Number(2.0, 15.0);
            for (Point& point : p)
                point = Around(from, reach);
        } else if (kind == Degenerate) {
            MakeDegenerate(from, p, Magnitude(-14.0, -1.0));
        }
    }

    void Fold(Point first, Point from, Point (&p)[3])
    {
        const int end = Index(5);
        if (end < 2)
            p[2] = end == 0 ? Near(from) : Near(first);
        const Point chord = p[2] - from;
        p[0] = MakeHandle(from, p[0], chord);
        p[1] = MakeHandle(p[2], p[1], chord);
        const int shape = Index(8);
        if (shape == 0)
            p[0] = Near(p[2]);
        if (shape == 1)
            p[1] = Near(from);
        if (shape == 2)
            p[1] = Near(p[0]);
    }
    Point MakeHandle(Point base, Point free, Point chord)
    {
        switch (Index(4)) {
        case 0:
            return Near(base);
        case 1:
            return base + Number(-1.5, 1.5) * chord;
        case 2:
            return base + (Index(2) == 0 ? 1.0 : -1.0) * Magnitude(-6.0, 0.0) * chord;
        default:
            return free;
        }
    }
    Point Near(Point point)
    {
        const double x = Index(3) == 0 ? 0.0 : Magnitude(-9.0, -1.0);
        return point + Point{x, x * Number(-1.0, 1.0)};
    }

    void MakeDegenerate(Point from, Point (&p)[3], double error)
    {
        const int shape = Index(5);
        if (shape == 0 || shape == 2)
            p[0] = from + Point{shape == 2 ? error : 0.0, error};
        if (shape == 1 || shape == 2)
            p[1] = p[2];
        if (shape == 3)
            p[2] = from + Point{error, -error};
        if (shape == 4) {
            p[0] = from + Number(-1.0, 2.0) * (p[2] - from) + Point{0.0, error};
            p[1] = from + Number(-1.0, 2.0) * (p[2] - from);
        }
    }

    std::mt19937 m_engine;
};

} // namespace TestSupport
