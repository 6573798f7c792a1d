#include "PathData.h"

#include <array>
#include <numbers>
#include <optional>
#include <utility>

#include <geometry/EllipticArc.h>

#include "Scanner.h"

namespace Svg {

namespace {

using Geometry::Point;

/// Reads commands one after another and draws them with a pen.
class PathReader
{
public:
    explicit PathReader(std::string_view text) : m_scanner(text) {}

    PathDataResult Read();

private:
    bool ReadCommands();
    bool ReadCommand();
    bool ReadMove();
    bool ReadSegment(char kind);
    bool ReadLine();
    bool ReadHorizontal();
    bool ReadVertical();
    bool ReadCubic();
    bool ReadSmoothCubic();
    bool ReadQuadratic();
    bool ReadSmoothQuadratic();
    bool ReadArc();
    void AddArc(const Geometry::EllipticArc& arc);
    void Close();

    std::optional<double> Coordinate();
    std::optional<Point> ReadPoint();
    template<std::size_t N>
    bool ReadPoints(std::array<Point, N>& points);
    Point Origin() const { return m_relative ? m_current : Point{}; }
    void CubicTo(Point control1, Point control2, Point end);
    void QuadTo(Point control, Point end);

    Scanner m_scanner;
    Kernel::Counted<Geometry::PolyCurveDbl> m_path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    Point m_current{};
    Point m_start{};
    /// The control point that S and T reflect, when the last segment had one of their kind.
    std::optional<Point> m_cubicControl;
    std::optional<Point> m_quadraticControl;
    bool m_relative = false;
    std::vector<PathJoint> m_innerJoints;
};

PathDataResult PathReader::Read()
{
    const bool complete = ReadCommands();
    return {m_path, complete, std::move(m_innerJoints)};
}

/// \return whether the text ended as the grammar allows.
bool PathReader::ReadCommands()
{
    m_scanner.SkipSpace();
    if (m_scanner.AtEnd() || m_scanner.Rest() == "none")
        return true;
    if (ToLower(m_scanner.Peek()) != 'm')
        return false;
    while (!m_scanner.AtEnd()) {
        if (!ReadCommand())
            return false;
        m_scanner.SkipSpace();
    }
    return true;
}

/// Reads a letter and its arguments, as often as they are repeated.
bool PathReader::ReadCommand()
{
    const char letter = m_scanner.Next();
    const char kind = ToLower(letter);
    m_relative = letter == kind;
    m_scanner.SkipSpace();
    if (kind == 'z') {
        Close();
        return true;
    }
    if (kind == 'm' ? !ReadMove() : !ReadSegment(kind))
        return false;
    for (;;) {
        const bool comma = m_scanner.SkipCommaSpace();
        const char next = m_scanner.Peek();
        if (!IsDigit(next) && next != '-' && next != '+' && next != '.')
            return !comma;
        if (!ReadSegment(kind == 'm' ? 'l' : kind))
            return false;
    }
}

bool PathReader::ReadMove()
{
    const auto point = ReadPoint();
    if (!point)
        return false;
    m_path->MoveTo(*point);
    m_current = m_start = *point;
    m_cubicControl.reset();
    m_quadraticControl.reset();
    return true;
}

bool PathReader::ReadSegment(char kind)
{
    const auto cubic = std::exchange(m_cubicControl, std::nullopt);
    const auto quadratic = std::exchange(m_quadraticControl, std::nullopt);
    switch (kind) {
    case 'l':
        return ReadLine();
    case 'h':
        return ReadHorizontal();
    case 'v':
        return ReadVertical();
    case 'c':
        return ReadCubic();
    case 's':
        m_cubicControl = cubic;
        return ReadSmoothCubic();
    case 'q':
        return ReadQuadratic();
    case 't':
        m_quadraticControl = quadratic;
        return ReadSmoothQuadratic();
    case 'a':
        return ReadArc();
    default:
        return false;
    }
}

bool PathReader::ReadLine()
{
    const auto end = ReadPoint();
    if (!end)
        return false;
    m_path->LineTo(*end);
    m_current = *end;
    return true;
}

bool PathReader::ReadHorizontal()
{
    const auto x = Coordinate();
    if (!x)
        return false;
    m_current.x = Origin().x + *x;
    m_path->LineTo(m_current);
    return true;
}

bool PathReader::ReadVertical()
{
    const auto y = Coordinate();
    if (!y)
        return false;
    m_current.y = Origin().y + *y;
    m_path->LineTo(m_current);
    return true;
}

bool PathReader::ReadCubic()
{
    std::array<Point, 3> points;
    if (!ReadPoints(points))
        return false;
    CubicTo(points[0], points[1], points[2]);
    return true;
}

bool PathReader::ReadSmoothCubic()
{
    const Point control = m_cubicControl ? 2.0 * m_current - *m_cubicControl : m_current;
    std::array<Point, 2> points;
    if (!ReadPoints(points))
        return false;
    CubicTo(control, points[0], points[1]);
    return true;
}

bool PathReader::ReadQuadratic()
{
    std::array<Point, 2> points;
    if (!ReadPoints(points))
        return false;
    QuadTo(points[0], points[1]);
    return true;
}

bool PathReader::ReadSmoothQuadratic()
{
    const Point control = m_quadraticControl ? 2.0 * m_current - *m_quadraticControl : m_current;
    const auto end = ReadPoint();
    if (!end)
        return false;
    QuadTo(control, *end);
    return true;
}

bool PathReader::ReadArc()
{
    const auto radiusX = m_scanner.Number();
    m_scanner.SkipCommaSpace();
    const auto radiusY = m_scanner.Number();
    m_scanner.SkipCommaSpace();
    const auto rotation = m_scanner.Number();
    m_scanner.SkipCommaSpace();
    const auto largeArc = m_scanner.Flag();
    m_scanner.SkipCommaSpace();
    const auto sweep = m_scanner.Flag();
    m_scanner.SkipCommaSpace();
    const auto end = ReadPoint();
    if (!radiusX || !radiusY || !rotation || !largeArc || !sweep || !end)
        return false;
    const double radians = *rotation * std::numbers::pi / 180.0;
    AddArc({*radiusX, *radiusY, radians, *largeArc, *sweep, *end});
    m_current = *end;
    return true;
}

void PathReader::AddArc(const Geometry::EllipticArc& arc)
{
    const auto& runs = m_path->GetCurves();
    const auto end = [&] {
        return runs.empty() ? PathJoint{}
                            : PathJoint{runs.size() - 1, runs.back().GetSegmentCount()};
    };
    const PathJoint before = end();
    Geometry::AppendEllipticArc(*m_path, m_current, arc);
    const PathJoint after = end();
    // An arc behind a closed run starts the next one.
    for (std::size_t i = after.run == before.run ? before.segment + 1 : 1; i < after.segment; ++i)
        m_innerJoints.push_back({after.run, i});
}

void PathReader::Close()
{
    m_path->Close();
    m_current = m_start;
    m_cubicControl.reset();
    m_quadraticControl.reset();
}

std::optional<double> PathReader::Coordinate()
{
    m_scanner.SkipSpace();
    return m_scanner.Number();
}

std::optional<Point> PathReader::ReadPoint()
{
    const auto x = Coordinate();
    m_scanner.SkipCommaSpace();
    const auto y = m_scanner.Number();
    if (!x || !y)
        return std::nullopt;
    return Origin() + Point{*x, *y};
}

template<std::size_t N>
bool PathReader::ReadPoints(std::array<Point, N>& points)
{
    for (Point& point : points) {
        if (&point != points.data())
            m_scanner.SkipCommaSpace();
        const auto read = ReadPoint();
        if (!read)
            return false;
        point = *read;
    }
    return true;
}

void PathReader::CubicTo(Point control1, Point control2, Point end)
{
    m_path->CurveTo(control1, control2, end);
    m_cubicControl = control2;
    m_current = end;
}

void PathReader::QuadTo(Point control, Point end)
{
    m_path->QuadTo(control, end);
    m_quadraticControl = control;
    m_current = end;
}

} // namespace

PathDataResult ParsePathData(std::string_view text)
{
    return PathReader(text).Read();
}

PointListResult ParsePoints(std::string_view text)
{
    PointListResult result;
    Scanner scanner(Trim(text));
    while (!scanner.AtEnd()) {
        const auto x = scanner.Number();
        scanner.SkipCommaSpace();
        const auto y = scanner.Number();
        if (!x || !y) {
            result.complete = false;
            return result;
        }
        result.points.push_back({*x, *y});
        scanner.SkipCommaSpace();
    }
    return result;
}

} // namespace Svg
