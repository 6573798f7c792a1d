#include <raster/Resample.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <numeric>
#include <type_traits>
#include <vector>

#include <kernel/Dispatch.h>

namespace Raster {

namespace {

/// One axis of a reduction, in units in which both kinds of pixels have whole sizes: a source pixel
/// is m_target units wide and a result pixel m_source.
class AreaAxis
{
public:
    AreaAxis(unsigned source, unsigned target) noexcept
        : m_source(source / std::gcd(source, target)), m_target(target / std::gcd(source, target))
    {}

    /// The source pixels that a result pixel covers, and how much of each; all between first and
    /// last are covered wholly.
    struct Footprint
    {
        unsigned first;
        unsigned last;
        std::uint64_t firstWeight;
        std::uint64_t innerWeight;
        std::uint64_t lastWeight; ///< 0 when first is the last
    };

    Footprint GetFootprint(unsigned index) const noexcept
    {
        const std::uint64_t begin = std::uint64_t{index} * m_source;
        const std::uint64_t end = begin + m_source;
        const std::uint64_t first = begin / m_target;
        const std::uint64_t last = (end - 1) / m_target;
        return {unsigned(first), unsigned(last), std::min(end, (first + 1) * m_target) - begin,
                m_target, first == last ? 0 : end - last * m_target};
    }

    /// The sum of the weights of every footprint.
    std::uint64_t GetTotalWeight() const noexcept { return m_source; }

private:
    std::uint64_t m_source;
    std::uint64_t m_target;
};

/// Rows of the result that one call works on: enough source pixels to be worth a dispatch.
unsigned GetBandHeight(const DynamicBuffer& source, unsigned height) noexcept
{
    constexpr std::uint64_t PixelsPerBand = 1 << 17;
    const std::uint64_t pixelsPerRow =
        std::uint64_t{source.GetWidth()} * (source.GetHeight() / height + 1);
    return unsigned(std::clamp<std::uint64_t>(PixelsPerBand / pixelsPerRow, 1, height));
}

/// Sums columns into a row of accumulators, then the accumulators of each result pixel. Integer
/// sums are exact: a buffer has less than 2³⁹ pixels of at most 16 bits. \tparam ColumnSum holds
/// the sum of a column.
template<class P, class ColumnSum>
class Reduction
{
    using Channel = typename P::ChannelType;
    using Sum = std::conditional_t<std::is_floating_point_v<Channel>, double, std::uint64_t>;

public:
    Reduction(const DynamicBuffer& source, DynamicBuffer& target) noexcept
        : m_source(source),
          m_target(target),
          m_x(source.GetWidth(), target.GetWidth()),
          m_y(source.GetHeight(), target.GetHeight()),
          m_total(Sum(m_x.GetTotalWeight()) * Sum(m_y.GetTotalWeight())),
          m_inverseTotal(1 / double(m_total))
    {}

    void Run() const
    {
        const unsigned height = m_target.GetHeight();
        const unsigned band = GetBandHeight(m_source, height);
        Kernel::Dispatch::DispatchParallelFor(
            [&](unsigned index) {
                std::vector<ColumnSum> columns(std::size_t{m_source.GetWidth()} * P::ChannelCount);
                const unsigned begin = index * band;
                for (unsigned y = begin; y < std::min(begin + band, height); ++y) {
                    SumColumns(y, columns);
                    SumRow(columns, reinterpret_cast<Channel*>(m_target.GetRow(y)));
                }
            },
            (height - 1) / band + 1);
    }

private:
    /// Sums that stay in the nearest cache while rows are added to them.
    static constexpr std::size_t BlockLength = 8192 / sizeof(ColumnSum);

    void SumColumns(unsigned y, std::vector<ColumnSum>& columns) const
    {
        const auto footprint = m_y.GetFootprint(y);
        for (std::size_t begin = 0; begin < columns.size(); begin += BlockLength)
            SumBlock(footprint, begin, std::min(BlockLength, columns.size() - begin),
                     columns.data() + begin);
    }

