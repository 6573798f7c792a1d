// Deep paint dithered into formats of 8 bits.

#include <cmath>

#include <raster/ICCManager.h>

#include "../../raster/icc/TestProfiles.h"
#include "FormatFixture.h"

namespace Renderer {
namespace {

using Raster::DynamicBitmap;
using Raster::DynamicBuffer;
using Raster::PixelRGBA16;

constexpr int Side = 32; // whole periods of the pattern

/// A bitmap of one premultiplied pixel.
template<class P>
Kernel::Counted<const DynamicBitmap> MakeFlat(const P& pixel)
{
    const auto buffer = DynamicBuffer::Create(Raster::FormatOfPixel<P>, Side, Side);
    for (unsigned y = 0; y < Side; ++y)
        std::fill_n(reinterpret_cast<P*>(buffer->GetRow(y)), Side, pixel);
    return Kernel::MakeCounted<DynamicBitmap>(buffer);
}

Kernel::Counted<BitmapRenderTarget> MakeDithering(Format format, const Profiles& profiles = {})
{
    const auto target = MakeTarget(format, Side, Side, profiles);
    target->SetDithering(true);
    return target;
}

void DrawWhole(BitmapRenderTarget& target, Kernel::Counted<const DynamicBitmap> bitmap)
{
    target.DrawBitmap({0, 0, Side, Side}, std::move(bitmap), 1.0F, FillBlendMode::Normal,
                      BlendOptions::Identity(), true);
}

/// The mean of each channel in steps, and how far pixels leave it.
struct Spread
{
    std::vector<double> mean;
    double range = 0;
};

template<class P>
Spread GetSpread(const Kernel::Counted<BitmapRenderTarget>& target)
{
    const auto pixels = PixelsOf<P>(target);
    Spread spread{std::vector<double>(P::ChannelCount)};
    for (std::size_t c = 0; c < P::ChannelCount; ++c) {
        int low = 255, high = 0;
        for (const P& pixel : pixels) {
            EXPECT_LE(pixel[c], pixel.Alpha());
            spread.mean[c] += double(pixel[c]) / double(pixels.size());
            low = std::min(low, int(pixel[c]));
            high = std::max(high, int(pixel[c]));
        }
        spread.range = std::max(spread.range, double(high - low));
    }
    return spread;
}

TEST(DitherTest, FlatDeepPixelsKeepTheirMeanAndExactOnesStay)
{
    for (const unsigned step : {0U, 1U, 77U, 128U, 200U, 254U})
        for (const unsigned rest : {0U, 1U, 30U, 128U, 200U, 256U}) {
            const auto value = std::uint16_t(step * 257 + rest);
            for (const std::uint16_t alpha : {value, std::uint16_t(65535)}) {
                const auto rgba = MakeDithering(Format::RGBA8);
                DrawWhole(*rgba,
                          MakeFlat<PixelRGBA16>({{value, std::uint16_t(value / 3), 0, alpha}}));
                const Spread spread = GetSpread<PixelRGBA8>(rgba);
                EXPECT_NEAR(spread.mean[0], value / 257.0, 0.01);
                EXPECT_NEAR(spread.mean[1], value / 3 / 257.0, 0.01);
                EXPECT_NEAR(spread.mean[3], alpha / 257.0, 0.01);
                EXPECT_LE(spread.range, 1);

                const auto grey = MakeDithering(Format::IA8);
                DrawWhole(*grey, MakeFlat<Raster::PixelIA16>({{value, alpha}}));
                EXPECT_NEAR(GetSpread<Raster::PixelIA8>(grey).mean[0], value / 257.0, 0.01);
                if (rest == 0) {
                    EXPECT_EQ(GetSpread<Raster::PixelIA8>(grey).range, 0) << value;
                }
            }
            const float shade = float(value) / 65535.0F;
            const auto unbounded = MakeDithering(Format::RGBA8);
            DrawWhole(*unbounded, MakeFlat<Raster::PixelRGBAUF>({{shade, 2.0F, -1.0F, 1.0F}}));
            const Spread spread = GetSpread<PixelRGBA8>(unbounded);
            EXPECT_NEAR(spread.mean[0], value / 257.0, 0.01);
            EXPECT_EQ(spread.mean[1], 255);
            EXPECT_EQ(spread.mean[2], 0);
        }
    const auto plain = MakeTarget(Format::RGBA8, Side, Side);
    DrawWhole(*plain, MakeFlat<PixelRGBA16>({{30000, 20000, 10000, 65535}}));
    EXPECT_EQ(GetSpread<PixelRGBA8>(plain).range, 0);
}

TEST(DitherTest, DeepPixelsBecomeInksByFormulasAndByProfiles)
{
    const std::array<float, 4> shade{0.4712F, 0.6123F, 0.3391F, 1.0F};
    const auto check = [&](const Profiles& profiles, const float* expected) {
        PixelRGBA16 pixel;
        for (std::size_t c = 0; c < 4; ++c)
            pixel[c] = std::uint16_t(std::lround(shade[c] * 65535.0F));
        const auto inks = MakeDithering(Format::CMYKA8, profiles);
        DrawWhole(*inks, MakeFlat(pixel));
        const Spread spread = GetSpread<Raster::PixelCMYKA8>(inks);
        for (std::size_t c = 0; c < 5; ++c)
            EXPECT_NEAR(spread.mean[c], expected[c] * 255.0, 0.05) << c;
        EXPECT_EQ(spread.range, 1);
    };
    float byFormula[5];
    Raster::ConvertFloatPixel(Raster::ColourSpace::RGB, shade.data(), Raster::ColourSpace::CMYK,
                              byFormula);
    check({}, byFormula);

    const Profiles full = RasterTest::MakeFullSet();
    float byProfile[5];
    Raster::ICCManager::GetInstance()
        .GetFloatTransform(Raster::ColourSpace::RGB, full, Raster::ColourSpace::CMYK, full)
        ->Apply(shade.data(), byProfile, 1);
    check(full, byProfile);
}

TEST(DitherTest, GradientsAreSmoothBetweenSteps)
{
    const PixelRGBA8 from{{100, 60, 200, 255}}, to{{104, 50, 203, 255}};
    const auto fill = MakeGradient(FillGradient::Linear, {from, to}, {0, 0, 0, 1024, 0, 0});
    const auto draw = [&](bool dithers) {
        const auto target = MakeTarget(Format::RGBA8, Side, 1024);
        target->SetDithering(dithers);
        target->DrawRectangle({0, 0, Side, 1024}, 1.0F, fill, {}, {});
        return PixelsOf<PixelRGBA8>(target);
    };
    const auto worst = [&](const std::vector<PixelRGBA8>& pixels) {
        double error = 0;
        for (int top = 0; top + 16 <= 1024;
             top += 16) // a period, over which the colour moves little
            for (std::size_t c = 0; c < 3; ++c) {
                double mean = 0;
                for (int i = 0; i < 16 * Side; ++i)
                    mean += pixels[std::size_t(top * Side + i)][c] / (16.0 * Side);
                const double exact = from[c] + (double(to[c]) - from[c]) * (top + 8) / 1024.0;
                error = std::max(error, std::abs(mean - exact));
            }
        return error;
    };
    EXPECT_LT(worst(draw(true)), 0.1);
    EXPECT_GT(worst(draw(false)), 0.4);
}

TEST(DitherTest, TilesAgreeWithThePage)
{
    const auto deep = MakeFlat<PixelRGBA16>({{30123, 20045, 10067, 50000}});
    const auto fill = MakeGradient(
        FillGradient::Radial, {{{10, 200, 30, 255}}, {{40, 20, 90, 100}}}, {30, 0, 7, 0, 30, 9});
    const auto draw = [&](BitmapRenderTarget& target) {
        target.SetDithering(true);
        target.DrawRectangle({0, 0, Side, Side}, 1.0F, fill, {}, {});
        target.DrawBitmap({3.3, 4.4, 25.5, 40.0}, deep, 0.7F, FillBlendMode::Normal,
                          BlendOptions::Identity(), true);
    };
    const auto page = MakeTarget(Format::RGBA8, Side, Side);
    draw(*page);
    const auto tiled = MakeTarget(Format::RGBA8, Side, Side);
    const auto buffer = tiled->GetBuffer();
    for (int top = 0; top < Side; top += 9)
        for (int left = 0; left < Side; left += 7) {
            ASSERT_TRUE(tiled->AttachBuffer(
                buffer, {left, top, std::min(left + 7, Side), std::min(top + 9, Side)}));
            draw(*tiled);
        }
    EXPECT_EQ(PixelsOf<PixelRGBA8>(*buffer), PixelsOf<PixelRGBA8>(page));
}

TEST(DitherTest, SubRendersAreDitheredBackAndTransparenciesNot)
{
    const auto target = MakeDithering(Format::RGBA8);
    target->SetPerfectClipping(true);
    const auto sub = target->PushSubRender({0, 0, Side, Side}, Format::RGBAUF, {});
    ASSERT_TRUE(sub);
    EXPECT_TRUE(sub->GetDithering() && sub->GetPerfectClipping());
    const auto veil = MakeGradient(FillGradient::Linear, {{{90, 90, 90, 255}}, {{92, 90, 90, 255}}},
                                   {1000, 0, -492, 0, 1, 0});
    sub->DrawRectangle({0, 0, Side, Side}, 1.0F, veil, {}, {});
    target->PopSubRender({});
    const Spread spread = GetSpread<PixelRGBA8>(target);
    EXPECT_NEAR(spread.mean[0], 91.016, 0.05);
    EXPECT_EQ(spread.mean[1], 90);

    const auto drawVeiled = [&](bool dithers) {
        const auto veiled = MakeTarget(Format::RGBA8, Side, Side);
        veiled->SetDithering(dithers);
        const auto fade = MakeGradient(FillGradient::Linear, {{{0, 0, 0, 90}}, {{0, 0, 0, 97}}},
                                       {Side, 0, 0, 0, 1, 0});
        veiled->Blend(1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                      FillDescriptorConst::CreateSolid({{255, 80, 0, 255}}), fade);
        return PixelsOf<PixelRGBA8>(veiled);
    };
    EXPECT_EQ(drawVeiled(true), drawVeiled(false));
}

} // namespace
} // namespace Renderer
