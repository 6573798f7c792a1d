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

/// Nearest neighbours are looked up a hair after the position: where a map puts pixel centres
/// between two source pixels, rounding noise must not pick the one here and the other there.
inline constexpr double NearestBias = 1e-6;

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

/// sin(π/3 · t) for 0 ≤ t ≤ 1, exact to a few units of the last place of double: Taylor's series to
/// the term of degree 19. Plain arithmetic, unlike the library's function, is the same on every
/// processor and runs in vector registers.
inline double SineOfThird(double t) noexcept
{
    const double x = std::numbers::pi / 3 * t;
    const double y = x * x;
    double sum = -1.0 / 121645100408832000; // 1/19!
    sum = sum * y + 1.0 / 355687428096000;
    sum = sum * y - 1.0 / 1307674368000;
    sum = sum * y + 1.0 / 6227020800;
    sum = sum * y - 1.0 / 39916800;
    sum = sum * y + 1.0 / 362880;
    sum = sum * y - 1.0 / 5040;
    sum = sum * y + 1.0 / 120;
    sum = sum * y - 1.0 / 6;
    return x + x * y * sum;
}

/// sinc(d)·sinc(d/3) for |d| < 3 at d = f − k, scaled to the sum 1. With sin(π(f − k)) = ±sin(πf)
/// the common factor 3·sin(πf)/π² falls out, and the other sine needs two evaluations for all taps:
/// (−1)^k · sin((f − k)π/3) is, for k = −2 … 3, b, −a−b, a, b, −a−b, a with a = sin(fπ/3) and
/// b = sin((1−f)π/3).
struct Lanczos3Filter
{
    static constexpr int Taps = 6;
    static constexpr bool Overshoots = true;

    static std::array<double, Taps> GetWeights(double f) noexcept
    {
        // On a pixel's centre both the factor and that pixel's d² vanish; so near to it the other
        // weights drown in rounding.
        constexpr double Tiny = 1e-40;
        const double behind = f > Tiny ? f : Tiny;
        const double before = 1 - f > Tiny ? 1 - f : Tiny;
        const double a = SineOfThird(behind);
        const double b = SineOfThird(before);
        const double w0 = b / ((2 + f) * (2 + f));
        const double w1 = -(a + b) / ((1 + f) * (1 + f));
        const double w2 = a / (behind * behind);
        const double w3 = b / (before * before);
        const double w4 = -(a + b) / ((2 - f) * (2 - f));
        const double w5 = a / ((3 - f) * (3 - f));
        const double scale = 1 / (((w0 + w5) + (w1 + w4)) + (w2 + w3));
        return {w0 * scale, w1 * scale, w2 * scale, w3 * scale, w4 * scale, w5 * scale};
    }
};

/// The pixel that stands at \p index of an endless row that begins with \p size pixels; −1 where it
/// is transparent. \pre it is none of those pixels
template<class Int>
Int MapOutsideIndex(Int index, Int size, ExtendType extend) noexcept
{
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

/// As MapOutsideIndex, for any index.
template<class Int>
inline Int MapIndex(Int index, Int size, ExtendType extend) noexcept
{
    return index >= 0 && index < size ? index : MapOutsideIndex(index, size, extend);
}

/// One axis of the source: brings positions near its pixels.
class ExtendedAxis
{
public:
    ExtendedAxis() = default;
    ExtendedAxis(int size, ExtendType extend) noexcept
        : m_size(size), m_extend(extend), m_period(extend == ExtendType::Mirror ? 2.0 * size : size)
    {}

    int GetSize() const noexcept { return m_size; }

    /// Whether a position lies in the picture itself; it then stays as it is.
    bool IsInside(double u) const noexcept { return u >= 0 && u < m_size; }

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

    /// Folds positions that rise or fall steadily. Not inlined, since blocks that leave the picture
    /// are few.
    [[gnu::noinline]] void FoldAll(double* positions, unsigned count) const noexcept
    {
        unsigned begin = 0;
        for (; begin < count && !IsInside(positions[begin]); ++begin)
            positions[begin] = Fold(positions[begin]);
        for (; begin < count && !IsInside(positions[count - 1]); --count)
            positions[count - 1] = Fold(positions[count - 1]);
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

/// floor for what Fold gives and a filter's half a pixel less, in arithmetic that all processors
/// have for vectors. Where the position lies within rounding below a whole number, it counts as
/// that.
inline int FloorNearPicture(double value) noexcept
{
    return int(value + 8) - 8;
}

} // namespace Raster::Resampling
