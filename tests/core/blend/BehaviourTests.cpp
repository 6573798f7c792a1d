#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>
#include <renderer/core/blend/IntegerArithmetic.h>

#include "Formats.h"
#include "Spans.h"

namespace BlendTests {

using Raster::PixelRGBA8;
using Raster::PixelRGBAUF;
using Renderer::FillBlendMode;
using Renderer::SpanBlend;

namespace {

template<class P>
P BlendOne(int mode, const P& source, const P& backdrop, unsigned char cover = 255)
{
    P result = backdrop;
    (*GetTables<P>().used)[static_cast<std::size_t>(mode)].run(&result, nullptr, &source, cover,
                                                               1.0, 1);
    return result;
}

} // namespace

template<class P>
class BlendBehaviour : public testing::Test
{};

TYPED_TEST_SUITE(BlendBehaviour, AllPixels);

TYPED_TEST(BlendBehaviour, BytesDependOnThePixelAlone)
{
    const Spans<TypeParam> spans(true);
    const Tables tables = GetTables<TypeParam>();
    const std::vector<unsigned char> opaque(length, 255);
    for (std::size_t mode = 0; mode < tables.used->size(); ++mode) {
        SCOPED_TRACE(mode);
        for (const double ratio : {1.0, 1.7}) {
            const auto composite = [&](const SpanBlend& blend, const unsigned char* masks) {
                std::vector<TypeParam> result = spans.backdrop;
                blend.mask(result.data(), masks, spans.source.data(), spans.covers.data(), ratio,
                           length);
                return result;
            };
            const SpanBlend& blend = (*tables.used)[mode];
            const auto whole = composite(blend, spans.masks.data());
            EXPECT_TRUE(SameBytes(whole, composite((*tables.baseline)[mode], spans.masks.data())));
            EXPECT_TRUE(SameBytes(composite(blend, nullptr), composite(blend, opaque.data())));
            if (tables.wide) {
                EXPECT_TRUE(SameBytes(whole, composite((*tables.wide)[mode], spans.masks.data())));
            }

            std::vector<TypeParam> single = spans.backdrop;
            for (unsigned i = 0; i < length; ++i)
                blend.run(&single[i], &spans.masks[i], &spans.source[i], spans.covers[i], ratio, 1);
            EXPECT_TRUE(SameBytes(whole, single));
        }
    }
}

// Groups leave out what was not drawn, which must be as good as compositing it.
TYPED_TEST(BlendBehaviour, NothingChangesNothing)
{
    const std::vector<TypeParam> nothing(length, TypeParam{});
    const Spans<TypeParam> spans(true);
    const Tables tables = GetTables<TypeParam>();
    for (std::size_t mode = 0; mode < tables.used->size(); ++mode) {
        if (mode == FillBlendMode::Mask)
            continue;
        for (const double ratio : {1.0, 1.7}) {
            const SpanBlend& blend = (*tables.used)[mode];
            std::vector<TypeParam> result = spans.backdrop;
            blend.mask(result.data(), nullptr, nothing.data(), spans.covers.data(), ratio, length);
            blend.run(result.data(), nullptr, nothing.data(), 255, ratio, length);
            EXPECT_TRUE(SameBytes(spans.backdrop, result)) << mode;
        }
    }
}

TYPED_TEST(BlendBehaviour, SolidFormsEqualTheGeneralOnes)
{
    const Spans<TypeParam> spans(false);
    const Tables tables = GetTables<TypeParam>();
    for (std::size_t mode = 0; mode < tables.used->size(); ++mode) {
        for (const auto* table : {tables.baseline, tables.wide}) {
            if (!table || !(*table)[mode].solidRun)
                continue;
            const SpanBlend& blend = (*table)[mode];
            for (unsigned i = 0; i + 1 < length; ++i) {
                const unsigned count = 1 + i % 40;
                const unsigned begin = i < length - count ? i : 0;
                TypeParam paint = spans.source[i];
                if (i % 3 == 0)
                    paint.Alpha() = TypeParam::Max;
                const unsigned char cover = i % 4 == 0 ? 255 : spans.covers[i];
                const std::vector<TypeParam> source(count, paint);
                std::vector<TypeParam> run = spans.backdrop, solidRun = run, mask = run,
                                       solidMask = run;
                blend.run(&run[begin], nullptr, source.data(), cover, 1.0, count);
                blend.solidRun(&solidRun[begin], 0, 1, &paint, cover, count);
                // Two rows, one behind the other.
                const unsigned half = count / 2;
                blend.solidMask(&solidMask[begin], half * sizeof(TypeParam), 2, &paint,
                                &spans.covers[begin], half);
                blend.mask(&mask[begin], nullptr, source.data(), &spans.covers[begin], 1.0, half);
                blend.mask(&mask[begin + half], nullptr, source.data(), &spans.covers[begin], 1.0,
                           half);
                ASSERT_TRUE(SameBytes(run, solidRun)) << mode << ' ' << count << ' ' << int(cover);
                ASSERT_TRUE(SameBytes(mask, solidMask)) << mode << ' ' << count;
            }
        }
    }
    EXPECT_TRUE((*tables.used)[FillBlendMode::Normal].solidRun);
}

TYPED_TEST(BlendBehaviour, WritesNothingOutsideTheSpanOrWithoutCoverage)
{
    const Spans<TypeParam> spans(false);
    for (const SpanBlend& blend : *GetTables<TypeParam>().used) {
        for (const unsigned begin : {0u, 3u}) {
            for (const unsigned count : {0u, 1u, 7u, 8u, 9u, 63u, 64u, 65u, 190u}) {
                std::vector<TypeParam> result = spans.backdrop;
                blend.mask(result.data() + begin, nullptr, spans.source.data() + begin,
                           spans.covers.data() + begin, 1.0, count);
                for (unsigned i = 0; i < length; ++i) {
                    const bool untouched = i < begin || i >= begin + count || spans.covers[i] == 0;
                    ASSERT_TRUE(!untouched || result[i] == spans.backdrop[i])
                        << i << " of " << count;
                }
            }
        }
    }
}

TYPED_TEST(BlendBehaviour, OpaqueSourceReplacesUnderNormal)
{
    Spans<TypeParam> spans(true);
    for (TypeParam& pixel : spans.source)
        pixel.Alpha() = TypeParam::Max;
    std::vector<TypeParam> result = spans.backdrop;
    const Tables tables = GetTables<TypeParam>();
    (*tables.used)[FillBlendMode::Normal].run(result.data(), nullptr, spans.source.data(), 255, 1.0,
                                              length);
    EXPECT_TRUE(SameBytes(result, spans.source));
}

TYPED_TEST(BlendBehaviour, IntegerColourAboveAlphaCountsAsAlpha)
{
    if constexpr (std::is_integral_v<typename TypeParam::ChannelType>) {
        const Spans<TypeParam> invalid(false);
        Spans<TypeParam> valid = invalid;
        for (TypeParam& pixel : valid.source) {
            for (auto& channel : pixel.channels)
                channel = std::min(channel, pixel.Alpha());
        }
        for (TypeParam& pixel : valid.backdrop) {
            for (auto& channel : pixel.channels)
                channel = std::min(channel, pixel.Alpha());
        }
        for (const SpanBlend& blend : *GetTables<TypeParam>().used) {
            std::vector<TypeParam> ours = valid.backdrop;
            std::vector<TypeParam> expected = valid.backdrop;
            blend.mask(ours.data(), nullptr, invalid.source.data(), invalid.covers.data(), 1.0,
                       length);
            blend.mask(expected.data(), nullptr, valid.source.data(), valid.covers.data(), 1.0,
                       length);
            EXPECT_TRUE(SameBytes(ours, expected));
        }
    }
}

TEST(BlendFloat, InputThatIsNotFiniteCountsAsZero)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const PixelRGBAUF source{{{0.5f, nan, -infinity, 0.5f}}};
    const PixelRGBAUF cleanSource{{{0.5f, 0.0f, 0.0f, 0.5f}}};
    const PixelRGBAUF backdrop{{{nan, 0.25f, infinity, 0.75f}}};
    const PixelRGBAUF cleanBackdrop{{{0.0f, 0.25f, 0.0f, 0.75f}}};
    for (int mode = 0; mode <= FillBlendMode::Nameless; ++mode) {
        EXPECT_EQ(BlendOne(mode, source, backdrop), BlendOne(mode, cleanSource, cleanBackdrop))
            << mode;
        const PixelRGBAUF untouched = BlendOne(mode, source, backdrop, 0);
        EXPECT_EQ(std::memcmp(&untouched, &backdrop, sizeof(backdrop)), 0) << mode;
    }
    const PixelRGBAUF noAlpha{{{0.0f, 0.0f, 0.0f, nan}}};
    EXPECT_EQ(BlendOne(FillBlendMode::Normal, noAlpha, cleanBackdrop), cleanBackdrop);
    const PixelRGBAUF muchAlpha{{{1.0f, 1.0f, 1.0f, 3.0f}}};
    EXPECT_EQ(BlendOne(FillBlendMode::Normal, cleanSource, muchAlpha).Alpha(), 1.0f);
}

