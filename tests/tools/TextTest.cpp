#include <string>

#include <gtest/gtest.h>

#include <svg/StyleResolver.h>
#include <svg/TextFonts.h>

#include "Picture.h"

namespace {

using namespace Svg;

/// The properties of text of an element `t`: family, size, weight, slant, stretch.
std::string DescribeFont(const std::string& content)
{
    const Document document(MakeDocument(content));
    const Style style = StyleResolver(document).ResolveInPlace(*document.FindById("t"));
    const Kernel::Font font = MakeFont(style.text);
    std::string text = font.GetFamily().GetStdString() + ' ' +
                       std::to_string(std::lround(10.0 * style.fontSize)) + ' ' +
                       std::to_string(font.GetWeight());
    text += font.IsItalic() ? " italic" : "";
    text += style.text.smallCaps ? " small" : "";
    return text + (font.GetStretch() != 5 ? " " + std::to_string(font.GetStretch()) : "");
}

TEST(TextStyle, ReadsFonts)
{
    struct Case
    {
        const char* outer;
        const char* inner;
        const char* font; ///< the size in tenths
    };
    const Case cases[] = {
        {"", "", "serif 160 400"},
        {"font-family:A,  'B, &quot;C' , D  E", "", "A,B  \"C,D E 160 400"},
        {"font-family:A", "font-family:,", "A 160 400"},
        {"font:italic small-caps bold condensed 12px/30px 'A B', serif", "",
         "A B,serif 120 700 italic small 3"},
        {"font:bold 20px A", "font:10px B", "B 100 400"},
        {"font:bold italic 20px A", "font:inherit", "A 200 700 italic"},
        {"font:300 20px A;font-weight:600", "font-weight:bolder;font-size:50%", "A 100 900"},
        {"font:normal 16px / 2 A", "font-size:2em;font-stretch:70%", "A 320 400 3"},
        {"font:x-large A", "font-size:larger", "A 288 400"},
        {"font:12px", "font:bold A", "serif 160 400"},          // neither is a font
        {"font-family:A", "font-family:B, C 5.0", "A 160 400"}, // no identifier
        {"font:oblique 10deg 12px A", "", "serif 160 400"},
        {"font-weight:700", "font-weight:lighter", "serif 160 400"},
        {"font-weight:1001", "font-weight:bold;font-weight:x", "serif 160 700"},
        {"font-style:oblique 20deg;font-stretch:ultra-expanded", "font-stretch:x",
         "serif 160 400 italic 9"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(DescribeFont(std::string("<g style=\"") + c.outer + "\"><text id='t' style=\"" +
                               c.inner + "\"/></g>"),
                  c.font)
            << c.outer << " / " << c.inner;
    }
}

/// A document of 200 × 100 pixels with a bold `H` 187 wide, whose stems reach from 21 to 62 and
/// from 125 to 166; the baseline is at 90.
std::string MakeLetter(const std::string& before, const std::string& attributes,
                       const std::string& letter = "H")
{
    return MakeDocument(before +
                        "<text x='0' y='90' font-family='DejaVu Sans' font-weight='700' "
                        "textLength='187' lengthAdjust='spacingAndGlyphs' "
                        "font-size='110' " +
                        attributes + ">" + letter + "</text>");
}

TEST(Text, IsPaintedByItsCells)
{
    const std::string gradient =
        "<linearGradient id='g'><stop stop-color='#f00'/><stop offset='1' stop-color='#00f'/>"
        "</linearGradient>";
    const Picture picture(MakeLetter(gradient, "fill='url(#g)'"));
    // The cell is 187 wide, from the left end of the document.
    ExpectPixel(picture.Get(46, 60), {255 - 63, 0, 63, 255}, 3);
    ExpectPixel(picture.Get(140, 60), {64, 0, 191, 255}, 3);
    ExpectPixel(picture.Get(100, 80), {0, 0, 0, 0});
    // A piece of another element goes on where it is.
    const Picture two(MakeDocument(
        gradient + "<g font-family='DejaVu Sans Mono' font-size='100'><text y='90' "
                   "fill='url(#g)' stroke='url(#g)'>\xE2\x96\x88<tspan>\xE2\x96\x88</tspan>"
                   "</text></g>"));
    ExpectPixel(two.Get(30, 50), {191, 0, 64, 255}, 3);
    ExpectPixel(two.Get(90, 50), {64, 0, 191, 255}, 3);

    const std::string pattern =
        "<pattern id='p' width='.5' height='1'><rect width='50' height='200' fill='lime'/>"
        "</pattern>";
    const Picture patterned(MakeLetter(pattern, "fill='url(#p)'"));
    ExpectPixel(patterned.Get(30, 60), {0, 255, 0, 255});
    ExpectPixel(patterned.Get(105, 49), {0, 255, 0, 255});
    ExpectPixel(patterned.Get(160, 60), {0, 0, 0, 0});
}

TEST(Text, ClipsMasksAndCombines)
{
    const std::string letter = "<text x='0' y='90' font-family='DejaVu Sans' font-weight='700' "
                               "textLength='187' lengthAdjust='spacingAndGlyphs' font-size='110' "
                               "fill='white'>H</text>";
    const Picture plain(MakeLetter("", "fill='red'"));
    ASSERT_GT(plain.GetArea(), 6000.0);
    for (const std::string& around :
         {"<clipPath id='c'>" + letter +
              "</clipPath><rect width='200' height='100' fill='red' "
              "clip-path='url(#c)'/>",
          "<mask id='m'>" + letter +
              "</mask><rect width='200' height='100' fill='red' "
              "mask='url(#m)'/>",
          "<clipPath id='c'><use href='#t'/></clipPath><defs>" + MakeLetter("", "id='t'") +
              "</defs><rect width='200' height='100' fill='red' clip-path='url(#c)'/>",
          "<g fill='red'><g transform='scale(2)'><use transform='scale(.5)' href='#t'/></g></g>"
          "<defs>" +
              MakeLetter("", "id='t'") + "</defs>",
          MakeLetter("", "fill='red'", "<a>H</a>"),
          MakeLetter("", "fill='red'", "<tspan fill='inherit' opacity='1'>H</tspan>")}) {
        const Picture picture(around.starts_with("<svg") ? around : MakeDocument(around));
        EXPECT_LT(picture.GetDifference(plain), 0.05) << around;
    }
    ExpectPixel(Picture(MakeLetter("", "fill='red' opacity='.5'", "<tspan opacity='.5'>H</tspan>"))
                    .Get(30, 60),
                {64, 0, 0, 64});
    // The stroke lies over the fill, or below.
    const std::string stroke = "fill='red' stroke='blue' stroke-width='8'";
    ExpectPixel(Picture(MakeLetter("", stroke)).Get(60, 30), {0, 0, 255, 255});
    ExpectPixel(Picture(MakeLetter("", stroke + " paint-order='stroke'")).Get(60, 30),
                {255, 0, 0, 255});
    // Bounding boxes of groups hold the text in them.
    const Picture boxed(MakeDocument(
        "<clipPath id='c' clipPathUnits='objectBoundingBox'><rect width='.5' height='1'/>"
        "</clipPath><g clip-path='url(#c)'><text y='90' font-family='DejaVu Sans Mono' "
        "font-size='100'>\xE2\x96\x88\xE2\x96\x88</text></g>"));
    ExpectPixel(boxed.Get(58, 50), {0, 0, 0, 255});
    ExpectPixel(boxed.Get(62, 50), {0, 0, 0, 0});
}

TEST(Text, SaysWhatIsMissing)
{
    const Picture picture(
        MakeDocument("<g font-family='No Such Font, DejaVu Serif' font-size='20'><text y='20'>a"
                     "<tspan font-weight='bold'>b</tspan></text><text y='40'>c"
                     "<tref href='#x'/></text><text><textPath href='#x'>d</textPath></text></g>"));
    EXPECT_EQ(picture.GetNotices(),
              "the font family \"No Such Font\" is missing; \"DejaVu Serif\" takes its place\n"
              "tref elements are not drawn\n"
              "a path for text is missing; its text is left out\n");
    EXPECT_GT(picture.GetArea(), 100.0);
}

} // namespace
