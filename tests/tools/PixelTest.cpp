#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "Picture.h"

namespace {

TEST(Pixels, ShapesCoverTheirArea)
{
    const double pi = std::acos(-1.0);
    const std::vector<std::pair<std::string, double>> cases{
        {"<circle cx='50' cy='50' r='40'/>", 1600 * pi},
        {"<rect x='10' y='10' width='60' height='40' rx='20'/>", 2400 - (4 - pi) * 400},
        {"<path d='M10 10H90V90H10zM30 30H70V70H30z'/>", 6400},
        {"<path d='M10 10H90V90H10zM30 30H70V70H30z' fill-rule='evenodd'/>", 4800},
        {"<path d='M10 50H90' stroke='red' stroke-width='10'/>", 800},
        {"<path d='M20 50H80' stroke='red' stroke-width='10' stroke-linecap='round'/>",
         600 + 25 * pi},
        {"<path d='M10 50H90' stroke='red' stroke-width='10' stroke-dasharray='10 5'/>", 550},
        {"<path d='M10 50H90' stroke='red' stroke-width='10' stroke-dasharray='10' "
         "stroke-dashoffset='5'/>",
         400},
        {"<circle cx='50' cy='50' r='30' fill='none' stroke='red' stroke-width='10'/>", 600 * pi},
        // The pen follows the map: 20 wide across, 40 high.
        {"<path d='M5 10V30' stroke='red' stroke-width='2' transform='scale(10 2)'/>", 800},
    };
    for (const auto& [content, area] : cases) {
        EXPECT_NEAR(Picture(MakeDocument(content, "width='100' height='100'")).GetArea(), area,
                    area * 2e-3)
            << content;
    }
}

TEST(Pixels, OpacityMakesOneObject)
{
    const Picture picture(
        MakeDocument("<rect x='10' y='10' width='60' height='60' fill='red' stroke='blue' "
                     "stroke-width='20' opacity='.5'/>"
                     "<g opacity='.5'><rect x='100' y='10' width='60' height='60' fill='red'/>"
                     "<rect x='130' y='10' width='60' height='60' fill='blue'/></g>"
                     "<rect x='100' y='80' width='9' height='9' fill='lime' fill-opacity='.25'/>"));
    ExpectPixel(picture.Get(40, 40), {127, 0, 0, 127});
    ExpectPixel(picture.Get(15, 40), {0, 0, 127, 127}); // no red shines through the stroke
    ExpectPixel(picture.Get(110, 40), {127, 0, 0, 127});
    ExpectPixel(picture.Get(145, 40), {0, 0, 127, 127});
    ExpectPixel(picture.Get(104, 84), {0, 64, 0, 64});
}

TEST(Pixels, ClipsUniteAndMultiply)
{
    const Picture picture(
        MakeDocument("<clipPath id='two'><rect x='10' y='10' width='30' height='30'/><rect x='30' "
                     "y='30' width='30' height='30'/>"
                     "</clipPath><clipPath id='half'><rect x='100' width='25' height='100' "
                     "transform='scale(1 .5)'/></clipPath>"
                     "<rect width='200' height='100' clip-path='url(#two)'/>"
                     "<g clip-path='url(#half)'><g transform='translate(100)'><rect width='50' "
                     "height='100' fill='red'/></g></g>"));
    ExpectPixel(picture.Get(15, 15), {0, 0, 0, 255}, 0);
    ExpectPixel(picture.Get(35, 35), {0, 0, 0, 255}, 0);
    ExpectPixel(picture.Get(15, 50), {0, 0, 0, 0}, 0);
    ExpectPixel(picture.Get(124, 49), {255, 0, 0, 255}, 0);
    ExpectPixel(picture.Get(125, 49), {0, 0, 0, 0}, 0);
    ExpectPixel(picture.Get(124, 50), {0, 0, 0, 0}, 0);
}

TEST(Pixels, GradientsRunAlongTheirBox)
{
    const std::string stops = "<stop/><stop offset='1' stop-color='white'/>";
    const Picture picture(
        MakeDocument("<linearGradient id='d' x2='1' y2='1'>" + stops +
                     "</linearGradient><radialGradient id='r'>" + stops +
                     "</radialGradient><rect width='100' height='50' fill='url(#d)'/>"
                     "<g transform='translate(100) scale(2 1)'><rect width='50' height='50' "
                     "fill='url(#r)'/></g>"));
    for (const auto& [x, y] :
         std::vector<std::pair<unsigned, unsigned>>{{0, 0}, {99, 49}, {70, 10}, {20, 40}}) {
        const int grey =
            static_cast<int>(std::lround(255.0 * ((x + 0.5) / 100.0 + (y + 0.5) / 50.0) / 2.0));
        ExpectPixel(picture.Get(x, y), {grey, grey, grey, 255});
        const double distance = std::hypot((x + 0.5 - 50.0) / 50.0, (y + 0.5 - 25.0) / 25.0);
        const int radial = static_cast<int>(std::lround(255.0 * std::min(1.0, distance)));
        ExpectPixel(picture.Get(x + 100, y), {radial, radial, radial, 255}, 2);
    }
}

TEST(Pixels, ScaleWithTheView)
{
    const std::string content = "<path d='M1 5H19' stroke='red' stroke-width='2'/>";
    const std::string size = "width='20' height='10'";
    EXPECT_NEAR(Picture(MakeDocument(content, size)).GetArea(), 36.0, 0.01);
    EXPECT_NEAR(Picture(MakeDocument(content, size), 7.0).GetArea(), 36.0 * 49.0, 0.5);
}

} // namespace
