#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <raster/adjustments/BlackAndWhiteAdjustment.h>
#include <raster/adjustments/BrightnessContrastAdjustment.h>
#include <raster/adjustments/ChannelMixerAdjustment.h>
#include <raster/adjustments/CurvesAdjustment.h>
#include <raster/adjustments/HueSaturationLightnessAdjustment.h>
#include <raster/adjustments/InvertAdjustment.h>
#include <raster/adjustments/LevelsAdjustment.h>
#include <raster/adjustments/PosteriseAdjustment.h>
#include <raster/adjustments/ThresholdAdjustment.h>
#include <raster/adjustments/WhiteBalanceAdjustment.h>

using namespace Raster;

namespace {

using Transform = Kernel::Counted<const ColourTransform>;
using RGB = std::array<double, 3>;
using Formula = std::function<RGB(const RGB&)>;
using Pixels = std::vector<PixelRGBAF>;

template<class Adjustment, class... Settings>
Transform Make(const Settings&... settings)
{
    return Transform(new Adjustment(settings...));
}

/// Corners, greys, edges and random colours, some beyond 0…1.
Pixels MakePixels()
{
    Pixels pixels;
    for (const float r : {0.f, 0.25f, 0.5f, 1.f})
        for (const float g : {0.f, 0.25f, 0.5f, 1.f})
            for (const float b : {0.f, 0.25f, 0.5f, 1.f})
                pixels.push_back({{r, g, b, 0.5f}});
    std::mt19937 random(1);
    std::uniform_real_distribution<float> inside(0, 1), beyond(-2, 4);
    for (int i = 0; i < 500; ++i) {
        auto& from = i % 4 ? inside : beyond;
        pixels.push_back({{from(random), from(random), from(random), inside(random)}});
    }
    return pixels;
}

Pixels Apply(const Transform& transform, Pixels pixels)
{
    transform->Apply(pixels.data(), pixels.size(), {});
    return pixels;
}

void ExpectFormula(const Transform& transform, const Formula& formula, double tolerance = 1e-5)
{
    EXPECT_FALSE(transform->IsIdentity());
    const Pixels before = MakePixels(), after = Apply(transform, before);
    for (std::size_t i = 0; i < before.size(); ++i) {
        const RGB expected = formula({before[i][0], before[i][1], before[i][2]});
        for (std::size_t c = 0; c < 3; ++c)
            ASSERT_NEAR(after[i][c], expected[c], tolerance * (1 + std::abs(expected[c])))
                << i << " channel " << c << " of " << before[i][0] << ' ' << before[i][1] << ' '
                << before[i][2];
        ASSERT_EQ(after[i].Alpha(), before[i].Alpha());
    }
}

/// The formula of one channel for all three.
Formula Each(const std::function<double(double)>& channel)
{
    return [channel](const RGB& rgb) {
        return RGB{channel(rgb[0]), channel(rgb[1]), channel(rgb[2])};
    };
}

double Clamp(double v)
{
    return std::clamp(v, 0.0, 1.0);
}

/// Some of every kind, none of which is the identity.
std::vector<Transform> MakeOneOfEach()
{
    LevelsSettings levels;
    levels.master = {0.1f, 0.8f, 1.7f, 0.05f, 0.9f};
    CurvesSettings curves;
    curves.green = ToneCurve({{0, 0.1f}, {0.4f, 0.7f}, {1, 0.9f}});
    ChannelMixerSettings mixer;
    mixer.red = {0.3f, -0.4f, 1.2f, 0.1f};
    return {Make<BrightnessContrastAdjustment>(BrightnessContrastSettings{0.2f, 0.3f}),
            Make<CurvesAdjustment>(curves),
            Make<LevelsAdjustment>(levels),
            Make<HueSaturationLightnessAdjustment>(HueSaturationLightnessSettings{30, 0.2f, -0.1f}),
            Make<ChannelMixerAdjustment>(mixer),
            Make<WhiteBalanceAdjustment>(WhiteBalanceSettings{4000, 0.3f}),
            Make<BlackAndWhiteAdjustment>(),
            Make<InvertAdjustment>(),
            Make<PosteriseAdjustment>(),
            Make<ThresholdAdjustment>()};
}

} // namespace

