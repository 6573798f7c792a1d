// Blend ranges and the anti-aliasing curve of the blend options.

#include <algorithm>
#include <cmath>
#include <functional>

#include "../blend/OracleMatch.h"
#include "PaintedFormat.h"

namespace Renderer {
namespace {

using BlendTests::RealPixel;
using BlendTests::ToReal;
using Side = BlendOptions::Side;
using CompositeInit = RenderTarget::CompositeInit;

BlendOptions::Curve MakeCurve(std::vector<Geometry::Point> points)
{
    return Kernel::MakeCounted<Geometry::Spline>(std::move(points));
}

template<class P>
class FormatRanges : public PaintedFormat
{
protected:
    static constexpr int Master = -1;

    static void Set(BlendOptions& options, Side side, int channel, BlendOptions::Curve curve)
    {
        if (channel == Master)
            options.SetMasterCurve(side, std::move(curve));
        else
            options.SetChannelCurve(side, channel, std::move(curve));
    }

    static void Paint(RenderTarget& target, int paint, const BlendOptions& options,
                      FillBlendMode::BlendMode mode)
    {
        const auto [fill, transparency] = GetPaint(paint);
        target.DrawPolyPolygon(Kernel::MakeCounted<PolyPolygon>(Page), 1.0F, mode, options, fill,
                               transparency, Geometry::WindingOrderMode::NonZero, true, true);
    }

    /// The value that a curve sees. \return false where there is none.
    static bool GetValue(const RealPixel& pixel, int channel, double& value)
    {
        const double alpha = pixel[P::AlphaIndex];
        if (channel == int(P::AlphaIndex)) {
            value = alpha;
            return true;
        }
        if (alpha == 0)
            return false;
        RealPixel c{};
        for (std::size_t i = 0; i < P::ColourCount; ++i)
            c[i] = std::clamp(pixel[i] / alpha, 0.0, 1.0);
        if (channel != Master)
            value = c[std::size_t(channel)];
        else if (P::ColourCount == 4)
            value = (1 - c[3]) * (0.30 * (1 - c[0]) + 0.59 * (1 - c[1]) + 0.11 * (1 - c[2]));
        else if (P::ColourCount == 3 && P::Roles[0] == Raster::ChannelRole::Additive)
            value = 0.30 * c[0] + 0.59 * c[1] + 0.11 * c[2];
        else
            value = c[0];
        return true;
    }

    void Check(Side side, int channel, int paint)
    {
        // Down and up again within the range.
        const auto curve = MakeCurve({{0.1, 1.0}, {0.5, 0.25}, {1.0, 0.9}});
        BlendOptions options;
        Set(options, side, channel, curve);
        const auto clean = MakeTarget(Raster::FormatOfPixel<P>, Columns, 1);
        const auto target = MakeTarget(Raster::FormatOfPixel<P>, Columns, 1);
        // Transparency comes after the ranges: without it these are the values.
        const auto [fill, transparency] = GetPaint(paint);
        clean->DrawPolyPolygon(Kernel::MakeCounted<PolyPolygon>(Page), 1.0F, FillBlendMode::Normal,
                               BlendOptions::Identity(), fill, {},
                               Geometry::WindingOrderMode::NonZero, true, true);
        const auto values = PixelsOf<P>(clean);
        clean->Clear();
        Paint(*clean, paint, BlendOptions::Identity(), FillBlendMode::Normal);
        const auto sources = PixelsOf<P>(clean);
        DrawBackdrops(*target);
        const auto backdrops = PixelsOf<P>(target);
        Paint(*target, paint, options, FillBlendMode::Screen);
        const auto results = PixelsOf<P>(target);
        for (std::size_t i = 0; i < results.size(); ++i) {
            double value = 0;
            const P& looked = side == Side::Source ? values[i] : backdrops[i];
            const double weight =
                GetValue(ToReal(looked), channel, value) ? curve->Evaluate(value) : 1.0;
            RealPixel source = ToReal(sources[i]);
            for (double& c : source)
                c *= weight;
            const auto exact = BlendTests::Composite(
                m_format, {FillBlendMode::Screen, source, ToReal(backdrops[i]), 255, -1, 1.0});
            // Values of bytes are bytes, and the scaled paint is stored before it is blended.
            const double step = BlendTests::IsFloat<P> ? 1e-5 : 2.5 / P::Max;
            for (std::size_t c = 0; c < P::ChannelCount; ++c)
                ASSERT_NEAR(ToReal(results[i])[c], exact[c], step)
                    << "side " << int(side) << " curve " << channel << " paint " << paint
                    << " column " << i << " channel " << c;
        }
    }

