#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Formats.h"
#include "Oracle.h"

namespace BlendTests {

using Renderer::FillBlendMode;
using Mode = FillBlendMode::BlendMode;

namespace {

template<class P>
constexpr bool IsFloat = std::is_floating_point_v<typename P::ChannelType>;

/// Every pair of edge alphas with every pair of edge colours, then random pairs.
template<class P>
struct PixelPairs
{
    using T = typename P::ChannelType;
    std::vector<P> sources, backdrops;
    std::mt19937 random{7};

    PixelPairs()
    {
        for (const T as : GetAlphas()) {
            for (const T ab : GetAlphas()) {
                for (std::size_t i = 0; i < patterns.size(); ++i) {
                    for (std::size_t j = 0; j < patterns.size(); ++j)
                        Append(MakeEdge(as, patterns[i]), MakeEdge(ab, patterns[j]));
                }
            }
        }
        for (int i = 0; i < 400; ++i)
            Append(MakeRandom(), MakeRandom());
    }

private:
    /// Levels of the channels; see GetLevel.
    static constexpr std::array<std::array<int, 4>, 10> patterns{{{0, 0, 0, 0},
                                                                  {5, 5, 5, 5},
                                                                  {2, 3, 1, 0},
                                                                  {0, 5, 2, 3},
                                                                  {5, 4, 0, 1},
                                                                  {3, 3, 3, 2},
                                                                  {1, 2, 6, 6},
                                                                  {6, 7, 5, 4},
                                                                  {3, 8, 8, 0},
                                                                  {6, 9, 8, 1}}};

    static std::vector<T> GetAlphas()
    {
        constexpr T max = P::Max;
        if constexpr (IsFloat<P>)
            return {0, T(1e-3), T(2 / 255.0), T(0.499), T(0.5), T(0.999), max};
        else
            return {0, 1, 2, max / 2, max / 2 + 1, max - 1, max};
    }

    static T GetLevel(T alpha, int level)
    {
        if constexpr (IsFloat<P>) {
            constexpr double fractions[] = {0, 1e-4, 0.4999, 0.5,   0.9999,
                                            1, 2.75, -0.5,   0.502, 0.503};
            return static_cast<T>(alpha * fractions[level]);
        } else {
            const int a = alpha;
            const int neutral = static_cast<int>(std::lround(a * 128.0 / 255.0)); // of Lab
            const int values[] = {0, 1,     a / 2,     (a + 1) / 2, a - 1,
                                  a, a / 3, 2 * a / 3, neutral,     neutral + 1};
            return static_cast<T>(std::clamp(values[level], 0, a));
        }
    }

    static P MakeEdge(T alpha, const std::array<int, 4>& pattern)
    {
        P pixel;
        for (std::size_t c = 0; c < P::ColourCount; ++c)
            pixel[c] = GetLevel(alpha, pattern[c]);
        pixel.Alpha() = alpha;
        return pixel;
    }

    P MakeRandom()
    {
        const auto fraction = [&] { return static_cast<double>(random()) / 4294967295.0; };
        P pixel;
        pixel.Alpha() = static_cast<T>(fraction() * P::Max);
        for (std::size_t c = 0; c < P::ColourCount; ++c)
            pixel[c] = static_cast<T>(fraction() * (IsFloat<P> ? 1.5 : 1.0) * pixel.Alpha());
        return pixel;
    }

