#include <raster/Resample.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include <raster/ChannelVector.h>
#include <raster/ResampleFilters.h>

namespace Raster {

namespace {

using namespace Resampling;

/// Maps and translations this near to whole pixels count as that.
constexpr double WholePixelTolerance = 1e-6;
/// Beyond these, products with device coordinates could leave the range of double or int64.
constexpr double MaxElement = 1e290;
constexpr double MaxWholeOffset = 1e15;

/// Nearest neighbours are looked up a hair after the position: where a map puts pixel centres
/// between two source pixels, rounding noise must not pick the one here and the other there.
constexpr double NearestBias = 1e-6;

bool IsUsable(const AffineTransform::Params& map) noexcept
{
    AffineTransform::Params inverse;
    const auto isSmall = [](double element) { return std::abs(element) < MaxElement; };
    return isSmall(map.m00) && isSmall(map.m01) && isSmall(map.m02) && isSmall(map.m10) &&
           isSmall(map.m11) && isSmall(map.m12) && AffineTransform::Invert(map, inverse);
}

AffineTransform::Params ScaleResult(const AffineTransform::Params& map, double x, double y) noexcept
{
    return {map.m00 * x, map.m01 * x, map.m02 * x, map.m10 * y, map.m11 * y, map.m12 * y};
}

/// The size at which a device pixel that covers \p footprint source pixels covers at most one.
/// Whole ratios come out whole in spite of rounding.
unsigned GetReducedSize(unsigned size, double footprint) noexcept
{
    if (!(footprint > 1 + WholePixelTolerance))
        return size;
    return unsigned(std::max(1.0, std::floor(size / footprint + WholePixelTolerance)));
}

/// The source pixels that matter for one position on one axis.
template<class Filter, class Real>
struct Taps
{
    int first;
    std::array<Real, Filter::Taps> weights;

    Taps(const ExtendedAxis& axis, double position) noexcept
    {
        const double u = axis.Fold(position) - 0.5;
        const int index = FloorToInt(u);
        first = index - (Filter::Taps / 2 - 1);
        const auto exact = Filter::GetWeights(u - index);
        for (std::size_t i = 0; i < exact.size(); ++i)
            weights[i] = static_cast<Real>(exact[i]);
    }