TEST(BlendFloat, ColourLeavesTheUnitRangeWhereTheFormulaAllowsIt)
{
    const PixelRGBAUF source{{{2.0f, 0.5f, 0.25f, 1.0f}}};
    const PixelRGBAUF backdrop{{{3.0f, -1.0f, 0.75f, 1.0f}}};
    const auto expect = [&](int mode, float r, float g, float b) {
        EXPECT_EQ(BlendOne(mode, source, backdrop), (PixelRGBAUF{{{r, g, b, 1.0f}}})) << mode;
    };
    expect(FillBlendMode::Multiply, 6.0f, -0.5f, 0.1875f);
    expect(FillBlendMode::Add, 5.0f, -0.5f, 1.0f);
    expect(FillBlendMode::Subtract, 1.0f, -1.5f, 0.5f);
    expect(FillBlendMode::Average, 2.5f, -0.25f, 0.5f);
    expect(FillBlendMode::LinearBurn, 1.0f, 0.0f, 0.0f);
    expect(FillBlendMode::HardMix, 1.0f, 0.0f, 1.0f);
    expect(FillBlendMode::Overlay, 1.0f, 0.0f, 0.625f);
}

TEST(BlendGamma, RatioThatMakesNoSenseCountsAsOne)
{
    const PixelRGBA8 source{{{200, 100, 50, 220}}};
    const auto blend = [&](double ratio) {
        PixelRGBA8 result{{{10, 20, 30, 40}}};
        (*GetTables<PixelRGBA8>().used)[FillBlendMode::Normal].run(&result, nullptr, &source, 90,
                                                                   ratio, 1);
        return result;
    };
    const PixelRGBA8 plain = blend(1.0);
    EXPECT_NE(blend(2.0), plain);
    EXPECT_NE(blend(0.0), plain);
    for (const double ratio : {-1.0, std::nan(""), HUGE_VAL, 1.0})
        EXPECT_EQ(blend(ratio), plain) << ratio;
}

