// Drawings that say the same in two ways must be the same picture.

#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "Picture.h"

namespace {

struct Pair
{
    std::string tested;
    std::string plain;
};

void ExpectSame(const std::vector<Pair>& pairs, const std::string& definitions = {})
{
    for (const auto& [tested, plain] : pairs) {
        SCOPED_TRACE(tested);
        const Picture a(MakeDocument(definitions + tested), 2.0);
        const Picture b(MakeDocument(definitions + plain), 2.0);
        EXPECT_LT(a.GetDifference(b), 0.01);
        EXPECT_GT(b.GetArea(), 100.0);
        EXPECT_EQ(a.GetNotices(), "");
    }
}

TEST(SvgEquivalence, TransformsOfStyles)
{
    const std::string rect = " x='60' y='20' width='40' height='30' ";
    ExpectSame({
        {"<rect" + rect + "style='transform: rotate(0.05turn) translateX(1in) skew(0, 5deg)'/>",
         "<rect" + rect + "transform='rotate(18)translate(96)skewY(5)'/>"},
        // Percentages and the origin are of the viewport.
        {"<rect" + rect + "style='transform:translate(10%,20%)'/>",
         "<rect" + rect + "transform='translate(20 20)'/>"},
        {"<rect" + rect + "style='transform-origin:center; transform:scale(50%)'/>",
         "<rect" + rect + "transform='translate(50 25) scale(.5)'/>"},
        {"<rect" + rect + "transform='rotate(45)' transform-origin='80 35'/>",
         "<rect" + rect + "transform='rotate(45 80 35)'/>"},
        // Or of the element's own box.
        {"<g" + rect +
             "style='transform-box:fill-box; transform-origin:bottom right; "
             "transform:rotate(-90deg)'><rect" +
             rect + "/></g>",
         "<rect" + rect + "transform='rotate(-90 100 50)'/>"},
        // What is not understood leaves the attribute in force.
        {"<rect" + rect + "transform='rotate(5)' style='transform:none'/>", "<rect" + rect + "/>"},
        {"<rect" + rect + "transform='rotate(5)' style='transform:twist(3)'/>",
         "<rect" + rect + "transform='rotate(5)'/>"},
        // In clip paths, and in what they measure.
        {"<clipPath id='c'><rect" + rect +
             "style='transform:translate(9px,9px)'/></clipPath>"
             "<rect width='200' height='100' clip-path='url(#c)'/>",
         "<rect" + rect + "transform='translate(9 9)'/>"},
        {"<linearGradient id='g'><stop stop-color='red'/><stop offset='1'/></linearGradient>"
         "<mask id='m' x='0' y='0' width='1' height='.5'><rect width='200' height='100' "
         "fill='#fff'/></mask><g mask='url(#m)'><rect" +
             rect + "style='transform:rotate(9deg)'/></g>",
         "<mask id='m' x='0' y='0' width='1' height='.5'><rect width='200' height='100' "
         "fill='#fff'/></mask><g mask='url(#m)'><rect" +
             rect + "transform='rotate(9)'/></g>"},
    });
}

TEST(SvgEquivalence, Strokes)
{
    const std::string gradients =
        "<linearGradient id='g' gradientUnits='userSpaceOnUse' x2='50'><stop stop-color='red'/>"
        "<stop offset='1' stop-color='blue'/></linearGradient>"
        "<linearGradient id='h' href='#g' x2='200'/>";
    const std::string line = "<path d='M10 50H190' stroke='teal' stroke-width='9' ";
    ExpectSame(
        {
            // The author's length of the path counts.
            {line + "pathLength='10' stroke-dasharray='1' stroke-dashoffset='.5'/>",
             line + "stroke-dasharray='18' stroke-dashoffset='9'/>"},
            {"<circle cx='99' cy='50' r='30' fill='none' stroke='red' pathLength='12' "
             "stroke-dasharray='1' stroke-width='5'/>",
             "<circle cx='99' cy='50' r='30' fill='none' stroke='red' "
             "stroke-dasharray='15.70796' stroke-width='5'/>"},
            {line + "pathLength='0' stroke-dasharray='1'/>", line + "/>"},
            // The pen does not follow the transform, the paint and the path do.
            {"<g transform='scale(4 1)' opacity='.9'><rect x='5' y='20' width='30' height='60' "
             "stroke-width='8' stroke='url(#g)' fill='gold' opacity='.5' "
             "vector-effect='non-scaling-stroke' stroke-dasharray='12 5'/></g>",
             "<g opacity='.9'><rect x='20' y='20' width='120' height='60' stroke-width='8' "
             "stroke='url(#h)' fill='gold' opacity='.5' stroke-dasharray='12 5'/></g>"},
        },
        gradients);
}

TEST(SvgEquivalence, GradientsThatBeginAtACircle)
{
    const auto draw = [](const std::string& gradient) {
        return "<radialGradient id='g' gradientUnits='userSpaceOnUse' cx='100' cy='50' r='40' " +
               gradient + "</radialGradient><rect width='200' height='100' fill='url(#g)'/>";
    };
    ExpectSame(
        {{draw("fr='10'><stop stop-color='red'/><stop offset='1' stop-color='blue'/>"),
          draw("><stop offset='.25' stop-color='red'/><stop offset='1' stop-color='blue'/>")},
         // About a point of its own: t of the first is 1/4 + 3/4 t from the cone's tip.
         {draw("fx='85' fr='10'><stop stop-color='red'/><stop offset='1' stop-color='blue'/>"),
          draw("fx='80'><stop offset='.25' stop-color='red'/>"
               "<stop offset='1' stop-color='blue'/>")}});
}

TEST(SvgEquivalence, PaintsOfTheContext)
{
    const std::string definitions =
        "<linearGradient id='g' gradientUnits='userSpaceOnUse' x2='200'><stop stop-color='red'/>"
        "<stop offset='1' stop-color='blue'/></linearGradient><marker id='m' markerWidth='20' "
        "markerHeight='20' refX='10' refY='10' orient='90' markerUnits='userSpaceOnUse'><rect "
        "width='20' height='20' fill='context-stroke'/><rect x='5' y='5' width='10' height='10' "
        "fill='context-fill' fill-opacity='.5'/></marker>";
    const auto squares = [](const std::string& stroke, const std::string& fill) {
        return "<path d='M30 30V70L150 50' stroke-width='4' stroke='" + stroke + "' fill='" + fill +
               "'/><rect x='20' y='20' width='20' height='20' fill='" + stroke +
               "'/><rect x='25' y='25' width='10' height='10' fill-opacity='.5' fill='" + fill +
               "'/><rect x='140' y='40' width='20' height='20' fill='" + stroke +
               "'/><rect x='145' y='45' width='10' height='10' fill-opacity='.5' fill='" + fill +
               "'/>";
    };
    const std::string path = "<path d='M30 30V70L150 50' stroke-width='4' marker-start='url(#m)' "
                             "marker-end='url(#m)' ";
    ExpectSame({{path + "stroke='teal' fill='gold'/>", squares("teal", "gold")},
                {path + "stroke='url(#g)' fill='none'/>", squares("url(#g)", "none")},
                // Patterns are no part of the marker.
                {"<pattern id='p' width='9' height='9' patternUnits='userSpaceOnUse'><rect "
                 "width='9' height='9' fill='context-stroke'/></pattern><marker id='n' "
                 "markerWidth='9' markerHeight='9'><rect width='9' height='9' fill='url(#p)'/>"
                 "</marker><path d='M9 9V70H150' stroke='red' marker-end='url(#n)'/>",
                 "<path d='M9 9V70H150' stroke='red'/>"},
                {"<rect width='50' height='50' fill='context-fill'/><rect y='50' width='50' "
                 "height='50'/>",
                 "<rect y='50' width='50' height='50'/>"}},
               definitions);
}

std::string MakeImage(const std::string& attributes, const std::string& inner)
{
    std::string text;
    for (const char c : inner)
        text += c == '#' ? "%23" : c == '<' ? "%3C" : c == '"' ? "%22" : std::string(1, c);
    return "<image " + attributes + " href=\"data:image/svg+xml," + text + "\"/>";
}

TEST(SvgEquivalence, DrawingsAsImages)
{
    const std::string place = " x='20' y='10' width='150' height='60' ";
    const std::string content =
        "<style>circle{fill:teal;mix-blend-mode:multiply}</style><rect "
        "width='25' height='30' fill='gold'/><circle cx='15' cy='15' r='14'/>";
    const std::string inner =
        "<svg xmlns='http://www.w3.org/2000/svg' width='30' height='30'>" + content + "</svg>";
    const std::string ground = "<rect width='200' height='100' fill='#abc'/>";
    for (const std::string ratio : {"xMidYMid meet", "xMinYMin slice", "none"}) {
        const std::string aspect = "preserveAspectRatio='" + ratio + "'";
        ExpectSame({{MakeImage(place + aspect + " opacity='.5'", inner),
                     "<g opacity='.5' style='isolation:isolate'><svg" + place + aspect +
                         " viewBox='0 0 30 30'><svg width='30' height='30'>" + content +
                         "</svg></svg></g>"}},
                   ground);
    }
    // A drawing that cannot be drawn costs itself alone.
    std::string chain = "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'>";
    for (int i = 0; i < 300; ++i)
        chain +=
            "<g id='u" + std::to_string(i) + "'><use href='#u" + std::to_string(i + 1) + "'/></g>";
    const Picture bad(MakeDocument(MakeImage(place, chain + "</svg>") +
                                   "<rect width='10' height='10' fill='red'/>"));
    EXPECT_NE(bad.GetNotices().find("nested too deep"), std::string::npos);
    ExpectPixel(bad.Get(5, 5), {255, 0, 0, 255});
    // Images within images end.
    std::string nested = inner;
    for (int i = 0; i < 12; ++i)
        nested = "<svg xmlns='http://www.w3.org/2000/svg' width='30' height='30'>" +
                 MakeImage("width='30' height='30'", nested) + "</svg>";
    EXPECT_NE(Picture(MakeDocument(MakeImage(place, nested))).GetNotices(), "");
}

TEST(SvgEquivalence, SelectorsAndMedia)
{
    struct Row
    {
        std::string rule;
        std::string matches; ///< the numbers of the squares
    };
    const std::vector<Row> rows{
        {"rect:not(.b)", "0245"},       {"rect:not(.b):not(:last-child)", "024"},
        {"rect:not(.a, .b)", "5"},      {".a:nth-child(odd)", "024"},
        {"rect:nth-child(2n)", "135"},  {"rect:nth-child( -n + 2 )", "01"},
        {"rect:nth-child(n+4)", "345"}, {"rect:nth-last-child(2)", "4"},
        {"rect:last-child", "5"},       {"rect:only-child", ""},
        {".a:nth-of-type(3n+1)", "0"},  {"rect:first-of-type", "0"},
        {":root rect.b", "13"},         {"rect:hover", ""},
        {"rect:nth-child(x)", ""},      {"rect:not(#x)", "024"},
        {"#x, rect:not(.a)", "135"},
    };
    const auto draw = [](const std::string& style, const std::string& matches) {
        static constexpr const char* classes[] = {"a", "b", "a", "b", "a", ""};
        std::string content = "<style>" + style + "</style><g>";
        for (int i = 0; i < 6; ++i) {
            const bool known = matches.find(static_cast<char>('0' + i)) != std::string::npos;
            content += "<rect x='" + std::to_string(30 * i) + "' width='30' height='100' class='" +
                       classes[i] + "'" + (i == 3 || i == 1 || i == 5 ? " id='x'" : "") +
                       (known ? " fill='red'" : "") + "/>";
        }
        return content + "</g>";
    };
    for (const Row& row : rows)
        ExpectSame({{draw(row.rule + "{fill:red}", ""), draw("", row.matches)}});
    for (const auto& [media, matches] : {Row{"screen", "012345"},
                                         {"print, only screen", "012345"},
                                         {"ALL", "012345"},
                                         {"print", ""},
                                         {"screen and (min-width: 9px)", ""},
                                         {"not screen", ""}}) {
        ExpectSame(
            {{draw("@media " + media + "{rect{fill:red} g{}} @media x{", ""), draw("", matches)}});
    }
}

/// A folder with style sheets.
class SvgSheets : public testing::Test
{
protected:
    SvgSheets()
        : m_base(std::filesystem::temp_directory_path() /
                 ("renderer-sheets-" + std::to_string(::getpid())))
    {
        std::filesystem::create_directories(m_base / "drawing" / "css");
        Write("drawing/css/a.css", "@import 'b.css'; @import url(../c.css) print; .a{fill:red}");
        Write("drawing/css/b.css", "@import \"a.css\"; .b{fill:blue}");
        Write("drawing/c.css", "\xEF\xBB\xBF.c{fill:lime}");
        Write("secret.css", "rect{fill:black}");
    }
    ~SvgSheets() override { std::filesystem::remove_all(m_base); }

