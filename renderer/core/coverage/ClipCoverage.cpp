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
    Builder builder(store.GetWindow());
    store.Sweep(
        rule,
        [&](int y) {
            builder.BeginRow(y);
            return true;
        },
        builder);
    return builder.Finish();
}

Kernel::Counted<const ClipCoverage> ClipCoverage::FromRect(const Kernel::RectT<int>& rect,
                                                           const Kernel::RectT<int>& inside)
{
    Builder builder(rect);
    const Kernel::RectT<int> part = rect.Intersect(inside);
    if (!part.IsEmpty()) {
        for (int y = part.top; y < part.bottom; ++y) {
            builder.BeginRow(y);
            builder.Run(part.left, unsigned(part.Width()), 255);
        }
    }
    return builder.Finish();
}

namespace {

template<class Combine, class Builder>
Kernel::Counted<const ClipCoverage> CombineRows(const ClipCoverage& a, const ClipCoverage& b,
                                                Builder builder, const Kernel::RectT<int>& rect,
                                                Combine combine)
{
    if (!rect.IsEmpty()) {
        const auto width = unsigned(rect.Width());
        std::vector<unsigned char> rowA(width), rowB(width);
        for (int y = rect.top; y < rect.bottom; ++y) {
            a.ReadRow(rect.left, y, width, rowA.data());
            b.ReadRow(rect.left, y, width, rowB.data());
            for (unsigned i = 0; i < width; ++i)
                rowA[i] = combine(rowA[i], rowB[i]);
            builder.BeginRow(y);
            builder.Bytes(rect.left, width, rowA.data());
        }
    }
    return builder.Finish();
}

} // namespace

Kernel::Counted<const ClipCoverage> ClipCoverage::Multiply(const ClipCoverage& a,
                                                           const ClipCoverage& b)
{
    const Kernel::RectT<int> rect = a.m_rect.Intersect(b.m_rect);
    return CombineRows(a, b, Builder(rect), rect,
                       [](unsigned x, unsigned y) { return MultiplyBytes(x, y); });
}

Kernel::Counted<const ClipCoverage> ClipCoverage::Unite(const ClipCoverage& a,
                                                        const ClipCoverage& b)
{
    const Kernel::RectT<int> rect = a.m_rect.Intersect(b.m_rect);
    return CombineRows(a, b, Builder(rect), rect, [](unsigned x, unsigned y) {
        return static_cast<unsigned char>(255 - MultiplyBytes(255 - x, 255 - y));
    });
}

void ClipCoverage::ReadRow(int x, int y, unsigned length, unsigned char* out) const
{
    std::fill_n(out, length, static_cast<unsigned char>(0));
    if (y < m_rect.top || y >= m_rect.bottom)
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
