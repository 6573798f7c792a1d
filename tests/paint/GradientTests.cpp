#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillGradient.h>

namespace Renderer {
namespace {

using Raster::AffineTransform;
using Raster::PixelRGBA8;

Kernel::Consolidated<Colour> Grey(int value, int alpha = 255)
{
    const auto byte = static_cast<std::uint8_t>(value);
    return ColourRGB::Create(PixelRGBA8{byte, byte, byte, static_cast<std::uint8_t>(alpha)});
}

Kernel::Consolidated<Gradient> BlackToWhite(double midpoint = 0.5, double smoothness = 0.0)
{
    return Gradient::Create({{Grey(0), 0.0, midpoint, smoothness}, {Grey(255), 1.0}});
}

TEST(GradientMapping, MapsThroughTheMidpoint)
{
    EXPECT_TRUE(GradientMapping{}.IsLinear());
    EXPECT_TRUE((GradientMapping{0.5000005, 5e-7}.IsLinear()));
    EXPECT_FALSE((GradientMapping{0.500002, 0}.IsLinear()));
    for (const double t : {0.0, 0.25, 0.5, 1.0})
        EXPECT_EQ(GradientMapping{}.Mix(t), t);
    const GradientMapping early{0.2, 0.0};
    EXPECT_DOUBLE_EQ(early.Mix(0.1), 0.25);
    EXPECT_DOUBLE_EQ(early.Mix(0.2), 0.5);
    EXPECT_DOUBLE_EQ(early.Mix(0.6), 0.75);
    EXPECT_DOUBLE_EQ((GradientMapping{0.5, 1.0}.Mix(0.25)), 0.15625);
    EXPECT_DOUBLE_EQ((GradientMapping{0.5, 0.5}.Mix(0.25)), (0.25 + 0.15625) / 2);
    EXPECT_DOUBLE_EQ((GradientMapping{0.0, 0.0}.Mix(0.0)), 0.5);
    EXPECT_DOUBLE_EQ((GradientMapping{1.0, 0.0}.Mix(0.999999)), 0.4999995);
    EXPECT_DOUBLE_EQ((GradientMapping{1.0, 0.0}.Mix(1.0)), 1.0);
}

TEST(GradientMapping, MeanIsTheIntegral)
{
    for (const double midpoint : {0.0, 0.1, 0.5, 0.9, 1.0}) {
        for (const double smoothness : {0.0, 0.4, 1.0}) {
            const GradientMapping mapping{midpoint, smoothness};
            constexpr int N = 20000;
            double sum = 0.0;
            for (int i = 0; i < N; ++i)
                sum += mapping.Mix((i + 0.5) / N);
            EXPECT_NEAR(mapping.MeanMix(), sum / N, 1e-4) << midpoint << " " << smoothness;
        }
    }
}

TEST(Gradient, BringsStopsIntoOrder)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Gradient gradient({{Grey(1), -1.0},
                             {nullptr, 0.3},
                             {Grey(2), 0.6, nan, 7.0},
                             {Grey(3), 0.4},
                             {Grey(4), 9.0}});
    ASSERT_EQ(gradient.GetColours().size(), 4u);
    EXPECT_EQ(gradient.GetColours()[0].position, 0.0);
    EXPECT_EQ(gradient.GetColours()[1].position, 0.6);
    EXPECT_EQ(gradient.GetColours()[1].midpoint, 0.5);
    EXPECT_EQ(gradient.GetColours()[1].smoothness, 1.0);
    EXPECT_EQ(gradient.GetColours()[2].position, 0.6) << "never before its forerunner";
    EXPECT_EQ(gradient.GetColours()[2].colour, Grey(3));
    EXPECT_EQ(gradient.GetColours()[3].position, 1.0);
    EXPECT_EQ(BlackToWhite(), BlackToWhite());
    EXPECT_FALSE(BlackToWhite() == BlackToWhite(0.4));
}

TEST(Gradient, MeanAlphaCountsThePaddedEnds)
{
    const auto gradient = Gradient::Create({{Grey(0, 255), 0.25, 0.0}, {Grey(0, 0), 0.75}});
    // ¼ opaque, then half of the width from ½ down to nothing.
    EXPECT_DOUBLE_EQ(gradient->GetMeanAlpha(), 0.25 + 0.5 * 0.25);
    EXPECT_EQ(Gradient().GetMeanAlpha(), 0.0);
}

/// The grey of a gradient of straight pieces, of unrounded colours, at t from the left or the
/// right.
double Evaluate(const Gradient& gradient, double t)
{
    const auto& stops = gradient.GetColours();
    const auto value = [](const Gradient::ColourPosition& stop) {
        return 255.0 * dynamic_cast<const ColourRGB&>(*stop.colour).GetColourInternal()[0];
    };
    for (std::size_t i = 0; i + 1 < stops.size(); ++i) {
        const double width = stops[i + 1].position - stops[i].position;
        if (t <= stops[i + 1].position && width > 0.0)
            return std::lerp(value(stops[i]), value(stops[i + 1]), (t - stops[i].position) / width);
    }
    return value(stops.back());
}

TEST(FillGradient, LinearMappingStaysWithinHalfAStep)
{
    for (const double midpoint : {0.0, 0.03, 0.5, 0.8, 1.0}) {
        for (const double smoothness : {0.0, 0.5, 1.0}) {
            const auto fill =
                FillGradient::Create(FillGradient::Linear, BlackToWhite(midpoint, smoothness), true,
                                     FillGradient::Repeat, {0.1, 0.2});
            const auto linear = fill->GetWithLinearMapping({}, Raster::Format::RGBA8);
            EXPECT_FALSE(linear->HasNonLinearMapping());
            EXPECT_EQ(linear->GetSpread(), FillGradient::Repeat);
            EXPECT_EQ(linear->GetFocus(), (Kernel::PointT<double>{0.1, 0.2}));
            EXPECT_LE(linear->GetGradient()->GetColours().size(), 24u);
            const GradientMapping mapping{midpoint, smoothness};
            for (int i = 1; i < 1000; ++i)
                ASSERT_NEAR(Evaluate(*linear->GetGradient(), i / 1000.0),
                            255.0 * mapping.Mix(i / 1000.0), 0.501)
                    << midpoint << " " << smoothness << " " << i;
        }
    }
    const auto plain = FillGradient::Create(FillGradient::Linear, BlackToWhite());
    EXPECT_EQ(plain->GetWithLinearMapping({}, Raster::Format::RGBA8), plain);
    const auto inks = FillGradient::Create(FillGradient::Linear, BlackToWhite(0.3))
                          ->GetWithLinearMapping({}, Raster::Format::CMYKA8);
    EXPECT_EQ(inks->GetGradient()->GetColours()[1].colour,
              ColourCMYK::Create(Raster::PixelCMYKAF{0, 0, 0, 0.5f, 1}));
}

TEST(FillGradient, LinearPointsFollowSkews)
{
    const auto corrected = FillGradient::Create(FillGradient::Linear, BlackToWhite(), true);
    const auto plain = FillGradient::Create(FillGradient::Linear, BlackToWhite(), false);
    Kernel::PointT<double> p0, p1;

    const AffineTransform::Params skew{2, 1, 10, 0, 1, 20};
    EXPECT_FALSE(plain->GetLinearPoints(skew, p0, p1));
    EXPECT_EQ(p0, (Kernel::PointT<double>{10, 20}));
    EXPECT_EQ(p1, (Kernel::PointT<double>{12, 20}));
    EXPECT_TRUE(corrected->GetLinearPoints(skew, p0, p1));
    EXPECT_EQ(p0, (Kernel::PointT<double>{10, 20}));
    // (2, 0) less its part along (1, 1) is (1, −1).
    EXPECT_NEAR(p1.x, 11, 1e-12);
    EXPECT_NEAR(p1.y, 19, 1e-12);

    for (const double angle : {0.3, 1.0, 2.0}) {
        const auto rotation = AffineTransform::Rotation(angle);
        EXPECT_FALSE(corrected->GetLinearPoints(rotation, p0, p1));
        EXPECT_NEAR(p1.x, std::cos(angle), 1e-12);
    }
    EXPECT_FALSE(corrected->GetLinearPoints({1, 1e-4, 0, 0, 1e-4, 0}, p0, p1))
        << "no y axis to follow";
}

TEST(FillGradient, CorrectionRulesByType)
{
    struct Case
    {
        FillGradient::FillGradientType type;
        bool subject;
        bool asElliptical;
    };
    for (const Case c :
         {Case{FillGradient::Linear, true, false}, Case{FillGradient::Elliptical, false, false},
          Case{FillGradient::Radial, true, true}, Case{FillGradient::Conical, true, false}}) {
        for (const bool flag : {false, true}) {
            const auto fill = FillGradient::Create(c.type, BlackToWhite(), flag);
            EXPECT_EQ(fill->IsSubjectToTransformCorrection(), c.subject);
            EXPECT_EQ(fill->IsTransformCorrected(), flag && c.subject);
            EXPECT_EQ(fill->TreatRadialAsElliptical(), flag && c.asElliptical);
        }
    }
    const FillGradient beyond(FillGradient::Radial, BlackToWhite(), true, FillGradient::Pad,
                              {3, 4});
    EXPECT_NEAR(beyond.GetFocus().y, 0.8, 1e-12);
    EXPECT_FALSE(beyond.Equals(
        FillGradient(FillGradient::Radial, BlackToWhite(), true, FillGradient::Pad, {0.5, 0.8})));
}

TEST(FillGradient, CSS)
{
    const auto gradient = Gradient::Create({{Grey(0), 0.0}, {Grey(255), 0.125}});
    const char* stops = "rgba(0,0,0,1) 0%, rgba(255,255,255,1) 12.5%";
    const auto down = AffineTransform::Rotation(std::numbers::pi / 2);
    const std::string old = std::string("linear-gradient(270deg, ") + stops + ");";
    EXPECT_EQ(
        FillGradient::Create(FillGradient::Linear, gradient)->GetCSSAttributes(down),
        Kernel::String("background-image: -webkit-" + old + "\nbackground-image:    -moz-" + old +
                       "\nbackground-image:     -ms-" + old + "\nbackground-image:      -o-" + old +
                       "\nbackground-image:         linear-gradient(180deg, " + stops + ");"));
    const auto radial = FillGradient::Create(FillGradient::Radial, gradient)->GetCSSAttributes({});
    EXPECT_TRUE(radial.GetStdString().ends_with("\nbackground-image:         radial-gradient(" +
                                                std::string(stops) + ");"));
    EXPECT_EQ(FillGradient::Create(FillGradient::Conical, gradient)->GetCSSAttributes({}), "");
}

} // namespace
} // namespace Renderer
