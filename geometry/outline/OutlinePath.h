#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include <geometry/ArcLengths.h>
#include <geometry/Curve.h>
#include <geometry/Flatten.h>
#include <geometry/outline/Hodograph.h>
#include <geometry/stroke/StrokePrecision.h>

namespace Geometry {

/// A cubic of a run, with what the offsets of all its pieces need.
struct OutlineCubic
{
    CubicPolynomial polynomial;
    Hodograph hodograph;
    SignChanges<5> curvatureExtrema;
};

/// A straight line, or a part of a cubic that bends one way only and by no more than a quarter
/// turn. Lines of no length are left where the pen turns twice in one place.
struct OutlinePiece
{
    static constexpr std::size_t Straight = ~std::size_t(0);

    std::size_t cubic = Straight; ///< its index; Straight for lines
    double from = 0.0, to = 1.0;  ///< the parameters that it goes between
    Point start, end;             ///< the points there
    Point in, out;                ///< unit tangents there, of the piece itself
    bool corner = false;          ///< whether two segments meet at its start: the user's join
    double position = 0.0;        ///< the length of the run before it, once measured
    double length = 0.0;          ///< its own length, once measured
    ArcLengths::Arc arc{};        ///< of no line: what was measured, and it is a part of
    double arcBegin = 0.0;        ///< where it begins on that, by length
    std::size_t span = 0;         ///< of the width's profile

    bool IsLine() const noexcept { return cubic == Straight; }
};

/// A run as pieces whose offsets are simple.
struct OutlinePath
{
    std::vector<OutlineCubic> cubics;
    std::vector<OutlinePiece> pieces; ///< each starts where the one before ends, to within rounding
    bool closed = false;
    bool isDot = false; ///< a run without length that caps may show, at \c dot
    Point dot;

    /// The length of a measured piece from its start to the parameter \p t.
    double GetLength(const OutlinePiece& piece, double t) const noexcept;
    /// Takes note of all lengths and positions.
    void Measure();
    /// The whole length. \pre Measure was called.
    double GetLength() const noexcept
    {
        return pieces.empty() ? 0.0 : pieces.back().position + pieces.back().length;
    }
    /// The part of a measured piece between two lengths along it.
    OutlinePiece Cut(const OutlinePiece& piece, double begin, double end) const;

private:
    double FindParameter(const OutlinePiece& piece, double length) const noexcept;

    ArcLengths m_arcs;
};

/// Takes runs apart, one after another, keeping the memory.
class OutlinePathBuilder
{
public:
    void SetPrecision(const StrokePrecision& precision) noexcept { m_pen = precision; }

    /// The pieces of a run; without any, and no dot, when there is nothing to stroke or a
    /// coordinate is not finite (or beyond 1e100). What is left out and what is straight is the
    /// same as for StrokePathBuilder.
    OutlinePath& Build(const CurveDbl& run);

private:
    struct Cut
    {
        double t;
        bool isCusp;
    };

    void AddLine(Point end);
    void AddCubic(const Point* points);
    void FindCuts(Hodograph& hodograph);
    void AddTurning(double from, double to, Point in, Point out, int depth);
    void AddPiece(double from, double to, Point in, Point out);
    void Add(const OutlinePiece& piece);

    StrokePrecision m_pen{};
    StrokePrecision m_precision{}; // of the pen for the present run
    OutlinePath m_path;
    Point m_last;          // where the last piece ended
    bool m_corner = false; // whether a segment begins here
    std::vector<Cut> m_cuts;
};

} // namespace Geometry
