#pragma once

#include <array>

namespace Renderer {

/// Ordered dithering: what is added to a number, instead of one half, before it is cut down to a
/// whole one, so that over an area the mean stays.
///
/// The thresholds are Bayer's matrix of 16 × 16 ("An optimum method for two-level rendition of
/// continuous-tone pictures", 1973), (m + ½)/256 for m = 0…255: whole numbers stay as they are,
/// with 1/512 to spare for rounding, and means are at most 1/512 off. They depend on the page's
/// device pixel alone, so that tiles and passes agree. All channels of a pixel get the same, so
/// that premultiplied colour stays within alpha.
class OrderedDither
{
public:
    static constexpr unsigned Size = 16;

    /// The thresholds of pixels (x, y) to (x + count − 1, y).
    static void GetThresholds(int x, int y, unsigned count, float* thresholds) noexcept
    {
        const auto& row = Matrix[static_cast<unsigned>(y) % Size];
        for (unsigned i = 0; i < count; ++i)
            thresholds[i] = row[(static_cast<unsigned>(x) + i) % Size];
    }

private:
    using Thresholds = std::array<std::array<float, Size>, Size>;

    /// The bits of x ^ y and y in turn, those of the highest value last.
    static constexpr unsigned GetRank(unsigned x, unsigned y) noexcept
    {
        unsigned rank = 0;
        for (unsigned bit = 1; bit < Size; bit *= 2)
            rank = rank * 4 + ((x ^ y) & bit ? 2 : 0) + (y & bit ? 1 : 0);
        return rank;
    }

    static constexpr Thresholds MakeMatrix() noexcept
    {
        Thresholds result{};
        for (unsigned y = 0; y < Size; ++y)
            for (unsigned x = 0; x < Size; ++x)
                result[y][x] = (static_cast<float>(GetRank(x, y)) + 0.5F) / (Size * Size);
        return result;
    }

    static const Thresholds Matrix;
};

inline constexpr OrderedDither::Thresholds OrderedDither::Matrix = OrderedDither::MakeMatrix();

} // namespace Renderer
