#include <cmath>
#include <sstream>

#include <gtest/gtest.h>

#include <geometry/text/ShapeText.h>

#include "PinnedFonts.h"

namespace {

using namespace Geometry;

/// The glyphs as `hb-shape --utf8-clusters --no-glyph-names` prints them, in units of the font,
/// which has 2048 to the em.
std::string Describe(const std::vector<ShapedGlyph>& glyphs)
{
    const auto round = [](double value) { return std::lround(2048.0 * value); };
    std::ostringstream text;
    for (const ShapedGlyph& glyph : glyphs) {
        text << (text.tellp() > 0 ? "|" : "") << glyph.glyph->GetIndex() << '=' << glyph.cluster;
        const long x = round(glyph.offset.x), y = round(-glyph.offset.y);
        if (x != 0 || y != 0)
            text << '@' << x << ',' << y;
        text << '+' << round(glyph.advance);
    }
    return text.str();
}

TEST(ShapeText, GivesWhatHbShapePrints)
{
    struct Case
    {
        const char* font;
        const char* text;
        ShapeOptions options;
        const char* glyphs; ///< printed by hb-shape 6.0.0, its "+0" for heights left out
    };
    const ShapeOptions plain{"", false, false, {}};
    const Case cases[] = {
        {"DejaVuSans",
         "office AVAT To.",
         {}, // ligatures and kerning
         "82=0+1253|5044=1+1980|70=4+1126|72=5+1260|3=6+651|36=7+1270|57=8+1270|36=9+1242|"
         "55=10+1251|3=11+651|55=12+903|82=13+1217|17=14+651"},
        {"DejaVuSans", "office AVAT", plain,
         "82=0+1253|73=1+721|73=2+721|76=3+569|70=4+1126|72=5+1260|3=6+651|36=7+1401|57=8+1401|"
         "36=9+1401|55=10+1251"},
        {"DejaVuSans",
         "x̂́ ǭ e̱",
         {}, // marks, stacked and below
         "91=0+1212|691=0@-90,0+0|690=0@-90,0+0|3=5+651|431=6+1253|3=8+651|72=9+1260|"
         "738=9@-86,1+0"},
        {"DejaVuSans",
         "بِسْمِ لا",
         {}, // letters that join, vowels, the ligature of lam and alef
         "5365=13+1168|3=12+651|1401=8@-272,-600+0|5340=8+1363|1403=4@138,-300+0|5294=4+1827|"
         "1401=0@-213,-350+0|5259=0+570"},
        {"DejaVuSans",
         "שָׁלוֹם",
         {},
         "1332=12+1359|1306=8+0|1324=8+558|1331=6+1164|1305=0+0|1314=0+0|1344=0+1451"},
        {"DejaVuSerif",
         "Ἀθῆναι Привет",
         {}, // two scripts
         "1678=0+1479|817=3+1233|1852=5+1227|822=8+1245|810=10+1383|818=12+803|3=14+651|906=15+"
         "1786|939=17+1311|931=19+1365|925=21+1153|928=23+1212|941=25+1133"},
        {"DejaVuSans",
         "agl",
         {"", true, true, {"salt", "smcp", "nonsense=?"}},
         "531=0+1300|74=1+1300|6005=2+569"},
    };
    for (const Case& c : cases) {
        const ShapedText shaped = ShapeText(c.text, *SelectFont(c.font), c.options);
        EXPECT_EQ(Describe(shaped.glyphs), c.glyphs) << c.text;
    }
}

TEST(ShapeText, OrdersRunsOfBothDirections)
{
    struct Case
    {
        const char* text;
        TextDirection direction;
        std::vector<BidiRun> runs;
        std::vector<std::uint32_t> clusters; ///< from left to right
    };
    const std::string override = "\u202Eab\u202Cc"; // a and b from right to left
    const Case cases[] = {
        {"ab \u05D0\u05D1 c",
         TextDirection::LeftToRight,
         {{0, 3, 0}, {3, 7, 1}, {7, 9, 0}},
         {0, 1, 2, 5, 3, 7, 8}},
        {"ab \u05D0\u05D1 c",
         TextDirection::RightToLeft,
         {{0, 2, 2}, {2, 8, 1}, {8, 9, 2}},
         {8, 7, 5, 3, 2, 0, 1}},
        {"\u05D0 12 b",
         TextDirection::Auto,
         {{0, 3, 1}, {3, 5, 2}, {5, 6, 1}, {6, 7, 2}},
         {6, 5, 3, 4, 2, 0}},
        {"\u05D0(b)", TextDirection::RightToLeft, {{0, 3, 1}, {3, 4, 2}, {4, 5, 1}}, {4, 3, 2, 0}},
        {override.c_str(), TextDirection::Auto, {{0, 3, 0}, {3, 8, 1}, {8, 9, 0}}, {0, 5, 4, 3, 8}},
        {"a\nb", TextDirection::Auto, {{0, 3, 0}}, {0, 1, 2}},
        {"", TextDirection::Auto, {}, {}},
        {"\xFF\xC3", TextDirection::Auto, {{0, 2, 0}}, {0, 1}}, // no UTF-8
    };
    const auto font = SelectFont("DejaVuSans");
    for (const Case& c : cases) {
        EXPECT_EQ(FindBidiRuns(c.text, c.direction), c.runs) << c.text;
        std::vector<std::uint32_t> clusters;
        double advance = 0.0;
        const ShapedText shaped = ShapeText(c.text, *font, {}, c.direction);
        for (const ShapedGlyph& glyph : shaped.glyphs) {
            clusters.push_back(glyph.cluster);
            advance += glyph.advance;
        }
        EXPECT_EQ(clusters, c.clusters) << c.text;
        EXPECT_DOUBLE_EQ(shaped.advance, advance);
    }
    EXPECT_EQ(FindVisualOrder({0, 1, 2, 2, 1, 0, 3}),
              (std::vector<std::size_t>{0, 4, 2, 3, 1, 5, 6}));
}

TEST(ShapeText, HeedsTheFirstControlsOnly)
{
    std::string text;
    for (int i = 0; i < 100'000; ++i)
        text += "\u2067a\u2069";
    // A letter for itself in each of the first 1000 isolates; then no isolates are left.
    const auto runs = FindBidiRuns(text, TextDirection::LeftToRight);
    ASSERT_EQ(runs.size(), 2001U);
    EXPECT_EQ(runs[1999].level, 2);
    EXPECT_EQ(runs.back(), (BidiRun{1000 * 7 - 3, text.size(), 0}));
}

TEST(ShapeText, JoinsAcrossTheEndsOfRuns)
{
    // A long text before and behind, cut in the middle of nothing.
    const std::string around(300, 'x');
    const std::string word = "\u0628\u0628\u0628"; // three times beh: initial, medial, final
    const auto font = SelectFont("DejaVuSans");
    const auto whole = ShapeRun(word, 0, 6, true, *font);
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string text = around + "\u00E9" + word + "\u00E9" + around;
        const std::size_t begin = 302 + 2 * i;
        const auto part = ShapeRun(text, begin, begin + 2, true, *font);
        ASSERT_EQ(part.size(), 1U);
        EXPECT_EQ(part[0].glyph->GetIndex(), whole[2 - i].glyph->GetIndex());
        EXPECT_EQ(part[0].cluster, begin);
    }
    EXPECT_NE(whole[0].glyph->GetIndex(), whole[1].glyph->GetIndex());
}

} // namespace