TEST(Adjustments, BrightnessAndContrastTurnTheLineOfTones)
{
    for (const double b : {-1.0, -0.3, 0.0, 0.4, 1.0})
        for (const double c : {-1.0, -0.5, 0.25, 0.8}) {
            ExpectFormula(
                Make<BrightnessContrastAdjustment>(BrightnessContrastSettings{float(b), float(c)}),
                Each([&](double v) {
                    v = b < 0 ? v * (1 + b) : v + (1 - v) * b;
                    return (v - 0.5) * std::tan((c + 1) * std::numbers::pi / 4) + 0.5;
                }));
        }
    for (const float c : {0.9999f, 1.0f}) { // never steeper than 256
        const auto extreme = Make<BrightnessContrastAdjustment>(BrightnessContrastSettings{0, c});
        const Pixels after = Apply(extreme, {{{0.49f, 0.5f, 0.51f, 1}}});
        EXPECT_NEAR(after[0][0], -2.06f, 1e-4);
        EXPECT_EQ(after[0][1], 0.5f);
        EXPECT_NEAR(after[0][2], 3.06f, 1e-4);
    }
}

TEST(Adjustments, LevelsSpreadTones)
{
    const LevelsRange master{0.1f, 0.9f, 2.2f, 0.2f, 0.7f}, inverted{0, 1, 0.5f, 1, 0},
        step{0.5f, 0.5f, 1, 0.1f, 0.8f};
    const auto spread = [](const LevelsRange& r, double v) {
        if (r.inputWhite <= r.inputBlack)
            return double(v >= r.inputBlack ? r.outputWhite : r.outputBlack);
        v = Clamp((v - r.inputBlack) / (double(r.inputWhite) - r.inputBlack));
        return r.outputBlack + (double(r.outputWhite) - r.outputBlack) * std::pow(v, 1 / r.gamma);
    };
    ExpectFormula(Make<LevelsAdjustment>(LevelsSettings{master, {}, inverted, step}),
                  [&](const RGB& rgb) {
                      return RGB{spread(master, rgb[0]), spread(master, spread(inverted, rgb[1])),
                                 spread(master, spread(step, rgb[2]))};
                  });
    // A channel that is not changed is not clamped either.
    ExpectFormula(Make<LevelsAdjustment>(LevelsSettings{{}, master, {}, {}}), [&](const RGB& rgb) {
        return RGB{spread(master, rgb[0]), rgb[1], rgb[2]};
    });
}

