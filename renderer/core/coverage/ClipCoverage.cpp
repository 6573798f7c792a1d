#include <renderer/core/coverage/ClipCoverage.h>

#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include <renderer/core/ClippedSpanWriter.h>
#include <renderer/core/coverage/MultiplyCovers.h>

namespace Renderer::Coverage {

using Kernel::Counted;
using Kernel::RectT;

/// Gathers runs row by row, as a sink of the coverage sweep; rows that are not mentioned stay
/// empty.
class ClipCoverage::Builder
{
public:
    explicit Builder(const RectT<int>& rect) : m_result(Kernel::MakeCounted<ClipCoverage>())
    {
        if (rect.IsEmpty())
            return;
        m_result->m_rect = rect;
        m_result->m_rows.resize(std::size_t(rect.Height()));
    }

    /// All runs up to the next BeginRow belong to row \p y, which comes once.
    void BeginRow(int y)
    {
        EndRow();
        m_row = &m_result->m_rows[std::size_t(y - m_result->m_rect.top)];
        m_row->begin = m_result->m_runs.size();
    }

    void Run(int x, unsigned length, unsigned char cover)
    {
        ClipCoverage::Run* const last = GetNeighbour(x);
        if (last && last->bytes == Solid && last->cover == cover)
            last->length += length;
        else
            m_result->m_runs.push_back({x, length, Solid, cover});
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        std::copy_n(covers, length, AddMask(x, length));
    }

    /// A stretch whose bytes the caller writes at once.
    unsigned char* AddMask(int x, unsigned length)
    {
        auto& bytes = m_result->m_bytes;
        const std::size_t begin = bytes.size();
        bytes.resize(begin + length);
        // Bytes follow each other in the order of the runs.
        if (ClipCoverage::Run* const last = GetNeighbour(x); last && last->bytes != Solid)
            last->length += length;
        else
            m_result->m_runs.push_back({x, length, begin, 0});
        return bytes.data() + begin;
    }

    /// Adds the pixels [from, to) of a run of another clip.
    void Copy(const ClipCoverage& clip, const ClipCoverage::Run& run, int from, int to)
    {
        if (run.bytes == Solid)
            Run(from, unsigned(to - from), run.cover);
        else
            Mask(from, unsigned(to - from), clip.GetBytes(run) + (from - run.x));
    }

    /// Makes rows [from, to) like row \p from − 1, which has been begun.
    void RepeatRow(int from, int to)
    {
        EndRow();
        const auto rows = m_result->m_rows.begin() + (from - m_result->m_rect.top);
        std::fill(rows, rows + (to - from), rows[-1]);
    }

    Counted<const ClipCoverage> Finish()
    {
        EndRow();
        return m_result;
    }

private:
    void EndRow()
    {
        if (m_row)
            m_row->end = m_result->m_runs.size();
        m_row = nullptr;
    }

    /// The run of this row that ends at \p x.
    ClipCoverage::Run* GetNeighbour(int x)
    {
        auto& runs = m_result->m_runs;
        if (runs.size() == m_row->begin || runs.back().x + int(runs.back().length) != x)
            return nullptr;
        return &runs.back();
    }

