#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Formats.h"
#include "OracleMatch.h"

namespace BlendTests {

using Renderer::FillBlendMode;
using Mode = FillBlendMode::BlendMode;

namespace {

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
