#include <raster/RowFilters.h>

#include <algorithm>
#include <cstdlib>

namespace Raster {

namespace {

enum Filter
{
    None,
    Sub,
    Up,
    Average,
    Paeth,
    FilterCount,
};

/// What the neighbours promise: a on the left, b above, c above on the left.
template<int Kind>
unsigned char Predict(int a, int b, int c) noexcept
{
    if constexpr (Kind == Sub)
        return static_cast<unsigned char>(a);
    if constexpr (Kind == Up)
        return static_cast<unsigned char>(b);
    if constexpr (Kind == Average)
        return static_cast<unsigned char>((a + b) / 2);
    if constexpr (Kind == Paeth) {
        const int toA = std::abs(b - c), toB = std::abs(a - c), toC = std::abs(a + b - 2 * c);
        return static_cast<unsigned char>(toA <= toB && toA <= toC ? a : toB <= toC ? b : c);
    }
    return 0;
}

/// Calls \p function with the filter as a constant.
template<class Function>
void WithFilter(int filter, const Function& function)
{
    switch (filter) {
    case None:
        return function(std::integral_constant<int, None>());
    case Sub:
        return function(std::integral_constant<int, Sub>());
    case Up:
        return function(std::integral_constant<int, Up>());
    case Average:
        return function(std::integral_constant<int, Average>());
    default:
        return function(std::integral_constant<int, Paeth>());
    }
}

/// \param current, above the rows; \p step bytes before them are zero.
template<int Kind>
void FilterRow(const unsigned char* __restrict current, const unsigned char* __restrict above,
               unsigned char* __restrict out, std::size_t size, std::size_t step)
{
    const unsigned char* const left = current - step;
    const unsigned char* const aboveLeft = above - step;
    for (std::size_t i = 0; i < size; ++i)
        out[i] =
            static_cast<unsigned char>(current[i] - Predict<Kind>(left[i], above[i], aboveLeft[i]));
}

template<int Kind>
void RestoreRow(unsigned char* current, const unsigned char* above, const unsigned char* filtered,
                std::size_t size, std::size_t step)
{
    for (std::size_t i = 0; i < size; ++i)
        current[i] = static_cast<unsigned char>(
            filtered[i] + Predict<Kind>((current - step)[i], above[i], (above - step)[i]));
}

/// The sum of bytes as signed numbers' magnitudes, which tells well how a row will compress.
std::size_t SumMagnitudes(const std::vector<unsigned char>& bytes)
{
    std::size_t sum = 0;
    for (const unsigned char byte : bytes)
        sum += static_cast<std::size_t>(byte < 128 ? byte : 256 - byte);
    return sum;
}

} // namespace

RowFilters::RowFilters(std::size_t rowSize, std::size_t pixelSize, std::size_t channelSize)
    : m_step(pixelSize / channelSize),
      m_channelSize(channelSize),
      m_current(m_step + rowSize),
      m_above(m_step + rowSize)
{}

void RowFilters::ToPlanes(const unsigned char* row)
{
    const std::size_t count = (m_current.size() - m_step) / m_channelSize;
    unsigned char* out = m_current.data() + m_step;
    for (std::size_t plane = 0; plane < m_channelSize; ++plane)
        for (std::size_t i = 0; i < count; ++i)
            *out++ = row[i * m_channelSize + plane];
}

void RowFilters::FromPlanes(unsigned char* row) const
{
    const std::size_t count = (m_current.size() - m_step) / m_channelSize;
    const unsigned char* in = m_current.data() + m_step;
    for (std::size_t plane = 0; plane < m_channelSize; ++plane)
        for (std::size_t i = 0; i < count; ++i)
            row[i * m_channelSize + plane] = *in++;
}

std::size_t RowFilters::TryFilter(int filter)
{
    m_candidate.resize(m_current.size() - m_step);
    WithFilter(filter, [&](auto kind) {
        FilterRow<kind()>(m_current.data() + m_step, m_above.data() + m_step, m_candidate.data(),
                          m_candidate.size(), m_step);
    });
    return SumMagnitudes(m_candidate);
}

void RowFilters::Filter(const unsigned char* row, std::vector<unsigned char>& out)
{
    ToPlanes(row);
    int best = None;
    std::size_t least = TryFilter(None);
    m_best.swap(m_candidate);
    for (const int filter : {Sub, Up, Paeth}) {
        const std::size_t sum = TryFilter(filter);
        if (sum < least) {
            least = sum;
            best = filter;
            m_best.swap(m_candidate);
        }
    }
    out.push_back(static_cast<unsigned char>(best));
    out.insert(out.end(), m_best.begin(), m_best.end());
    m_above.swap(m_current);
}

bool RowFilters::Restore(std::span<const unsigned char> filtered, unsigned char* row)
{
    if (filtered.front() >= FilterCount)
        return false;
    WithFilter(filtered.front(), [&](auto kind) {
        RestoreRow<kind()>(m_current.data() + m_step, m_above.data() + m_step, filtered.data() + 1,
                           m_current.size() - m_step, m_step);
    });
    FromPlanes(row);
    m_above.swap(m_current);
    return true;
}

} // namespace Raster
