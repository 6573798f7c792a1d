#include <cmath>
#include <numbers>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <svg/TextLayout.h>
#include <svg/TextPieces.h>

#include "TestDrawing.h"

namespace {

using namespace Svg;

/// A text element within a document of 4096 × 4096 units, in a font whose glyphs are all 1233 units
/// wide at the size of 2048.
struct TextFixture
{
    explicit TextFixture(const std::string& text)
        : document(
              MakeDocument("<g font-family='DejaVu Sans Mono' font-size='2048'>" + text + "</g>",
                           "width='4096' height='4096' xmlns:x='other'")),
          context(document, {}),
          element(document.FindById("t")),
          style(context.GetStyles().ResolveInPlace(*element)),
          layout(context, *element, style, {4096.0, 4096.0, style.fontSize})
    {}

    /// `character@x,y` for each cluster, with the number of characters that are more and the angle
    /// in degrees where not 0; in whole units. Hidden ones are left out.
    std::string Describe() const
    {
        std::ostringstream out;
        for (const TextCluster& cluster : layout.GetClusters()) {
            const TextCharacter& head = layout.GetContent().GetCharacters()[cluster.first];
            if (cluster.hidden || head.isControl)
                continue;
            const std::size_t more = cluster.last - cluster.first - 1;
            out << (out.tellp() > 0 ? " " : "") << (head.code < 128 ? char(head.code) : '?');
            if (more > 0)
                out << '+' << more;
            out << '@' << std::lround(cluster.origin.x) << ',' << std::lround(cluster.origin.y);
            const long degrees = std::lround(cluster.angle * 180.0 / std::numbers::pi);
            if (degrees != 0)
                out << '/' << degrees;
        }
        return out.str();
    }

