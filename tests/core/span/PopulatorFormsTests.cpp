#include <cmath>
#include <cstdlib>

#include <renderer/core/span/NoiseField.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillNone.h>

#include "Painter.h"

namespace Renderer {

namespace {

/// A fraction of Max in a channel type.
template<class P>
typename P::ChannelType ToChannel(double value)
{
    using T = typename P::ChannelType;
    return std::is_integral_v<T> ? static_cast<T>(std::lround(value * double(P::Max)))
                                 : static_cast<T>(value);
}

/// Premultiplied pixels whose channels run through their range, colour never above alpha.
template<class P>
std::vector<P> MakeScratch(std::size_t count)
{
    std::vector<P> pixels(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double alpha = double(i % 53) / 52.0;
        pixels[i].Alpha() = ToChannel<P>(alpha);
        for (std::size_t c = 0; c < P::ColourCount; ++c)
            pixels[i][c] = ToChannel<P>(alpha * double((i * (c + 3)) % 17) / 16.0);
    }
    return pixels;
}

/// The nearest storable value of the exact result of a function of fractions.
template<class P, class Function>
void ExpectChannels(const std::vector<P>& actual, Function&& exact)
{
    for (std::size_t i = 0; i < actual.size(); ++i)
        for (std::size_t c = 0; c < P::ChannelCount; ++c) {
            const double value = exact(i, c);
            if constexpr (std::is_integral_v<typename P::ChannelType>)
                ASSERT_EQ(actual[i][c], ToChannel<P>(value)) << i << ", " << c;
            else
                ASSERT_NEAR(actual[i][c], value, 1e-6) << i << ", " << c;
        }
}

template<class P>
double Fraction(const P& pixel, std::size_t c)
{
    return double(pixel[c]) / double(P::Max);
}

template<class P>
class FormsTest : public testing::Test
{
protected:
    Painter<P> m_painter;
};
TYPED_TEST_SUITE(FormsTest, TestedPixels);

Kernel::Consolidated<FillGradient> MakeFade()
{
    return FillGradient::Create(
        FillGradient::Linear,
        Gradient::Create({{MakeColour(1, 0.5F, 0, 1), 0.0}, {MakeColour(0, 0.5F, 1, 0), 1.0}}));
}

TYPED_TEST(FormsTest, PaintsScaleTheScratchOrLieOverIt)
{
    using P = TypeParam;
    const auto scratch = MakeScratch<P>(150);
    const Params map{140, 0, 0, 0, 1, 0};
    const auto fade = MakeFade();
    const auto solid = MakeSolid(0, 0, 0, 127 / 255.0F);
    for (const Fill* fill :
         {static_cast<const Fill*>(solid.Get()), static_cast<const Fill*>(fade.Get())}) {
        ASSERT_TRUE(this->m_painter.Make(*fill, map));
        const auto paint = this->m_painter.Run(0, 0, std::vector<P>(scratch.size()));
        ASSERT_TRUE(this->m_painter.Make(*fill, map, PopulatorRole::Transparency));
        ExpectChannels(this->m_painter.Run(0, 0, scratch), [&](std::size_t i, std::size_t c) {
            return Fraction(scratch[i], c) * Fraction(paint[i], P::AlphaIndex);
        });
        ASSERT_TRUE(this->m_painter.Make(*fill, map, PopulatorRole::ColourOver));
        ExpectChannels(this->m_painter.Run(0, 0, scratch), [&](std::size_t i, std::size_t c) {
            return Fraction(paint[i], c) +
                   Fraction(scratch[i], c) * (1 - Fraction(paint[i], P::AlphaIndex));
        });
    }
}

TYPED_TEST(FormsTest, SolidsArePremultipliedAndKnownWithoutPopulator)
{
    using P = TypeParam;
    const auto fill = MakeSolid(0.8F, 0.3F, 0.1F, 0.6F);
    P plain;
    fill->GetColour()->GetColour(plain, true, {});
    P pixel;
    ASSERT_TRUE(GetSolidPixel(*fill, this->m_painter.m_profiles, pixel));
    ExpectChannels(std::vector<P>{pixel}, [&](std::size_t, std::size_t c) {
        return Fraction(plain, c) * (c == P::AlphaIndex ? 1.0 : Fraction(plain, P::AlphaIndex));
    });
    ASSERT_TRUE(this->m_painter.Make(*fill, {}));
    EXPECT_EQ(this->m_painter.Run(3, 4, std::vector<P>(65)), std::vector<P>(65, pixel));

    EXPECT_FALSE(GetSolidPixel(*MakeSolid(0, 0, 0, 1, 0.5), this->m_painter.m_profiles, pixel));
    EXPECT_FALSE(GetSolidPixel(*MakeFade(), this->m_painter.m_profiles, pixel));
    EXPECT_FALSE(this->m_painter.Make(FillNone(), {}));
}

TYPED_TEST(FormsTest, NoiseMovesColoursByItsAmountAndDependsOnThePixelAlone)
{
    using P = TypeParam;
    const auto fill = MakeSolid(0.5F, 0.5F, 0.5F, 0.5F, 0.1);
    P plain;
    ASSERT_TRUE(
        GetSolidPixel(*MakeSolid(0.5F, 0.5F, 0.5F, 0.5F), this->m_painter.m_profiles, plain));
    const auto field = this->m_painter.Paint(*fill, {}, {0, 0, 100, 100});
    double sum = 0;
    double largest = 0;
    std::size_t touched = 0; // a channel that grain may move both ways
    while (touched + 1 < P::ColourCount && plain[touched] == 0)
        ++touched;
    for (const P& pixel : field) {
        ASSERT_EQ(pixel.Alpha(), plain.Alpha());
        const double move = Fraction(pixel, touched) - Fraction(plain, touched);
        sum += move;
        largest = std::max(largest, std::abs(move));
    }
    // Grain spreads evenly over ±0.1, premultiplied by ½; the tolerance is one 8-bit step.
    EXPECT_NEAR(largest, 0.05, 1.0 / 255);
    EXPECT_NEAR(sum / double(field.size()), 0.0, 1e-3 + 0.5 / 255);

    // The tile (60, 40)…(70, 50) of another populator is that part of the page.
    Painter<P> other;
    const auto tile = other.Paint(*fill, Params{3, 0, 0, 0, 2, 0}, {60, 40, 70, 50});
    for (std::size_t i = 0; i < tile.size(); ++i)
        ASSERT_EQ(tile[i], field[(40 + i / 10) * 100 + 60 + i % 10]);
}

TYPED_TEST(FormsTest, GradientNoiseFollowsTheStops)
{
    using P = TypeParam;
    const auto fill = FillGradient::Create(
        FillGradient::Linear, Gradient::Create({{MakeColour(0.5F, 0.5F, 0.5F, 1, 0.0), 0.0},
                                                {MakeColour(0.5F, 0.5F, 0.5F, 1, 0.4), 1.0}}));
    const auto row = this->m_painter.Paint(*fill, {1000, 0, 0, 0, 1, 0}, {-100, 7, 1100, 8});
    P plain;
    ASSERT_TRUE(GetSolidPixel(*MakeSolid(0.5F, 0.5F, 0.5F, 1), this->m_painter.m_profiles, plain));
    std::size_t c = P::ColourCount - 1; // not an ink that the colour lacks
    while (P::Roles[c] == Raster::ChannelRole::Opponent)
        --c;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const double t = std::clamp((double(i) - 99.5) / 1000.0, 0.0, 1.0);
        const double direction = P::Roles[c] == Raster::ChannelRole::Subtractive ? -1 : 1;
        const double grain = NoiseField::GetGrain(int(i) - 100, 7);
        ASSERT_NEAR(Fraction(row[i], c), Fraction(plain, c) + direction * 0.4 * t * grain,
                    1.0 / 255);
    }
}

TEST(NoiseField, IsUniformAndUncorrelated)
{
    int histogram[16] = {};
    double product = 0;
    for (int y = -128; y < 128; ++y)
        for (int x = -128; x < 128; ++x) {
            const double grain = NoiseField::GetGrain(x, y);
            ASSERT_TRUE(grain >= -1 && grain < 1);
            ++histogram[int((grain + 1) * 8)];
            product +=
                grain * NoiseField::GetGrain(x + 1, y) + grain * NoiseField::GetGrain(x, y + 1);
        }
    for (const int count : histogram)
        EXPECT_NEAR(count, 4096, 5 * 62); // 5 σ of a binomial distribution
    EXPECT_NEAR(product / (2 * 65536), 0.0, 0.01);
}

} // namespace

} // namespace Renderer