    bool IsInside(const ExtendedAxis& axis) const noexcept
    {
        return first >= 0 && first + Filter::Taps <= axis.GetSize();
    }
};

/// Rounds to nearest. Without overshoot, colour stays within alpha because every step of the sums
/// is monotonic.
template<class P, class Filter>
P ToPixel(const ChannelVector<P>& sums) noexcept
{
    using Channel = typename P::ChannelType;
    using Real = typename ChannelVector<P>::Real;
    P pixel;
    if constexpr (std::is_floating_point_v<Channel>) {
        for (std::size_t c = 0; c < P::ChannelCount; ++c)
            pixel[c] = static_cast<Channel>(sums[c]);
        pixel.Alpha() = std::clamp(pixel.Alpha(), Channel(0), P::Max);
    } else if constexpr (Filter::Overshoots) {
        Real limit = P::Max;
        for (std::size_t c = P::ChannelCount; c-- > 0;) {
            const Real value = std::clamp(sums[c], Real(0), limit);
            pixel[c] = static_cast<Channel>(value + Real(0.5));
            limit = c == P::AlphaIndex ? value : limit;
        }
    } else {
        for (std::size_t c = 0; c < P::ChannelCount; ++c)
            pixel[c] = static_cast<Channel>(sums[c] + Real(0.5));
    }
    return pixel;
}

template<class P, class Filter, class Real>
P Interpolate(const std::array<const P*, Filter::Taps>& rows, const Taps<Filter, Real>& x,
              const Taps<Filter, Real>& y) noexcept
{
    ChannelVector<P> sums;
    for (std::size_t j = 0; j < rows.size(); ++j) {
        ChannelVector<P> row;
        for (std::size_t i = 0; i < rows.size(); ++i)
            row.Add(x.weights[i], ChannelVector<P>(rows[j][i]));
        sums.Add(y.weights[j], row);
    }
    return ToPixel<P, Filter>(sums);
}

} // namespace

template<class P>
SpanSampler<P>::SpanSampler(Kernel::Counted<const DynamicBuffer> source,
                            const AffineTransform::Params& deviceToUnit, ResamplerType up,
                            ResamplerType down, ExtendType extend)
    : m_source(std::move(source)), m_extend(extend)
{
    if (!m_source || m_source->GetFormat() != FormatOfPixel<P>)
        return;
    m_source->SyncHostCache();
    if (!SetMap(deviceToUnit, down != ResamplerType::NearestNeighbour))
        return;
    m_wholePixels = SetWholePixels();
    if (m_wholePixels) {
        m_sample = &SpanSampler::SampleCopy;
        return;
    }
    switch (up) {
    case ResamplerType::NearestNeighbour:
        m_sample = &SpanSampler::SampleNearest;
        break;
    case ResamplerType::Bilinear:
        m_sample = &SpanSampler::template SampleFiltered<BilinearFilter>;
        break;
    case ResamplerType::Bicubic:
        m_sample = &SpanSampler::template SampleFiltered<CatmullRomFilter>;
        break;
    case ResamplerType::Lanczos3:
        m_sample = &SpanSampler::template SampleFiltered<Lanczos3Filter>;
        break;
    }
}

/// Settles the map and the buffer that it leads to. \return false when nothing can be drawn.
template<class P>
bool SpanSampler<P>::SetMap(const AffineTransform::Params& deviceToUnit, bool reduce)
{
    m_deviceToSource = ScaleResult(deviceToUnit, m_source->GetWidth(), m_source->GetHeight());
    if (!IsUsable(m_deviceToSource))
        return false;
    if (!reduce)
        return true;

    // The rows of the map are the gradients of the source coordinates over the device: their
    // lengths say how far a step of one device pixel leads at most.
    const auto& map = m_deviceToSource;
    const unsigned width = GetReducedSize(m_source->GetWidth(), std::hypot(map.m00, map.m01));
    const unsigned height = GetReducedSize(m_source->GetHeight(), std::hypot(map.m10, map.m11));
    // When the memory for it is missing, the unreduced picture still gives an answer.
    if (auto reduced = ReduceByArea(m_source, width, height)) {
        m_source = std::move(reduced);
        m_deviceToSource = ScaleResult(deviceToUnit, m_source->GetWidth(), m_source->GetHeight());
    }
    return true;
}

template<class P>
bool SpanSampler<P>::SetWholePixels()
{
    const double x = std::round(m_deviceToSource.m02);
    const double y = std::round(m_deviceToSource.m12);
    if (!(std::abs(x) < MaxWholeOffset && std::abs(y) < MaxWholeOffset) ||
        !AffineTransform::IsEqual(m_deviceToSource, AffineTransform::Translation(x, y),
                                  WholePixelTolerance))
        return false;
    m_offsetX = std::int64_t(x);
    m_offsetY = std::int64_t(y);
    return true;
}

template<class P>
void SpanSampler<P>::SampleTransparent(int, int, unsigned length, P* out) const
{
    std::fill_n(out, length, P{});
}

template<class P>
void SpanSampler<P>::SampleCopy(int x, int y, unsigned length, P* out) const
{
    const std::int64_t width = m_source->GetWidth();
    const std::int64_t row = MapIndex<std::int64_t>(y + m_offsetY, m_source->GetHeight(), m_extend);
    if (row < 0)
        return SampleTransparent(x, y, length, out);

    const P* const pixels = GetRow(int(row));
    std::int64_t position = x + m_offsetX;
    const std::int64_t end = position + length;
    while (position < end) {
        const std::int64_t index = MapIndex(position, width, m_extend);
        if (index < 0) {
            *out++ = P{};
            ++position;
            continue;
        }
        // Pixels follow each other in the picture itself and in its repetitions.
        const bool isRun = index == position || m_extend == ExtendType::Wrap;
        const std::int64_t count = isRun ? std::min(end - position, width - index) : 1;
        std::memcpy(out, pixels + index, std::size_t(count) * sizeof(P));
        out += count;
        position += count;
    }
}

template<class P>
void SpanSampler<P>::SampleNearest(int x, int y, unsigned length, P* out) const
{
    const auto& map = m_deviceToSource;
    const ExtendedAxis xAxis(m_source->GetWidth(), m_extend);
    const ExtendedAxis yAxis(m_source->GetHeight(), m_extend);
    const double rowU = map.m01 * (y + 0.5) + map.m02 + NearestBias;
    const double rowV = map.m11 * (y + 0.5) + map.m12 + NearestBias;
    for (unsigned i = 0; i < length; ++i) {
        const double deviceX = double(std::int64_t{x} + i) + 0.5;
        const int column = xAxis.Map(FloorToInt(xAxis.Fold(map.m00 * deviceX + rowU)));
        const int row = yAxis.Map(FloorToInt(yAxis.Fold(map.m10 * deviceX + rowV)));
        out[i] = column < 0 || row < 0 ? P{} : GetRow(row)[column];
    }
}

template<class P>
template<class Filter>
void SpanSampler<P>::SampleFiltered(int x, int y, unsigned length, P* out) const
{
    using FilterTaps = Taps<Filter, typename ChannelVector<P>::Real>;
    constexpr int Count = Filter::Taps;

    const auto& map = m_deviceToSource;
    const ExtendedAxis xAxis(m_source->GetWidth(), m_extend);
    const ExtendedAxis yAxis(m_source->GetHeight(), m_extend);
    const double rowU = map.m01 * (y + 0.5) + map.m02;
    const double rowV = map.m11 * (y + 0.5) + map.m12;
    const bool isRowConstant = map.m10 == 0;
    FilterTaps yTaps(yAxis, rowV);
    std::array<const P*, Count> rows;
    std::array<P, Count * Count> patch; // what is read across the edges

    for (unsigned k = 0; k < length; ++k) {
        const double deviceX = double(std::int64_t{x} + k) + 0.5;
        const FilterTaps xTaps(xAxis, map.m00 * deviceX + rowU);
        if (!isRowConstant)
            yTaps = FilterTaps(yAxis, map.m10 * deviceX + rowV);

        const bool isInside = xTaps.IsInside(xAxis) && yTaps.IsInside(yAxis);
        for (int j = 0; j < Count; ++j) {
            P* const gathered = &patch[std::size_t(Count * j)];
            if (!isInside)
                GatherRow(xAxis, xTaps.first, yAxis.Map(yTaps.first + j), gathered, Count);
            rows[std::size_t(j)] = isInside ? GetRow(yTaps.first + j) + xTaps.first : gathered;
        }
        out[k] = Interpolate<P, Filter>(rows, xTaps, yTaps);
    }
}

/// Reads \p count pixels from column \p first on; \p row is −1 where all are transparent.
template<class P>
void SpanSampler<P>::GatherRow(const ExtendedAxis& xAxis, int first, int row, P* out,
                               int count) const
{
    for (int i = 0; i < count; ++i) {
        const int column = xAxis.Map(first + i);
        out[i] = row < 0 || column < 0 ? P{} : GetRow(row)[column];
    }
}

template class RASTER_EXPORT SpanSampler<PixelRGBA8>;
template class RASTER_EXPORT SpanSampler<PixelRGBA16>;
template class RASTER_EXPORT SpanSampler<PixelIA8>;
template class RASTER_EXPORT SpanSampler<PixelIA16>;
template class RASTER_EXPORT SpanSampler<PixelCMYKA8>;
template class RASTER_EXPORT SpanSampler<PixelLABA16>;
template class RASTER_EXPORT SpanSampler<PixelRGBAUF>;
template class RASTER_EXPORT SpanSampler<PixelAlpha8>;
template class RASTER_EXPORT SpanSampler<PixelAlpha16>;
template class RASTER_EXPORT SpanSampler<PixelAlphaF>;

} // namespace Raster
