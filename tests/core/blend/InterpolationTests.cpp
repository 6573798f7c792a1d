// Interpolation and the drawing of alpha alone, pixel by pixel.

#include <cmath>

#include "Formats.h"
#include "OracleMatch.h"
#include "Spans.h"

namespace BlendTests {
namespace {

using Renderer::FillBlendMode;
using Renderer::SpanBlendSet;

template<class P>
class Interpolation : public testing::Test
{
protected:
    using Blender = Renderer::RenderTargetBlender<P>;

    std::vector<P> Interpolate(const SpanBlendSet& set, const unsigned char* masks, double ratio)
    {
        std::vector<P> result = spans.backdrop;
        set.interpolation.mask(result.data(), masks, spans.source.data(), weights.data(),
                               spans.covers.data(), ratio, length);
        return result;
    }

    static constexpr double Tolerance =
        IsFloat<P> ? 1e-5 : (sizeof(typename P::ChannelType) == 1 ? 0.51 : 1.01) / P::Max;

    const Spans<P> spans{true};
    const std::vector<P> weights = [this] {
        std::vector<P> pixels = spans.source;
        std::rotate(pixels.begin(), pixels.begin() + 9, pixels.end());
        return pixels;
    }();
};
TYPED_TEST_SUITE(Interpolation, AllPixels);

TYPED_TEST(Interpolation, GoesTowardsThePaintByTheProductOfAllWeights)
{
    using P = TypeParam;
    const SpanBlendSet& used = TestFixture::Blender::GetBlends(false);
    const auto& spans = this->spans;
    for (const double ratio : {1.0, 1.7}) {
        for (const unsigned char* masks :
             {static_cast<const unsigned char*>(nullptr), spans.masks.data()}) {
            const auto results = this->Interpolate(used, masks, ratio);
            for (unsigned i = 0; i < length; ++i) {
                const auto d = ToReal(spans.backdrop[i]), p = ToReal(spans.source[i]);
                const double cover = std::pow(spans.covers[i] / 255.0, ratio);
                const double w = cover * (masks ? masks[i] / 255.0 : 1.0) *
                                 ToReal(this->weights[i])[P::AlphaIndex];
                for (std::size_t c = 0; c < P::ChannelCount; ++c)
                    ASSERT_NEAR(ToReal(results[i])[c], d[c] + w * (p[c] - d[c]), this->Tolerance)
                        << i << ' ' << c;
            }
            // The bytes depend on the pixel alone, and not on the processor.
            std::vector<P> single = spans.backdrop;
            for (unsigned i = 0; i < length; ++i)
                used.interpolation.run(&single[i], masks ? masks + i : nullptr, &spans.source[i],
                                       &this->weights[i], spans.covers[i], ratio, 1);
            EXPECT_TRUE(SameBytes(results, single));
            EXPECT_TRUE(
                SameBytes(results, this->Interpolate(TestFixture::Blender::GetBaselineBlends(false),
                                                     masks, ratio)));
        }
    }
}

TYPED_TEST(Interpolation, FullWeightsGiveThePaint)
{
    using P = TypeParam;
    const auto& interpolation = TestFixture::Blender::GetBlends(false).interpolation;
    std::vector<P> result = this->spans.backdrop, full(length);
    interpolation.beginWeights(full.data(), length);
    interpolation.run(result.data(), nullptr, this->spans.source.data(), full.data(), 255, 1.0,
                      length);
    EXPECT_TRUE(SameBytes(result, this->spans.source));
}

TYPED_TEST(Interpolation, AlphaAloneIsThatOfTheWholeAndPlainColourStays)
{
    using P = TypeParam;
    const auto& spans = this->spans;
    const SpanBlendSet& whole = TestFixture::Blender::GetBlends(false);
    const SpanBlendSet& alone = TestFixture::Blender::GetBlends(true);
    const SpanBlendSet& baseline = TestFixture::Blender::GetBaselineBlends(true);
    const auto expect = [&](std::vector<P> expected, const std::vector<P>& result, int mode) {
        for (unsigned i = 0; i < length; ++i) {
            const auto alpha = expected[i].Alpha();
            expected[i] = spans.backdrop[i];
            if constexpr (std::is_floating_point_v<typename P::ChannelType>) {
                // Colour follows alpha; that of pixels without alpha is plain.
                const float before = expected[i].Alpha();
                const float factor = (alpha > 0 ? alpha : 1) / (before > 0 ? before : 1);
                for (std::size_t c = 0; alpha != before && c < P::ColourCount; ++c)
                    expected[i][c] *= factor;
            }
            expected[i].Alpha() = alpha;
        }
        EXPECT_TRUE(SameBytes(expected, result)) << mode;
    };
    for (int mode = 0; mode <= FillBlendMode::Nameless; ++mode) {
        const auto blend = [&](const SpanBlendSet& set, int m) {
            std::vector<P> result = spans.backdrop;
            const auto& entry = set.modes[std::size_t(m)];
            entry.mask(result.data(), nullptr, spans.source.data(), spans.covers.data(), 1.0,
                       length / 2);
            entry.run(&result[length / 2], spans.masks.data(), &spans.source[length / 2], 255, 1.0,
                      length - length / 2);
            return result;
        };
        const bool scales = mode == FillBlendMode::Erase || mode == FillBlendMode::Mask;
        expect(blend(whole, scales ? mode : FillBlendMode::Normal), blend(alone, mode), mode);
        EXPECT_TRUE(SameBytes(blend(alone, mode), blend(baseline, mode)));
    }
    expect(this->Interpolate(whole, nullptr, 1.0), this->Interpolate(alone, nullptr, 1.0), -1);
}

} // namespace
} // namespace BlendTests
