#include <cmath>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "TestProfiles.h"

using namespace Raster;
using namespace RasterTest;

namespace {

using Set = ICCManager::ICCProfileSet;
ICCManager& Manager()
{
    return ICCManager::GetInstance();
}

constexpr Format ColourFormats[] = {Format::RGBA8,  Format::RGBA16, Format::IA8,   Format::IA16,
                                    Format::CMYKA8, Format::LABA16, Format::RGBAUF};

/// Little CMS asked directly, in doubles and without its optimiser.
class Oracle
{
public:
    Oracle(const Profile& from, const Profile& to)
    {
        const auto open = [](const Profile& p) {
            return cmsOpenProfileFromMem(p->GetBytes().data(),
                                         cmsUInt32Number(p->GetBytes().size()));
        };
        cmsHPROFILE source = open(from), destination = open(to);
        m_transform = cmsCreateTransform(source, TypeOf(from), destination, TypeOf(to),
                                         INTENT_RELATIVE_COLORIMETRIC,
                                         cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOOPTIMIZE);
        cmsCloseProfile(source);
        cmsCloseProfile(destination);
    }
    ~Oracle() { cmsDeleteTransform(m_transform); }
    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;

    void operator()(const double* in, double* out) const
    {
        cmsDoTransform(m_transform, in, out, 1);
    }

private:
    static cmsUInt32Number TypeOf(const Profile& profile)
    {
        switch (profile->GetColourSpace()) {
        case ColourSpace::Grey:
            return TYPE_GRAY_DBL;
        case ColourSpace::CMYK:
            return TYPE_CMYK_DBL;
        case ColourSpace::LAB:
            return TYPE_Lab_DBL;
        default:
            return TYPE_RGB_DBL;
        }
    }

    cmsHTRANSFORM m_transform;
};

/// The unit of Little CMS's doubles.
double ToLcms(ColourSpace space, std::size_t channel, double fraction)
{
    if (space == ColourSpace::CMYK || (space == ColourSpace::LAB && channel == 0))
        return fraction * 100;
    return space == ColourSpace::LAB ? fraction * 255 - 128 : fraction;
}

double FromLcms(ColourSpace space, std::size_t channel, double value)
{
    if (space == ColourSpace::CMYK || (space == ColourSpace::LAB && channel == 0))
        return value / 100;
    return space == ColourSpace::LAB ? (value + 128) / 255 : value;
}

template<class P>
P MakePixel(std::mt19937& random)
{
    P pixel;
    for (auto& channel : pixel.channels)
        channel = typename P::ChannelType(double(random()) / double(random.max()) * double(P::Max));
    return pixel;
}

/// The largest difference to the oracle, as a fraction of the range, over random pixels.
template<class S, class D>
double MaxError(const ICCTransform& transform, const Profile& from, const Profile& to)
{
    const Oracle oracle(from, to);
    std::mt19937 random(7);
    constexpr std::size_t count = 600; // more than two blocks
    std::vector<S> source(count);
    for (S& pixel : source)
        pixel = MakePixel<S>(random);
    std::vector<D> result(count);
    transform.Apply(source.data(), result.data(), count);

    double worst = 0;
    for (std::size_t i = 0; i < count; ++i) {
        double in[4], out[4];
        for (std::size_t c = 0; c < S::ColourCount; ++c)
            in[c] = ToLcms(from->GetColourSpace(), c, source[i][c] / double(S::Max));
        oracle(in, out);
        for (std::size_t c = 0; c < D::ColourCount; ++c) {
            double expected = FromLcms(to->GetColourSpace(), c, out[c]);
            if constexpr (D::Max != 1)
                expected = std::clamp(expected, 0.0, 1.0);
            worst = std::max(worst, std::abs(result[i][c] / double(D::Max) - expected));
        }
        const double alpha = source[i].Alpha() / double(S::Max);
        EXPECT_NEAR(result[i].Alpha() / double(D::Max), alpha, 0.51 / double(D::Max));
    }
    return worst;
}

/// How far a result may be off. Exact transforms differ by rounding; between bytes of different
/// spaces tables are used, coarsest where dark inks meet a gamma curve.
double GetTolerance(Format from, Format to)
{
    const auto isBytes = [](Format f) {
        return f == Format::RGBA8 || f == Format::IA8 || f == Format::CMYKA8;
    };
    if (from == Format::CMYKA8 && isBytes(to))
        return 0.05;
    if (isBytes(from) && isBytes(to))
        return 0.01;
    return isBytes(to) ? 0.51 / 255 : 1e-5;
}

} // namespace