    void Append(const P& source, const P& backdrop)
    {
        sources.push_back(source);
        backdrops.push_back(backdrop);
    }
};

template<class P>
RealPixel ToReal(const P& pixel)
{
    RealPixel real{};
    for (std::size_t c = 0; c < P::ChannelCount; ++c)
        real[c] = static_cast<double>(pixel.channels[c]) / static_cast<double>(P::Max);
    return real;
}

template<class P>
OracleFormat MakeFormat()
{
    return {P::Roles, P::ColourCount, IsFloat<P>};
}

/// How far the result of one channel may be from the exact one.
template<class P>
double GetTolerance(const OracleInput& input, double exact, std::size_t channel)
{
    if constexpr (IsFloat<P>) {
        // The largest term bounds what rounding can do to the sum.
        double size = std::abs(exact);
        for (std::size_t c = 0; c < P::ChannelCount; ++c) {
            if (c == channel || !IsSeparable(input.mode))
                size = std::max({size, std::abs(input.source[c]), std::abs(input.backdrop[c])});
        }
        return 1e-5 * size + 1e-7;
    } else {
        return (sizeof(typename P::ChannelType) == 1 ? 1.0 : 2.0) / P::Max;
    }
}

template<class P>
bool Matches(const OracleInput& input, const RealPixel& exact, const RealPixel& ours,
             std::size_t channel)
{
    return std::abs(ours[channel] - exact[channel]) <=
           GetTolerance<P>(input, exact[channel], channel) + 1e-12;
}

template<class P>
bool Matches(const OracleInput& input, const RealPixel& exact, const RealPixel& ours)
{
    for (std::size_t c = 0; c < P::ChannelCount; ++c) {
        if (!Matches<P>(input, exact, ours, c))
            return false;
    }
    return true;
}

/// Half of what storage can tell apart.
template<class P>
double GetHalfStep(double value)
{
    return IsFloat<P> ? std::abs(value) * 6e-8 : 0.5 / P::Max;
}

/// A colour of a neutral Lab pixel where rounding to storage hides that it is one.
template<class P>
void MakeNeutral(RealPixel& pixel)
{
    if (P::Roles[1] != Raster::ChannelRole::Opponent)
        return;
    const double neutral = pixel[P::AlphaIndex] * 128.0 / 255.0;
    const double half = GetHalfStep<P>(1.0) * 1.0001;
    if (std::abs(pixel[1] - neutral) <= half && std::abs(pixel[2] - neutral) <= half)
        pixel[1] = pixel[2] = neutral;
}

/// Whether some input within half a step of the given one has this result. Separable modes answer
/// channel by channel, the others for all channels at once.
template<class P>
bool MatchesNearby(const OracleFormat& format, const OracleInput& input, const RealPixel& ours)
{
    const std::size_t colours = P::ColourCount;
    const RealPixel exact = Composite(format, input);
    std::vector<bool> matched(colours + 1);
    for (std::size_t c = 0; c <= colours; ++c)
        matched[c] = Matches<P>(input, exact, ours, c);
    OracleInput neutral = input;
    MakeNeutral<P>(neutral.source);
    MakeNeutral<P>(neutral.backdrop);
    if (Matches<P>(input, Composite(format, neutral), ours))
        return true;

    if (IsSeparable(input.mode)) {
        for (const double ds : {-1.0, -1e-6, 0.0, 1e-6, 1.0}) {
            for (const double db : {-1.0, -1e-6, 0.0, 1e-6, 1.0}) {
                OracleInput near = input;
                for (std::size_t c = 0; c < colours; ++c) {
                    near.source[c] += ds * GetHalfStep<P>(near.source[c]);
                    near.backdrop[c] += db * GetHalfStep<P>(near.backdrop[c]);
                }
                const RealPixel result = Composite(format, near);
                for (std::size_t c = 0; c < colours; ++c)
                    matched[c] = matched[c] || Matches<P>(input, result, ours, c);
            }
        }
        return std::find(matched.begin(), matched.end(), false) == matched.end();
    }
    std::size_t count = 1;
    for (std::size_t c = 0; c < 2 * colours; ++c)
        count *= 3;
    for (std::size_t code = 0; code < count; ++code) {
        OracleInput near = input;
        std::size_t digits = code;
        for (std::size_t c = 0; c < 2 * colours; ++c, digits /= 3) {
            double& value = c < colours ? near.source[c] : near.backdrop[c - colours];
            value += (static_cast<double>(digits % 3) - 1) * GetHalfStep<P>(value);
        }
        if (Matches<P>(input, Composite(format, near), ours))
            return true;
    }
    return false;
}

std::string Describe(const OracleInput& input, const RealPixel& ours, const RealPixel& exact,
                     double max)
{
    std::string text = "mode " + std::to_string(input.mode) + " cover " +
                       std::to_string(input.cover) + " mask " + std::to_string(input.mask);
    const auto append = [&](const char* name, const RealPixel& pixel) {
        text += std::string(" ") + name;
        for (const double channel : pixel)
            text += " " + std::to_string(channel * max);
    };
    append("source", input.source);
    append("backdrop", input.backdrop);
    append("ours", ours);
    append("exact", exact);
    return text;
}

} // namespace

template<class P>
class BlendSweep : public testing::Test
{
protected:
    /// Composites all pairs, checks the two forms against each other and every result against the
    /// oracle; counts the results that only an input nearby explains.
    void Check(Mode mode, unsigned char cover, int mask, double ratio)
    {
        const auto count = static_cast<unsigned>(m_pairs.sources.size());
        const std::vector<unsigned char> covers(count, cover);
        const std::vector<unsigned char> masks(count, static_cast<unsigned char>(mask));
        const unsigned char* maskBytes = mask < 0 ? nullptr : masks.data();
        const auto& blend = (*m_tables.used)[static_cast<std::size_t>(mode)];
        std::vector<P> result = m_pairs.backdrops;
        std::vector<P> masked = m_pairs.backdrops;
        blend.run(result.data(), maskBytes, m_pairs.sources.data(), cover, ratio, count);
        blend.mask(masked.data(), maskBytes, m_pairs.sources.data(), covers.data(), ratio, count);
        ASSERT_TRUE(result == masked) << "run and mask form differ, mode " << mode;

        for (unsigned i = 0; i < count; ++i) {
            if (cover == 0 || mask == 0)
                ASSERT_TRUE(result[i] == m_pairs.backdrops[i]) << "touched without coverage";
            else
                CheckPixel({mode, ToReal(m_pairs.sources[i]), ToReal(m_pairs.backdrops[i]), cover,
                            mask, ratio},
                           result[i]);
            if (HasFatalFailure())
                return;
        }
    }

