// Interpolation and the drawing of alpha alone, in every format, judged by double precision.

#include <algorithm>
#include <cmath>
#include <functional>

#include <renderer/paint/FillBackBuffer.h>

#include "../blend/OracleMatch.h"
#include "PaintedFormat.h"

namespace Renderer {
namespace {

using BlendTests::RealPixel;
using BlendTests::ToReal;
using CompositeInit = RenderTarget::CompositeInit;

template<class P>
class FormatInterpolation : public PaintedFormat
{
protected:
    using Target = Kernel::Counted<BitmapRenderTarget>;

    static Target Make() { return MakeTarget(Raster::FormatOfPixel<P>, Columns, 1); }

    static void Draw(RenderTarget& target, const FillDescriptorConst& fill,
                     const FillDescriptorConst& transparency = {},
                     FillBlendMode::BlendMode mode = FillBlendMode::Normal)
    {
        target.DrawPolyPolygon(Kernel::MakeCounted<PolyPolygon>(Page), 1.0F, mode,
                               BlendOptions::Identity(), fill, transparency,
                               Geometry::WindingOrderMode::NonZero, true, true);
    }

    /// What a paint alone looks like.
    static std::vector<P> PixelsOfPaint(const FillDescriptorConst& fill)
    {
        const auto target = Make();
        Draw(*target, fill);
        return PixelsOf<P>(target);
    }

    /// Draws over the backdrops, perhaps under a clip or mask that lets half through, perhaps alpha
    /// alone, and expects at each column what \p expected makes of the backdrop.
    void Check(const std::string& what, const std::function<void(RenderTarget&)>& draw,
               const std::function<RealPixel(std::size_t, const RealPixel&, double)>& expected)
    {
        const auto clean = Make();
        DrawBackdrops(*clean);
        const auto backdrops = PixelsOf<P>(clean);
        for (const char* const clip : {"none", "path", "mask"}) {
            const bool clipped = clip[0] != 'n';
            for (const bool alphaOnly : {false, true}) {
                const auto target = Make();
                DrawBackdrops(*target);
                if (clip[0] == 'p')
                    PushHalfClip(*target);
                else if (clipped)
                    target->PushClippingMask(Page, MakeHalfMask());
                if (alphaOnly)
                    target->PushAlphaChannelOnly();
                draw(*target);
                if (alphaOnly)
                    target->PopAlphaChannelOnly();
                const auto results = PixelsOf<P>(target);
                for (std::size_t i = 0; i < results.size(); ++i) {
                    const RealPixel backdrop = ToReal(backdrops[i]);
                    RealPixel exact = expected(i, backdrop, clipped ? 128 / 255.0 : 1.0);
                    if (alphaOnly)
                        KeepColour(backdrop, exact);
                    for (std::size_t c = 0; c < P::ChannelCount; ++c)
                        ASSERT_NEAR(ToReal(results[i])[c], exact[c],
                                    Step * (alphaOnly ? 2.01 : 1.01))
                            << what << " column " << i << " channel " << c << " clip " << clip
                            << " alpha only " << alphaOnly;
                }
            }
        }
    }

    static Kernel::Counted<const Raster::DynamicBuffer> MakeHalfMask()
    {
        const auto mask = Raster::DynamicBuffer::Create(Format::M8, Columns, 1);
        std::fill_n(mask->GetRow(0), Columns, std::uint8_t{128});
        return mask;
    }

    /// Gives a pixel the unpremultiplied colour of another.
    static void KeepColour(const RealPixel& from, RealPixel& pixel)
    {
        const double alpha = from[P::AlphaIndex];
        for (std::size_t c = 0; c < P::ColourCount; ++c)
            pixel[c] = alpha > 0 ? from[c] / alpha * pixel[P::AlphaIndex] : 0.0;
    }

    static RealPixel Towards(const RealPixel& d, const RealPixel& p, double w)
    {
        RealPixel result{};
        for (std::size_t c = 0; c < P::ChannelCount; ++c)
            result[c] = d[c] + w * (p[c] - d[c]);
        return result;
    }