TEST(ICCTransform, EveryPairOfFormatsAgreesWithLittleCMS)
{
    const Set full = MakeFullSet();
    for (const Format from : ColourFormats) {
        for (const Format to : ColourFormats) {
            SCOPED_TRACE(testing::Message() << int(from) << " to " << int(to));
            const auto transform = Manager().GetTransform(from, full, to, full);
            EXPECT_EQ(static_cast<bool>(transform), from != to);
            if (!transform)
                continue;
            const double error = WithPixelOfFormat(from, -1.0, [&]<class S>(S) {
                return WithPixelOfFormat(to, -1.0, [&]<class D>(D) {
                    return MaxError<S, D>(*transform, full.GetProfile(from), full.GetProfile(to));
                });
            });
            EXPECT_LE(error, GetTolerance(from, to));
        }
    }
}

TEST(ICCTransform, ExistsWhenTheOtherSideHasAProfile)
{
    const Set full = MakeFullSet();
    const Set none;
    Set cmykOnly;
    cmykOnly.SetCMYK(full.GetCMYK());
    Set srgb;
    srgb.SetRGB(Manager().GetDefaultProfileForFormat(Format::RGBA8));
    const auto exists = [](Format from, const Set& fromSet, Format to, const Set& toSet) {
        return static_cast<bool>(Manager().GetTransform(from, fromSet, to, toSet));
    };
    EXPECT_FALSE(exists(Format::RGBA8, none, Format::CMYKA8, none));
    EXPECT_FALSE(exists(Format::RGBA8, none, Format::RGBAUF, none));
    EXPECT_TRUE(exists(Format::RGBA8, none, Format::CMYKA8, cmykOnly));
    EXPECT_TRUE(exists(Format::CMYKA8, cmykOnly, Format::RGBAUF, none));
    EXPECT_FALSE(exists(Format::RGBA8, full, Format::CMYKA8, none));
    EXPECT_FALSE(exists(Format::IA8, none, Format::CMYKA8, full));
    EXPECT_FALSE(exists(Format::M8, full, Format::RGBA8, full));
    EXPECT_FALSE(exists(Format::RGBA8, full, Format::None, full));
    EXPECT_TRUE(exists(Format::RGBA8, full, Format::RGBA8, none));
    // An empty slot is sRGB: nothing to do.
    EXPECT_FALSE(exists(Format::RGBA8, srgb, Format::RGBA8, none));

    EXPECT_FALSE(Manager().GetFloatTransform(ColourSpace::HSL, full, ColourSpace::CMYK, full));
    EXPECT_FALSE(Manager().GetFloatTransform(ColourSpace::Grey, none, ColourSpace::RGB, none));
    EXPECT_TRUE(Manager().GetFloatTransform(ColourSpace::LAB, full, ColourSpace::RGB, none));

    PixelRGBA8 pixel{{1, 2, 3, 4}};
    const PixelRGBA8 before = pixel;
    EXPECT_FALSE(
        Manager().DoTransform(Format::RGBA8, none, &pixel, Format::RGBA8, none, &pixel, 1));
    EXPECT_EQ(pixel, before);
}

