#include <array>
#include <string>
#include <vector>

#include <kernel/FormatException.h>

#include "Picture.h"

namespace {

constexpr std::array<int, 4> Red{255, 0, 0, 255};
constexpr std::array<int, 4> Nothing{0, 0, 0, 0};

/// A pattern `p` of a red dot of 4 × 4 in the left top corner, on a rectangle at (10, 10).
std::string MakeDots(const std::string& attributes, const std::string& more = "")
{
    return MakeDocument("<pattern id='p' " + attributes +
                        "><rect width='4' height='4' fill='red'/></pattern>" + more +
                        "<rect x='10' y='10' width='100' height='50' fill='url(#p)'/>");
}

TEST(Pattern, PlacesItsTiles)
{
    const std::string user = "patternUnits='userSpaceOnUse' width='20' height='10' ";
    const struct
    {
        std::string attributes;
        std::vector<std::pair<unsigned, unsigned>> red;
        std::vector<std::pair<unsigned, unsigned>> empty;
    } cases[] = {
        {user, {{20, 10}, {23, 13}, {43, 53}}, {{24, 10}, {23, 14}, {39, 19}, {9, 20}}},
        {user + "x='3' y='-2'", {{23, 18}, {26, 21}}, {{22, 18}, {23, 17}, {27, 21}}},
        {user + "patternTransform='translate(1 2) scale(2)'",
         {{41, 22}, {48, 29}},
         {{40, 22}, {49, 29}, {41, 21}}},
        // Fractions of the box, which begins at (10, 10).
        {"width='.1' height='.2' x='.01'", {{11, 10}, {14, 13}, {21, 20}}, {{10, 10}, {15, 10}}},
        // The view box covers the tile; the middle of what is left over is empty.
        {user + "viewBox='0 0 4 4'", {{25, 10}, {34, 19}}, {{24, 10}, {35, 19}}},
        {user + "viewBox='0 0 4 4' preserveAspectRatio='none'", {{20, 10}, {39, 19}}, {}},
        {user + "viewBox='0 0 8 8' preserveAspectRatio='xMinYMin slice'",
         {{20, 10}, {29, 19}},
         {{30, 10}, {39, 19}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.attributes);
        const Picture picture(MakeDots(c.attributes));
        for (const auto& [x, y] : c.red)
            ExpectPixel(picture.Get(x, y), Red, 0);
        for (const auto& [x, y] : c.empty)
            ExpectPixel(picture.Get(x, y), Nothing, 0);
    }
}

TEST(Pattern, TakesWhatItLeavesOutFromAnother)
{
    const Picture picture(MakeDocument(
        "<pattern id='a' patternUnits='userSpaceOnUse' width='20' height='10' fill='red'>"
        "<rect width='4' height='4'/></pattern>"
        "<pattern id='b' href='#a' width='10' fill='blue'/>"
        "<pattern id='c' href='#b' patternTransform='translate(5 0)'/>"
        "<rect width='100' height='100' fill='url(#c)'/>"));
    ExpectPixel(picture.Get(5, 10), Red, 0); // the content keeps the style of its own place
    ExpectPixel(picture.Get(15, 10), Red, 0);
    ExpectPixel(picture.Get(9, 10), Nothing, 0);
}

TEST(Pattern, ContentMayBeInFractionsOfTheBox)
{
    const Picture picture(MakeDocument(
        "<pattern id='p' width='.5' height='.5' patternContentUnits='objectBoundingBox'>"
        "<rect width='.25' height='.25' fill='red'/></pattern>"
        "<rect x='10' y='20' width='80' height='40' fill='url(#p)'/>"));
    for (const unsigned x : {10U, 50U}) {
        ExpectPixel(picture.Get(x, 20), Red, 0);
        ExpectPixel(picture.Get(x + 19, 29), Red, 0);
        ExpectPixel(picture.Get(x + 20, 29), Nothing, 0);
        ExpectPixel(picture.Get(x + 19, 30), Nothing, 0);
    }
}

TEST(Pattern, LeavesNoSeams)
{
    for (const char* transform : {"", "rotate(17)", "skewX(20) scale(.3)", "scale(11 9)"}) {
        for (const char* extent : {"width='7.3' height='5.7'", "width='.21' height='.37'"}) {
            const Picture picture(
                MakeDocument(std::string("<pattern id='p' patternUnits='userSpaceOnUse' ") +
                             extent + " patternTransform='" + transform + "'><rect " + extent +
                             "/></pattern><rect width='200' height='100' fill='url(#p)'/>"));
            EXPECT_DOUBLE_EQ(picture.GetArea(), 200 * 100) << transform << extent;
        }
    }
}

TEST(Pattern, LooksAsItsContentWould)
{
    const std::string dot = "<circle cx='8' cy='6' r='5' fill='#48f' stroke='#000'/>";
    for (const double width : {16.0, 16.37}) {
        std::string dots;
        for (int row = 0; row < 8; ++row) {
            for (int column = 0; column < 12; ++column)
                dots += "<g transform='translate(" + std::to_string(column * width) + " " +
                        std::to_string(row * 12) + ")'>" + dot + "</g>";
        }
        const auto draw = [&](const std::string& shown, const std::string& paint) {
            return Picture(MakeDocument(
                "<pattern id='p' patternUnits='userSpaceOnUse' height='12' width='" +
                std::to_string(width) + "'>" + dot + "</pattern><g transform='rotate(5)'>" + shown +
                "<rect width='150' height='90' fill='" + paint + "'/></g>"));
        };
        const Picture expected = draw("<clipPath id='c'><rect width='150' height='90'/></clipPath>"
                                      "<g clip-path='url(#c)'>" +
                                          dots + "</g>",
                                      "none");
        EXPECT_LT(draw("", "url(#p)").GetDifference(expected), 2.0) << width;
    }
    // A tile that is alone on its shape is drawn as if there were no pattern.
    const std::string content = "<circle cx='100' cy='50' r='37.3' fill='#48f'/>";
    const Picture alone(MakeDocument("<pattern id='p' patternUnits='userSpaceOnUse' width='200' "
                                     "height='100'>" +
                                     content +
                                     "</pattern><rect width='200' height='100' fill='url(#p)'/>"));
    EXPECT_EQ(alone.GetDifference(Picture(MakeDocument(content))), 0.0);
}

TEST(Pattern, LooksTheSameOnManyShapesAsOnOne)
{
    // After as many pixels as the device has, all shapes share one covered device.
    const std::string pattern =
        "<pattern id='p' patternUnits='userSpaceOnUse' width='7.7' height='6.1' "
        "patternTransform='rotate(9)'><circle cx='4' cy='3' r='3' fill='#48f'/></pattern>";
    std::string many;
    for (int i = 0; i < 200; ++i)
        many += "<rect x='" + std::to_string(i) + "' width='1' height='100' fill='url(#p)'/>";
    many += "<g>" + many + many + "</g>";
    const Picture one(MakeDocument(pattern +
                                   "<rect width='200' height='100' fill='url(#p)' id='r'/>"
                                   "<use href='#r'/><use href='#r'/><use href='#r'/>"));
    const Picture other(
        MakeDocument(pattern + many + "<rect width='200' height='100' fill='url(#p)'/>"));
    EXPECT_EQ(one.GetDifference(other), 0.0);
}

TEST(Pattern, PaintsStrokesAndTakesOpacity)
{
    const std::string pattern = "<pattern id='p' patternUnits='userSpaceOnUse' width='5.5' "
                                "height='5'><rect width='6' height='5' fill='red'/></pattern>";
    const Picture picture(
        MakeDocument(pattern + "<path d='M20 50H80' stroke='url(#p)' stroke-width='20'/>"
                               "<rect x='100' y='40' width='20' height='20' fill='url(#p)' "
                               "fill-opacity='.5'/><rect x='140' y='40' width='20' height='20' "
                               "fill='url(#p)' opacity='.5'/>"));
    ExpectPixel(picture.Get(20, 40), Red, 0);
    ExpectPixel(picture.Get(79, 59), Red, 0);
    ExpectPixel(picture.Get(80, 50), Nothing, 0);
    ExpectPixel(picture.Get(110, 50), {128, 0, 0, 128});
    ExpectPixel(picture.Get(150, 50), {127, 0, 0, 127});
}

TEST(Pattern, MayPaintNothing)
{
    const std::string user = "patternUnits='userSpaceOnUse' ";
    for (const std::string& attributes :
         {user + "width='0' height='5'", user + "width='5' height='-5'", user + "width='5'",
          std::string("width='-.1' height='.1'"), user + "width='NaN' height='5'",
          user + "width='5' height='5' viewBox='0 0 0 9'",
          user + "width='5' height='5' patternTransform='scale(0)'"})
        EXPECT_EQ(Picture(MakeDots(attributes)).GetArea(), 0.0) << attributes;
    // Without a box to refer to, the fallback is painted.
    const Picture line(MakeDocument("<pattern id='p' width='1' height='1'><rect width='9' "
                                    "height='9'/></pattern><path d='M0 50H100' stroke-width='10' "
                                    "stroke='url(#p) red'/>"));
    ExpectPixel(line.Get(50, 50), Red, 0);
}

TEST(Pattern, MayHoldPatternsButNotItself)
{
    const std::string tile = "patternUnits='userSpaceOnUse' width='10' height='10'";
    const std::string nested =
        "<pattern id='p' " + tile + "><rect width='10' height='10' fill='url(#q)'/></pattern>" +
        "<pattern id='q' patternUnits='userSpaceOnUse' width='5' height='5'><rect width='3' "
        "height='5' fill='red'/></pattern><rect width='100' height='100' fill='url(#p)'/>";
    const Picture picture(MakeDocument(nested));
    ExpectPixel(picture.Get(12, 0), Red, 0);
    ExpectPixel(picture.Get(13, 0), Nothing, 0);
    EXPECT_EQ(picture.GetNotices(), "");

    const Picture itself(MakeDots(tile, "<g/>")); // no circle: nothing to say
    EXPECT_EQ(itself.GetNotices(), "");
    const Picture circle(MakeDocument(
        "<pattern id='p' " + tile + "><rect width='4' height='4' fill='red'/><use href='#r'/>" +
        "</pattern><rect id='r' width='100' height='100' fill='url(#p)'/>"));
    ExpectPixel(circle.Get(11, 11), Red, 0);
    EXPECT_NE(circle.GetNotices().find("painted with itself"), std::string::npos);
}

TEST(Pattern, SurvivesAbsurdExtents)
{
    const std::vector<std::string> cases{
        "width='1e-9' height='1e-9'",
        "width='1e-300' height='1'",
        "width='1e9' height='1e-3'",
        "width='1e300' height='1e300'",
        "width='1e9' height='1e9'",
        "width='5' height='5' patternTransform='scale(1e-300)'",
        "width='5' height='5' patternTransform='scale(1e300)'",
        "width='5' height='5' patternTransform='translate(1e308)'",
        "width='5' height='5' patternTransform='skewX(89.99999)'",
        "width='5' height='5' patternTransform='matrix(1e5 1e5 1e5 1.00001e5 0 0)'"};
    for (const std::string& c : cases) {
        SCOPED_TRACE(c);
        EXPECT_LE(Picture(MakeDots("patternUnits='userSpaceOnUse' " + c)).GetArea(), 5000.0);
    }
}

TEST(Pattern, BombsEndWithANotice)
{
    std::string bomb;
    for (int i = 0; i < 20; ++i) {
        bomb += "<pattern id='p" + std::to_string(i) +
                "' patternUnits='userSpaceOnUse' width='20' height='20' "
                "patternTransform='scale(1.3)'>";
        for (int j = 0; j < 10; ++j)
            bomb += "<rect transform='scale(1.0" + std::to_string(j) + std::to_string(i) +
                    ")' width='20' height='20' fill='url(#p" + std::to_string(i + 1) + ")'/>";
        bomb += "</pattern>";
    }
    Svg::Drawing drawing(MakeDocument(bomb + "<rect width='200' height='100' fill='url(#p0)'/>"));
    const Kernel::Counted<Renderer::BitmapRenderTarget> target(
        Renderer::BitmapRenderTarget::Create(Raster::Format::RGBA8, {}));
    target->CreateBuffer(200, 100);
    try {
        drawing.Draw(*target);
    } catch (const Kernel::FormatException&) {
        return;
    }
    EXPECT_FALSE(drawing.GetNotices().empty());
}

} // namespace