    void SumBlock(const AreaAxis::Footprint& rows, std::size_t begin, std::size_t count,
                  ColumnSum* __restrict sums) const
    {
        const auto channels = [&](unsigned y) {
            return reinterpret_cast<const Channel*>(m_source.GetRow(y)) + begin;
        };
        std::fill_n(sums, count, ColumnSum{});
        for (unsigned y = rows.first + 1; y < rows.last; ++y) {
            const Channel* __restrict const row = channels(y);
            for (std::size_t i = 0; i < count; ++i)
                sums[i] += static_cast<ColumnSum>(row[i]);
        }
        const Channel* __restrict const first = channels(rows.first);
        const Channel* __restrict const last = channels(rows.last);
        const auto firstWeight = static_cast<ColumnSum>(rows.firstWeight);
        const auto innerWeight = static_cast<ColumnSum>(rows.innerWeight);
        const auto lastWeight = static_cast<ColumnSum>(rows.lastWeight);
        for (std::size_t i = 0; i < count; ++i)
            sums[i] = firstWeight * static_cast<ColumnSum>(first[i]) + innerWeight * sums[i] +
                      lastWeight * static_cast<ColumnSum>(last[i]);
    }

    void SumRow(const std::vector<ColumnSum>& columns, Channel* out) const
    {
        for (unsigned x = 0; x < m_target.GetWidth(); ++x) {
            const auto footprint = m_x.GetFootprint(x);
            for (std::size_t c = 0; c < P::ChannelCount; ++c) {
                const auto column = [&](unsigned i) {
                    return Sum(columns[std::size_t{i} * P::ChannelCount + c]);
                };
                Sum inner{};
                for (unsigned i = footprint.first + 1; i < footprint.last; ++i)
                    inner += column(i);
                const Sum sum = Sum(footprint.firstWeight) * column(footprint.first) +
                                Sum(footprint.innerWeight) * inner +
                                Sum(footprint.lastWeight) * column(footprint.last);
                *out++ = Divide(sum);
            }
        }
    }

    /// The mean, integers to nearest. The quotient of doubles is at most 1 off before it is put
    /// right, and much faster than a division of 64 bits.
    Channel Divide(Sum sum) const noexcept
    {
        if constexpr (std::is_floating_point_v<Channel>) {
            return static_cast<Channel>(sum / m_total);
        } else {
            const auto total = static_cast<std::int64_t>(m_total);
            const auto rounded = static_cast<std::int64_t>(sum) + total / 2;
            auto quotient = static_cast<std::int64_t>(double(rounded) * m_inverseTotal);
            const auto remainder = rounded - quotient * total;
            quotient += remainder >= total ? 1 : remainder < 0 ? -1 : 0;
            return static_cast<Channel>(quotient);
        }
    }

    const DynamicBuffer& m_source;
    DynamicBuffer& m_target;
    AreaAxis m_x;
    AreaAxis m_y;
    Sum m_total;
    double m_inverseTotal;
};

template<class P>
void Reduce(const DynamicBuffer& source, DynamicBuffer& target)
{
    if constexpr (std::is_floating_point_v<typename P::ChannelType>) {
        Reduction<P, double>(source, target).Run();
    } else {
        const std::uint64_t largest = std::uint64_t{source.GetHeight()} * P::Max;
        if (largest <= std::numeric_limits<std::uint32_t>::max())
            Reduction<P, std::uint32_t>(source, target).Run();
        else
            Reduction<P, std::uint64_t>(source, target).Run();
    }
}

} // namespace

Kernel::Counted<const DynamicBuffer>
ReduceByArea(const Kernel::Counted<const DynamicBuffer>& source, unsigned width, unsigned height)
{
    if (!source)
        return {};
    width = std::clamp(width, 1U, source->GetWidth());
    height = std::clamp(height, 1U, source->GetHeight());
    if (width == source->GetWidth() && height == source->GetHeight())
        return source;

    const auto target = DynamicBuffer::Create(source->GetFormat(), width, height);
    if (!target)
        return {};
    source->SyncHostCache();
    try {
        WithPixelOfFormat(source->GetFormat(), false, [&](auto pixel) {
            Reduce<decltype(pixel)>(*source, *target);
            return true;
        });
    } catch (const std::bad_alloc&) {
        return {};
    }
    return target;
}

} // namespace Raster
