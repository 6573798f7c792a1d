#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <svg/ColourValue.h>
#include <svg/Length.h>
#include <svg/Scanner.h>
#include <svg/TransformList.h>
#include <svg/ViewBox.h>

using namespace Svg;

namespace {

TEST(Scanner, TakesNumbersAsFarAsTheyGo)
{
    const struct
    {
        std::string_view text;
        std::optional<double> value;
        std::string_view rest;
    } cases[] = {
        {"12", 12.0, ""},
        {"+.5.5", 0.5, ".5"},
        {"-3.-4", -3.0, "-4"},
        {"1e2,", 100.0, ","},
        {"1em", 1.0, "em"},
        {"1e", 1.0, "e"},
        {"1E-2x", 0.01, "x"},
        {".", std::nullopt, "."},
        {"-", std::nullopt, "-"},
        {"e5", std::nullopt, "e5"},
        {"NaN", std::nullopt, "NaN"},
        {"inf", std::nullopt, "inf"},
        {"1e999", 1.7976931348623157e308, ""},
        {"-1e999", -1.7976931348623157e308, ""},
        {"1e-999", 0.0, ""},
    };
    for (const auto& c : cases) {
        Scanner scanner(c.text);
        EXPECT_EQ(scanner.Number(), c.value) << c.text;
        EXPECT_EQ(scanner.Rest(), c.rest) << c.text;
    }
}

TEST(Length, ResolvesEveryUnit)
{
    const LengthContext context{300.0, 400.0, 10.0};
    const std::vector<std::pair<std::string_view, double>> cases{
        {"5", 5.0},     {"5px", 5.0},   {"72pt", 96.0}, {"6PC", 96.0}, {" 25.4mm ", 96.0},
        {"2.54cm", 96}, {"-1in", -96},  {"2em", 20.0},  {"2ex", 10.0}, {"10%", 30.0},
        {"1e1", 10.0},  {"1e1em", 100}, {".5px", 0.5},
    };
    for (const auto& [text, expected] : cases) {
        const auto length = ParseLength(text);
        ASSERT_TRUE(length) << text;
        EXPECT_NEAR(length->Resolve(context, LengthAxis::Horizontal), expected, 1e-9) << text;
    }
    const Length tenth{10.0, LengthUnit::Percent};
    EXPECT_DOUBLE_EQ(tenth.Resolve(context, LengthAxis::Vertical), 40.0);
    EXPECT_NEAR(tenth.Resolve(context, LengthAxis::Diagonal), 50.0 / std::sqrt(2.0), 1e-9);
    for (const std::string_view text : {"", "px", "5 px", "5foo", "5px5", "#5"})
        EXPECT_FALSE(ParseLength(text)) << text;
}

TEST(Length, ReadsFractions)
{
    EXPECT_EQ(ParseFraction("0.25"), 0.25);
    EXPECT_EQ(ParseFraction("25%"), 0.25);
    EXPECT_EQ(ParseFraction("-1"), 0.0);
    EXPECT_EQ(ParseFraction("150%"), 1.0);
    EXPECT_FALSE(ParseFraction("1px"));
}

TEST(TransformList, AppliesTheLastFirst)
{
    const struct
    {
        std::string_view text;
        Kernel::PointT<double> image; ///< of (1, 2)
    } cases[] = {
        {"", {1, 2}},
        {"translate(3)", {4, 2}},
        {"translate(3 4)", {4, 6}},
        {"scale(2)", {2, 4}},
        {"scale(2,-1)", {2, -2}},
        {"rotate(90)", {-2, 1}},
        {"rotate(90 1 1)", {0, 1}},
        {"skewX(45)", {3, 2}},
        {" skewY( 45 ) ", {1, 3}},
        {"matrix(1,2 3,4 5,6)", {12, 16}},
        {"translate(10,0)scale(2)", {12, 4}},
        {"scale(2) , translate(10 -1)", {22, 2}},
        {"scale(2)\n\ttranslate(10 0)rotate(0)", {22, 4}},
    };
    for (const auto& c : cases) {
        const auto transform = ParseTransformList(c.text);
        ASSERT_TRUE(transform) << c.text;
        const auto image = transform->Map({1, 2});
        EXPECT_NEAR(image.x, c.image.x, 1e-12) << c.text;
        EXPECT_NEAR(image.y, c.image.y, 1e-12) << c.text;
    }
    for (const std::string_view text :
         {"scale", "scale()", "scale(1", "scale(1 2 3)", "turn(1)", "rotate(1 2)",
          "matrix(1 2 3 4 5)", "translate(a)", "matrix(1 2 3 4 5 6 7)"})
        EXPECT_FALSE(ParseTransformList(text)) << text;
}

ColourValue Bytes(int red, int green, int blue, double alpha = 1.0)
{
    return {red / 255.0, green / 255.0, blue / 255.0, alpha};
}

TEST(Colour, ReadsEveryForm)
{
    const struct
    {
        std::string_view text;
        std::optional<ColourValue> value;
    } cases[] = {
        {"#f08", Bytes(255, 0, 136)},
        {"#F08A", Bytes(255, 0, 136, 170 / 255.0)},
        {" #12aB9f ", Bytes(18, 171, 159)},
        {"#12ab9f80", Bytes(18, 171, 159, 128 / 255.0)},
        {"red", Bytes(255, 0, 0)},
        {"LightGoldenrodYellow", Bytes(250, 250, 210)},
        {"transparent", Bytes(0, 0, 0, 0.0)},
        {"rgb(1,2,3)", Bytes(1, 2, 3)},
        {"rgb( 100% ,0%, 50% )", ColourValue{1.0, 0.0, 0.5, 1.0}},
        {"rgb(300, -5, 0)", Bytes(255, 0, 0)},
        {"rgba(1,2,3,0.5)", Bytes(1, 2, 3, 0.5)},
        {"rgb(1 2 3 / 50%)", Bytes(1, 2, 3, 0.5)},
        {"#fff icc-color(Profile, 0.1, 0.2)", Bytes(255, 255, 255)},
        {"rgb(1,2)", std::nullopt},
        {"rgb(1,2,3", std::nullopt},
        {"rgb(1,2,3,4,5)", std::nullopt},
        {"#ff", std::nullopt},
        {"#fffff", std::nullopt},
        {"#ggg", std::nullopt},
        {"reddish", std::nullopt},
        {"red green", std::nullopt},
        {"", std::nullopt},
        {"currentColor", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ParseColour(c.text), c.value) << c.text;
}

TEST(Colour, ConvertsHueSaturationLightness)
{
    const std::vector<std::pair<std::string_view, ColourValue>> cases{
        {"hsl(0,100%,50%)", {1, 0, 0, 1}},
        {"hsl(120, 100%, 25%)", {0, 0.5, 0, 1}},
        {"hsl(-120deg 100% 50%)", {0, 0, 1, 1}},
        {"hsla(60,0%,40%,.25)", {.4, .4, .4, .25}},
    };
    for (const auto& [text, expected] : cases) {
        const auto colour = ParseColour(text);
        ASSERT_TRUE(colour) << text;
        EXPECT_NEAR(colour->red, expected.red, 1e-12) << text;
        EXPECT_NEAR(colour->green, expected.green, 1e-12) << text;
        EXPECT_NEAR(colour->blue, expected.blue, 1e-12) << text;
        EXPECT_EQ(colour->alpha, expected.alpha) << text;
    }
}

TEST(ViewBox, ReadsFourNumbersOnly)
{
    EXPECT_EQ(ParseViewBox("1,2 3 4"), (Kernel::RectT<double>{1, 2, 4, 6}));
    EXPECT_EQ(ParseViewBox("0 0 0 5"), (Kernel::RectT<double>{0, 0, 0, 5}));
    for (const std::string_view text : {"", "0 0 1", "0 0 1 1 1", "0 0 -1 1", "0 0 1 x"})
        EXPECT_FALSE(ParseViewBox(text)) << text;
}

TEST(ViewBox, FitsBoxes)
{
    // A box of 10 × 10 in a viewport of 200 × 100 whose left top corner is (5, 7).
    const struct
    {
        std::string_view ratio;
        Kernel::RectT<double> image; ///< of the box
    } cases[] = {
        {"", {55, 7, 155, 107}},
        {"none", {5, 7, 205, 107}},
        {"xMinYMin", {5, 7, 105, 107}},
        {"xMaxYMid meet", {105, 7, 205, 107}},
        {"xMidYMin slice", {5, 7, 205, 207}},
        {"defer xMidYMid slice", {5, -43, 205, 157}},
        {"xMinYMax slice", {5, -93, 205, 107}},
        {"nonsense", {55, 7, 155, 107}},
    };
    for (const auto& c : cases) {
        const Kernel::RectT<double> box{100, 200, 110, 210};
        const auto fit = FitBox(box, {5, 7, 205, 107}, AspectRatio::Parse(c.ratio));
        EXPECT_TRUE(Raster::AffineTransform::MapRect(fit, box) == c.image) << c.ratio;
    }
}

} // namespace
