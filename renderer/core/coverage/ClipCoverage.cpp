#include <renderer/core/coverage/ClipCoverage.h>

#include <algorithm>

namespace Renderer::Coverage {

/// Gathers runs row by row; rows that are not mentioned stay empty.
class ClipCoverage::Builder
{
public:
    explicit Builder(const Kernel::RectT<int>& rect) : m_result(Kernel::MakeCounted<ClipCoverage>())
    {
        m_result->m_rect = rect;
        m_result->m_rows.reserve(std::size_t(std::max(0, rect.Height())) + 1);
        m_result->m_rows.push_back(0);
    }

    /// All runs up to the next BeginRow belong to row \p y, which is below the last one.
    void BeginRow(int y)
    {
        while (m_result->m_rows.size() < std::size_t(y - m_result->m_rect.top) + 1)
            m_result->m_rows.push_back(m_result->m_runs.size());
    }

    void Run(int x, unsigned length, unsigned char cover)
    {
        m_result->m_runs.push_back({x, length, Solid, cover});
    }

    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        m_result->m_runs.push_back({x, length, m_result->m_bytes.size(), 0});
        m_result->m_bytes.insert(m_result->m_bytes.end(), covers, covers + length);
    }

    /// Adds a row of bytes, long constant stretches as solid runs.
    void Bytes(int x, unsigned length, const unsigned char* covers)
    {
        constexpr unsigned worthARun = 16;
        unsigned pending = 0; // start of the bytes not yet handed on
        for (unsigned begin = 0, end = 0; begin < length; begin = end) {
            while (end < length && covers[end] == covers[begin])
                ++end;
            if (end - begin < worthARun)
                continue;
            if (begin > pending)
                Mask(x + int(pending), begin - pending, covers + pending);
            if (covers[begin] != 0)
                Run(x + int(begin), end - begin, covers[begin]);
            pending = end;
        }
        if (length > pending)
            Mask(x + int(pending), length - pending, covers + pending);
    }

    /// Adds row \p y of another clip, which lies in the rectangle of this one.
    void CopyRow(const ClipCoverage& from, int y)
    {
        for (const auto* run = from.BeginRow(y); run != from.EndRow(y); ++run) {
            if (run->bytes == Solid)
                Run(run->x, run->length, run->cover);
            else
                Mask(run->x, run->length, from.GetBytes(*run));
        }
    }

    Kernel::Counted<const ClipCoverage> Finish()
    {
        BeginRow(std::max(m_result->m_rect.bottom, m_result->m_rect.top));
        return m_result;
    }

private:
    Kernel::Counted<ClipCoverage> m_result;
};

Kernel::Counted<const ClipCoverage> ClipCoverage::FromStore(CoverageStore& store,
                                                            const CoverageRule& rule)
{
    const Kernel::RectT<int> bounds = store.GetBounds();
    Builder builder(bounds.IsEmpty() ? Kernel::RectT<int>{} : bounds);
    store.Sweep(
        rule,
        [&](int y) {
            builder.BeginRow(y);
            return true;
        },
        builder);
    return builder.Finish();
}

Kernel::Counted<const ClipCoverage> ClipCoverage::FromRect(const Kernel::RectT<int>& rect)
{
    if (rect.IsEmpty())
        return Builder({}).Finish();
    Builder builder(rect);
    for (int y = rect.top; y < rect.bottom; ++y) {
        builder.BeginRow(y);
        builder.Run(rect.left, unsigned(rect.Width()), 255);
    }
    return builder.Finish();
}

Kernel::Counted<const ClipCoverage> ClipCoverage::Multiply(const ClipCoverage& a,
                                                           const ClipCoverage& b)
{
    const Kernel::RectT<int> rect = a.m_rect.Intersect(b.m_rect);
    if (rect.IsEmpty())
        return Builder({}).Finish();
    Builder builder(rect);
    const auto width = unsigned(rect.Width());
    std::vector<unsigned char> rowA(width), rowB(width);
    for (int y = rect.top; y < rect.bottom; ++y) {
        if (a.IsRowClear(y) || b.IsRowClear(y))
            continue;
        a.ReadRow(rect.left, y, width, rowA.data());
        b.ReadRow(rect.left, y, width, rowB.data());
        for (unsigned i = 0; i < width; ++i)
            rowA[i] = MultiplyBytes(rowA[i], rowB[i]);
        builder.BeginRow(y);
        builder.Bytes(rect.left, width, rowA.data());
    }
    return builder.Finish();
}

Kernel::Counted<const ClipCoverage> ClipCoverage::Unite(const ClipCoverage& a,
                                                        const ClipCoverage& b)
{
    if (a.m_rect.IsEmpty())
        return Kernel::Counted<const ClipCoverage>(&b);
    if (b.m_rect.IsEmpty())
        return Kernel::Counted<const ClipCoverage>(&a);
    const Kernel::RectT<int> rect = a.m_rect.Union(b.m_rect);
    Builder builder(rect);
    std::vector<unsigned char> rowA, rowB;
    for (int y = rect.top; y < rect.bottom; ++y) {
        builder.BeginRow(y);
        const bool clearA = a.IsRowClear(y), clearB = b.IsRowClear(y);
        if (clearA || clearB) { // members of a group mostly lie apart
            if (!clearA || !clearB)
                builder.CopyRow(clearA ? b : a, y);
            continue;
        }
        const auto width = unsigned(rect.Width());
        rowA.resize(width);
        rowB.resize(width);
        a.ReadRow(rect.left, y, width, rowA.data());
        b.ReadRow(rect.left, y, width, rowB.data());
        for (unsigned i = 0; i < width; ++i)
            rowA[i] =
                static_cast<unsigned char>(255 - MultiplyBytes(255U - rowA[i], 255U - rowB[i]));
        builder.Bytes(rect.left, width, rowA.data());
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