TEST(Adjustments, CurvesGoThroughTheirPointsAndNeverOvershoot)
{
    std::mt19937 random(4);
    std::uniform_real_distribution<float> unit(0, 1);
    for (int round = 0; round < 200; ++round) {
        std::vector<ToneCurvePoint> points;
        for (unsigned i = 0; i < 1 + random() % 8; ++i)
            points.push_back({unit(random), unit(random)});
        const ToneCurve curve(points);
        const auto& sorted = curve.GetPoints();
        for (const ToneCurvePoint& point : sorted)
            EXPECT_NEAR(curve.Evaluate(point.input), point.output, 1e-6);
        EXPECT_EQ(curve.Evaluate(-3), sorted.front().output);
        EXPECT_EQ(curve.Evaluate(3), sorted.back().output);
        for (std::size_t i = 0; i + 1 < sorted.size(); ++i) {
            const auto [low, high] = std::minmax(sorted[i].output, sorted[i + 1].output);
            float before = sorted[i].output;
            for (int s = 1; s < 20; ++s) {
                const float t = float(s) / 20;
                const float y = curve.Evaluate(std::lerp(sorted[i].input, sorted[i + 1].input, t));
                EXPECT_GE(y, low - 1e-5);
                EXPECT_LE(y, high + 1e-5);
                if (sorted[i + 1].output >= sorted[i].output) {
                    EXPECT_GE(y, before - 1e-5); // monotone
                }
                before = y;
            }
        }
    }
    // Smooth where the tones rise steadily, straight through two points, the later of two equals.
    const ToneCurve gentle({{0, 0}, {0.5f, 0.6f}, {1, 1}});
    const auto slope = [&](float x) {
        return (gentle.Evaluate(x + 1e-3f) - gentle.Evaluate(x)) / 1e-3f;
    };
    EXPECT_NEAR(slope(0.5f), slope(0.499f), 0.02);
    EXPECT_NEAR(ToneCurve({{1, 0}, {0, 1}}).Evaluate(0.3f), 0.7f, 1e-6);
    EXPECT_EQ(ToneCurve({{0.5f, 0.1f}, {0.5f, 0.9f}}).Evaluate(0.2f), 0.9f);
    EXPECT_TRUE(ToneCurve({{0, 0}, {0.3f, 0.3f}, {1, 1}}).IsIdentity());
    EXPECT_FALSE(ToneCurve({{0.1f, 0.1f}, {0.9f, 0.9f}}).IsIdentity());
    EXPECT_EQ(gentle.Evaluate(NAN), 0);

    // The own curve first, then the master.
    const ToneCurve halve({{0, 0}, {1, 0.5f}}), negative({{0, 1}, {1, 0}});
    ExpectFormula(Make<CurvesAdjustment>(CurvesSettings{negative, halve, {}, {}}),
                  [](const RGB& rgb) {
                      return RGB{1 - Clamp(rgb[0]) / 2, 1 - Clamp(rgb[1]), 1 - Clamp(rgb[2])};
                  });
}

TEST(Adjustments, HueSaturationAndLightnessFollowTheirModel)
{
    // The textbook's conversions in double precision.
    const auto toRGB = [](double h, double s, double l) {
        const auto channel = [&](double n) {
            const double k = std::fmod(n + h / 30 + 24, 12);
            return l - s * std::min(l, 1 - l) * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
        };
        return RGB{channel(0), channel(8), channel(4)};
    };
    for (const auto& s :
         {HueSaturationLightnessSettings{120, 0, 0}, HueSaturationLightnessSettings{-47, 0.6f, 0},
          HueSaturationLightnessSettings{180, -0.5f, 0.3f},
          HueSaturationLightnessSettings{0, -1, -0.2f}}) {
        ExpectFormula(
            Make<HueSaturationLightnessAdjustment>(s),
            [&](RGB rgb) {
                for (double& v : rgb)
                    v = Clamp(v);
                const auto [low, high] = std::minmax({rgb[0], rgb[1], rgb[2]});
                const double l = (low + high) / 2, d = high - low;
                double h = 0, saturation = 0;
                if (d > 0) {
                    saturation = d / (1 - std::abs(2 * l - 1));
                    h = 60 * (rgb[0] == high   ? (rgb[1] - rgb[2]) / d
                              : rgb[1] == high ? (rgb[2] - rgb[0]) / d + 2
                                               : (rgb[0] - rgb[1]) / d + 4);
                }
                return toRGB(h + s.hue, std::min(1.0, saturation * (1 + s.saturation)),
                             s.lightness < 0 ? l * (1 + s.lightness) : l + (1 - l) * s.lightness);
            },
            1e-4);
    }
}

