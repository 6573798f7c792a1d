#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

#include <raster/Format.h>

/// The filters and edge rules of SpanSampler. A filter gives the weights of the source pixels
/// around a position that lies the fraction f, 0 ≤ f < 1, behind the centre of tap Taps/2 − 1.
/// Weights sum to 1 and are symmetric: those of 1 − f are those of f reversed.
namespace Raster::Resampling {

struct BilinearFilter
{
    static constexpr int Taps = 2;
    /// Whether there are negative weights, so that results leave the range of the pixels.
    static constexpr bool Overshoots = false;

    static std::array<double, Taps> GetWeights(double f) noexcept { return {1 - f, f}; }
};

/// Keys, "Cubic convolution interpolation for digital image processing" (1981), with a = −½.
struct CatmullRomFilter
{
    static constexpr int Taps = 4;
    static constexpr bool Overshoots = true;

    static std::array<double, Taps> GetWeights(double f) noexcept
    {
        return {((1 - 0.5 * f) * f - 0.5) * f, (1.5 * f - 2.5) * f * f + 1,
                ((2 - 1.5 * f) * f + 0.5) * f, (0.5 * f - 0.5) * f * f};
    }
};

/// sinc(d)·sinc(d/3) for |d| < 3 at d = f − k, scaled to the sum 1. With sin(π(f − k)) = ±sin(πf)
/// the common factor 3·sin(πf)/π² falls out, and the other sine needs two evaluations for all taps.
struct Lanczos3Filter
{
    static constexpr int Taps = 6;
    static constexpr bool Overshoots = true;

    static std::array<double, Taps> GetWeights(double f) noexcept
    {
        // On a pixel's centre both the factor and that pixel's d² vanish.
        constexpr double Tiny = 1e-9;
        if (f < Tiny)
            return {0, 0, 1, 0, 0, 0};
        if (f > 1 - Tiny)
            return {0, 0, 0, 1, 0, 0};

        const double angle = std::numbers::pi / 3 * f;
        const double sine = std::sin(angle);
        const double halfSine = sine / 2;
        const double rootCosine = std::numbers::sqrt3 / 2 * std::cos(angle);
        // (−1)^k · sin(angle − kπ/3) for k = −2 … 3.
        const std::array<double, Taps> numerators{
            rootCosine - halfSine, -rootCosine - halfSine, sine,
            rootCosine - halfSine, -rootCosine - halfSine, sine};
        std::array<double, Taps> weights;
        double sum = 0;
        for (int i = 0; i < Taps; ++i) {
            const double d = f - (i - 2);
            weights[std::size_t(i)] = numerators[std::size_t(i)] / (d * d);
            sum += weights[std::size_t(i)];
        }
        for (double& weight : weights)
            weight /= sum;
        return weights;
    }
};

/// The pixel that stands at \p index of an endless row that begins with \p size pixels; −1 where it
/// is transparent.
template<class Int>
Int MapIndex(Int index, Int size, ExtendType extend) noexcept
{
    if (index >= 0 && index < size)
        return index;
    switch (extend) {
    case ExtendType::Clamp:
        return index < 0 ? 0 : size - 1;
    case ExtendType::Transparent:
        return -1;
    case ExtendType::Mirror: {
        const Int folded = index % (2 * size);
        const Int positive = folded < 0 ? folded + 2 * size : folded;
        return positive < size ? positive : 2 * size - 1 - positive;
    }
    case ExtendType::MirrorOnce:
        return std::min(index < 0 ? -1 - index : index, size - 1);
    case ExtendType::Wrap: {
        const Int folded = index % size;
        return folded < 0 ? folded + size : folded;
    }
    }
    return -1;
}

/// One axis of the source: brings positions near its pixels.
class ExtendedAxis
{
public:
    ExtendedAxis() = default;
    ExtendedAxis(unsigned size, ExtendType extend) noexcept
        : m_size(int(size)),
          m_extend(extend),
          m_period(extend == ExtendType::Mirror ? 2.0 * size : size)
    {}

    int GetSize() const noexcept { return m_size; }

    /// A position with the same colours around it, at most Margin pixels outside, for a finite
    /// position in pixels. Filters are symmetric, so mirroring the position is mirroring the
    /// pixels.
    double Fold(double u) const noexcept
    {
        switch (m_extend) {
        case ExtendType::Clamp:
        case ExtendType::Transparent:
            break;
        case ExtendType::Mirror:
            if (!(u >= 0 && u < m_size)) {
                u = Wrap(u);
                u = u < m_size ? u : m_period - u;
            }
            break;
        case ExtendType::MirrorOnce:
            u = std::abs(u);
            break;
        case ExtendType::Wrap:
            if (!(u >= 0 && u < m_size))
                u = Wrap(u);
            break;
        }
        return std::clamp(u, -Margin, m_size + Margin);
    }

    int Map(int index) const noexcept
    {
        return int(MapIndex<std::int64_t>(index, m_size, m_extend));
    }

private:
    /// More than the widest filter reaches.
    static constexpr double Margin = 4;

    double Wrap(double u) const noexcept { return u - m_period * std::floor(u / m_period); }

    int m_size = 0;
    ExtendType m_extend = ExtendType::Clamp;
    double m_period = 0;
};

/// floor for values in the range of int, without the call that baseline processors need.
inline int FloorToInt(double value) noexcept
{
    const int truncated = int(value);
    return truncated - (value < truncated);
}

} // namespace Raster::Resampling
