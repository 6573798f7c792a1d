#include <algorithm>

#include <raster/ColourTransform.h>

#include "Painter.h"

namespace Renderer {

namespace {

/// c ↦ 1 − c, or c ↦ c/2.
class TestTransform final : public Raster::ColourTransform
{
public:
    enum class Effect
    {
        None,
        Invert,
        Halve
    };

    explicit TestTransform(Effect effect) : m_effect(effect) {}

    void Apply(Raster::PixelRGBAF* pixels, std::size_t count,
               const Raster::ICCManager::ICCProfileSet&) const override
    {
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t c = 0; c < 3; ++c)
                pixels[i][c] = Apply(pixels[i][c]);
    }
    bool IsIdentity() const override { return m_effect == Effect::None; }
    std::uint64_t GetHash() const override { return std::uint64_t(m_effect); }
    bool IsEqual(const ColourTransform& other) const override
    {
        return GetHash() == other.GetHash();
    }

private:
    float Apply(float channel) const
    {
        switch (m_effect) {
        case Effect::Invert:
            return 1 - channel;
        case Effect::Halve:
            return channel / 2;
        default:
            return channel;
        }
    }

    Effect m_effect;
};

template<class P>
class ColourTransformTest : public testing::Test
{};
TYPED_TEST_SUITE(ColourTransformTest, TestedPixels);

TYPED_TEST(ColourTransformTest, ActsOnPlainColoursInOrder)
{
    using P = TypeParam;
    using Effect = TestTransform::Effect;
    const auto make = [](Effect effect) {
        return Kernel::Counted<const Raster::ColourTransform>(new TestTransform(effect));
    };
    Painter<P> painter;
    using Processor = PixProcessor<P, false>;
    std::vector<Kernel::Counted<const Raster::ColourTransform>> list{make(Effect::None)};
    SpanPopulator& out = painter.m_populator;
    EXPECT_FALSE(
        MakeColourTransformPopulator<Processor>(list, painter.m_profiles, painter.m_store, out));
    list.push_back(make(Effect::Invert));
    list.push_back(make(Effect::Halve));
    ASSERT_TRUE(
        MakeColourTransformPopulator<Processor>(list, painter.m_profiles, painter.m_store, out));

    // A grey, which every format can hold: (1 − 0.2)/2 = 0.4, with the alpha kept.
    P before;
    P after;
    ASSERT_TRUE(GetSolidPixel(*MakeSolid(0.2F, 0.2F, 0.2F, 0.6F), painter.m_profiles, before));
    ASSERT_TRUE(GetSolidPixel(*MakeSolid(0.4F, 0.4F, 0.4F, 0.6F), painter.m_profiles, after));
    std::vector<P> scratch(130, before);
    scratch[7] = P{};
    const auto result = painter.Run(0, 0, scratch);
    for (std::size_t i = 0; i < result.size(); ++i)
        for (std::size_t c = 0; c < P::ChannelCount; ++c)
            ASSERT_NEAR(double(result[i][c]) / double(P::Max),
                        i == 7 ? 0.0 : double(after[c]) / double(P::Max), 2.0 / 255)
                << i;
}

} // namespace

} // namespace Renderer