TEST(Adjustments, ChannelsAreMixedInvertedPosterisedAndThresholded)
{
    ChannelMixerSettings mixer;
    mixer.red = {0.5f, -0.25f, 2, 0.125f};
    mixer.blue = {0, 0, 0, 0.75f};
    ExpectFormula(Make<ChannelMixerAdjustment>(mixer), [](const RGB& rgb) {
        return RGB{0.5 * rgb[0] - 0.25 * rgb[1] + 2 * rgb[2] + 0.125, rgb[1], 0.75};
    });
    ExpectFormula(Make<InvertAdjustment>(), Each([](double v) { return 1 - v; }));
    for (const unsigned n : {2u, 3u, 5u, 256u}) {
        ExpectFormula(Make<PosteriseAdjustment>(PosteriseSettings{n}), Each([n](double v) {
                          return std::min(n - 1.0, double(std::floor(float(Clamp(v)) * float(n)))) /
                                 (n - 1);
                      }));
    }
    for (const float level : {0.0f, 0.3f, 1.0f}) {
        ExpectFormula(Make<ThresholdAdjustment>(ThresholdSettings{level}), [=](const RGB& rgb) {
            const float y = 0.30f * float(rgb[0]) + 0.59f * float(rgb[1]) + 0.11f * float(rgb[2]);
            return y >= level ? RGB{1, 1, 1} : RGB{0, 0, 0};
        });
    }
}

TEST(Adjustments, BlackAndWhiteWeighsHues)
{
    ExpectFormula(Make<BlackAndWhiteAdjustment>(), [](const RGB& rgb) {
        const double y = 0.30 * rgb[0] + 0.59 * rgb[1] + 0.11 * rgb[2];
        return RGB{y, y, y};
    });
    const BlackAndWhiteSettings s{0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f};
    const auto transform = Make<BlackAndWhiteAdjustment>(s);
    const Pixels pure{{{1, 0, 0, 1}}, {{1, 1, 0, 1}}, {{0, 1, 0, 1}},      {{0, 1, 1, 1}},
                      {{0, 0, 1, 1}}, {{1, 0, 1, 1}}, {{.5f, .5f, .5f, 1}}};
    const Pixels after = Apply(transform, pure);
    const float expected[] = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.5f};
    for (std::size_t i = 0; i < pure.size(); ++i)
        EXPECT_FLOAT_EQ(after[i][1], expected[i]) << i;
    // Halfway between red and yellow: one half of the way from the red's grey to the yellow's.
    EXPECT_FLOAT_EQ(Apply(transform, {{{1, 0.5f, 0, 1}}})[0][0], 0.15f);
}

