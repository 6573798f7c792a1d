#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <svg/Document.h>
#include <svg/Properties.h>
#include <svg/StyleResolver.h>

#include "TestDrawing.h"

using namespace Svg;

namespace {

/// The computed style of the element `t` in a document.
Style ResolveTarget(const std::string& content)
{
    const Document document(MakeDocument(content));
    const Element* target = document.FindById("t");
    EXPECT_NE(target, nullptr) << content;
    return target ? StyleResolver(document).ResolveInPlace(*target) : Style();
}

TEST(StyleSheet, MatchesSelectors)
{
    const struct
    {
        std::string_view selector;
        bool matches;
    } cases[] = {
        {"rect", true},
        {"path", false},
        {"*", true},
        {".a", true},
        {".b.a", true},
        {".a.c", false},
        {"rect.a", true},
        {"#t", true},
        {"g #t", true},
        {"g rect", true},
        {"svg rect", true},
        {"svg > rect", false},
        {"g>rect", true},
        {"svg > g > rect", true},
        {"svg g.outer .a", true},
        {"circle ~ rect", true},
        {"circle + rect", false},
        {"line+rect", true},
        {"rect:first-child", false},
        {"g:first-child > rect", true},
        {"rect[width]", true},
        {"rect[width=\"10\"]", true},
        {"rect[class~=b]", true},
        {"rect[class=b]", false},
        {"rect[id^='t'][width$='0']", true},
        {"path, rect", true},
        {"rect:hover", false},
        {"path, rect:hover, rect", false}, // one bad selector voids the rule
        {"rect >", false},
        {".", false},
        {"/* x */ rect /* y */", true},
    };
    for (const auto& c : cases) {
        const Style style = ResolveTarget(
            "<g class='outer'><circle/><line/><rect id='t' class='a b' width='10'/></g>"
            "<style>" +
            std::string(c.selector) + "{stroke-width:7}</style>");
        EXPECT_EQ(style.strokeWidth.value == 7.0, c.matches) << c.selector;
    }
}

TEST(StyleResolver, OrdersTheCascade)
{
    const struct
    {
        std::string_view sheet;
        std::string_view attributes;
        double width;
    } cases[] = {
        {"", "", 3.0}, // inherited from the group
        {"", "stroke-width='4'", 4.0},
        {"*{stroke-width:5}", "stroke-width='4'", 5.0},
        {"*{stroke-width:5}", "style='stroke-width:6'", 6.0},
        {"*{stroke-width:5!important}", "style='stroke-width:6'", 5.0},
        {"*{stroke-width:5 ! important}", "style='stroke-width:6!important'", 6.0},
        {"rect{stroke-width:5}*{stroke-width:6}", "", 5.0},
        {".a{stroke-width:5}rect{stroke-width:6}", "", 5.0},
        {"#t{stroke-width:5}.a.b[id]{stroke-width:6}", "", 5.0},
        {".a{stroke-width:5}.b{stroke-width:6}", "", 6.0},
        {"rect{stroke-width:5;stroke-width:bad}", "", 5.0},
        {"rect{stroke-width:-5}", "stroke-width='4'", 4.0},
        {"@import url('x{y');@media print{rect{stroke-width:5}}rect{stroke-width:6}", "", 6.0},
        {"<!-- rect{stroke-width:5} -->", "", 5.0},
        {"rect{unknown:1;;stroke-width:5;}", "", 5.0},
        {"rect{stroke-width:5", "", 5.0},
        {"", "stroke-width='4' style='stroke-width:inherit'", 3.0},
        {"", "style='stroke-width:initial'", 1.0},
        {"", "style='/*;*/stroke-width:8/*x*/;fill:red'", 8.0},
        {"", "style='STROKE-WIDTH : 8'", 8.0},
    };
    for (const auto& c : cases) {
        std::string content =
            "<style type='text/css'><![CDATA[" + std::string(c.sheet) + "]]></style>";
        content +=
            "<g stroke-width='3'><rect id='t' class='a b' " + std::string(c.attributes) + "/></g>";
        EXPECT_EQ(ResolveTarget(content).strokeWidth.value, c.width) << c.sheet << c.attributes;
    }
    // Sheets follow each other; other types of sheets are none.
    EXPECT_EQ(ResolveTarget("<style>rect{stroke-width:5}</style><rect id='t'/>"
                            "<style>rect{stroke-width:6}</style>"
                            "<style type='text/x'>rect{stroke-width:7}</style>")
                  .strokeWidth.value,
              6.0);
}

TEST(StyleResolver, InheritsWhatIsInherited)
{
    const Style style = ResolveTarget(
        "<g opacity='.5' clip-path='url(#c)' fill='url(#g) red' font-size='20' display='inline' "
        "visibility='hidden' stroke-dasharray='1 2' overflow='visible'>"
        "<g font-size='150%'><rect id='t' fill-rule='evenodd' font-size='2em'/></g></g>");
    EXPECT_EQ(style.opacity, 1.0);
    EXPECT_TRUE(style.clipPath.empty());
    EXPECT_FALSE(style.overflowVisible);
    EXPECT_EQ(style.fill.server, "#g");
    ASSERT_TRUE(style.fill.colour);
    EXPECT_EQ(style.fill.colour->value.red, 1.0);
    EXPECT_EQ(style.fontSize, 60.0);
    EXPECT_FALSE(style.visible);
    EXPECT_TRUE(style.fillEvenOdd);
    ASSERT_TRUE(style.dashes);
    EXPECT_EQ(style.dashes->size(), 2U);
}

TEST(Paint, FallsBack)
{
    const struct
    {
        std::string_view fill;
        std::string_view painted;
    } cases[] = {
        {"#0f0", "#00ff00ff"},
        {"none", "none"},
        {"currentColor", "#0000ffff"},
        {"nonsense", "#000000ff"}, // as if it were not there
        {"url(#missing)", "none"},
        {"url(#missing) none", "none"},
        {"url(#missing) #0f0", "#00ff00ff"},
        {"url('#missing')currentColor", "#0000ffff"},
        {"url(#p) red", "none"},
        {"url(other.svg#p) red", "#ff0000ff"},
        {"rgba(255,0,0,.5)", "#ff000080"},
    };
    for (const auto& c : cases) {
        const Recorded recorded(
            MakeDocument("<pattern id='p'/><g color='blue'><rect width='9' height='9' "
                         "stroke='black' fill=\"" +
                         std::string(c.fill) + "\"/></g>"));
        ASSERT_EQ(recorded.target.shapes.size(), 1U) << c.fill;
        EXPECT_EQ(Describe(recorded.target.shapes[0].fill), c.painted) << c.fill;
    }
}

} // namespace
