#pragma once

#include <span>
#include <vector>

#include <geometry/Curve.h>

namespace Renderer::Texture {

/// A run of a path by its length: points that a brush passes, and where it heads there.
///
/// Between samples the run is straight and turns evenly, by no more than MostTurn. Where it turns
/// on the spot several samples lie on one point: two at corners; more at the cusps of curves, none
/// of which turns by more than MostTurn from the one before.
class BrushPath
{
public:
    using Point = Geometry::Point;

    struct Sample
    {
        Point point;
        Point direction; ///< of length 1
        double length;   ///< from the start of the run
    };

    /// Radians.
    static constexpr double MostTurn = 0.16;

    /// Takes a run in place of the one before.
    /// \param tolerance of the curve and of the edges beside it, in its units.
    /// \param reach how far these edges lie from it.
    /// \return false, with no samples, for runs that draw nothing: only started, or not finite.
    bool SetRun(const Geometry::CurveDbl& run, double tolerance, double reach);
    /// The same for a polyline, whose points are all corners.
    bool SetRun(std::span<const Point> points, bool closed);

    const std::vector<Sample>& GetSamples() const noexcept { return m_samples; }
    bool IsClosed() const noexcept { return m_closed; }
    /// 0 for a run without length, which has one sample.
    double GetLength() const noexcept { return m_samples.back().length; }

    /// The place at a length from the start. \param hint where the search begins: the answer of the
    /// one before when lengths grow, at first 0.
    Sample At(double length, std::size_t& hint) const noexcept;

private:
    void Begin(Point start, bool closed);
    void AddLine(Point end);
    void AddCubic(Point p0, Point p1, Point p2, Point p3, double tolerance);
    /// Adds a straight way to \p end that begins and ends in the given directions; turns of more
    /// than MostTurn are made on the spot at its end.
    void AddPiece(Point end, Point from, Point to);
    bool Finish();

    std::vector<Sample> m_samples;
    Point m_start;
    Point m_end;
    double m_length = 0.0;
    double m_turn = MostTurn; // of pieces of curves at most
    bool m_closed = false;
};

} // namespace Renderer::Texture
