#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <renderer/paint/FillGradient.h>

#include "TestDrawing.h"

using Renderer::FillGradient;

namespace {

constexpr std::string_view Stops =
    "<stop stop-color='red'/><stop offset='1' stop-color='blue' stop-opacity='.5'/>";

/// The fill that a gradient `#g` gives to a rectangle from (10, 20) to (50, 30).
Renderer::FillDescriptorConst Paint(const std::string& definitions,
                                    const std::string& attributes = "")
{
    const Recorded recorded(MakeDocument(definitions +
                                         "<rect x='10' y='20' width='40' height='10' "
                                         "stroke='black' fill='url(#g) lime' " +
                                         attributes + "/>"));
    return recorded.target.shapes.at(0).fill;
}

const FillGradient& AsGradient(const Renderer::FillDescriptorConst& fill)
{
    return dynamic_cast<const FillGradient&>(*fill.GetFill());
}

TEST(LinearGradient, FollowsTheWholeMap)
{
    const struct
    {
        std::string attributes;
        Kernel::PointT<double> start;
        Kernel::PointT<double> end;
    } cases[] = {
        {"", {10, 20}, {50, 20}},
        {"x1='50%' x2='.25'", {30, 20}, {20, 20}},
        {"x2='0' y2='1'", {10, 20}, {10, 30}},
        // The bands of a diagonal run along the image of its perpendicular: 2:1 by 1:2 gives 8:32.
        {"x2='1' y2='1'", {10, 20}, {10 + 80.0 / 17, 20 + 320.0 / 17}},
        {"gradientTransform='scale(.5 1)'", {10, 20}, {30, 20}},
        {"gradientUnits='userSpaceOnUse' x1='5' y1='6' x2='10%' y2='6'", {5, 6}, {20, 6}},
        {"gradientUnits='userSpaceOnUse' x2='10' gradientTransform='translate(1 2)'",
         {1, 2},
         {11, 2}},
        {"gradientUnits='userSpaceOnUse' x2='10' gradientTransform='skewX(45)'", {0, 0}, {5, -5}},
    };
    for (const auto& c : cases) {
        const auto fill = Paint("<linearGradient id='g' " + c.attributes + ">" +
                                std::string(Stops) + "</linearGradient>");
        ASSERT_EQ(fill.GetFill()->GetKind(), Renderer::Fill::Kind::Gradient) << c.attributes;
        EXPECT_EQ(AsGradient(fill).GetType(), FillGradient::Linear);
        Kernel::PointT<double> start;
        Kernel::PointT<double> end;
        AsGradient(fill).GetLinearPoints(fill.GetTransform(), start, end);
        EXPECT_NEAR(start.x, c.start.x, 1e-9) << c.attributes;
        EXPECT_NEAR(start.y, c.start.y, 1e-9) << c.attributes;
        EXPECT_NEAR(end.x, c.end.x, 1e-9) << c.attributes;
        EXPECT_NEAR(end.y, c.end.y, 1e-9) << c.attributes;
    }
}

TEST(RadialGradient, HasItsFocusInTheUnitCircle)
{
    const auto fill =
        Paint("<radialGradient id='g' gradientUnits='userSpaceOnUse' cx='20' cy='25' r='10' "
              "fx='25' spreadMethod='reflect' gradientTransform='scale(2 1)'>" +
              std::string(Stops) + "</radialGradient>");
    const FillGradient& gradient = AsGradient(fill);
    EXPECT_EQ(gradient.GetFocus(), (Kernel::PointT<double>{0.5, 0.0}));
    EXPECT_EQ(gradient.GetSpread(), FillGradient::Reflect);
    EXPECT_EQ(fill.GetTransform().Map({0, 0}), (Kernel::PointT<double>{40, 25}));
    EXPECT_EQ(fill.GetTransform().Map({1, 0}), (Kernel::PointT<double>{60, 25}));
    EXPECT_EQ(fill.GetTransform().Map({0, 1}), (Kernel::PointT<double>{40, 35}));

    const auto box = Paint("<radialGradient id='g'>" + std::string(Stops) + "</radialGradient>");
    EXPECT_EQ(AsGradient(box).GetFocus(), Kernel::PointT<double>());
    EXPECT_EQ(box.GetTransform().Map({0, 0}), (Kernel::PointT<double>{30, 25}));
    EXPECT_EQ(box.GetTransform().Map({1, 1}), (Kernel::PointT<double>{50, 30}));
    // A focus outside lies on the circle.
    const auto outside =
        Paint("<radialGradient id='g' fx='5'>" + std::string(Stops) + "</radialGradient>");
    EXPECT_NEAR(AsGradient(outside).GetFocus().x, 1.0, 1e-12);
}

TEST(Gradient, TakesWhatItLacksFromOthers)
{
    const auto fill = Paint(
        "<linearGradient id='a' x1='5' spreadMethod='repeat' gradientUnits='userSpaceOnUse'>" +
        std::string(Stops) + "</linearGradient>" +
        "<radialGradient id='b' xlink:href='#a' cx='7'/>"
        "<linearGradient id='g' xlink:href='#b' x2='9'/>");
    const FillGradient& gradient = AsGradient(fill);
    EXPECT_EQ(gradient.GetSpread(), FillGradient::Repeat);
    EXPECT_EQ(gradient.GetGradient()->GetColours().size(), 2U);
    EXPECT_EQ(fill.GetTransform().Map({0, 0}), (Kernel::PointT<double>{5, 0}));
    EXPECT_EQ(fill.GetTransform().Map({1, 0}), (Kernel::PointT<double>{9, 0}));
}

TEST(Gradient, ReadsStops)
{
    const auto fill = Paint("<g color='#00ff00'><linearGradient id='g'>"
                            "<stop offset='20%' stop-color='currentColor'/><desc/>"
                            "<stop offset='.1' style='stop-color:#0000ff;stop-opacity:.5'/>"
                            "<stop offset='7'/></linearGradient></g>",
                            "fill-opacity='.5'");
    const auto& stops = AsGradient(fill).GetGradient()->GetColours();
    ASSERT_EQ(stops.size(), 3U);
    EXPECT_EQ(stops[0].position, 0.2);
    EXPECT_EQ(stops[1].position, 0.2); // never before the former one
    EXPECT_EQ(stops[2].position, 1.0);
    const std::vector<std::array<double, 4>> colours{{0, 1, 0, .5}, {0, 0, 1, .25}, {0, 0, 0, .5}};
    for (std::size_t i = 0; i < colours.size(); ++i) {
        Raster::PixelRGBAF pixel;
        stops[i].colour->GetColour(pixel, true, {});
        for (std::size_t channel = 0; channel < 4; ++channel)
            EXPECT_NEAR(pixel[channel], colours[i][channel], 1e-6) << i;
    }
}

TEST(Gradient, BecomesSolidOrNothing)
{
    const std::string stops(Stops);
    const struct
    {
        std::string definition;
        std::string painted;
    } cases[] = {
        {"<linearGradient id='g'/>", "none"},
        {"<linearGradient id='g'><stop stop-color='red' stop-opacity='.5'/></linearGradient>",
         "#ff000080"},
        {"<linearGradient id='g' x2='0'>" + stops + "</linearGradient>", "#0000ff80"},
        {"<radialGradient id='g' r='0'>" + stops + "</radialGradient>", "#0000ff80"},
        {"<radialGradient id='g' r='-1'>" + stops + "</radialGradient>", "none"},
        {"<linearGradient id='g' gradientTransform='scale(0)'>" + stops + "</linearGradient>",
         "none"},
        {"<rect id='g'/>", "#00ff00ff"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Describe(Paint(c.definition)), c.painted) << c.definition;
}

TEST(Gradient, NeedsAnExtentForItsBoxUnits)
{
    const std::string gradient =
        "<linearGradient id='g'>" + std::string(Stops) + "</linearGradient>";
    const auto stroke = [&](const std::string& paint) {
        const Recorded recorded(
            MakeDocument(gradient + "<path d='M0 0H9' stroke='" + paint + "'/>"));
        return recorded.target.shapes.at(0).lineFill;
    };
    EXPECT_EQ(Describe(stroke("url(#g)")), "none");
    EXPECT_EQ(Describe(stroke("url(#g) red")), "#ff0000ff");
}

} // namespace