    static constexpr double Step =
        BlendTests::IsFloat<P> ? 1e-5 : (sizeof(typename P::ChannelType) == 1 ? 1.0 : 2.0) / P::Max;
    static constexpr double Opacity = 153 / 255.0;
};
TYPED_TEST_SUITE(FormatInterpolation, AllPixels);

TYPED_TEST(FormatInterpolation, MovesEveryPixelTowardsThePaint)
{
    using P = TypeParam;
    const auto& options = BlendOptions::Identity();
    for (int paint = 0; paint < this->PaintCount; ++paint) {
        const auto [fill, transparency] = this->GetPaint(paint);
        const auto paints = this->PixelsOfPaint(fill);
        const auto weights =
            transparency.IsFillNone() ? std::vector<P>() : this->PixelsOfPaint(transparency);
        // One factor at a time: their product in bytes is rounded.
        const float opacity = weights.empty() ? 0.6F : 1.0F;
        const auto weight = [&](std::size_t i) {
            return weights.empty() ? this->Opacity : ToReal(weights[i])[P::AlphaIndex];
        };
        this->Check(
            "Interpolate " + std::to_string(paint),
            [&](RenderTarget& target) {
                target.Interpolate(opacity, FillBlendMode::Multiply, options, fill, transparency);
            },
            [&](std::size_t i, const RealPixel& d, double cover) {
                return this->Towards(d, ToReal(paints[i]), cover * weight(i));
            });
        this->Check(
            "as fill " + std::to_string(paint),
            [&](RenderTarget& target) {
                target.PushComposite(CompositeInit::Clear, FillBlendMode::Mask, options, 0.6F);
                this->Draw(target, fill);
                target.PopCompositeAsFillAndInterpolate({});
            },
            [&](std::size_t i, const RealPixel& d, double cover) {
                return this->Towards(d, ToReal(paints[i]), cover * this->Opacity);
            });
        // The group's alpha leads towards another paint.
        const auto other = this->GetPaint((paint + 1) % 3).first;
        const auto others = this->PixelsOfPaint(other);
        this->Check(
            "as transparency " + std::to_string(paint),
            [&](RenderTarget& target) {
                target.PushComposite(CompositeInit::Clear, FillBlendMode::Normal, options, 1.0F);
                this->Draw(target, fill);
                target.PopCompositeAsTransparencyAndInterpolate(other);
            },
            [&](std::size_t i, const RealPixel& d, double cover) {
                return this->Towards(d, ToReal(others[i]),
                                     cover * ToReal(paints[i])[P::AlphaIndex]);
            });
    }
    this->Check(
        "an empty group",
        [&](RenderTarget& target) {
            target.PushComposite(CompositeInit::Clear, FillBlendMode::Normal, options, 0.6F);
            target.PopCompositeAsFillAndInterpolate({});
        },
        [&](std::size_t, const RealPixel& d, double cover) {
            return this->Towards(d, {}, cover * this->Opacity);
        });
}

TYPED_TEST(FormatInterpolation, AlphaAloneIsDrawnByTheModesRule)
{
    using P = TypeParam;
    const auto format = BlendTests::MakeFormat<P>();
    for (int paint = 0; paint < this->PaintCount; ++paint) {
        const auto [fill, transparency] = this->GetPaint(paint);
        const auto source = MakeTarget(Raster::FormatOfPixel<P>, this->Columns, 1);
        this->Draw(*source, fill, transparency);
        const auto sources = PixelsOf<P>(source);
        for (const auto mode : {FillBlendMode::Normal, FillBlendMode::Multiply,
                                FillBlendMode::Screen, FillBlendMode::Erase, FillBlendMode::Mask}) {
            const auto exact = [&](std::size_t i, const RealPixel& d, double cover) {
                return BlendTests::Composite(
                    format, {mode, ToReal(sources[i]), d,
                             static_cast<unsigned char>(std::lround(cover * 255)), -1, 1.0});
            };
            // Inside a group nothing is left out of what is drawn; closing it draws alpha.
            this->Check(
                "group " + std::to_string(paint) + " mode " + std::to_string(mode),
                [&](RenderTarget& target) {
                    target.PushComposite(CompositeInit::Clear, mode, BlendOptions::Identity(),
                                         1.0F);
                    this->Draw(target, fill, transparency);
                    target.PopCompositeAsFill({}, {});
                },
                exact);
            if (mode < FillBlendMode::SpanModeCount)
                this->Check(
                    "shape " + std::to_string(paint) + " mode " + std::to_string(mode),
                    [&](RenderTarget& target) { this->Draw(target, fill, transparency, mode); },
                    exact);
        }
    }
}

// The colour of the backdrop shows by the alpha that is drawn, and however often that changes,
// nothing is lost on the way.
TYPED_TEST(FormatInterpolation, BackdropColourSurvivesAnyAlpha)
{
    using P = TypeParam;
    const auto target = this->Make();
    this->DrawBackdrops(*target);
    const auto backdrops = PixelsOf<P>(target);
    target->PushComposite(CompositeInit::CopyBackdropColour, FillBlendMode::Normal,
                          BlendOptions::Identity(), 1.0F);
    target->PushAlphaChannelOnly();
    const auto veil = FillDescriptorConst::CreateSolid({{9, 9, 9, 1}});
    const auto full = FillDescriptorConst::CreateSolid({{9, 9, 9, 255}});
    this->Draw(*target, veil); // colour times this alpha would be nothing
    target->PushComposite(CompositeInit::Clear, FillBlendMode::Erase, BlendOptions::Identity(),
                          1.0F);
    this->Draw(*target, full);
    target->PopCompositeAsFill({}, {});
    target->PushAlphaChannelOnly();
    this->Draw(*target, full);
    target->Clear();
    target->PopAlphaChannelOnly();
    this->Draw(*target, full);
    target->PopAlphaChannelOnly();
    const auto pixels = PixelsOf<P>(*target->GetCurrentBuffer());
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        RealPixel exact{};
        exact[P::AlphaIndex] = 1.0;
        this->KeepColour(ToReal(backdrops[i]), exact);
        for (std::size_t c = 0; c < P::ChannelCount; ++c)
            ASSERT_NEAR(ToReal(pixels[i])[c], exact[c], this->Step) << i << ' ' << c;
    }
    // Closed, what is there is composited like anything else.
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(PixelsOf<P>(target), pixels);
}

using AlphaOnlyTest = TargetTest;

TEST_F(AlphaOnlyTest, OrdinaryDrawingSeesNoColourWithoutAlpha)
{
    Fill({0, 0, Width, Height}, {{200, 100, 50, 255}});
    target->PushComposite(CompositeInit::CopyBackdropColour, FillBlendMode::Normal,
                          BlendOptions::Identity(), 1.0F);
    Fill({0, 0, 10, 10}, Green, 0.5F);
    const auto inside = target->GetCurrentBuffer();
    const auto* pixels = reinterpret_cast<const PixelRGBA8*>(inside->GetRow(0));
    EXPECT_EQ(pixels[5], (PixelRGBA8{{0, 127, 0, 127}}));
    EXPECT_EQ(pixels[20], Nothing);
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(At(20, 0), (PixelRGBA8{{200, 100, 50, 255}}));
}

TEST_F(AlphaOnlyTest, NestsAndEndsWithItsGroup)
{
    Fill({0, 0, Width, Height}, {{255, 0, 0, 100}});
    target->PopAlphaChannelOnly(); // nothing to pop
    target->PushAlphaChannelOnly();
    target->PushAlphaChannelOnly();
    target->PopAlphaChannelOnly();
    Fill({0, 0, 10, 10}, Green);
    target->PushComposite(CompositeInit::Clear, FillBlendMode::Normal, BlendOptions::Identity(),
                          1.0F);
    Fill({10, 0, 20, 10}, Green); // all channels
    EXPECT_EQ(reinterpret_cast<const PixelRGBA8*>(target->GetCurrentBuffer()->GetRow(0))[10],
              Green);
    target->PushAlphaChannelOnly();
    target->PopCompositeAsFill({}, {});
    // A shape of fill and stroke is a group of its own, a bitmap is not.
    target->DrawPolyCurve(Rectangle(20, 0, 30, 10), 0.5F, FillBlendMode::Screen,
                          BlendOptions::Identity(), Solid(Green), {}, Solid(Blue),
                          LineStyleDescriptorConst(2.0), Geometry::WindingOrderMode::EvenOdd, true,
                          true);
    RGBA8Buffer view;
    ASSERT_TRUE(view.Create(1, 1));
    view.Clear(Blue);
    target->DrawBuffer({30, 0, 40, 10}, view.GetDynamicBuffer(), 1.0F, FillBlendMode::Normal,
                       BlendOptions::Identity(), true);
    target->PopAlphaChannelOnly();
    for (const int x : {5, 15, 35})
        EXPECT_EQ(At(x, 5), Red) << x;
    EXPECT_EQ(At(25, 5), (PixelRGBA8{{177, 0, 0, 177}}));
    EXPECT_EQ(At(5, 15), (PixelRGBA8{{100, 0, 0, 100}}));
    Fill({0, 0, 10, 10}, Green);
    EXPECT_EQ(At(5, 5), Green);
}

// While alpha alone is drawn, colour is stored otherwise; who looks at it must know.
TEST_F(AlphaOnlyTest, BlendRangesSeeColourAllTheSame)
{
    Fill({0, 0, Width, Height}, {{128, 0, 0, 100}});
    const auto dark = Kernel::MakeCounted<Geometry::Spline>(
        std::vector<Geometry::Point>{{0.55, 1.0}, {0.6, 0.0}});
    const FillDescriptorConst same(FillBackBuffer::Create());
    BlendOptions source, below;
    source.SetChannelCurve(BlendOptions::Side::Source, 0, dark);
    below.SetChannelCurve(BlendOptions::Side::Destination, 0, dark);
    target->PushAlphaChannelOnly();
    target->Blend(1.0F, FillBlendMode::Normal, source, same, {}); // 100 over 100
    EXPECT_EQ(At(5, 5), (PixelRGBA8{{81, 0, 0, 161}}));
    target->Blend(1.0F, FillBlendMode::Normal, below, Solid(Green), {});
    target->PopAlphaChannelOnly();
    EXPECT_EQ(At(5, 5), (PixelRGBA8{{128, 0, 0, 255}}));
}

TEST_F(AlphaOnlyTest, BuffersAreLeftPremultiplied)
{
    Fill({0, 0, Width, Height}, Red);
    const auto buffer = target->GetBuffer();
    const auto* pixel = reinterpret_cast<const PixelRGBA8*>(buffer->GetRow(0));
    const auto erase = [&] {
        target->PushAlphaChannelOnly();
        target->Interpolate(0.5F, FillBlendMode::Normal, BlendOptions::Identity(), Solid(Nothing),
                            {});
    };
    erase();
    target->PopAlphaChannelOnly();
    EXPECT_EQ(*pixel, (PixelRGBA8{{128, 0, 0, 128}}));
    erase(); // left open, within an open group
    target->PushComposite(CompositeInit::CopyBackdrop, FillBlendMode::Normal,
                          BlendOptions::Identity(), 1.0F);
    EXPECT_EQ(*reinterpret_cast<const PixelRGBA8*>(target->GetCurrentBuffer()->GetRow(0)),
              (PixelRGBA8{{64, 0, 0, 64}}));
    const BufferState state = target->GetBufferState();
    target->DetachBuffer();
    EXPECT_EQ(*pixel, (PixelRGBA8{{64, 0, 0, 64}}));
    ASSERT_TRUE(target->SetBufferState(state));
    target->PopCompositeAsFill({}, {});
    Fill({0, 0, 1, 1}, Green);
    target->PopAlphaChannelOnly();
    EXPECT_EQ(*pixel, Red);
}

TEST_F(AlphaOnlyTest, WhoKeepsTheBufferGetsItPremultiplied)
{
    Fill({0, 0, Width, Height}, {{200, 0, 0, 128}});
    const auto buffer = target->GetBuffer();
    target->PushAlphaChannelOnly();
    Fill({0, 0, 10, 10}, Green, 0.25F);
    target.Reset();
    const auto pixel = *reinterpret_cast<const PixelRGBA8*>(buffer->GetRow(0));
    EXPECT_EQ(pixel, (PixelRGBA8{{124, 0, 0, 159}})); // plain red of 100 ÷ 128 is 199
}

// Whatever the pixels are: float colour and alpha can be too far apart to be divided.
TEST_F(AlphaOnlyTest, FloatPixelsBesideThePathStay)
{
    using Pixel = Raster::PixelRGBAUF;
    const auto floats = MakeTarget(Format::RGBAUF, 16, 16);
    auto* const first = reinterpret_cast<Pixel*>(floats->GetBuffer()->GetRow(0));
    first[8] = {{1e30F, 1.0F, 0.1F, 1e-30F}};
    first[9] = {{0.1F, 0.3F, 0.7F, 0.3F}};
    const Pixel huge = first[8], odd = first[9];
    floats->PushAlphaChannelOnly();
    floats->DrawPolyCurve(Rectangle(0, 0, 4, 4), 1.0F, FillBlendMode::Normal,
                          BlendOptions::Identity(), Solid(Red), {}, {}, {},
                          Geometry::WindingOrderMode::EvenOdd, true, true);
    floats->DrawPolyCurve(Rectangle(12, 0, 16, 4), 1.0F, FillBlendMode::Normal,
                          BlendOptions::Identity(), Solid(Red), {}, {}, {},
                          Geometry::WindingOrderMode::EvenOdd, true, true);
    floats->PopAlphaChannelOnly();
    EXPECT_EQ(first[8], huge);
    EXPECT_EQ(first[9], odd);
}

} // namespace
} // namespace Renderer