    BlendTests::OracleFormat m_format = BlendTests::MakeFormat<P>();
};
TYPED_TEST_SUITE(FormatRanges, AllPixels);

TYPED_TEST(FormatRanges, EveryCurveScalesThePaint)
{
    for (const Side side : {Side::Source, Side::Destination}) {
        for (int channel = this->Master; channel < int(TypeParam::ChannelCount); ++channel) {
            for (int paint = 0; paint < this->PaintCount; ++paint) {
                this->Check(side, channel, paint);
                ASSERT_FALSE(this->HasFatalFailure());
            }
        }
    }
}

// Groups look at what was drawn into them, and fill and stroke of a shape are one object.
TYPED_TEST(FormatRanges, AGroupIsWeighedAsAWhole)
{
    using P = TypeParam;
    BlendOptions options;
    options.SetMasterCurve(Side::Source, MakeCurve({{0.2, 0.0}, {0.6, 1.0}}));
    options.SetChannelCurve(Side::Destination, 0, MakeCurve({{0.2, 1.0}, {0.9, 0.3}}));
    options.SetChannelCurve(Side::Destination, 4, MakeCurve({{0.0, 0.8}, {1.0, 1.0}}));
    const auto expectSame = [&](const std::function<void(RenderTarget&)>& a,
                                const std::function<void(RenderTarget&)>& b) {
        const auto first = MakeTarget(Raster::FormatOfPixel<P>, this->Columns, 1);
        const auto second = MakeTarget(Raster::FormatOfPixel<P>, this->Columns, 1);
        this->DrawBackdrops(*first);
        this->DrawBackdrops(*second);
        a(*first);
        b(*second);
        EXPECT_EQ(PixelsOf<P>(first), PixelsOf<P>(second));
    };
    const auto group = [&](RenderTarget& target, const auto& draw, const auto& pop) {
        target.PushComposite(CompositeInit::Clear, FillBlendMode::Overlay, options, 1.0F);
        draw();
        pop();
    };
    for (int paint = 0; paint < 4; ++paint) {
        expectSame(
            [&](RenderTarget& target) {
                this->Paint(target, paint, options, FillBlendMode::Overlay);
            },
            [&](RenderTarget& target) {
                group(
                    target,
                    [&] {
                        this->Paint(target, paint, BlendOptions::Identity(), FillBlendMode::Normal);
                    },
                    [&] { target.PopCompositeAsFill({}, {}); });
            });
        expectSame(
            [&](RenderTarget& target) {
                target.Interpolate(1.0F, FillBlendMode::Normal, options,
                                   this->GetPaint(paint).first, {});
            },
            [&](RenderTarget& target) {
                group(
                    target,
                    [&] {
                        this->Paint(target, paint, BlendOptions::Identity(), FillBlendMode::Normal);
                    },
                    [&] { target.PopCompositeAsFillAndInterpolate({}); });
            });
    }
    const auto shape = [&](RenderTarget& target, const BlendOptions& with) {
        target.DrawPolyCurve(Kernel::MakeCounted<Geometry::PolyCurveDbl>(this->Page), 1.0F,
                             FillBlendMode::Normal, with, this->GetPaint(0).first, {},
                             this->GetPaint(1).first, LineStyleDescriptorConst(3.0),
                             Geometry::WindingOrderMode::NonZero, true, true);
    };
    expectSame([&](RenderTarget& target) { shape(target, options); },
               [&](RenderTarget& target) {
                   target.PushComposite(CompositeInit::Clear, FillBlendMode::Normal, options, 1.0F);
                   shape(target, BlendOptions::Identity());
                   target.PopCompositeAsFill({}, {});
               });
}

using BlendOptionsTest = TargetTest;

TEST_F(BlendOptionsTest, RangesOfBytesAreExact)
{
    target = Make(256, 1);
    for (int x = 0; x < 256; ++x) {
        const auto level = std::uint8_t(x);
        Fill({double(x), 0, x + 1.0, 1}, {{level, level, level, 255}});
    }
    for (const int channel : {-1, 1}) {
        BlendOptions options; // a step between 127 and 128
        const auto step = MakeCurve({{127.4 / 255, 0.0}, {127.6 / 255, 1.0}});
        if (channel < 0)
            options.SetMasterCurve(Side::Destination, step);
        else
            options.SetChannelCurve(Side::Destination, channel, step);
        const auto before = BytesOf(target);
        target->DrawPolyCurve(Rectangle(0, 0, 256, 1), 1.0F, FillBlendMode::Normal, options,
                              Solid({{7, 200, 9, 255}}), {}, {}, {},
                              Geometry::WindingOrderMode::NonZero, true, true);
        for (int x = 0; x < 256; ++x) {
            const auto level = std::uint8_t(x);
            EXPECT_EQ(At(x, 0), x < 128 ? (PixelRGBA8{{level, level, level, 255}})
                                        : (PixelRGBA8{{7, 200, 9, 255}}));
        }
    }
}

// The curve shapes the coverage of shapes: not of clips, not of groups, and there is none to shape
// where drawing is aliased.
TEST_F(BlendOptionsTest, AntialiasingCurveShapesTheCoverageOfShapesAlone)
{
    auto curve = Kernel::MakeCounted<Geometry::CurveDbl>(Geometry::Point{0, 1});
    curve->LineTo({1, 1});
    BlendOptions options; // whatever is touched is covered
    options.SetAntialiasingGamma(curve);
    const auto fill = [&](const Kernel::RectT<double>& rect, float opacity = 1.0F,
                          bool stroked = false) {
        target->DrawPolyCurve(
            Kernel::MakeCounted<Geometry::PolyCurveDbl>(rect), opacity, FillBlendMode::Normal,
            options, Solid(Red), {}, stroked ? Solid(Red) : FillDescriptorConst(),
            LineStyleDescriptorConst(1.0), Geometry::WindingOrderMode::NonZero, true, true);
    };
    target->PushClipCurvesPath(Rectangle(0, 0, 20, 0.5), Geometry::WindingOrderMode::NonZero);
    fill({0.5, 0, 10, 10});
    EXPECT_EQ(At(0, 0).Alpha(), 128);
    target->PushComposite(CompositeInit::Clear, FillBlendMode::Normal, options, 1.0F);
    Fill({10.5, 0, 12, 1}, Green);
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(At(10, 0).Alpha(), 64);
    EXPECT_EQ(At(11, 0).Alpha(), 128);
    target->PopClipPath();
    fill({5.75, 10.5, 8, 12}, 0.5F, true); // a group of its own: its edge from 5.25
    EXPECT_EQ(At(5, 11).Alpha(), 127);
    target->SetAntialias(false);
    fill({0.5, 20, 5, 21});
    EXPECT_EQ(At(0, 20), Red);
}

} // namespace
} // namespace Renderer