TEST(ICCTransform, WhiteAndBlackStayNeutralThroughLab)
{
    const Set full = MakeFullSet();
    const Set none;
    const PixelRGBA8 colours[] = {{{255, 255, 255, 9}}, {{0, 0, 0, 255}}};
    PixelLABA16 lab[2];
    ASSERT_TRUE(Manager().DoTransform(Format::RGBA8, none, colours, Format::LABA16, full, lab, 2));
    EXPECT_EQ(lab[0][0], 65535);
    EXPECT_EQ(lab[1][0], 0);
    for (const auto& pixel : lab) {
        EXPECT_NEAR(pixel[1], 0x8080, 3); // 0.01 of a unit
        EXPECT_NEAR(pixel[2], 0x8080, 3);
    }
    EXPECT_EQ(lab[0].Alpha(), 9 * 257);
    PixelRGBA8 back[2];
    ASSERT_TRUE(Manager().DoTransform(Format::LABA16, full, lab, Format::RGBA8, none, back, 2));
    EXPECT_EQ(back[0], colours[0]);
    EXPECT_EQ(back[1], colours[1]);
    // Inks: the profile's black at L* 8 becomes full black by black point compensation.
    const PixelCMYKA8 inks[] = {{{0, 0, 0, 0, 255}}, {{255, 255, 255, 255, 255}}};
    ASSERT_TRUE(Manager().DoTransform(Format::CMYKA8, full, inks, Format::RGBA8, none, back, 2));
    EXPECT_GE(back[0][1], 235);
    EXPECT_LE(back[1][1], 8);
}

TEST(ICCTransform, SameProfileOnlyChangesTheDepth)
{
    const Profile wide = MakeProfile(MakeWideRGBBytes(2.2));
    Set set;
    set.SetRGB(wide);
    set.SetAlternativeRGB(wide);
    const PixelRGBAUF source[] = {{{-0.5f, 1.5f, 0.2f, 0.6f}},
                                  {{std::nanf(""), INFINITY, 1.0f, 1.0f}}};
    PixelRGBA8 bytes[2];
    ASSERT_TRUE(Manager().DoTransform(Format::RGBAUF, set, source, Format::RGBA8, set, bytes, 2));
    EXPECT_EQ(bytes[0], (PixelRGBA8{{0, 255, 51, 153}}));
    EXPECT_EQ(bytes[1], (PixelRGBA8{{0, 0, 255, 255}}));
    PixelRGBA16 words[2];
    ASSERT_TRUE(Manager().DoTransform(Format::RGBA8, set, bytes, Format::RGBA16, set, words, 2));
    EXPECT_EQ(words[0], (PixelRGBA16{{0, 65535, 51 * 257, 153 * 257}}));
}

TEST(ICCTransform, FloatColoursGoBeyondTheUnitRange)
{
    Set wide, sampled;
    wide.SetAlternativeRGB(MakeProfile(MakeWideRGBBytes(2.2)));
    sampled.SetAlternativeRGB(MakeProfile(MakeSampledRGBBytes()));
    const Set none;
    const auto through = [](const Set& from, const Set& to, PixelRGBAUF pixel) {
        EXPECT_TRUE(
            Manager().DoTransform(Format::RGBAUF, from, &pixel, Format::RGBAUF, to, &pixel, 1));
        return pixel;
    };
    // A saturated colour of the wide space lies outside sRGB, on one side of 0 and of 1.
    const auto green = through(wide, none, {{0, 1, 0, 0.5f}});
    EXPECT_LT(green[0], -0.5f);
    EXPECT_NEAR(green[1], 1, 0.01);
    EXPECT_EQ(green.Alpha(), 0.5f);

    std::mt19937 random(3);
    for (const float range : {0.01f, 1.0f, 4.0f, 100.0f, 5000.0f}) {
        std::uniform_real_distribution<float> value(-range, range);
        for (int i = 0; i < 100; ++i) {
            const PixelRGBAUF pixel{{value(random), value(random), value(random), 1}};
            // Signs: the map is odd.
            const auto plus = through(none, wide, pixel);
            const auto minus = through(none, wide, {{-pixel[0], -pixel[1], -pixel[2], 1}});
            const auto back = through(wide, none, plus);
            const auto viaSamples = through(sampled, none, pixel);
            for (std::size_t c = 0; c < 3; ++c) {
                EXPECT_EQ(plus[c], -minus[c]);
                EXPECT_NEAR(back[c], pixel[c], (range > 1000 ? 1e-3f : 1e-4f) * range) << pixel[c];
                // The samples describe sRGB's own curve: in range the same colour, beyond it near.
                if (range == 1) {
                    EXPECT_NEAR(viaSamples[c], pixel[c], 5e-4f);
                }
            }
        }
    }
    // Beyond 1 by the formula of the curve: sRGB 2 is 4.95 times white's light.
    const auto bright = through(none, wide, {{2, 2, 2, 1}});
    EXPECT_NEAR(bright[1], std::pow(std::pow(2.055 / 1.055, 2.4), 1 / 2.2), 1e-3);
}