    Document document;
    Context context;
    const Element* element;
    const Style& style;
    TextLayout layout;
};

TEST(TextLayout, PlacesCharacters)
{
    struct Case
    {
        const char* text;
        const char* places;
    };
    const Case cases[] = {
        // Positions of elements, lists, and what is left of them.
        {"<text id='t'>ab</text>", "a@0,0 b@1233,0"},
        {"<text id='t' x='10' y='2em'>ab</text>", "a@10,4096 b@1243,4096"},
        {"<text id='t' x='10 50%' y='5 6 7'>abc</text>", "a@10,5 b@2048,6 c@3281,7"},
        {"<text id='t' dx='10 20' dy='1 2'>abc</text>", "a@10,1 b@1263,3 c@2496,3"},
        {"<text id='t' x='100' dx='10' y='7'>ab<tspan x='50' dx='5'>c</tspan></text>",
         "a@110,7 b@1343,7 c@55,7"},
        {"<text id='t' x='1 2 3 4'>a<tspan x='10 20'>bc</tspan>d</text>",
         "a@1,0 b@10,0 c@20,0 d@4,0"},
        {"<text id='t' x='0' y='5'>a<tspan y='9'>b</tspan>c</text>", "a@0,5 b@1233,9 c@2466,9"},
        {"<text id='t' rotate='10 20'>a<tspan rotate='30'>b</tspan>cd</text>",
         "a@0,0/10 b@1233,0/30 c@2466,0/20 d@3699,0/20"},
        {"<text id='t' x='1 2 3'>e\xCC\x81x</text>", "e+1@1,0 x@3,0"}, // a mark has no place
        {"<text id='t' dx='0 5 7'>e\xCC\x81x</text>", "e+1@0,0 x@1245,0"},
        // White space.
        {"<text id='t'> a \n\t <tspan> b</tspan> <tspan> c </tspan> </text>",
         "a@0,0  @1233,0 b@2466,0  @3699,0 c@4932,0"},
        {"<text id='t' xml:space='preserve'> a\n b </text>",
         " @0,0 a@1233,0  @2466,0  @3699,0 b@4932,0  @6165,0"},
        {"<text id='t' style='white-space:pre' x='5 6'> a</text>", " @5,0 a@6,0"},
        {"<text id='t'>a<!-- no --><![CDATA[ b]]>&#x63;<x:y>no</x:y><title>no</title></text>",
         "a@0,0  @1233,0 b@2466,0 c@3699,0"},
        {"<text id='t'>a<tspan display='none'>b</tspan><tspan "
         "visibility='hidden'>c</tspan>d</text>",
         "a@0,0 c@1233,0 d@2466,0"},
        {"<text id='t'>a<tspan systemLanguage='xx'>b</tspan><a>c</a></text>", "a@0,0 c@1233,0"},
        // Anchors, one for each chunk.
        {"<text id='t' x='100' text-anchor='middle'>ab</text>", "a@-1133,0 b@100,0"},
        {"<text id='t' x='100' text-anchor='end'>ab</text>", "a@-2366,0 b@-1133,0"},
        {"<text id='t' x='5 10' text-anchor='end'>abc</text>", "a@-1228,0 b@-2456,0 c@-1223,0"},
        {"<text id='t' text-anchor='end'>a<tspan x='0' text-anchor='start'>b</tspan></text>",
         "a@-1233,0 b@0,0"},
        // Both directions.
        {"<text id='t' x='5' direction='rtl'>ab</text>", "a@-2461,0 b@-1228,0"},
        {"<text id='t' direction='rtl' text-anchor='end'>ab</text>", "a@0,0 b@1233,0"},
        {"<text id='t'>a<tspan unicode-bidi='bidi-override' direction='rtl'>bc</tspan>d</text>",
         "a@0,0 b@2466,0 c@1233,0 d@3699,0"},
        // Spacing.
        {"<text id='t' letter-spacing='10' word-spacing='100'>a bc</text>",
         "a@0,0  @1243,0 b@2586,0 c@3829,0"},
        {"<text id='t' letter-spacing='.5em'>a<tspan font-size='1024'>bc</tspan></text>",
         "a@0,0 b@2257,0 c@3898,0"}, // the space is that of the text element
        {"<text id='t' font-family='DejaVu Sans'>ffi</text>", "f+2@0,0"},
        {"<text id='t' font-family='DejaVu Sans' style='font-variant-ligatures:none'>fi</text>",
         "f@0,0 i@721,0"},
        {"<text id='t' font-family='DejaVu Sans' letter-spacing='1'>fi</text>", "f@0,0 i@722,0"},
        {"<text id='t' font-family='DejaVu Sans'>AVA</text>", "A@0,0 V@1270,0 A@2540,0"},
        {"<text id='t' font-family='DejaVu Sans' kerning='0'>AVA</text>",
         "A@0,0 V@1401,0 A@2802,0"},
        // Lengths that are asked for.
        {"<text id='t' x='5' textLength='3699'>ab</text>", "a@5,0 b@2471,0"},
        {"<text id='t' textLength='1233' lengthAdjust='spacingAndGlyphs'>ab</text>",
         "a@0,0 b@617,0"},
        {"<text id='t'>a<tspan textLength='4000'>bc</tspan>d</text>",
         "a@0,0 b@1233,0 c@4000,0 d@5233,0"},
        {"<text id='t' textLength='9999'>a<tspan textLength='2000'>bc</tspan></text>",
         "a@0,0 b@7999,0 c@8766,0"},
        // Baselines.
        {"<text id='t'>a<tspan baseline-shift='100'>b<tspan baseline-shift='-50%'>c</tspan>"
         "</tspan>d</text>",
         "a@0,0 b@1233,-100 c@2466,924 d@3699,0"},
        {"<text id='t' dominant-baseline='hanging'>a<tspan font-size='1024'>b</tspan></text>",
         "a@0,1521 b@1233,760"},
        {"<text id='t' y='9' alignment-baseline='text-after-edge'>a</text>", "a@0,-474"},
        {"<text id='t'>a<tspan font-size='1024' alignment-baseline='hanging'>b</tspan></text>",
         "a@0,0 b@1233,-760"},
        // From top to bottom; the middle of the line is 709 above the baseline.
        {"<text id='t' x='10' y='20' writing-mode='tb' dx='0 3' dy='0 5'>ab</text>",
         "a@-699,20/90 b@-696,1258/90"},
        {"<text id='t' y='20' style='writing-mode:vertical-rl' text-anchor='middle'>a<tspan "
         "dominant-baseline='alphabetic'>b</tspan></text>",
         "a@-709,-1213/90 b@0,20/90"},
        {"<text id='t' writing-mode='tb'>\xE4\xB8\x80x</text>", "?@-617,1733 x@-709,2048/90"},
        // Small capitals.
        {"<text id='t' font-variant='small-caps'>Abc</text>", "A@0,0 B@1233,0 C@2219,0"},
        {"<text id='t' style='text-transform:capitalize'>ab c</text>",
         "A@0,0 b@1233,0  @2466,0 C@3699,0"},
        {"<text id='t'></text>", ""},
        {"<text id='t' x='1' rotate='5'>  </text>", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(TextFixture(c.text).Describe(), c.places) << c.text;
}

TEST(TextLayout, LaysTextAlongPaths)
{
    struct Case
    {
        const char* text;
        const char* places;
    };
    const Case cases[] = {
        // Down and to the right; places are those where baselines begin, not the middles.
        {"<text id='t'><textPath path='M0 0V5000'>ab</textPath></text>", "a@0,0/90 b@0,1233/90"},
        {"<text id='t'><textPath path='M0 0H2000V5000'>abc</textPath></text>",
         "a@0,0 b@1233,0 c@2000,466/90"},
        {"<text id='t' x='99' y='7'><textPath path='M0 0V5000' startOffset='10%'>"
         "<tspan dy='-3' dx='5' rotate='30'>a</tspan></textPath></text>",
         "a@3,604/120"},
        {"<text id='t' text-anchor='middle'><textPath path='M0 0H6000' startOffset='50%'>ab"
         "</textPath></text>",
         "a@1767,0 b@3000,0"},
        // What has its middle beyond an end is hidden; text goes on at the end.
        {"<text id='t'><textPath path='M0 10H1500' startOffset='-700'>abc</textPath>d</text>",
         "b@533,10 d@1500,10"},
        // A loop of four times 2000: round the seam, but not twice.
        {"<text id='t'><textPath path='M0 0H2000V2000H0z' startOffset='7000'>ab</textPath></text>",
         "a@0,1000/-90 b@233,0"},
        {"<text id='t'><textPath path='M0 0H2000z' startOffset='0'>abcdef</textPath></text>",
         "a@0,0 b@1233,0 c@1534,0/180"},
        {"<text id='t'><textPath path='M0 0H5000' side='right'>a</textPath></text>",
         "a@5000,0/-180"},
        {"<path id='p' d='M0 0H5000' transform='translate(0 7)' pathLength='100'/>"
         "<text id='t'><textPath xlink:href='#p' startOffset='10'>a</textPath></text>",
         "a@500,7"},
        {"<rect id='p' x='10' y='20' width='5000' height='5000'/>"
         "<text id='t'><textPath href='#p'>a</textPath></text>",
         "a@10,20"},
        {"<text id='t'><textPath href='#none'>a</textPath></text>", ""},
        {"<text id='t'><textPath path='M5 5'>a</textPath></text>", ""},
    };
    for (const Case& c : cases) {
        const std::string places = TextFixture(c.text).Describe();
        EXPECT_EQ(places, c.places) << c.text;
    }
    // Text on a circle: all middles lie on it, as far apart as the glyphs are wide.
    const TextFixture circle("<circle id='c' r='3000'/><text id='t'><textPath href='#c'>abcdefgh"
                             "</textPath></text>");
    const auto& clusters = circle.layout.GetClusters();
    for (std::size_t i = 0; i < clusters.size(); ++i) {
        const double half = clusters[i].advance / 2.0;
        const double x = clusters[i].origin.x + half * std::cos(clusters[i].angle);
        const double y = clusters[i].origin.y + half * std::sin(clusters[i].angle);
        EXPECT_NEAR(std::hypot(x, y), 3000.0, 1.0);
        const double along = (2.0 * double(i) + 1.0) * half / 3000.0;
        EXPECT_NEAR(std::remainder(std::atan2(y, x) - along, 2.0 * std::numbers::pi), 0.0, 1e-3);
    }
}

TEST(TextLayout, DecoratesAndMeasures)
{
    const auto makePieces = [](const std::string& text) {
        TextFixture fixture(text);
        return MakeTextPieces(fixture.context, *fixture.element, fixture.style,
                              {4096.0, 4096.0, fixture.style.fontSize});
    };
    const auto box = [](const TextPiece& piece) { return piece.shape->GetBoundingBox().GetRect(); };
    // From below: the line under all of it in one stroke, letters, the line through the one.
    const auto pieces =
        makePieces("<text id='t' x='5' text-decoration='underline' fill='red'>a<tspan "
                   "text-decoration='line-through' font-size='1024' baseline-shift='7'>b</tspan> "
                   "c</text>");
    ASSERT_EQ(pieces.pieces.size(), 5U);
    ExpectBox(box(pieces.pieces[0]), {5, 40, 5 + 1233 * 3.5, 130}, 0.1);
    EXPECT_EQ(pieces.pieces[0].shape->GetCurves().size(), 1U);
    ExpectBox(box(pieces.pieces[3]), {1238, -7 - 530 / 2.0, 1238 + 616.5, -7 - 428 / 2.0}, 0.1);
    ExpectBox(pieces.box.GetRect(), {5, -1901, 5 + 1233 * 3.5, 483}, 0.1);

    // Where there is a gap, lines are torn; turned glyphs have lines of their own.
    const auto torn = makePieces("<text id='t' dx='0 9' text-decoration='overline'>abc</text>");
    EXPECT_EQ(torn.pieces.front().shape->GetCurves().size(), 2U);
    const auto turned = makePieces(
        "<text id='t' rotate='90' text-decoration='overline'>abc<tspan visibility='hidden' "
        "text-decoration='underline'>d</tspan></text>");
    ASSERT_EQ(turned.pieces.size(), 2U);
    EXPECT_EQ(turned.pieces.front().shape->GetCurves().size(), 4U);
    ExpectBox(turned.box.GetRect(), {-483, 0, 1233 * 3 + 1901, 1233}, 0.1);
}

TEST(TextLayout, HugeTextEnds)
{
    std::string spans;
    for (int i = 0; i < 900; ++i)
        spans += "<tspan dx='1' rotate='1' textLength='5'>a";
    for (int i = 0; i < 900; ++i)
        spans += "</tspan>";
    EXPECT_EQ(TextFixture("<text id='t'>" + spans + "</text>").layout.GetClusters().size(), 900U);

    TextFixture longText("<text id='t'>" + std::string(300'000, 'a') + "</text>");
    EXPECT_EQ(longText.layout.GetClusters().size(), TextContent::MaxCharacters);
    EXPECT_EQ(longText.context.GetNotices().Get().size(), 1U);
}

} // namespace
