#pragma once

#include <cstddef>
#include <span>

#include <geometry/outline/Offset.h>
#include <geometry/outline/OffsetFitter.h>
#include <geometry/outline/OutlinePath.h>
#include <geometry/outline/OutlineSide.h>
#include <geometry/PolyCurve.h>
#include <geometry/stroke/StrokeJoinRule.h>
#include <geometry/Stroker.h>
#include <geometry/WidthProfile.h>

namespace Geometry {

/// Draws the edges of a pen that follows pieces of curves, as cubics.
///
/// The outline is put together as StrokeOutline does: for every piece of the path a region on
/// either side, between the path and the pen's ends; a wedge on the outer side of every turn; the
/// caps. All have one orientation, and where the pen's end runs backwards (the path is rounder than
/// the pen is wide), fans keep it. Where the width varies, the pen's ends lie as far along the
/// path's normals as half the width there.
class CurveOutline
{
public:
    /// \param parameters valid. \param profile of the width; may be null; must live as long as
    ///        anything is added.
    void SetPen(const StrokeParameters& parameters, const StrokePrecision& precision,
                const WidthProfile* profile) noexcept;

    /// Appends the outline of successive pieces of a path. \pre there are pieces (so for the next).
    void AddOpen(const OutlinePath& path, std::span<const OutlinePiece> pieces, PolyCurveDbl& out);
    /// The same, the last piece leading to the first.
    void AddClosed(const OutlinePath& path, std::span<const OutlinePiece> pieces,
                   PolyCurveDbl& out);
    /// Appends the caps of a dash without length, back to back.
    void AddDot(const OutlinePath& path, const OutlinePiece& piece, PolyCurveDbl& out);

private:
    double GetRadius(const OutlinePath& path, const OutlinePiece& piece, double t) const;
    bool IsPlain(const OutlinePiece& piece) const noexcept { return piece.IsLine() && !m_profile; }
    void AddSide(OutlineSide& side, double sign, const OutlinePath& path,
                 std::span<const OutlinePiece> pieces, bool closed);
    void AddPiece(OutlineSide& side, const Offset& offset);
    void AddPart(OutlineSide& side, const Offset& offset, double from, double to);
    void AddFan(OutlineSide& side, const Offset& offset, double from, double to);
    void AddJoint(OutlineSide& side, double sign, const OutlinePath& path,
                  const OutlinePiece& before, const OutlinePiece& after);
    void AddInnerJoin(OutlineSide& side, double sign, const OutlinePiece& before,
                      const OutlinePiece& after, Point from, Point to) const;
    void AddOuterJoin(OutlineSide& side, double sign, const OutlinePath& path,
                      const OutlinePiece& before, const OutlinePiece& after, Point from,
                      Point to) const;
    Point FindTip(double sign, const OutlinePath& path, const OutlinePiece& before,
                  const OutlinePiece& after, Point from, Point to, Point plain) const;
    void AddArc(OutlineSide& side, Point centre, Point from, Point to, double direction) const;
    void AddCap(OutlineSide& side, Point point, Point direction, double radius) const;

    double m_radius = 0.0;
    double m_tolerance = 0.0;
    double m_shortest = 0.0;
    StrokeCap m_cap{};
    double m_capLength = 1.0;
    StrokeJoin m_join{};
    StrokeJoinRule m_joinRule;
    const WidthProfile* m_profile = nullptr;
    OffsetFitter m_fitter;
    OutlineSide m_left;
    OutlineSide m_right;
};

} // namespace Geometry
