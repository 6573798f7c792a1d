#include <geometry/outline/OutlinePath.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace Geometry {
namespace {

/// Cubics slower than this share of their fastest derivative stand still: beyond such a point their
/// direction is that of the second derivative.
constexpr double StandStill = 1e-9;

Point Unit(Point a)
{
    const double length = Length(a);
    return length > 0.0 ? a * (1.0 / length) : Point{};
}

/// Whether a part of a cubic is known to turn by less than half a turn: its derivative is a
/// combination, with positive factors, of the legs of its control polygon.
bool TurnsByLessThanHalf(const Hodograph& hodograph, double from, double to)
{
    const Point first = hodograph.First(from), last = hodograph.First(to);
    const Point middle = first + (0.5 * (to - from)) * hodograph.Second(from);
    const double whole = Cross(first, last);
    return Cross(first, middle) * whole > 0.0 && Cross(middle, last) * whole > 0.0;
}

} // namespace

double OutlinePath::GetLength(const OutlinePiece& piece, double t) const noexcept
{
    if (piece.IsLine())
        return std::clamp((t - piece.from) / (piece.to - piece.from), 0.0, 1.0) * piece.length;
    const double length = m_arcs.GetLength(cubics[piece.cubic].polynomial, piece.arc, t);
    return std::clamp(length - piece.arcBegin, 0.0, piece.length);
}

/// The parameter to which a piece has the given length; the inverse of GetLength.
double OutlinePath::FindParameter(const OutlinePiece& piece, double length) const noexcept
{
    if (!(length < piece.length))
        return piece.to;
    if (piece.IsLine())
        return std::lerp(piece.from, piece.to, std::max(length / piece.length, 0.0));
    const double t =
        m_arcs.FindParameter(cubics[piece.cubic].polynomial, piece.arc, piece.arcBegin + length);
    return std::clamp(t, piece.from, piece.to);
}

void OutlinePath::Measure()
{
    m_arcs.Clear();
    double position = 0.0;
    for (OutlinePiece& piece : pieces) {
        piece.position = position;
        if (piece.IsLine()) {
            piece.length = Length(piece.end - piece.start);
        } else {
            piece.arc = m_arcs.Measure(cubics[piece.cubic].polynomial, piece.from, piece.to);
            piece.arcBegin = 0.0;
            piece.length = piece.arc.length;
        }
        position += piece.length;
    }
}

OutlinePiece OutlinePath::Cut(const OutlinePiece& piece, double begin, double end) const
{
    OutlinePiece part = piece;
    const auto cut = [&](double length, double& t, Point& point, Point& tangent) {
        t = FindParameter(piece, length);
        if (piece.IsLine()) {
            point = piece.start + length / piece.length * (piece.end - piece.start);
            return;
        }
        point = cubics[piece.cubic].polynomial.Evaluate(t);
        const Point direction = Unit(cubics[piece.cubic].polynomial.Derivative(t));
        if (!(direction == Point{}))
            tangent = direction;
    };
    if (begin > 0.0) {
        cut(begin, part.from, part.start, part.in);
        part.corner = false;
    }
    if (end < piece.length)
        cut(end, part.to, part.end, part.out);
    part.position = piece.position + begin;
    part.length = end - begin;
    part.arcBegin = piece.arcBegin + begin;
    return part;
}

OutlinePath& OutlinePathBuilder::Build(const CurveDbl& run)
{
    const std::vector<Point>& points = run.GetPoints();
    m_path.cubics.clear();
    m_path.pieces.clear();
    m_path.closed = run.IsClosed();
    m_path.isDot = false;
    const double magnitude = GetMagnitude(points);
    if (points.empty() || std::isinf(magnitude))
        return m_path;
    m_precision = m_pen.At(magnitude);
    m_last = points.front();
    for (std::size_t i = 0; i < run.GetSegmentCount(); ++i) {
        if (run.GetSegment(i) == CurveDbl::Segment::Line)
            AddLine(points[3 * i + 3]);
        else
            AddCubic(&points[3 * i]);
    }
    if (m_path.closed)
        AddLine(points.front());
    m_path.isDot = m_path.pieces.empty() && (run.GetSegmentCount() > 0 || m_path.closed);
    m_path.dot = points.front();
    return m_path;
}

void OutlinePathBuilder::AddLine(Point end)
{
    const double length = Length(end - m_last);
    if (length <= m_precision.shortest)
        return;
    const Point direction = (end - m_last) * (1.0 / length);
    m_corner = true;
    Add({OutlinePiece::Straight, 0.0, 1.0, m_last, end, direction, direction});
}