    void CheckPixel(const OracleInput& input, const P& result)
    {
        const RealPixel ours = ToReal(result);
        const RealPixel exact = Composite(m_format, input);
        ++m_compared;
        if (!Matches<P>(input, exact, ours)) {
            ++m_nearby;
            ASSERT_TRUE(IsDiscontinuous(input.mode) && MatchesNearby<P>(m_format, input, ours))
                << Describe(input, ours, exact, P::Max);
        }
        if constexpr (!IsFloat<P>) {
            ASSERT_LE(*std::max_element(result.channels.begin(), result.channels.end()),
                      result.Alpha())
                << Describe(input, ours, exact, P::Max);
        }
    }

    PixelPairs<P> m_pairs;
    OracleFormat m_format = MakeFormat<P>();
    Tables m_tables = GetTables<P>();
    long m_compared = 0;
    long m_nearby = 0;
};

TYPED_TEST_SUITE(BlendSweep, AllPixels);

TYPED_TEST(BlendSweep, AgreesWithDoublePrecision)
{
    for (int mode = 0; mode <= FillBlendMode::Nameless; ++mode) {
        for (const int cover : {0, 1, 127, 128, 254, 255}) {
            for (const int mask : {-1, 0, 1, 128, 255}) {
                this->Check(static_cast<Mode>(mode), static_cast<unsigned char>(cover), mask, 1.0);
                ASSERT_FALSE(this->HasFatalFailure());
            }
        }
    }
    this->RecordProperty("nearby", std::to_string(this->m_nearby));
    EXPECT_LT(this->m_nearby, this->m_compared / 200);
}

TYPED_TEST(BlendSweep, AgreesUnderCoverageGamma)
{
    for (const double ratio : {0.45, 2.2}) {
        for (const Mode mode : {FillBlendMode::Normal, FillBlendMode::Overlay, FillBlendMode::Hue,
                                FillBlendMode::Erase, FillBlendMode::Mask}) {
            for (const int cover : {0, 1, 100, 255}) {
                for (const int mask : {-1, 77, 255}) {
                    this->Check(mode, static_cast<unsigned char>(cover), mask, ratio);
                    ASSERT_FALSE(this->HasFatalFailure());
                }
            }
        }
    }
    EXPECT_LT(this->m_nearby, this->m_compared / 200);
}

} // namespace BlendTests
