#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>

#include "TestDrawing.h"

namespace {

TEST(Drawing, FindsItsExtent)
{
    const struct
    {
        std::string_view attributes;
        double width;
        double height;
    } cases[] = {
        {"width='20' height='30'", 20, 30},
        {"width='1in' height='72pt'", 96, 96},
        {"viewBox='0 0 40 20'", 40, 20},
        {"viewBox='0 0 40 20' width='100%' height='100%'", 40, 20},
        {"viewBox='0 0 40 20' width='80'", 80, 40},
        {"viewBox='0 0 40 20' height='80'", 160, 80},
        {"", 300, 150},
        {"width='50'", 50, 150},
    };
    for (const auto& c : cases) {
        const Svg::Drawing drawing(MakeDocument("", std::string(c.attributes)));
        EXPECT_NEAR(drawing.GetWidth(), c.width, 1e-9) << c.attributes;
        EXPECT_NEAR(drawing.GetHeight(), c.height, 1e-9) << c.attributes;
    }
    for (const char* attributes : {"width='0' height='1'", "width='-5'", "width='NaN'",
                                   "height='1e999in'", "viewBox='0 0 0 5'", "width='5 px'"})
        EXPECT_THROW(Svg::Drawing(MakeDocument("", attributes)), Kernel::FormatException)
            << attributes;
}

TEST(Drawing, PlacesShapes)
{
    const struct
    {
        std::string_view content;
        std::vector<Kernel::RectT<double>> boxes;
    } cases[] = {
        {"<rect x='1' y='2' width='3' height='4'/>", {{1, 2, 4, 6}}},
        {"<rect width='10%' height='10%'/>", {{0, 0, 20, 10}}},
        {"<rect width='10' height='10' rx='3'/><rect width='0' height='5'/><rect width='-1' "
         "height='5'/>",
         {{0, 0, 10, 10}}},
        {"<circle cx='10' cy='10' r='5'/><circle r='-1'/>", {{5, 5, 15, 15}}},
        {"<ellipse cx='10' cy='10' rx='5' ry='2'/>", {{5, 8, 15, 12}}},
        {"<polygon points='1,2 3,4 5,0'/><polyline points=''/>", {{1, 0, 5, 4}}},
        {"<line x1='1' x2='2' y2='3' stroke='red'/>", {{1, 0, 2, 3}}},
        {"<g transform='translate(5)'><path transform='scale(2)' d='M1 1H2V2'/></g>",
         {{7, 2, 9, 4}}},
        {"<g transform='nonsense'><path d='M1 1H2V2'/></g>", {{1, 1, 2, 2}}},
        {"<g transform='scale(0)'><path d='M1 1H2V2'/></g>", {}},
        {"<path d='M0 0L1e300 1e300'/><path d='M0 0L1e17 0V1'/>", {}},
        {"<defs><rect width='9' height='9'/></defs><symbol><rect width='9' height='9'/></symbol>",
         {}},
        {"<rect width='9' height='9' display='none'/><rect width='9' height='9' "
         "visibility='hidden'/>",
         {}},
        {"<g visibility='hidden'><rect width='9' height='9' visibility='visible'/></g>",
         {{0, 0, 9, 9}}},
        {"<rect width='9' height='9' fill='none'/><rect width='9' height='9' opacity='0'/>", {}},
        // use
        {"<defs><rect id='r' x='1' width='3' height='4'/></defs><use xlink:href='#r' x='10' "
         "y='20'/>",
         {{11, 20, 14, 24}}},
        {"<defs><rect id='r' width='3' height='4'/></defs>"
         "<use href='#r' x='10' transform='scale(2)'/><use href='#missing'/>",
         {{20, 0, 26, 8}}},
        {"<symbol id='s' viewBox='0 0 10 10'><rect width='10' height='10'/></symbol>"
         "<use href='#s' x='5' width='20' height='40'/>",
         {{5, 10, 25, 30}}},
        {"<svg id='s' x='1' y='2' width='10' height='10' viewBox='0 0 5 5'><rect width='50%' "
         "height='5'/></svg>"
         "<use href='#s' x='100' width='20' height='20'/>",
         {{1, 2, 6, 12}, {101, 2, 111, 22}}},
        {"<svg width='10' height='10' viewBox='0 0 0 5'><rect width='5' height='5'/></svg>", {}},
        // switch
        {"<switch><foreignObject width='9' height='9'/><g systemLanguage='fr'><rect width='1' "
         "height='1'/></g>"
         "<g requiredExtensions='http://example.com'><rect width='2' height='2'/></g>"
         "<rect systemLanguage='de, en-GB' width='3' height='3'/><rect width='4' "
         "height='4'/></switch>",
         {{0, 0, 3, 3}}},
        {"<a><rect width='1' height='1'/></a><unknown><rect width='2' height='2'/></unknown>",
         {{0, 0, 1, 1}}},
    };
    for (const auto& c : cases) {
        const Recorded recorded(MakeDocument(std::string(c.content)));
        ASSERT_EQ(recorded.target.shapes.size(), c.boxes.size()) << c.content;
        for (std::size_t i = 0; i < c.boxes.size(); ++i) {
            SCOPED_TRACE(c.content);
            ExpectBox(recorded.target.GetBox(i), c.boxes[i], 1e-2);
        }
    }
}

TEST(Drawing, FitsTheViewBox)
{
    const Recorded recorded(MakeDocument(
        "<rect x='1' y='1' width='1' height='50%'/>",
        "width='200' height='100' viewBox='1 1 10 10' preserveAspectRatio='xMaxYMid'"));
    ExpectBox(recorded.target.GetBox(0), {100, 0, 110, 50});
}

TEST(Drawing, PushesAndPopsInOrder)
{
    const std::string shared =
        "<clipPath id='c'><rect width='5' height='5'/></clipPath>"
        "<clipPath id='two'><rect width='5' height='5'/><use href='#r'/><g><rect width='9' "
        "height='9'/></g></clipPath>"
        "<clipPath id='both' clip-path='url(#c)'><rect width='5' height='5'/></clipPath>"
        "<clipPath id='inner'><rect width='5' height='5' clip-path='url(#c)'/></clipPath>"
        "<clipPath id='empty'/><clipPath id='hidden'><rect width='5' height='5' "
        "visibility='hidden'/></clipPath>"
        "<clipPath id='box' clipPathUnits='objectBoundingBox'><rect width='1' "
        "height='1'/></clipPath>"
        "<defs><rect id='r' width='5' height='5'/></defs>";
    const struct
    {
        std::string_view content;
        std::string_view trace;
    } cases[] = {
        {"<rect width='1' height='1' opacity='.5'/>", "D"},
        {"<g opacity='.5'><path d='M0 0H1V1'/><path d='M0 0H1V1'/></g>", "GDDg"},
        {"<g opacity='1'><path d='M0 0H1V1'/></g>", "D"},
        {"<use href='#r' opacity='.5'/>", "GDg"},
        {"<path d='M0 0H1V1' clip-path='url(#c)'/>", "CDc"},
        {"<g opacity='.5' clip-path='url(#c)'><path d='M0 0H1V1'/></g>", "CGDgc"},
        {"<path d='M0 0H1V1' clip-path='url(#two)'/>", "UCCuDc"},
        {"<path d='M0 0H1V1' clip-path='url(#both)'/>", "CCDcc"},
        {"<path d='M0 0H1V1' clip-path='url(#inner)'/>", "CCDcc"},
        {"<path d='M0 0H1V1' clip-path='url(#empty)'/>", ""},
        {"<path d='M0 0H1V1' clip-path='url(#hidden)'/>", ""},
        {"<path d='M0 0H1V1' clip-path='url(#missing)'/>", "D"},
        {"<path d='M0 0H1V1' clip-path='url(#r)'/>", "D"},
        {"<path d='M0 0H1' stroke='red' clip-path='url(#box)'/>", ""},
        {"<svg width='9' height='9'><path d='M0 0H1V1'/></svg>", "CDc"},
        {"<svg width='9' height='9' overflow='visible'><path d='M0 0H1V1'/></svg>", "D"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Recorded(MakeDocument(shared + std::string(c.content))).target.trace, c.trace)
            << c.content;
}

TEST(ClipPath, LiesInTheCoordinatesOfWhatItClips)
{
    const auto clip = [](const std::string& attributes, const std::string& content) {
        const Recorded recorded(MakeDocument("<clipPath id='c' " + attributes +
                                             "><rect x='.25' width='.5' height='1'/></clipPath>" +
                                             content));
        EXPECT_EQ(recorded.target.clips.size(), 1U);
        return recorded.target.clips.at(0);
    };
    const std::string shape =
        "<rect x='10' y='20' width='40' height='10' transform='translate(100)' "
        "clip-path='url(#c)'/>";
    ExpectBox(clip("transform='scale(2)'", shape), {100.5, 0, 101.5, 2});
    ExpectBox(clip("clipPathUnits='objectBoundingBox'", shape), {120, 20, 140, 30});
    // The box of a group is that of all it shows, references included, without strokes.
    ExpectBox(
        clip(
            "clipPathUnits='objectBoundingBox'",
            "<defs><rect id='r' width='10' height='10'/></defs><g clip-path='url(#c)' stroke='red'>"
            "<rect x='10' width='10' height='10'/><g transform='scale(2)'><use href='#r' "
            "x='20'/></g>"
            "<rect x='500' width='9' height='9' display='none'/></g>"),
        {22.5, 0, 47.5, 20});
}

TEST(Stroke, CarriesItsStyle)
{
    const Recorded recorded(MakeDocument(
        "<path d='M0 0H9' fill='none' stroke='#f00' stroke-opacity='.5' stroke-width='10%' "
        "stroke-linecap='square' "
        "stroke-linejoin='bevel' stroke-miterlimit='7' stroke-dasharray='1,2px 3' "
        "stroke-dashoffset='-1'/>"
        "<path d='M0 0H9' stroke='red' stroke-dasharray='0 0' stroke-linejoin='miter'/>"
        "<path d='M0 0H9' stroke='red' stroke-dasharray='1 -1' paint-order='stroke'/>"
        "<path d='M0 0H9e9' stroke='red' stroke-dasharray='1 1'/>"
        "<path d='M0 0H9' fill='none' stroke='red' stroke-width='0'/>"));
    const auto& shapes = recorded.target.shapes;
    ASSERT_EQ(shapes.size(), 4U);
    using Renderer::LineStyle;
    const LineStyle& first = *shapes[0].line.GetLineStyle();
    EXPECT_EQ(Describe(shapes[0].lineFill), "#ff000080");
    EXPECT_NEAR(first.GetWeight(), 0.1 * std::sqrt((200.0 * 200.0 + 100.0 * 100.0) / 2.0), 1e-9);
    EXPECT_EQ(first.GetCap(), LineStyle::SquareCap);
    EXPECT_EQ(first.GetJoin(), LineStyle::BevelJoin);
    EXPECT_EQ(first.GetMiterLimit(), 7.0);
    EXPECT_EQ(first.GetType(), LineStyle::Dashed);
    EXPECT_EQ(first.GetDashPattern(), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(first.GetDashPhase(), -1.0);
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_EQ(shapes[i].line.GetLineStyle()->GetType(), LineStyle::Solid) << i;
        EXPECT_EQ(shapes[i].line.GetLineStyle()->GetMiterLimit(), 4.0);
        EXPECT_EQ(shapes[i].line.GetBehind(), i == 2);
        EXPECT_TRUE(shapes[i].line.GetScale());
    }
}

constexpr std::string_view RedPixels = // 2 × 1 pixels
    "data:image/"
    "png;base64,"
    "iVBORw0KGgoAAAANSUhEUgAAAAIAAAABCAIAAAB7QOjdAAAAD0lEQVR4nGP8z8DAwMAAAAYIAQHLR3Z1AAAAAElFTkSuQm"
    "CC";

TEST(Image, KeepsItsShapeInItsRectangle)
{
    const std::string head =
        "<image opacity='.5' xlink:href='" + std::string(RedPixels) + "' x='10' ";
    const std::vector<std::pair<std::string, Kernel::RectT<double>>> cases{
        {"width='20' height='20'", {10, 5, 30, 15}},
        {"width='20' height='20' preserveAspectRatio='none'", {10, 0, 30, 20}},
        {"width='20' height='20' preserveAspectRatio='xMinYMin slice'", {10, 0, 50, 20}},
        {"", {10, 0, 12, 1}},
    };
    for (const auto& [attributes, rect] : cases) {
        const Recorded recorded(MakeDocument(head + attributes + "/>"));
        ASSERT_EQ(recorded.target.images.size(), 1U) << attributes;
        ExpectBox(recorded.target.images[0].rect, rect);
        EXPECT_EQ(recorded.target.images[0].opacity, 0.5F);
        EXPECT_EQ(recorded.target.trace,
                  attributes.find("slice") == std::string::npos ? "I" : "CIc");
    }
}

TEST(Notices, SayEachKindOnce)
{
    const Recorded recorded(MakeDocument(
        "<text>a<tref/></text><text>b<tref/></text><g filter='url(#f)'/><image "
        "xlink:href='a.png'/>"
        "<image xlink:href='data:image/png;base64,AAAA' width='9' height='9'/><path d='M0 0H5L' "
        "stroke='red'/>"
        "<path d='M0 0V5' fill='url(#p)'/>"));
    const auto& notices = recorded.drawing.GetNotices();
    EXPECT_EQ(notices.size(), 6U);
    for (const char* word :
         {"tref", "filter", "outside the drawing's folder", "embedded", "path", "paint server"}) {
        EXPECT_TRUE(std::ranges::any_of(notices, [&](const std::string& notice) {
            return notice.find(word) != std::string::npos;
        })) << word;
    }
}

TEST(Drawing, LeavesOutReferencesThatGoInACircle)
{
    const std::string area = "<path d='M0 0H9V9'/>";
    const struct
    {
        std::string content;
        std::string_view trace;
        std::string_view notice;
    } cases[] = {
        {"<g id='a'><use href='#a' x='5'/>" + area + "</g>", "D", "use"},
        {"<g id='a'><use href='#b'/>" + area + "</g><g id='b'><use href='#a'/></g>", "DD", "use"},
        {"<g><use href='#root'/>" + area + "</g>", "D", "use"},
        {"<symbol id='s'><use href='#t'/></symbol><g id='t'><use href='#s'/>" + area + "</g>",
         "CcD", "use"},
        {"<clipPath id='c' clip-path='url(#c)'>" + area +
             "</clipPath><path d='M0 0H1V1' clip-path='url(#c)'/>",
         "CDc", "clip path"},
        {"<clipPath id='c'><path d='M0 0H9V9' clip-path='url(#d)'/></clipPath>"
         "<clipPath id='d' clip-path='url(#c)'>" +
             area + "</clipPath><path d='M0 0H1V1' clip-path='url(#c)'/>",
         "CCDcc", "clip path"},
        {"<linearGradient id='a' href='#a'/><path d='M0 0H1V1' fill='url(#a)'/>" + area, "D",
         "gradient"},
        {"<linearGradient id='a' href='#b'/><radialGradient id='b' "
         "href='#a'><stop/></radialGradient>"
         "<path d='M0 0H1V1' fill='none' stroke='url(#a)'/>",
         "D", "gradient"},
        {"<pattern id='a' href='#b'/><pattern id='b' href='#a'/><path d='M0 0H1V1' "
         "fill='url(#a)'/>" +
             area,
         "D", "pattern"},
        // The box of a group is measured along its references.
        {"<clipPath id='c' clipPathUnits='objectBoundingBox'><path d='M0 0H1V1'/></clipPath>"
         "<g id='a' clip-path='url(#c)'><g><use href='#a'/></g>" +
             area + "</g>",
         "CDc", "use"},
    };
    for (const auto& c : cases) {
        const Recorded recorded(MakeDocument(c.content, "id='root' width='9' height='9'"));
        EXPECT_EQ(recorded.target.trace, c.trace) << c.content;
        ASSERT_EQ(recorded.drawing.GetNotices().size(), 1U) << c.content;
        EXPECT_NE(recorded.drawing.GetNotices()[0].find(c.notice), std::string::npos) << c.content;
    }
}

/// Elements of which each shows the one before twice.
std::string MakeUseBomb()
{
    std::string bomb = "<g id='u0'><path d='M0 0H1V1'/></g>";
    for (int i = 1; i < 30; ++i) {
        const std::string use = "<use href='#u" + std::to_string(i - 1) + "'/>";
        bomb += "<g id='u" + std::to_string(i) + "'>" + use + use + "</g>";
    }
    return bomb;
}

TEST(Drawing, RefusesBombs)
{
    std::string clipChain = "<path d='M0 0H1V1' clip-path='url(#c0)'/>";
    for (int i = 0; i < 100000; ++i)
        clipChain += "<clipPath id='c" + std::to_string(i) + "' clip-path='url(#c" +
                     std::to_string(i + 1) + ")'><path d='M0 0H9V9'/></clipPath>";
    for (const std::string& content : {MakeUseBomb(), clipChain}) {
        Svg::Drawing drawing(MakeDocument(content));
        RecordingTarget target;
        EXPECT_THROW(drawing.Draw(target), Kernel::FormatException);
        EXPECT_EQ(target.GetWorldTransform(), RecordingTarget::Params());
        EXPECT_EQ(std::ranges::count(target.trace, 'C'), std::ranges::count(target.trace, 'c'));
    }
}

TEST(Drawing, BoundsTheWorkOfStyleSheets)
{
    std::string sheet = "<style>";
    for (int i = 0; i < 20000; ++i)
        sheet += "[none]{fill:red}";
    std::string content = sheet + "</style>";
    for (int i = 0; i < 20000; ++i)
        content += "<g/>";
    Svg::Drawing drawing(MakeDocument(content));
    RecordingTarget target;
    EXPECT_THROW(drawing.Draw(target), Kernel::FormatException);
}

TEST(Drawing, SurvivesDeepNesting)
{
    std::string content;
    for (int i = 0; i < 990; ++i)
        content += "<g opacity='.9' transform='translate(1)' clip-path='url(#none)'>";
    content += "<path d='M0 0H1V1'/>";
    for (int i = 0; i < 990; ++i)
        content += "</g>";
    const Recorded recorded(MakeDocument(content));
    ASSERT_EQ(recorded.target.shapes.size(), 1U);
    ExpectBox(recorded.target.GetBox(0), {990, 0, 991, 1});
}

} // namespace