void OutlinePathBuilder::AddCubic(const Point* points)
{
    const std::array<Point, 4> p = m_precision.WithoutTinyHandles(points);
    if (IsLine(p)) {
        AddLine(p[3]);
        return;
    }
    const double shortest = m_precision.shortest;
    const Point start = FirstDirection({p[1] - p[0], p[2] - p[0], p[3] - p[0]}, shortest);
    const Point end = FirstDirection({p[3] - p[2], p[3] - p[1], p[3] - p[0]}, shortest);
    if (start == Point{} || end == Point{})
        return; // all four coincide
    m_corner = true;
    Hodograph hodograph(p[0], p[1], p[2], p[3]);
    FindCuts(hodograph);
    m_path.cubics.push_back(
        {{p[0], p[1], p[2], p[3]}, hodograph, hodograph.FindCurvatureExtrema()});
    double from = 0.0;
    Point in = start;
    for (const Cut cut : m_cuts) {
        const Point second = Unit(hodograph.Second(cut.t));
        Point out = cut.isCusp ? -1.0 * second : Unit(hodograph.First(cut.t));
        if (out == Point{})
            out = Unit(hodograph.Third());
        AddTurning(from, cut.t, in, out, 0);
        from = cut.t;
        in = cut.isCusp ? second : out;
    }
    AddTurning(from, 1.0, in, end, 0);
}

/// Where the cubic bends the other way or comes to a standstill, and where a long turn has to be
/// cut for its angle to be known.
void OutlinePathBuilder::FindCuts(Hodograph& hodograph)
{
    m_cuts.clear();
    constexpr double least = 1e-9; // anything nearer to another cut or an end is that
    const auto isInside = [](double t) { return t > least && t < 1.0 - least; };
    const SignChanges<3> extrema = hodograph.FindSpeedExtrema();
    for (const double t : extrema) {
        if (!isInside(t) || !(Length(hodograph.First(t)) < StandStill) ||
            Unit(hodograph.Second(t)) == Point{})
            continue;
        hodograph.MakeStandStill(t);
        m_cuts.push_back({t, true});
    }
    const auto add = [&](double t) {
        const auto isNear = [t](const Cut& cut) {
            return std::abs(cut.t - t) < (cut.isCusp ? 2.0 * StandStill : least);
        };
        if (isInside(t) && std::none_of(m_cuts.begin(), m_cuts.end(), isNear))
            m_cuts.push_back({t, false});
    };
    for (const double t : hodograph.FindInflections())
        add(t);
    const auto inOrder = [](Cut a, Cut b) { return a.t < b.t; };
    std::sort(m_cuts.begin(), m_cuts.end(), inOrder);
    const std::size_t count = m_cuts.size();
    for (std::size_t i = 0; i <= count; ++i) {
        const double from = i > 0 ? m_cuts[i - 1].t : 0.0, to = i < count ? m_cuts[i].t : 1.0;
        if (TurnsByLessThanHalf(hodograph, from, to))
            continue;
        const auto addInside = [&](double t) {
            if (t > from && t < to)
                add(t);
        };
        addInside(hodograph.GetVertex());
        for (const double t : extrema)
            addInside(t);
    }
    std::sort(m_cuts.begin(), m_cuts.end(), inOrder);
}

/// Adds a part that bends one way only, by less than half a turn, in pieces of at most a quarter.
void OutlinePathBuilder::AddTurning(double from, double to, Point in, Point out, int depth)
{
    constexpr double quarter = -1e-3; // the cosine, give or take
    if (Dot(in, out) >= quarter || depth > 4) {
        AddPiece(from, to, in, out);
        return;
    }
    const Hodograph& hodograph = m_path.cubics.back().hodograph;
    const double middle = 0.5 * (from + to);
    const double bend = Cross(hodograph.First(middle), hodograph.Second(middle));
    const Point sum = in + out;
    // Half a turn, nearly: the sum says nothing.
    const Point direction = Dot(sum, sum) > 1e-6 ? sum : std::copysign(1.0, bend) * Normal(in);
    const double t = hodograph.FindDirection(direction, from, to);
    if (t < 0.0) {
        AddPiece(from, to, in, out);
        return;
    }
    const Point tangent = Unit(direction);
    AddTurning(from, t, in, tangent, depth + 1);
    AddTurning(t, to, tangent, out, depth + 1);
}

void OutlinePathBuilder::AddPiece(double from, double to, Point in, Point out)
{
    const CubicPolynomial& cubic = m_path.cubics.back().polynomial;
    const Point end = to < 1.0 ? cubic.Evaluate(to) : cubic.End();
    const double third = (to - from) / 3.0;
    const Point first = third * cubic.Derivative(from), last = third * cubic.Derivative(to);
    const double extent = Length(first) + Length(last) + Length(end - m_last - first - last);
    const double rounding = 1e-15 * std::max(std::abs(end.x), std::abs(end.y));
    if (extent > rounding) {
        Add({m_path.cubics.size() - 1, from, to, m_last, end, in, out});
        return;
    }
    // The pen turns on the spot. Where that is beside a corner, a point tells the two apart.
    const bool isAtEnd = !(to < 1.0);
    if ((m_corner || isAtEnd) && !IsSameDirection(in, out)) {
        const Point direction = m_corner ? in : out;
        Add({OutlinePiece::Straight, 0.0, 1.0, m_last, m_last, direction, direction});
    }
}

void OutlinePathBuilder::Add(const OutlinePiece& piece)
{
    m_path.pieces.push_back(piece);
    m_path.pieces.back().corner = m_corner;
    m_corner = false;
    m_last = piece.end;
}

} // namespace Geometry
