#include <renderer/core/coverage/ClipCoverage.h>

#include <algorithm>
#include <limits>

#include <renderer/core/ClippedSpanWriter.h>
#include <renderer/core/coverage/MultiplyCovers.h>

namespace Renderer::Coverage {

using Kernel::Counted;
using Kernel::RectT;

/// Gathers runs row by row, as a sink of the coverage sweep; rows that are not mentioned stay
/// empty. A row like the one before it shares its runs.
class ClipCoverage::Builder
{
public:
    explicit Builder(const RectT<int>& rect) : m_result(Kernel::MakeCounted<ClipCoverage>())
    {
        if (rect.IsEmpty())
            return;
        m_result->m_rect = rect;
        m_result->m_rows.resize(std::size_t(rect.Height()));
        // Enough for most small clips; larger ones grow as they need.
        const std::size_t rows = std::min(m_result->m_rows.size(), std::size_t{128});
        m_result->m_runs.reserve(rows * 3);
        m_result->m_bytes.reserve(rows * 16);
    }

    /// All runs up to the next BeginRow belong to row \p y, which comes once.
    void BeginRow(int y)
    {
        EndRow();
        m_previous = m_row;
        m_row = &m_result->m_rows[std::size_t(y - m_result->m_rect.top)];
        m_row->begin = m_result->m_runs.size();
        m_isOpen = true;
        m_rowBytes = m_result->m_bytes.size();
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

    /// Ends the present row and makes those below it like it, up to \p bottom.
    void RepeatRow(int bottom)
    {
        EndRow();
        std::fill(m_row + 1, m_result->m_rows.data() + (bottom - m_result->m_rect.top), *m_row);
        m_row = m_result->m_rows.data() + (bottom - m_result->m_rect.top - 1);
    }

    Counted<const ClipCoverage> Finish()
    {
        EndRow();
        return m_result;
    }

private:
    void EndRow()
    {
        if (!m_isOpen)
            return;
        m_isOpen = false;
        auto& runs = m_result->m_runs;
        m_row->end = runs.size();
        if (m_previous && IsLikePrevious()) {
            runs.resize(m_row->begin);
            m_result->m_bytes.resize(m_rowBytes);
            *m_row = *m_previous;
        }
    }

    bool IsLikePrevious() const
    {
        const auto isSame = [&](const ClipCoverage::Run& a, const ClipCoverage::Run& b) {
            return a.x == b.x && a.length == b.length && a.cover == b.cover &&
                   (a.bytes == Solid) == (b.bytes == Solid) &&
                   (a.bytes == Solid ||
                    std::equal(m_result->GetBytes(a), m_result->GetBytes(a) + a.length,
                               m_result->GetBytes(b)));
        };
        const ClipCoverage::Run* const runs = m_result->m_runs.data();
        return std::equal(runs + m_row->begin, runs + m_row->end, runs + m_previous->begin,
                          runs + m_previous->end, isSame);
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
    Row* m_row = nullptr; // the latest one
    Row* m_previous = nullptr;
    bool m_isOpen = false;      // whether the latest row can grow
    std::size_t m_rowBytes = 0; // where the present row's bytes begin
};

Counted<const ClipCoverage> ClipCoverage::FromStore(CoverageStore& store, const CoverageRule& rule,
                                                    const ClipCoverage* within, CommonArea* area)
{
    const auto sweep = [&](auto&& writer) {
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
    Builder builder(bounds);
    if (within) {
        std::vector<unsigned char> covers(std::size_t(bounds.Width()));
        if (area)
            sweep(ClippedSpanWriter(builder, *within, covers.data(), AreaOfCovers(*area)));
        else
            sweep(ClippedSpanWriter(builder, *within, covers.data()));
    } else {
        sweep(builder);
    }
    return builder.Finish();
}

Counted<const ClipCoverage> ClipCoverage::FromRect(const RectT<int>& rect)
{
    Builder builder(rect);
    if (!rect.IsEmpty()) {
        builder.BeginRow(rect.top);
        builder.Run(rect.left, unsigned(rect.Width()), 255);
        builder.RepeatRow(rect.bottom);
    }
    return builder.Finish();
}

template<class Clipped>
void ClipCoverage::MultiplyRows(const ClipCoverage& a, const ClipCoverage& b,
                                const RectT<int>& rect, Builder& builder, Clipped&& clipped)
{
    for (int y = rect.top; y < rect.bottom; ++y) {
        if (!clipped.Corrects && y > rect.top && a.SharesRow(y, y - 1) && b.SharesRow(y, y - 1)) {
            builder.RepeatRow(y + 1);
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
}

Counted<const ClipCoverage> ClipCoverage::Multiply(const ClipCoverage& a, const ClipCoverage& b,
                                                   CommonArea* area)
{
    const RectT<int> rect = a.m_rect.Intersect(b.m_rect);
    if (rect.IsEmpty())
        return FromRect({});
    Builder builder(rect);
    std::vector<unsigned char> covers(std::size_t(b.m_rect.Width())); // runs of b may reach beyond
    if (area)
        MultiplyRows(a, b, rect, builder,
                     ClippedSpanWriter(builder, a, covers.data(), AreaOfCovers(*area)));
    else
        MultiplyRows(a, b, rect, builder, ClippedSpanWriter(builder, a, covers.data()));
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

Counted<const ClipCoverage> ClipCoverage::Unite(const ClipCoverage& a, const ClipCoverage& b,
                                                CommonArea* area)
{
    if (a.m_rect.IsEmpty())
        return Counted<const ClipCoverage>(&b);
    if (b.m_rect.IsEmpty())
        return Counted<const ClipCoverage>(&a);
    const RectT<int> rect = a.m_rect.Union(b.m_rect);
    Builder builder(rect);
    int row = 0;
    const auto unite = [&](int from, int to, const Run* runA, const Run* runB) {
        if (!runA || !runB)
            return runA ? builder.Copy(a, *runA, from, to) : builder.Copy(b, *runB, from, to);
        const bool solidA = runA->bytes == Solid, solidB = runB->bytes == Solid;
        if ((solidA && runA->cover == 255) || (solidB && runB->cover == 255))
            return builder.Run(from, unsigned(to - from), 255);
        const unsigned char* const bytesA = solidA ? &runA->cover : a.GetBytes(*runA);
        const unsigned char* const bytesB = solidB ? &runB->cover : b.GetBytes(*runB);
        unsigned char* out = builder.AddMask(from, unsigned(to - from));
        CommonArea::Row both{};
        for (int x = from; x < to; ++x) {
            const unsigned leftA = 255U - bytesA[solidA ? 0 : x - runA->x];
            const unsigned leftB = 255U - bytesB[solidB ? 0 : x - runB->x];
            *out = static_cast<unsigned char>(255 - MultiplyBytes(leftA, leftB));
            if (area && leftA % 255 != 0 && leftB % 255 != 0) {
                if (!both.covers)
                    both = area->GetRow(row);
                const int column = x - area->GetLeft();
                if (both.known[column])
                    *out = both.covers[column];
            }
            ++out;
        }
    };
    for (int y = rect.top; y < rect.bottom; ++y) {
        const bool clearA = a.IsRowClear(y), clearB = b.IsRowClear(y);
        if (clearA && clearB)
            continue;
        row = y;
        builder.BeginRow(y);
        ForEachStretch(clearA ? nullptr : a.BeginRow(y), clearA ? nullptr : a.EndRow(y),
                       clearB ? nullptr : b.BeginRow(y), clearB ? nullptr : b.EndRow(y), unite);
    }
    return builder.Finish();
}

bool ClipCoverage::IsFull() const noexcept
{
    if (m_rect.IsEmpty() || m_runs.size() != 1)
        return false;
    const Run& run = m_runs.front();
    const auto isWhole = [](const Row& row) { return row.end - row.begin == 1; };
    return run.bytes == Solid && run.cover == 255 && run.x == m_rect.left &&
           run.length == unsigned(m_rect.Width()) && std::ranges::all_of(m_rows, isWhole);
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
