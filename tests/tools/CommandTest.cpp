#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <sys/wait.h>

#include <gtest/gtest.h>

#include <raster/Codecs.h>
#include <raster/Convert.h>
#include <raster/ICCManager.h>
#include <support/TestFolder.h>

#include "TestDrawing.h"

namespace {

namespace fs = std::filesystem;

/// Runs the command in a folder of its own.
class Command : public testing::Test
{
protected:
    std::string Path(const std::string& name) const { return (m_folder / name).string(); }

    /// \return the exit status; what goes to the streams is kept.
    int Run(const std::string& arguments)
    {
        const std::string command = std::string(RENDERER_COMMAND) + " " + arguments + " >'" +
                                    Path("out") + "' 2>'" + Path("err") + "'";
        const int status = std::system(command.c_str());
        m_errors = m_folder.Read("err");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// Draws a file to a name in the folder.
    int Draw(const std::string& in, const std::string& out, const std::string& options = "")
    {
        return Run("draw " + in + " " + Path(out) + " " + options);
    }

    Kernel::Counted<const Raster::DynamicBitmap> ReadBitmap(const std::string& name) const
    {
        const std::string bytes = m_folder.Read(name);
        return Raster::ReadImage(
            {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
    }

    std::array<int, 4> GetPixel(const std::string& name, unsigned x, unsigned y, unsigned width,
                                unsigned height)
    {
        const auto bitmap = ReadBitmap(name);
        EXPECT_EQ(bitmap->GetWidth(), width);
        EXPECT_EQ(bitmap->GetHeight(), height);
        const unsigned size = bitmap->GetBuffer()->GetPixelSize();
        const unsigned char* pixel = bitmap->GetBuffer()->GetRow(y) + x * size;
        return {pixel[0], pixel[1], pixel[2], size > 3 ? pixel[3] : 255};
    }

    std::string WriteProfile(const std::string& name,
                             const Kernel::Counted<const Raster::ICCProfile>& profile)
    {
        return m_folder.Write(name, {profile->GetBytes().begin(), profile->GetBytes().end()});
    }
    /// The last run said one line about \p path.
    void ExpectError(const std::string& path) const
    {
        EXPECT_TRUE(m_errors.starts_with("renderer: " + path + ": ")) << m_errors;
        EXPECT_EQ(std::ranges::count(m_errors, '\n'), 1) << m_errors;
    }

    TestSupport::TestFolder m_folder;
    std::string m_errors;
};

const std::string Red =
    MakeDocument("<rect width='10' height='10' fill='red'/>", "width='20' height='10.3'");

TEST_F(Command, DrawsAtTheSizeThatIsAskedFor)
{
    const std::string in = m_folder.Write("in.svg", Red);
    ASSERT_EQ(Draw(in, "a.png"), 0) << m_errors;
    EXPECT_EQ(m_errors, "");
    EXPECT_EQ(GetPixel("a.png", 5, 5, 20, 10), (std::array{255, 0, 0, 255}));
    EXPECT_EQ(GetPixel("a.png", 15, 5, 20, 10), (std::array{0, 0, 0, 0}));
    ASSERT_EQ(Draw(in, "b.png", "--width 100 --background '#00f'"), 0) << m_errors;
    EXPECT_EQ(GetPixel("b.png", 49, 5, 100, 52), (std::array{255, 0, 0, 255}));
    EXPECT_EQ(GetPixel("b.png", 50, 51, 100, 52), (std::array{0, 0, 255, 255}));
    ASSERT_EQ(Draw(in, "c.jpg", "--scale 4 --format rgba8 --target bitmap"), 0) << m_errors;
    EXPECT_NEAR(GetPixel("c.jpg", 70, 20, 80, 41)[1], 255, 3);
}

TEST_F(Command, DrawsTheSameBytesOnEveryRun)
{
    const std::string in = m_folder.Write(
        "in.svg",
        MakeDocument(
            "<radialGradient id='g'><stop stop-color='red'/><stop offset='1'/></radialGradient>"
            "<g opacity='.7'><circle cx='50' cy='50' r='45' fill='url(#g)' stroke='blue'/></g>"));
    ASSERT_EQ(Draw(in, "a.png", "--width 700"), 0);
    ASSERT_EQ(Draw(in, "b.png", "--width 700"), 0);
    EXPECT_EQ(m_folder.Read("a.png"), m_folder.Read("b.png"));
}

TEST_F(Command, WritesEveryKindOfFileInTheProfileAskedFor)
{
    // Opaque orange beside nothing, and the same in a space of wider primaries.
    const std::string in =
        m_folder.Write("in.svg", MakeDocument("<rect width='10' height='10' fill='#ff8000'/>",
                                              "width='20' height='10'"));
    auto& manager = Raster::ICCManager::GetInstance();
    const auto linear = manager.GetLinearRGBProfile();
    const std::string profile = "--profile " + WriteProfile("p.icc", linear);
    for (const char* out : {"a.png", "a.tif", "a.webp", "a.JPEG", "a.tiff"}) {
        SCOPED_TRACE(out);
        const int tolerance = out == std::string("a.JPEG") ? 6 : 0;
        ASSERT_EQ(Draw(in, out), 0) << m_errors;
        EXPECT_NEAR(GetPixel(out, 2, 5, 20, 10)[1], 128, tolerance);
        ASSERT_EQ(Draw(in, out, profile), 0) << m_errors;
        // 128 decoded by sRGB's curve is 0.2159
        EXPECT_NEAR(GetPixel(out, 2, 5, 20, 10)[1], 55, tolerance);
        if (tolerance == 0) {
            EXPECT_EQ(GetPixel(out, 15, 5, 20, 10), (std::array{0, 0, 0, 0}));
        }
        EXPECT_EQ(ReadBitmap(out)->GetProfile().Get(), linear.Get());
    }
    WriteProfile("grey.icc", manager.GetDefaultProfileForFormat(Raster::Format::IA8));
    m_folder.Write("bad.icc", "no profile");
    for (const char* name : {"grey.icc", "bad.icc", "missing.icc"}) {
        EXPECT_EQ(Draw(in, "b.png", "--profile " + Path(name)), 1);
        ExpectError(Path(name));
        EXPECT_FALSE(fs::exists(Path("b.png")));
    }
    // Too wide for the kind of file.
    EXPECT_EQ(Draw(in, "c.webp", "--width 16384"), 1);
    ExpectError(Path("c.webp"));
    EXPECT_FALSE(fs::exists(Path("c.webp")));
}

TEST_F(Command, DrawsInEveryFormatAndKeepsWhatTheFileHolds)
{
    using Raster::Format;
    const std::string in =
        m_folder.Write("in.svg", MakeDocument("<rect width='10' height='10' fill='#c86432'/>"
                                              "<rect x='10' width='9' height='10' fill='#808080'/>",
                                              "width='20' height='10'"));
    const struct
    {
        std::string name;
        Format png, tif, jpg;
    } cases[] = {{"rgba8", Format::RGBA8, Format::RGBA8, Format::RGBA8},
                 {"rgba16", Format::RGBA16, Format::RGBA16, Format::RGBA8},
                 {"ia8", Format::IA8, Format::IA8, Format::IA8},
                 {"ia16", Format::IA16, Format::IA16, Format::IA8},
                 {"cmyka8", Format::RGBA8, Format::CMYKA8, Format::CMYKA8},
                 {"laba16", Format::RGBA16, Format::LABA16, Format::RGBA8},
                 {"rgbauf", Format::RGBA16, Format::RGBA16, Format::RGBA8}};
    for (const auto& c : cases) {
        for (const auto& [out, format] : {std::pair{"a.png", c.png},
                                          {"a.tif", c.tif},
                                          {"a.jpg", c.jpg},
                                          {"a.webp", Format::RGBA8},
                                          {"a.gif", Format::RGBA8},
                                          {"a.exr", Format::RGBAUF}}) {
            SCOPED_TRACE(c.name + " in " + out);
            ASSERT_EQ(Draw(in, out, "--format " + c.name), 0) << m_errors;
            const auto bitmap = ReadBitmap(out);
            EXPECT_EQ(bitmap->GetFormat(), format);
            const auto shown =
                Raster::ConvertBuffer(bitmap->GetBuffer(), bitmap->GetProfile(), Format::RGBA8, {});
            const int tolerance = out == std::string("a.jpg") ? 8 : 1;
            const auto expect = [&](unsigned x, const std::array<int, 3>& colour) {
                for (std::size_t i = 0; i < 3; ++i)
                    EXPECT_NEAR(shown->GetRow(5)[4 * x + i], colour[i], tolerance) << x;
            };
            expect(15, {128, 128, 128});
            if (!c.name.starts_with("ia"))
                expect(3, {200, 100, 50});
        }
    }
    // A profile of the format's own space is what the picture is drawn in.
    const std::string profile =
        " --profile " +
        WriteProfile("grey.icc",
                     Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(Format::IA8));
    EXPECT_EQ(Draw(in, "b.tif", "--format ia16" + profile), 0) << m_errors;
    EXPECT_EQ(Draw(in, "b.webp", "--format ia16" + profile), 0) << m_errors;
    EXPECT_EQ(GetPixel("b.webp", 15, 5, 20, 10)[1], 128);
    EXPECT_EQ(Draw(in, "c.tif", "--format cmyka8" + profile), 1);
    EXPECT_FALSE(fs::exists(Path("c.tif")));
}

TEST_F(Command, DithersAndClipsPerfectlyWhenAsked)
{
    const std::string in = m_folder.Write(
        "in.svg",
        MakeDocument("<linearGradient id='g'><stop offset='0' stop-color='#101010'/>"
                     "<stop offset='1' stop-color='#111111'/></linearGradient>"
                     "<clipPath id='c'><rect x='2.5' y='12' width='9' height='4'/></clipPath>"
                     "<rect width='256' height='8' fill='url(#g)'/>"
                     "<rect x='2.5' y='12' width='9' height='4' clip-path='url(#c)'/>",
                     "width='256' height='20'"));
    ASSERT_EQ(Draw(in, "a.png"), 0) << m_errors;
    ASSERT_EQ(Draw(in, "b.png", "--dither --perfect-clipping"), 0) << m_errors;
    EXPECT_EQ(GetPixel("a.png", 128, 0, 256, 20)[0], 17);
    EXPECT_EQ(GetPixel("b.png", 128, 0, 256, 20)[0], 16);
    EXPECT_EQ(GetPixel("b.png", 129, 0, 256, 20)[0], 17);
    EXPECT_EQ(GetPixel("a.png", 2, 13, 256, 20)[3], 64);
    EXPECT_EQ(GetPixel("b.png", 2, 13, 256, 20)[3], 128);
}

TEST_F(Command, ReducesPicturesToPalettes)
{
    const std::string in = m_folder.Write(
        "in.svg", MakeDocument("<linearGradient id='g'><stop stop-color='#802010'/>"
                               "<stop offset='1' stop-color='#20a0f0'/></linearGradient>"
                               "<rect width='64' height='9' fill='url(#g)'/>",
                               "width='64' height='10'"));
    const auto countColours = [&](const std::string& name) {
        std::set<std::array<int, 4>> colours;
        for (unsigned y = 0; y < 10; ++y)
            for (unsigned x = 0; x < 64; ++x)
                colours.insert(GetPixel(name, x, y, 64, 10));
        EXPECT_TRUE(colours.contains({0, 0, 0, 0})) << "the last row is transparent";
        return colours.size();
    };
    for (const std::string out : {"a.png", "a.gif"}) {
        ASSERT_EQ(Draw(in, out, "--colours 5"), 0) << m_errors;
        EXPECT_EQ(countColours(out), 5U);
        ASSERT_EQ(Draw(in, out, "--palette bw --diffuse --format rgba16"), 0) << m_errors;
        EXPECT_EQ(countColours(out), 3U);
        for (const std::string palette : {"web", "mac", "windows", "grey"}) {
            ASSERT_EQ(Draw(in, out, "--palette " + palette), 0) << m_errors;
            EXPECT_GT(countColours(out), 4U);
        }
    }
    ASSERT_EQ(Draw(in, "b.gif", "--diffuse"), 0) << m_errors;
    EXPECT_NEAR(GetPixel("b.gif", 0, 5, 64, 10)[0], 0x80, 3);

    // A colour of the palette stays what it is in a picture of another profile.
    const std::string flat =
        m_folder.Write("flat.svg", MakeDocument("<rect width='9' height='9' fill='#f93'/>",
                                                "width='9' height='9'"));
    const std::string profile =
        "--profile " +
        WriteProfile("p.icc", Raster::ICCManager::GetInstance().GetLinearRGBProfile());
    ASSERT_EQ(Draw(flat, "c.png", profile), 0) << m_errors;
    ASSERT_EQ(Draw(flat, "d.png", profile + " --palette web"), 0) << m_errors;
    EXPECT_EQ(GetPixel("d.png", 5, 5, 9, 9), GetPixel("c.png", 5, 5, 9, 9));
    EXPECT_NE(GetPixel("d.png", 5, 5, 9, 9)[1], 0x99);

    for (const std::string wrong :
         {"a.jpg --colours 5", "a.tif --palette web", "a.exr --diffuse", "a.png --colours 1",
          "a.gif --colours 257", "a.gif --palette sepia", "a.gif --palette web --colours 7"})
        EXPECT_EQ(Draw(in, wrong), 2) << wrong;
}

TEST_F(Command, ShowsOutlinesOrWhatWouldBeTouched)
{
    const std::string in = m_folder.Write(
        "in.svg",
        MakeDocument("<clipPath id='c'><rect x='2' y='2' width='6' height='30'/></clipPath>"
                     "<clipPath id='d'><circle cx='5' cy='5' r='1'/><rect x='12' width='5' "
                     "height='4'/></clipPath>"
                     "<g clip-path='url(#c)'><rect x='4' y='4' width='12' height='5' fill='red' "
                     "opacity='.2' stroke='blue' stroke-width='2' "
                     "stroke-linejoin='round'/></g>"
                     "<path clip-path='url(#d)' d='M0 1H30V2z'/>",
                     "width='20' height='12'"));
    ASSERT_EQ(Draw(in, "a.png", "--target wireframe --background white"), 0) << m_errors;
    EXPECT_EQ(GetPixel("a.png", 10, 6, 20, 12), (std::array{255, 255, 255, 255}));
    // Half of each pixel beside an edge, whatever the clip.
    EXPECT_NEAR(GetPixel("a.png", 14, 4, 20, 12)[0], 128, 1);
    EXPECT_NEAR(GetPixel("a.png", 14, 8, 20, 12)[0], 128, 1);
    EXPECT_EQ(GetPixel("a.png", 14, 5, 20, 12)[0], 255);
    for (const std::string& out : {std::string(), Path("b.png")}) {
        ASSERT_EQ(Run("draw " + in + " " + out + " --target null --scale 2"), 0) << m_errors;
        EXPECT_EQ(m_folder.Read("out"), "page: 40 x 24 pixels\n"
                                        "touched: x 5 to 34, y 2 to 21\n"
                                        "paths: 2\nfilled paths: 2\nstroked paths: 1\n"
                                        "clip paths: 3\nclip groups: 1\n");
        EXPECT_FALSE(fs::exists(Path("b.png")));
    }
}

TEST_F(Command, RefusesWrongUsage)
{
    const std::string in = m_folder.Write("in.svg", Red);
    const std::string draw = "draw " + in + " " + Path("a.png") + " ";
    for (const std::string& arguments :
         std::vector<std::string>{"",
                                  "paint",
                                  "draw",
                                  "draw " + in,
                                  draw + "--width 0",
                                  draw + "--width -5",
                                  draw + "--width 1.5",
                                  draw + "--scale 0",
                                  draw + "--scale nan",
                                  draw + "--scale inf",
                                  draw + "--width 5 --scale 2",
                                  draw + "--format m8",
                                  draw + "--target sketch",
                                  draw + "--target 1",
                                  draw + "--target wireframe --format ia8",
                                  "draw " + in + " --target wireframe",
                                  draw + "--background mud",
                                  draw + "--shiny",
                                  "draw " + in + " " + Path("a.bmp"),
                                  "draw " + in + " " + Path("a")}) {
        EXPECT_EQ(Run(arguments), 2) << arguments;
        EXPECT_TRUE(m_errors.starts_with("renderer: ")) << arguments << m_errors;
        EXPECT_EQ(std::ranges::count(m_errors, '\n'), 1) << arguments << m_errors;
        EXPECT_FALSE(fs::exists(Path("a.png"))) << arguments;
    }
    EXPECT_EQ(Run("--help"), 0);
    EXPECT_EQ(Run("draw --help"), 0);
    EXPECT_EQ(Run("--version"), 0);
    EXPECT_TRUE(m_folder.Read("out").starts_with("renderer 0.")) << m_folder.Read("out");
}

TEST_F(Command, SaysWhatIsWrongInOneLine)
{
    std::string nested = "<svg>";
    for (int i = 0; i < 300000; ++i)
        nested += "<g>";
    const struct
    {
        const char* name;
        std::string bytes;
    } cases[] = {
        {"not XML", "hello"},
        {"truncated", Red.substr(0, 60)},
        {"nested", nested},
        {"entity in a circle", "<!DOCTYPE svg [<!ENTITY a '&a;'>]><svg>&a;</svg>"},
        {"no width", MakeDocument("", "width='0' height='5'")},
        {"negative", MakeDocument("", "width='5' height='-5'")},
        {"not a number", MakeDocument("", "width='NaN' height='5'")},
        {"huge", MakeDocument("", "width='1e300' height='1e300'")},
        {"high", MakeDocument("", "width='1' height='100000000'")},
        {"empty", ""},
    };
    for (const auto& c : cases) {
        const std::string in = m_folder.Write("bad.svg", c.bytes);
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Draw(in, "a.png"), 1);
        ExpectError(in);
        EXPECT_FALSE(fs::exists(Path("a.png")));
    }
}

TEST_F(Command, LeavesNothingBehindWhenItFails)
{
    const std::string in = m_folder.Write("in.svg", Red);
    EXPECT_EQ(Draw(Path("missing.svg"), "a.png"), 1);
    EXPECT_EQ(Draw(m_folder.GetPath().string(), "a.png"), 1); // a folder
    EXPECT_EQ(Draw(in, "missing/a.png"), 1);
    ExpectError(Path("missing/a.png"));
    EXPECT_EQ(Draw(in, "a.png", "--width 10000000"), 1);
    // A disk that is full behaves like a limit on the size of files.
    const std::string limited =
        "bash -c 'trap \"\" XFSZ; ulimit -f 1; exec " + std::string(RENDERER_COMMAND) + " draw " +
        in + " " + Path("a.png") + " --width 8000 --background red' 2>'" + Path("err") + "'";
    EXPECT_EQ(WEXITSTATUS(std::system(limited.c_str())), 1);
    EXPECT_EQ(m_folder.CountFiles(), 3); // in.svg, out, err
}

TEST_F(Command, NotesWhatItLeavesOut)
{
    const std::string in = m_folder.Write(
        "in.svg", MakeDocument("<g font-family='No Such Font, DejaVu Sans'><text>a</text>"
                               "<text>b</text></g>"));
    EXPECT_EQ(Draw(in, "a.png"), 0);
    EXPECT_EQ(m_errors, "renderer: " + in +
                            ": the font family \"No Such Font\" is missing; \"DejaVu Sans\" takes "
                            "its place\n");
    EXPECT_TRUE(fs::exists(Path("a.png")));
}

TEST_F(Command, InspectShowsSavedValuesAndTellsWhereTheyAreDamaged)
{
    std::string saved = m_folder.Read(SAVED_GOLDEN "/box.saved");
    EXPECT_EQ(Run("inspect " + m_folder.Write("saved", saved)), 0);
    const std::string tree = m_folder.Read("out");
    EXPECT_TRUE(tree.starts_with("#0 Box_ version 1\n  name  \"outer\"\n  innr  #1")) << tree;
    EXPECT_TRUE(tree.ends_with("736 bytes, 2 payloads\n")) << tree;

    saved[saved.find("innr") - 1] = '\x65'; // the length of a key; what is before it is shown
    EXPECT_EQ(Run("inspect " + m_folder.Write("damaged", saved)), 1);
    EXPECT_EQ(m_folder.Read("out"), "#0 Box_ version 1\n  name  \"outer\"\n");
    EXPECT_EQ(m_errors,
              "renderer: " + Path("damaged") + ": byte 38: a key is not a text of four bytes\n");
    EXPECT_EQ(Run("inspect " + Path("missing")), 1);
    EXPECT_EQ(m_errors, "renderer: " + Path("missing") + ": No such file or directory\n");
    EXPECT_EQ(Run("inspect"), 2);
}

} // namespace
