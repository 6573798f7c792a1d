// Masks, blend modes and isolation.

#include <array>
#include <string>
#include <vector>

#include "Picture.h"

namespace {

const std::string Area = "<rect width='200' height='100' ";

/// The alpha at some pixels of a black area under a mask `m`.
std::vector<int> GetMasked(const std::string& mask,
                           const std::vector<std::pair<unsigned, unsigned>>& pixels,
                           const std::string& shown = Area + "mask='url(#m)'/>")
{
    const Picture picture(MakeDocument(mask + shown));
    std::vector<int> alphas;
    for (const auto& [x, y] : pixels)
        alphas.push_back(picture.Get(x, y)[3]);
    return alphas;
}

TEST(Mask, WeighsLuminanceOrAlpha)
{
    const auto one = [](const std::string& attributes, const std::string& paint) {
        return GetMasked("<mask id='m' " + attributes + ">" + Area + paint + "/></mask>",
                         {{50, 50}})[0];
    };
    EXPECT_EQ(one("", "fill='white'"), 255);
    EXPECT_EQ(one("", "fill='black'"), 0);
    EXPECT_NEAR(one("", "fill='red'"), 0.2125 * 255, 1);
    EXPECT_NEAR(one("", "fill='lime'"), 0.7154 * 255, 1);
    EXPECT_NEAR(one("", "fill='blue'"), 0.0721 * 255, 1);
    EXPECT_NEAR(one("", "fill='white' fill-opacity='.5'"), 128, 1);
    EXPECT_NEAR(one("style='mask-type:alpha'", "fill='black' fill-opacity='.25'"), 64, 1);
    // Half of the encoded range is a fifth of the light: ((0.5 + 0.055) / 1.055)^2.4.
    EXPECT_NEAR(one("color-interpolation='linearRGB'", "fill='#808080'"), 0.2159 * 255, 1);
}

TEST(Mask, LiesInTheCoordinatesOfWhatItMasks)
{
    const std::string white = "<rect width='200' height='100' fill='white'/>";
    // By default a tenth beyond the box on each side.
    EXPECT_EQ(GetMasked("<mask id='m'>" + white + "</mask>",
                        {{98, 50}, {99, 50}, {150, 50}, {160, 50}, {161, 50}},
                        "<rect x='100' y='40' width='50' height='20' stroke='black' "
                        "stroke-width='30' mask='url(#m)'/>"),
              (std::vector<int>{255, 255, 255, 0, 0}));
    EXPECT_EQ(GetMasked("<mask id='m' maskUnits='userSpaceOnUse' x='10' y='0' width='20' "
                        "height='50'>" +
                            white + "</mask>",
                        {{9, 20}, {10, 20}, {29, 49}, {30, 20}, {20, 50}}),
              (std::vector<int>{0, 255, 255, 0, 0}));
    EXPECT_EQ(GetMasked("<mask id='m' maskContentUnits='objectBoundingBox'><rect x='.5' width='.5' "
                        "height='1' fill='white'/></mask>",
                        {{109, 20}, {110, 20}, {119, 20}},
                        "<g transform='translate(100)' mask='url(#m)'><rect width='20' "
                        "height='30'/></g>"),
              (std::vector<int>{0, 255, 255}));
    // Nothing to refer to, nothing let through.
    EXPECT_EQ(GetMasked("<mask id='m'>" + white + "</mask>", {{50, 50}},
                        "<path d='M0 50H100' stroke='black' stroke-width='9' mask='url(#m)'/>"),
              (std::vector<int>{0}));
    EXPECT_EQ(GetMasked("<mask id='m' width='-1'>" + white + "</mask>", {{50, 50}}),
              (std::vector<int>{0}));
    EXPECT_EQ(GetMasked("", {{50, 50}}), (std::vector<int>{255})); // there is no mask
}

TEST(Mask, ActsOnTheWholeWithItsOpacityAndNests)
{
    const std::string left = "<mask id='m'><rect width='100' height='100' fill='white'/></mask>";
    const Picture picture(
        MakeDocument(left + "<g mask='url(#m)' opacity='.5'><rect width='60' height='100' "
                            "fill='red'/><rect x='40' width='160' height='100' fill='blue'/></g>"));
    ExpectPixel(picture.Get(20, 50), {127, 0, 0, 127});
    ExpectPixel(picture.Get(50, 50), {0, 0, 127, 127});
    ExpectPixel(picture.Get(120, 50), {0, 0, 0, 0}, 0);
    // A mask of the mask, and a mask within the mask.
    const std::string top = "<mask id='t'><rect width='200' height='50' fill='white'/></mask>";
    for (const std::string& mask :
         {top + "<mask id='m' mask='url(#t)'><rect width='100' height='100' fill='white'/></mask>",
          top + "<mask id='m'><rect width='100' height='100' fill='white' "
                "mask='url(#t)'/></mask>"})
        EXPECT_EQ(GetMasked(mask, {{99, 49}, {99, 50}, {100, 49}}), (std::vector<int>{255, 0, 0}));
}

TEST(Mask, CirclesAndDepthsEndWithANotice)
{
    const Picture itself(MakeDocument("<mask id='m' mask='url(#m)'>" + Area +
                                      "fill='white' mask='url(#m)'/></mask>" + Area +
                                      "mask='url(#m)'/>"));
    ExpectPixel(itself.Get(50, 50), {0, 0, 0, 255}, 0);
    EXPECT_NE(itself.GetNotices().find("masks itself"), std::string::npos);

    std::string chain;
    std::string nested;
    for (int i = 0; i < 100; ++i) {
        chain += "<mask id='c" + std::to_string(i) + "'>" + Area + "fill='white' mask='url(#c" +
                 std::to_string(i + 1) + ")'/></mask>";
        nested += "<g mask='url(#c99)'>";
    }
    const Picture deep(MakeDocument(chain + Area + "mask='url(#c0)'/>"));
    EXPECT_NE(deep.GetNotices().find("nested too deep"), std::string::npos);
    for (int i = 0; i < 100; ++i)
        nested += i == 0 ? Area + "/></g>" : "</g>";
    const Picture many(MakeDocument(chain + nested));
    EXPECT_NE(many.GetNotices().find("nested too deep"), std::string::npos);
}

TEST(Blending, MixesWithWhatIsBelow)
{
    const std::string below = Area + "fill='#804020'/>";
    const std::string mode = "style='mix-blend-mode:multiply";
    const Picture picture(MakeDocument(
        below + "<rect width='20' height='100' fill='#80ff00' " + mode + "'/>" + "<g " + mode +
        "'><rect x='20' width='20' height='100' fill='#80ff00'/></g>" +
        "<rect x='40' width='20' height='100' fill='#80ff00' " + mode + ";opacity:.5'/>" +
        "<rect x='60' width='20' height='100' fill='#80ff00' style='mix-blend-mode:nonsense'/>"));
    ExpectPixel(picture.Get(10, 50), {64, 64, 0, 255});
    ExpectPixel(picture.Get(30, 50), {64, 64, 0, 255});
    ExpectPixel(picture.Get(50, 50), {96, 64, 16, 255});
    ExpectPixel(picture.Get(70, 50), {128, 255, 0, 255});
}

TEST(Blending, GroupsMayKeepItToThemselves)
{
    const std::string below = Area + "fill='red'/>";
    const std::string inner =
        "<rect width='200' height='100' fill='lime' style='mix-blend-mode:multiply'/></g>";
    const std::array<int, 4> black{0, 0, 0, 255};
    const std::array<int, 4> lime{0, 255, 0, 255};
    const std::vector<std::pair<std::string, std::array<int, 4>>> cases{
        {"<g>", black},
        {"<g transform='translate(1)'>", black},
        {"<g style='isolation:isolate'>", lime},
        {"<clipPath id='c'>" + Area + "/></clipPath><g clip-path='url(#c)'>", lime},
        {"<mask id='m'>" + Area + "fill='white'/></mask><g mask='url(#m)'>", lime},
        {"<g style='mix-blend-mode:screen'>", {255, 255, 0, 255}},
    };
    for (const auto& [group, colour] : cases) {
        SCOPED_TRACE(group);
        ExpectPixel(Picture(MakeDocument(below + group + inner)).Get(50, 50), colour);
    }
}

} // namespace