TEST(BlendArithmetic, DivisionsAreExact)
{
    using Bytes = Renderer::Blending::IntegerArithmetic<std::uint8_t>;
    for (unsigned value = 0; value <= 255u * 255u + 127u; ++value)
        ASSERT_EQ(Bytes::DivideByMax(static_cast<std::uint16_t>(value)), (2 * value + 255) / 510);
    for (unsigned value = 0; value < 256; ++value) {
        for (unsigned weight = 0; weight < 256; ++weight) {
            const auto byte = static_cast<std::uint8_t>(value);
            ASSERT_EQ(Bytes::Scale(byte, static_cast<std::uint8_t>(weight)),
                      Bytes::Scale(byte, static_cast<std::uint16_t>(weight * 257)));
        }
    }
    // The only values that could round the wrong way lie beside the halves.
    using Words = Renderer::Blending::IntegerArithmetic<std::uint16_t>;
    for (std::uint64_t quotient = 0; quotient <= 65535; ++quotient) {
        for (const int offset : {-32768, -32767, -1, 0, 1, 32767}) {
            const std::uint64_t value =
                quotient * 65535 + static_cast<std::uint64_t>(offset + 65535);
            if (value < 65535 || value - 65535 > 65535ull * 65535 + 32767)
                continue;
            ASSERT_EQ(Words::DivideByMax(static_cast<std::uint32_t>(value - 65535)),
                      (2 * (value - 65535) + 65535) / 131070);
        }
    }
}

} // namespace BlendTests