    Counted<ClipCoverage> m_result;
    Row* m_row = nullptr; // the present one
};

namespace {

/// Outlines of so few upright edges have few rows that differ.
constexpr std::size_t FewEdges = 16;

/// Whether the edges outline rectangles, as far as they reach.
bool AreFewAndUpright(const std::vector<Edge>& edges)
{
    return edges.size() <= FewEdges &&
           std::ranges::all_of(edges, [](const Edge& edge) { return edge.x1 == edge.x2; });
}

/// The first row below \p y that may differ from row \p y when all edges are upright: rows that
/// the same edges cross from end to end are alike.
int FindNextRow(std::span<const Edge> edges, int y)
{
    int next = std::numeric_limits<int>::max();
    const auto look = [&](int end) {
        const int row = end >> SubPixelShift;
        // An end within a row makes that row differ, and the one below.
        if (row > y)
            next = std::min(next, row);
        else if (row == y && (end & SubPixelMask) != 0)
            next = y + 1;
    };
    for (const Edge& edge : edges) {
        look(edge.y1);
        look(edge.y2);
    }
    return next;
}

} // namespace

Counted<const ClipCoverage> ClipCoverage::FromStore(CoverageStore& store, const CoverageRule& rule,
                                                    const ClipCoverage* within)
{
    const auto sweep = [&](auto& writer) {
        store.Sweep(
            rule,
            [&](int y) {
                writer.BeginRow(y);
                return true;
            },
            writer);
    };
    const RectT<int> bounds = store.GetBounds();
    if (bounds.IsEmpty())
        return FromRect({});
    if (AreFewAndUpright(store.GetEdges())) {
        // The rows of a rectangle are mostly alike: one of each kind is swept.
        std::array<Edge, FewEdges> copy;
        const std::span<const Edge> edges(
            copy.begin(), std::ranges::copy(store.GetEdges(), copy.begin()).out);
        Builder builder(bounds);
        for (int y = bounds.top, next = y; y < bounds.bottom; y = next) {
            store.Reset({bounds.left, y, bounds.right, y + 1});
            for (const Edge& edge : edges)
                store.line(edge.x1, edge.y1, edge.x2, edge.y2);
            // What lay to the right of the window was not kept; it let runs end there.
            const int right = bounds.right * SubPixelScale;
            store.line(right, y * SubPixelScale, right, (y + 1) * SubPixelScale);
            builder.BeginRow(y);
            sweep(builder);
            next = std::min(FindNextRow(edges, y), bounds.bottom);
            builder.RepeatRow(y + 1, next);
        }
        const auto result = builder.Finish();
        return within ? Multiply(*within, *result) : result;
    }
    Builder builder(bounds);
    if (!within) {
        sweep(builder);
    } else {
        std::vector<unsigned char> covers;
        ClippedSpanWriter clipped(builder, *within, covers);
        sweep(clipped);
    }
    return builder.Finish();
}

Counted<const ClipCoverage> ClipCoverage::FromRect(const RectT<int>& rect)
{
    Builder builder(rect);
    if (!rect.IsEmpty()) {
        builder.BeginRow(rect.top);
        builder.Run(rect.left, unsigned(rect.Width()), 255);
        builder.RepeatRow(rect.top + 1, rect.bottom);
    }
    return builder.Finish();
}

Counted<const ClipCoverage> ClipCoverage::Multiply(const ClipCoverage& a, const ClipCoverage& b)
{
    const RectT<int> rect = a.m_rect.Intersect(b.m_rect);
    if (rect.IsEmpty())
        return FromRect({});
    Builder builder(rect);
    std::vector<unsigned char> covers;
    ClippedSpanWriter clipped(builder, a, covers);
    for (int y = rect.top; y < rect.bottom; ++y) {
        if (y > rect.top && a.SharesRow(y, y - 1) && b.SharesRow(y, y - 1)) {
            builder.RepeatRow(y, y + 1);
            continue;
        }
        clipped.BeginRow(y);
        for (const Run* run = b.BeginRow(y); run != b.EndRow(y); ++run) {
            if (run->bytes == Solid)
                clipped.Run(run->x, run->length, run->cover);
            else
                clipped.Mask(run->x, run->length, b.GetBytes(*run));
        }
    }
    return builder.Finish();
}

namespace {

/// Walks two rows at once, from left to right.
/// \param part is called for each stretch [from, to) with the run of either row that covers it, or
///        null; one of both is there.
template<class Run, class Part>
void ForEachStretch(const Run* a, const Run* endA, const Run* b, const Run* endB, Part&& part)
{
    const auto end = [](const Run& run) { return run.x + int(run.length); };
    int x = std::numeric_limits<int>::min();
    while (a != endA || b != endB) {
        constexpr int never = std::numeric_limits<int>::max();
        const int startA = a != endA ? std::max(x, a->x) : never;
        const int startB = b != endB ? std::max(x, b->x) : never;
        const int from = std::min(startA, startB);
        const bool inA = startA == from, inB = startB == from;
        const int to = std::min(inA ? end(*a) : startA, inB ? end(*b) : startB);
        part(from, to, inA ? a : nullptr, inB ? b : nullptr);
        x = to;
        if (inA && end(*a) == to)
            ++a;
        if (inB && end(*b) == to)
            ++b;
    }
}

} // namespace

Counted<const ClipCoverage> ClipCoverage::Unite(const ClipCoverage& a, const ClipCoverage& b)
{
    if (a.m_rect.IsEmpty())
        return Counted<const ClipCoverage>(&b);
    if (b.m_rect.IsEmpty())
        return Counted<const ClipCoverage>(&a);
    const RectT<int> rect = a.m_rect.Union(b.m_rect);
    Builder builder(rect);
    const auto unite = [&](int from, int to, const Run* runA, const Run* runB) {
        if (!runA || !runB)
            return runA ? builder.Copy(a, *runA, from, to) : builder.Copy(b, *runB, from, to);
        const bool solidA = runA->bytes == Solid, solidB = runB->bytes == Solid;
        if ((solidA && runA->cover == 255) || (solidB && runB->cover == 255))
            return builder.Run(from, unsigned(to - from), 255);
        const unsigned char* const bytesA = solidA ? &runA->cover : a.GetBytes(*runA);
        const unsigned char* const bytesB = solidB ? &runB->cover : b.GetBytes(*runB);
        unsigned char* out = builder.AddMask(from, unsigned(to - from));
        for (int x = from; x < to; ++x)
            *out++ = static_cast<unsigned char>(
                255 - MultiplyBytes(255U - bytesA[solidA ? 0 : x - runA->x],
                                    255U - bytesB[solidB ? 0 : x - runB->x]));
    };
    for (int y = rect.top; y < rect.bottom; ++y) {
        const bool clearA = a.IsRowClear(y), clearB = b.IsRowClear(y);
        if (clearA && clearB)
            continue;
        builder.BeginRow(y);
        ForEachStretch(clearA ? nullptr : a.BeginRow(y), clearA ? nullptr : a.EndRow(y),
                       clearB ? nullptr : b.BeginRow(y), clearB ? nullptr : b.EndRow(y), unite);
    }
    return builder.Finish();
}

void ClipCoverage::ReadRow(int x, int y, unsigned length, unsigned char* out) const
{
    std::fill_n(out, length, static_cast<unsigned char>(0));
    if (IsRowClear(y))
        return;
    const int end = x + int(length);
    for (const Run* run = BeginRow(y); run != EndRow(y) && run->x < end; ++run) {
        const int from = std::max(x, run->x);
        const int to = std::min(end, run->x + int(run->length));
        if (from >= to)
            continue;
        if (run->bytes == Solid)
            std::fill(out + (from - x), out + (to - x), run->cover);
        else
            std::copy_n(GetBytes(*run) + (from - run->x), to - from, out + (from - x));
    }
}

} // namespace Renderer::Coverage
