#include <geometry/Outliner.h>

#include <geometry/outline/CurveDash.h>
#include <geometry/outline/CurveOutline.h>
#include <geometry/outline/OutlinePath.h>
#include <geometry/stroke/StrokePrecision.h>

namespace Geometry {

/// A pen with all that it needs to follow runs.
class PathOutliner::Pen
{
public:
    void Set(const StrokeParameters& parameters, const WidthProfile* profile)
    {
        const auto precision = StrokePrecision::Make(parameters);
        m_profile = profile && !profile->IsRedundant() ? profile : nullptr;
        m_builder.SetPrecision(precision);
        m_outline.SetPen(parameters, precision, m_profile);
        m_dash.SetPattern(parameters);
    }

    void Draw(const CurveDbl& run, PolyCurveDbl& out)
    {
        OutlinePath& path = m_builder.Build(run);
        if (m_profile || m_dash.IsDashed())
            path.Measure();
        if (m_profile)
            CutSpans(path);
        if (path.pieces.empty()) {
            if (path.isDot)
                m_outline.AddDot(path, MakeDot(path), out);
        } else if (m_dash.IsDashed()) {
            m_dash.Draw(path, m_outline, out);
        } else if (path.closed) {
            m_outline.AddClosed(path, path.pieces, out);
        } else {
            m_outline.AddOpen(path, path.pieces, out);
        }
    }

private:
    static OutlinePiece MakeDot(const OutlinePath& path)
    {
        OutlinePiece piece;
        piece.start = piece.end = path.dot;
        piece.in = piece.out = {1.0, 0.0};
        return piece;
    }

    /// Cuts the pieces where the profile's spans end.
    void CutSpans(OutlinePath& path)
    {
        m_pieces.clear();
        const double total = path.GetLength();
        std::size_t span = 0;
        for (const OutlinePiece& piece : path.pieces) {
            double begin = 0.0;
            const auto add = [&](double end) {
                if (end <= begin)
                    return;
                m_pieces.push_back(path.Cut(piece, begin, end));
                m_pieces.back().span = span;
                begin = end;
            };
            while (span + 1 < m_profile->GetSpanCount()) {
                const double end = m_profile->GetSpanEnd(span) * total - piece.position;
                if (end >= (1.0 - 1e-12) * piece.length)
                    break;
                add(end);
                ++span;
            }
            add(piece.length);
            if (!(piece.length > 0.0)) { // a turn on the spot
                m_pieces.push_back(piece);
                m_pieces.back().span = span;
            }
        }
        path.pieces.swap(m_pieces);
    }

    OutlinePathBuilder m_builder;
    CurveOutline m_outline;
    CurveDash m_dash;
    const WidthProfile* m_profile = nullptr;
    std::vector<OutlinePiece> m_pieces;
};

PathOutliner::PathOutliner() : m_pen(std::make_unique<Pen>()) {}
PathOutliner::~PathOutliner() = default;
PathOutliner::PathOutliner(PathOutliner&&) noexcept = default;
PathOutliner& PathOutliner::operator=(PathOutliner&&) noexcept = default;

bool PathOutliner::SetPen(const StrokeParameters& parameters, const WidthProfile* profile)
{
    StrokeParameters widest = parameters;
    if (profile)
        widest.width *= profile->GetFactorBound();
    if (!CanDraw(widest))
        return false;
    m_pen->Set(parameters, profile);
    return true;
}

void PathOutliner::Outline(const CurveDbl& run, PolyCurveDbl& out)
{
    m_pen->Draw(run, out);
}

} // namespace Geometry
