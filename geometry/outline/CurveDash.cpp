#include <geometry/outline/CurveDash.h>

namespace Geometry {
namespace {

/// The pieces of a run as the edges that dashes are cut from.
class PieceRun
{
public:
    explicit PieceRun(const OutlinePath& path) : m_path(path) {}
    std::size_t GetEdgeCount() const { return m_path.pieces.size(); }
    double GetLength(std::size_t edge) const { return m_path.pieces[edge].length; }
    bool IsClosed() const { return m_path.closed; }

private:
    const OutlinePath& m_path;
};

/// A dash without length is one piece without length.
bool IsDot(const std::vector<OutlinePiece>& dash)
{
    return dash.size() == 1 && dash.front().length == 0.0;
}

} // namespace

/// Collects the pieces of dashes and draws them.
class CurveDash::Dashes
{
public:
    Dashes(CurveDash& dash, const OutlinePath& path, CurveOutline& outline, PolyCurveDbl& out)
        : m_dash(dash.m_dash), m_first(dash.m_first), m_path(path), m_outline(outline), m_out(out)
    {
        m_dash.clear();
        m_first.clear();
    }

    bool HasStart() const { return m_hasStart; }
    bool HasLength() const { return !m_dash.empty(); }
    void Start(std::size_t, double position, double)
    {
        m_hasStart = true;
        m_start = position;
    }
    void Pass(std::size_t edge)
    {
        const OutlinePiece& piece = m_path.pieces[edge];
        if (piece.length > m_start || piece.length == 0.0)
            m_dash.push_back(m_path.Cut(piece, m_start, piece.length));
        m_start = 0.0;
    }
    void End(std::size_t edge, double position, double)
    {
        const OutlinePiece& piece = m_path.pieces[edge];
        const double start = m_hasStart ? m_start : position;
        if (position > start || m_dash.empty())
            m_dash.push_back(m_path.Cut(piece, start, position));
        m_start = 0.0;
    }
    void Draw()
    {
        DrawDash(m_dash);
        Clear();
    }
    void Hold()
    {
        m_first.swap(m_dash);
        Clear();
    }
    void DrawHeld() const
    {
        if (!m_first.empty())
            DrawDash(m_first);
    }
    void JoinHeld()
    {
        if (!IsDot(m_first))
            m_dash.insert(m_dash.end(), m_first.begin(), m_first.end());
    }
    void DrawWhole() const
    {
        m_path.closed ? m_outline.AddClosed(m_path, m_path.pieces, m_out)
                      : m_outline.AddOpen(m_path, m_path.pieces, m_out);
    }

private:
    void Clear()
    {
        m_dash.clear();
        m_hasStart = false;
    }
    void DrawDash(const std::vector<OutlinePiece>& dash) const
    {
        IsDot(dash) ? m_outline.AddDot(m_path, dash.front(), m_out)
                    : m_outline.AddOpen(m_path, dash, m_out);
    }

    std::vector<OutlinePiece>& m_dash;
    std::vector<OutlinePiece>& m_first;
    const OutlinePath& m_path;
    CurveOutline& m_outline;
    PolyCurveDbl& m_out;
    bool m_hasStart = false;
    double m_start = 0.0; // where the dash begins on the present edge
};

void CurveDash::Draw(const OutlinePath& path, CurveOutline& outline, PolyCurveDbl& out)
{
    Dashes dashes(*this, path, outline, out);
    m_cutter.Cut(PieceRun(path), dashes);
}

} // namespace Geometry