TEST(Adjustments, WhiteBalanceMakesTheLightNeutral)
{
    const auto decode = [](double v) {
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    const Pixels white{{{0.8f, 0.8f, 0.8f, 1}}};
    const auto balance = [&](float temperature, float tint) {
        return Apply(Make<WhiteBalanceAdjustment>(WhiteBalanceSettings{temperature, tint}),
                     white)[0];
    };
    // Warm light: the picture gets bluer; green light: more magenta. Monotone in both.
    float before = 9;
    for (const float kelvin : {2000.f, 3000.f, 4500.f, 6500.f, 9000.f, 15000.f}) {
        const PixelRGBAF p = balance(kelvin, 0);
        EXPECT_LT(p[2] - p[0], before);
        before = p[2] - p[0];
        const PixelRGBAF green = balance(kelvin, 0.5f), magenta = balance(kelvin, -0.5f);
        EXPECT_LT(green[1] - (green[0] + green[2]) / 2, p[1] - (p[0] + p[2]) / 2) << kelvin;
        EXPECT_GT(magenta[1] - (magenta[0] + magenta[2]) / 2, p[1] - (p[0] + p[2]) / 2) << kelvin;
    }
    // The colour of a 3,000 K black body (linear sRGB of its chromaticity 0.4369, 0.4041) becomes
    // that of one of 6,500 K (0.3135, 0.3237), at the same luminance.
    const auto toLinear = [](double x, double y) {
        const double X = x / y, Z = (1 - x - y) / y;
        return RGB{3.2406 * X - 1.5372 - 0.4986 * Z, -0.9689 * X + 1.8758 + 0.0415 * Z,
                   0.0557 * X - 0.2040 + 1.0570 * Z};
    };
    const RGB light = toLinear(0.4369, 0.4041), neutral = toLinear(0.3135, 0.3237);
    const auto encode = [](double v) { return float(1.055 * std::pow(0.4 * v, 1 / 2.4) - 0.055); };
    const Pixels after = Apply(Make<WhiteBalanceAdjustment>(WhiteBalanceSettings{3000, 0}),
                               {{{encode(light[0]), encode(light[1]), encode(light[2]), 1}}});
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_NEAR(decode(after[0][c]), 0.4 * neutral[c], 0.004) << c;
}

TEST(Adjustments, NeutralSettingsChangeNoBit)
{
    const float nan = NAN;
    BlackAndWhiteSettings noWeights;
    noWeights.reds = nan;
    const std::vector<Transform> identities{
        Make<BrightnessContrastAdjustment>(BrightnessContrastSettings{}),
        Make<BrightnessContrastAdjustment>(BrightnessContrastSettings{nan, nan}),
        Make<CurvesAdjustment>(CurvesSettings{}),
        Make<LevelsAdjustment>(LevelsSettings{}),
        Make<LevelsAdjustment>(LevelsSettings{{nan, 7, nan, -1, nan}, {}, {}, {}}),
        Make<HueSaturationLightnessAdjustment>(HueSaturationLightnessSettings{}),
        Make<ChannelMixerAdjustment>(ChannelMixerSettings{}),
        Make<WhiteBalanceAdjustment>(WhiteBalanceSettings{})};
    for (const Transform& transform : identities) {
        EXPECT_TRUE(transform->IsIdentity());
        EXPECT_EQ(Apply(transform, MakePixels()), MakePixels());
    }
    EXPECT_TRUE(Make<BlackAndWhiteAdjustment>(noWeights)->IsEqual(BlackAndWhiteAdjustment()));
}

TEST(Adjustments, BlocksNeverShowAndThreadsAgree)
{
    for (const Transform& transform : MakeOneOfEach()) {
        const Pixels whole = Apply(transform, MakePixels());
        Pixels parts = MakePixels();
        std::size_t begin = 0;
        for (std::size_t length = 1; begin < parts.size(); length = length % 70 + 3) {
            const std::size_t count = std::min(length, parts.size() - begin);
            transform->Apply(parts.data() + begin, count, {});
            begin += count;
        }
        EXPECT_EQ(parts, whole);
        Pixels other = MakePixels();
        std::thread([&] { other = Apply(transform, other); }).join();
        EXPECT_EQ(other, whole);
        // What is not a number must not end the program.
        const float infinity = std::numeric_limits<float>::infinity();
        Apply(transform, {{{NAN, infinity, -infinity, 1}}, {{1e38f, -1e38f, 1e-40f, 0}}});
    }
}

TEST(Adjustments, EqualSettingsAreEqual)
{
    const auto first = MakeOneOfEach(), second = MakeOneOfEach();
    for (std::size_t i = 0; i < first.size(); ++i) {
        for (std::size_t j = 0; j < first.size(); ++j) {
            EXPECT_EQ(first[i]->IsEqual(*second[j]), i == j);
            EXPECT_EQ(first[i]->GetHash() == second[j]->GetHash(), i == j);
        }
    }
    LevelsSettings levels;
    levels.blue.gamma = 1.5f;
    EXPECT_FALSE(LevelsAdjustment(levels).IsEqual(LevelsAdjustment({})));
    EXPECT_NE(LevelsAdjustment(levels).GetHash(), LevelsAdjustment({}).GetHash());
    EXPECT_TRUE(BrightnessContrastAdjustment({-0.0f, 0}).IsIdentity());
    EXPECT_EQ(BrightnessContrastAdjustment({-0.0f, 0}).GetHash(),
              BrightnessContrastAdjustment({}).GetHash());
}