    void Write(const std::string& name, const std::string& text)
    {
        std::ofstream(m_base / name) << text;
    }

    std::filesystem::path m_base;
};

TEST_F(SvgSheets, LieBesideTheDrawing)
{
    const std::string squares = "<rect class='a' width='50' height='50'/><rect class='b' x='50' "
                                "width='50' height='50'/><rect class='c' x='100' width='50' "
                                "height='50'/>";
    const auto draw = [&](const std::string& before, const std::string& style) {
        return Picture(before + MakeDocument("<style>" + style + "</style>" + squares), 1.0,
                       m_base / "drawing");
    };
    const auto expect = [](const Picture& picture, bool a, bool b, bool c) {
        ExpectPixel(picture.Get(25, 25), {a ? 255 : 0, 0, 0, 255});
        ExpectPixel(picture.Get(75, 25), {0, 0, b ? 255 : 0, 255});
        ExpectPixel(picture.Get(125, 25), {0, c ? 255 : 0, 0, 255});
    };
    expect(draw("", "@import 'css/a.css' screen;"), true, true, false);
    expect(draw("<?xml-stylesheet href='css/b.css' type='text/css'?>", "@import url(c.css);"), true,
           true, true);
    expect(draw("<?xml-stylesheet href='c.css' alternate='yes'?><?xml-stylesheet href='c.css' "
                "media='print'?>",
                ""),
           false, false, false);
    const Picture outside = draw("", "@import '../secret.css'; @import 'none.css'; .a{fill:red}");
    expect(outside, true, false, false);
    EXPECT_EQ(outside.GetNotices(), "style sheets outside the drawing's folder are not read\n"
                                    "a style sheet in another file is missing or cannot be read\n");
}

} // namespace
