#include <fstream>
#include <iterator>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <geometry/text/ShapeText.h>
#include <kernel/FormatException.h>

#include <support/TestFolder.h>

#include "PinnedFonts.h"

namespace {

using namespace Geometry;

std::string ReadFont(const std::string& name)
{
    std::ifstream file(GetFontPath(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What is said about a file; empty when it can be used, all of it.
std::string FindDamage(const std::string& path, unsigned index = 0)
{
    try {
        const auto face = FontFace::Load(path, index);
        const auto fonts = Kernel::MakeCounted<const FontSelection>(face);
        ShapeText("office \u0628\u0628 x\u0302", *fonts);
        for (std::uint32_t glyph = 0; glyph < 200; ++glyph)
            face->GetGlyph(glyph);
    } catch (const Kernel::FormatException& error) {
        return error.what();
    }
    return {};
}

TEST(FontFace, TellsItsMetrics)
{
    const auto face = FontFace::Load(GetFontPath("DejaVuSans"));
    EXPECT_EQ(face->GetFamily(), "DejaVu Sans");
    // As the tables head, hhea, OS/2 and post have them, in 2048ths.
    const FontMetrics& metrics = face->GetMetrics();
    EXPECT_EQ(metrics.ascent * 2048, 1901);
    EXPECT_EQ(metrics.descent * 2048, 483);
    EXPECT_EQ(metrics.xHeight * 2048, 1120);
    EXPECT_EQ(metrics.capHeight * 2048, 1491);
    EXPECT_EQ(metrics.underlineThickness * 2048, 90);
    EXPECT_EQ(metrics.strikeoutTop * 2048, -530);
    EXPECT_EQ(metrics.hangingBaseline, -0.8 * metrics.ascent);
    EXPECT_EQ(face->FindGlyph('a'), 68U);
    EXPECT_EQ(face->FindGlyph(0x4E00), 0U);

    const auto glyph = face->GetGlyph(face->FindGlyph('H'));
    EXPECT_EQ(glyph->GetAdvance() * 2048, 1540);
    EXPECT_EQ(glyph->GetBounds().GetRect(),
              (Kernel::RectT<double>{201.0 / 2048, -1493.0 / 2048, 1339.0 / 2048, 0}));
    EXPECT_FALSE(face->GetGlyph(face->FindGlyph(' '))->GetOutline());
    EXPECT_THROW(face->GetGlyph(60000), Kernel::FormatException);
}

TEST(FontFace, SynthesisLeansAndGrowsOutlines)
{
    const auto path = GetFontPath("DejaVuSans");
    const auto box = [&](const FontSynthesis& synthesis) {
        const auto face = FontFace::Load(path, 0, synthesis);
        const auto glyph = face->GetGlyph(face->FindGlyph('H'));
        EXPECT_EQ(glyph->GetAdvance() * 2048, 1540);
        return glyph->GetBounds().GetRect();
    };
    const auto plain = box({});
    const auto lean = box({0.25, false});
    EXPECT_NEAR(lean.left, plain.left, 1e-4);
    EXPECT_NEAR(lean.right, plain.right - 0.25 * plain.top, 1e-4);
    const auto bold = box({0.0, true});
    EXPECT_NEAR(bold.Width(), plain.Width() + 1.0 / 24, 1e-3);
    EXPECT_NEAR(bold.left, plain.left - 1.0 / 48, 1e-3);
    EXPECT_NEAR(bold.bottom, 1.0 / 48, 1e-3);
}

TEST(FontFace, DamagedFilesEndInAnError)
{
    const TestSupport::TestFolder folder;
    const std::string font = ReadFont("DejaVuSansMono-Bold");
    ASSERT_GT(font.size(), 200000U);
    EXPECT_EQ(FindDamage(folder.Write("whole.ttf", font)), "");

    const std::string missing = (folder / "missing.ttf").string();
    EXPECT_EQ(FindDamage(missing), "the font file " + missing + " cannot be read");
    EXPECT_EQ(FindDamage(folder.GetPath().string()),
              "the font file " + folder.GetPath().string() + " cannot be read");
    const auto expectUnusable = [&](const std::string& bytes, const std::string& why,
                                    unsigned index = 0) {
        const std::string path = folder.Write("damaged.ttf", bytes);
        const std::string damage = FindDamage(path, index);
        EXPECT_TRUE(damage.starts_with("the font file " + path + " cannot be used: it")) << damage;
        EXPECT_NE(damage.find(why), damage.npos) << damage;
    };
    expectUnusable("no font at all", "is no TrueType or OpenType font");
    expectUnusable(font, "has no face number 3", 3);
    expectUnusable(font.substr(0, 100000), "reaches beyond the end of the file");
    for (std::size_t size = 1; size < font.size(); size += size < 1000 ? 37 : 9973)
        expectUnusable(font.substr(0, size), "");

    // Whatever single bytes say, it ends well: as an error, or as glyphs.
    std::mt19937 random(7);
    int unusable = 0;
    for (int i = 0; i < 80; ++i) {
        std::string changed = font;
        for (int k = 0; k < 4; ++k)
            changed[random() % (i % 2 == 0 ? 400 : changed.size())] = char(random());
        unusable += FindDamage(folder.Write("changed.ttf", changed)).empty() ? 0 : 1;
    }
    EXPECT_GT(unusable, 10);
}

TEST(FontSelection, FindsFamiliesAndSaysWhichIsMissing)
{
    struct Case
    {
        const char* families;
        const char* found;
        const char* missing;
    };
    const Case cases[] = {
        {"DejaVu Serif", "DejaVu Serif", ""},
        {"dejavu sansmono", "DejaVu Sans Mono", ""},
        {"No Such Family, DejaVu Serif", "DejaVu Serif", "No Such Family"},
        {" , DejaVu Sans", "DejaVu Sans", ""},
    };
    for (const Case& c : cases) {
        const auto fonts = FontSelection::Find(Kernel::Font(c.families));
        ASSERT_TRUE(fonts->GetFace());
        EXPECT_EQ(fonts->GetFace()->GetFamily(), c.found);
        EXPECT_EQ(fonts->GetMissingFamily(), c.missing);
        EXPECT_EQ(FontSelection::Find(Kernel::Font(c.families)), fonts);
    }
    for (const char* missing : {"No Such Family", "No Such Family, serif"}) {
        const auto fonts = FontSelection::Find(Kernel::Font(missing));
        EXPECT_TRUE(fonts->GetFace());
        EXPECT_EQ(fonts->GetMissingFamily(), "No Such Family");
    }
    for (const char* generic : {"", "serif", "sans-serif", "monospace", "cursive, No Such Family"})
        EXPECT_EQ(FontSelection::Find(Kernel::Font(generic))->GetMissingFamily(), "") << generic;

    // DejaVu Serif has no Hebrew; DejaVu Sans has.
    const auto serif = FontSelection::Find(Kernel::Font("DejaVu Serif", 700));
    EXPECT_EQ(serif->FindFace(0x42), serif->GetFace());
    const auto hebrew = serif->FindFace(0x5D0);
    EXPECT_NE(hebrew, serif->GetFace());
    EXPECT_NE(hebrew->FindGlyph(0x5D0), 0U);
    EXPECT_EQ(serif->FindFace(0x10FFFD), serif->GetFace()); // no face has it
}

TEST(FontSelection, ServesManyThreads)
{
    const auto shape = [] {
        std::vector<const GlyphMetrics*> glyphs;
        for (const char* family : {"DejaVu Sans", "DejaVu Serif", "No Such Family"}) {
            for (int weight : {400, 700}) {
                const auto fonts = FontSelection::Find(Kernel::Font(family, weight));
                for (const auto& glyph : ShapeText("Office \u05D0\u0628 99", *fonts).glyphs)
                    glyphs.push_back(glyph.glyph.Get());
            }
        }
        return glyphs;
    };
    std::vector<std::vector<const GlyphMetrics*>> results(4);
    {
        std::vector<std::jthread> threads;
        for (auto& result : results)
            threads.emplace_back([&] { result = shape(); });
    }
    for (const auto& result : results)
        EXPECT_EQ(result, results.front()); // the same objects: outlines are made once
}

} // namespace