TEST(ICCTransform, FixedLabFormulas)
{
    struct Case
    {
        PixelRGBAF rgb;
        double l, a, b;
    };
    // CSS Color 4 and its sample code: lab() of the sRGB primaries.
    const Case cases[] = {{{{1, 0, 0, 1}}, 54.29, 80.81, 69.89},
                          {{{0, 1, 0, 1}}, 87.82, -79.27, 80.99},
                          {{{0, 0, 1, 1}}, 29.57, 68.30, -112.03},
                          {{{1, 1, 1, 0.25f}}, 100, 0, 0},
                          {{{0, 0, 0, 0}}, 0, 0, 0}};
    for (const Case& c : cases) {
        PixelLABA16 lab;
        ICCManager::DoRGBAFToLABA16Transform(c.rgb, lab);
        EXPECT_NEAR(lab[0] / 655.35, c.l, 0.02);
        EXPECT_NEAR(lab[1] / 257.0 - 128, c.a, 0.03);
        EXPECT_NEAR(lab[2] / 257.0 - 128, c.b, 0.03);
        PixelRGBAF back;
        ICCManager::DoLABA16ToRGBAFTransform(lab, back);
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(back[i], c.rgb[i], 1e-3);
    }
    PixelRGBAF rgb;
    ICCManager::DoLABA16ToRGBAFTransform({{65535, 0x8080, 0x8080, 65535}}, rgb);
    for (const float channel : rgb.channels)
        EXPECT_NEAR(channel, 1, 1e-6);
    ICCManager::DoLABA16ToRGBAFTransform({{32768, 0, 0, 0}}, rgb);
    EXPECT_LT(rgb[0], 0); // out of sRGB's range, not clamped
    PixelLABA16 lab;
    ICCManager::DoRGBAFToLABA16Transform({{std::nanf(""), 50, -50, 2}}, lab);
    EXPECT_EQ(lab.Alpha(), 65535);
}

TEST(ICCTransform, ManyThreadsShareTransformsAndTheCacheIsBounded)
{
    const Set full = MakeFullSet();
    const PixelRGBAF colour{{0.2f, 0.5f, 0.7f, 1}};
    // More gammas than the cache holds, so that transforms are dropped while others use them.
    std::vector<Set> sets(90);
    for (std::size_t i = 0; i < sets.size(); ++i)
        sets[i].SetGrey(MakeProfile(MakeGreyBytes(1 + 0.01 * double(i))));
    std::vector<std::vector<float>> results(8);
    std::vector<std::thread> threads;
    for (auto& result : results) {
        threads.emplace_back([&] {
            PixelCMYKAF ink;
            Manager()
                .GetFloatTransform(ColourSpace::RGB, full, ColourSpace::CMYK, full)
                ->Apply(&colour, &ink, 1);
            result.assign(ink.channels.begin(), ink.channels.end());
            for (const Set& set : sets) {
                PixelIAF grey;
                Manager()
                    .GetFloatTransform(ColourSpace::RGB, full, ColourSpace::Grey, set)
                    ->Apply(&colour, &grey, 1);
                result.push_back(grey[0]);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& result : results)
        EXPECT_EQ(result, results.front());
    EXPECT_LT(results.front()[5], results.front().back()); // the steeper curve needs more
    const auto again = [&] {
        return Manager().GetTransform(Format::RGBA8, full, Format::CMYKA8, full);
    };
    EXPECT_EQ(again().Get(), again().Get());
}
