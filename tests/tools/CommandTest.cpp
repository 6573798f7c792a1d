#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <raster/Codecs.h>
#include <raster/Convert.h>
#include <raster/ICCManager.h>

#include "TestDrawing.h"

namespace {

namespace fs = std::filesystem;

/// Runs the command in a folder of its own.
class Command : public testing::Test
{
protected:
    Command()
        : m_folder(fs::temp_directory_path() / ("renderer-command-" + std::to_string(::getpid())))
    {
        fs::create_directories(m_folder);
    }
    ~Command() override { fs::remove_all(m_folder); }

    std::string Path(const std::string& name) const { return (m_folder / name).string(); }

    std::string WriteFile(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    static std::string ReadFile(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// \return the exit status; what goes to the streams is kept.
    int Run(const std::string& arguments)
    {
        const std::string command = std::string(RENDERER_COMMAND) + " " + arguments + " >'" +
                                    Path("out") + "' 2>'" + Path("err") + "'";
        const int status = std::system(command.c_str());
        m_errors = ReadFile(Path("err"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::array<int, 4> GetPixel(const std::string& path, unsigned x, unsigned y, unsigned width,
                                unsigned height)
    {
        const std::string bytes = ReadFile(path);
        const auto bitmap =
            Raster::ReadImage({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
        EXPECT_EQ(bitmap->GetWidth(), width);
        EXPECT_EQ(bitmap->GetHeight(), height);
        const unsigned char* pixel =
            bitmap->GetBuffer()->GetRow(y) + x * bitmap->GetBuffer()->GetPixelSize();
        return {pixel[0], pixel[1], pixel[2],
                bitmap->GetBuffer()->GetPixelSize() > 3 ? pixel[3] : 255};
    }

    fs::path m_folder;
    std::string m_errors;
};

const std::string Red =
    MakeDocument("<rect width='10' height='10' fill='red'/>", "width='20' height='10.3'");

TEST_F(Command, DrawsAtTheSizeThatIsAskedFor)
{
    const std::string in = WriteFile("in.svg", Red);
    ASSERT_EQ(Run("draw " + in + " " + Path("a.png")), 0) << m_errors;
    EXPECT_EQ(m_errors, "");
    EXPECT_EQ(GetPixel(Path("a.png"), 5, 5, 20, 10), (std::array{255, 0, 0, 255}));
    EXPECT_EQ(GetPixel(Path("a.png"), 15, 5, 20, 10), (std::array{0, 0, 0, 0}));
    ASSERT_EQ(Run("draw " + in + " " + Path("b.png") + " --width 100 --background '#00f'"), 0)
        << m_errors;
    EXPECT_EQ(GetPixel(Path("b.png"), 49, 5, 100, 52), (std::array{255, 0, 0, 255}));
    EXPECT_EQ(GetPixel(Path("b.png"), 50, 51, 100, 52), (std::array{0, 0, 255, 255}));
    ASSERT_EQ(Run("draw " + in + " " + Path("c.jpg") + " --scale 4 --format rgba8 --target bitmap"),
              0)
        << m_errors;
    EXPECT_NEAR(GetPixel(Path("c.jpg"), 70, 20, 80, 41)[1], 255, 3);
}

TEST_F(Command, DrawsTheSameBytesOnEveryRun)
{
    const std::string in = WriteFile(
        "in.svg",
        MakeDocument(
            "<radialGradient id='g'><stop stop-color='red'/><stop offset='1'/></radialGradient>"
            "<g opacity='.7'><circle cx='50' cy='50' r='45' fill='url(#g)' stroke='blue'/></g>"));
    ASSERT_EQ(Run("draw " + in + " " + Path("a.png") + " --width 700"), 0);
    ASSERT_EQ(Run("draw " + in + " " + Path("b.png") + " --width 700"), 0);
    EXPECT_EQ(ReadFile(Path("a.png")), ReadFile(Path("b.png")));
}

TEST_F(Command, WritesEveryKindOfFileInTheProfileAskedFor)
{
    // Opaque orange beside nothing, and the same in a space of wider primaries.
    const std::string in =
        WriteFile("in.svg", MakeDocument("<rect width='10' height='10' fill='#ff8000'/>",
                                         "width='20' height='10'"));
    const auto linear = Raster::ICCManager::GetInstance().GetLinearRGBProfile();
    WriteFile("p.icc", {linear->GetBytes().begin(), linear->GetBytes().end()});
    for (const char* ending : {"png", "tif", "webp", "JPEG", "tiff"}) {
        const std::string out = Path(std::string("a.") + ending);
        const int tolerance = ending[0] == 'J' ? 6 : 0;
        ASSERT_EQ(Run("draw " + in + " " + out), 0) << m_errors;
        EXPECT_NEAR(GetPixel(out, 2, 5, 20, 10)[1], 128, tolerance) << ending;
        ASSERT_EQ(Run("draw " + in + " " + out + " --profile " + Path("p.icc")), 0) << m_errors;
        // 128 decoded by sRGB's curve is 0.2159
        EXPECT_NEAR(GetPixel(out, 2, 5, 20, 10)[1], 55, tolerance) << ending;
        if (tolerance == 0) {
            EXPECT_EQ(GetPixel(out, 15, 5, 20, 10), (std::array{0, 0, 0, 0})) << ending;
        }
        const std::string bytes = ReadFile(out);
        const auto bitmap =
            Raster::ReadImage({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
        EXPECT_EQ(bitmap->GetProfile().Get(), linear.Get()) << ending;
    }
    const auto grey =
        Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(Raster::Format::IA8);
    WriteFile("grey.icc", {grey->GetBytes().begin(), grey->GetBytes().end()});
    WriteFile("bad.icc", "no profile");
    for (const char* profile : {"grey.icc", "bad.icc", "missing.icc"}) {
        EXPECT_EQ(Run("draw " + in + " " + Path("b.png") + " --profile " + Path(profile)), 1);
        EXPECT_TRUE(m_errors.starts_with("renderer: " + Path(profile) + ": ")) << m_errors;
        EXPECT_FALSE(fs::exists(Path("b.png")));
    }
    // Too wide for the kind of file.
    EXPECT_EQ(Run("draw " + in + " " + Path("c.webp") + " --width 16384"), 1);
    EXPECT_TRUE(m_errors.starts_with("renderer: " + Path("c.webp") + ": ")) << m_errors;
    EXPECT_FALSE(fs::exists(Path("c.webp")));
}

TEST_F(Command, DrawsInEveryFormatAndKeepsWhatTheFileHolds)
{
    using Raster::Format;
    const std::string in =
        WriteFile("in.svg", MakeDocument("<rect width='10' height='10' fill='#c86432'/>"
                                         "<rect x='10' width='9' height='10' fill='#808080'/>",
                                         "width='20' height='10'"));
    struct Kept
    {
        const char* name;
        Format png, tif, jpg;
    };
    for (const Kept& kept : {Kept{"rgba8", Format::RGBA8, Format::RGBA8, Format::RGBA8},
                             Kept{"rgba16", Format::RGBA16, Format::RGBA16, Format::RGBA8},
                             Kept{"ia8", Format::IA8, Format::IA8, Format::IA8},
                             Kept{"ia16", Format::IA16, Format::IA16, Format::IA8},
                             Kept{"cmyka8", Format::RGBA8, Format::CMYKA8, Format::CMYKA8},
                             Kept{"laba16", Format::RGBA16, Format::LABA16, Format::RGBA8},
                             Kept{"rgbauf", Format::RGBA16, Format::RGBA16, Format::RGBA8}}) {
        SCOPED_TRACE(kept.name);
        const bool grey = kept.png == Format::IA8 || kept.png == Format::IA16;
        for (const auto& [ending, format] : {std::pair{".png", kept.png},
                                             {".tif", kept.tif},
                                             {".jpg", kept.jpg},
                                             {".webp", Format::RGBA8},
                                             {".exr", Format::RGBAUF}}) {
            SCOPED_TRACE(ending);
            const std::string out = Path(std::string("a") + ending);
            ASSERT_EQ(Run("draw " + in + " " + out + " --format " + kept.name), 0) << m_errors;
            const std::string bytes = ReadFile(out);
            const auto bitmap = Raster::ReadImage(
                {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
            EXPECT_EQ(bitmap->GetFormat(), format);
            const auto shown =
                Raster::ConvertBuffer(bitmap->GetBuffer(), bitmap->GetProfile(), Format::RGBA8, {});
            const int tolerance = ending == std::string(".jpg") ? 8 : 1;
            const unsigned char* pixel = shown->GetRow(5) + 15 * 4;
            EXPECT_NEAR(pixel[0], 128, tolerance);
            EXPECT_NEAR(pixel[2], 128, tolerance);
            pixel = shown->GetRow(5) + 3 * 4;
            if (!grey) {
                EXPECT_NEAR(pixel[0], 200, tolerance);
                EXPECT_NEAR(pixel[1], 100, tolerance);
                EXPECT_NEAR(pixel[2], 50, tolerance);
            }
        }
    }
    // A profile of the format's own space is what the picture is drawn in.
    const auto grey = Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(Format::IA8);
    WriteFile("grey.icc", {grey->GetBytes().begin(), grey->GetBytes().end()});
    for (const char* ending : {".tif", ".webp"})
        EXPECT_EQ(Run("draw " + in + " " + Path(std::string("b") + ending) +
                      " --format ia16 --profile " + Path("grey.icc")),
                  0)
            << m_errors;
    EXPECT_EQ(GetPixel(Path("b.webp"), 15, 5, 20, 10)[1], 128);
    EXPECT_EQ(
        Run("draw " + in + " " + Path("c.tif") + " --format cmyka8 --profile " + Path("grey.icc")),
        1);
    EXPECT_FALSE(fs::exists(Path("c.tif")));
}

TEST_F(Command, RefusesWrongUsage)
{
    const std::string in = WriteFile("in.svg", Red);
    const std::string draw = "draw " + in + " " + Path("a.png") + " ";
    for (const std::string& arguments : std::vector<std::string>{
             "", "paint", "draw", "draw " + in, draw + "--width 0", draw + "--width -5",
             draw + "--width 1.5", draw + "--scale 0", draw + "--scale nan", draw + "--scale inf",
             draw + "--width 5 --scale 2", draw + "--format m8", draw + "--target wireframe",
             draw + "--background mud", draw + "--shiny", "draw " + in + " " + Path("a.gif"),
             "draw " + in + " " + Path("a")}) {
        EXPECT_EQ(Run(arguments), 2) << arguments;
        EXPECT_NE(m_errors, "") << arguments;
        EXPECT_FALSE(fs::exists(Path("a.png"))) << arguments;
    }
    EXPECT_EQ(Run("--help"), 0);
    EXPECT_EQ(Run("draw --help"), 0);
}

struct BadFile
{
    const char* name;
    std::string bytes;
};

TEST_F(Command, SaysWhatIsWrongInOneLine)
{
    std::string nested = "<svg>";
    for (int i = 0; i < 300000; ++i)
        nested += "<g>";
    const std::vector<BadFile> cases{
        {"not XML", "hello"},
        {"truncated", Red.substr(0, 60)},
        {"nested", nested},
        {"entity in a circle", "<!DOCTYPE svg [<!ENTITY a '&a;'>]><svg>&a;</svg>"},
        {"use in a circle", MakeDocument("<g id='a'><use href='#a'/></g>")},
        {"no width", MakeDocument("", "width='0' height='5'")},
        {"negative", MakeDocument("", "width='5' height='-5'")},
        {"not a number", MakeDocument("", "width='NaN' height='5'")},
        {"huge", MakeDocument("", "width='1e300' height='1e300'")},
        {"high", MakeDocument("", "width='1' height='100000000'")},
        {"empty", ""},
    };
    for (const BadFile& c : cases) {
        const std::string in = WriteFile("bad.svg", c.bytes);
        EXPECT_EQ(Run("draw " + in + " " + Path("a.png")), 1) << c.name;
        EXPECT_TRUE(m_errors.starts_with("renderer: " + in + ": ")) << c.name << ": " << m_errors;
        EXPECT_EQ(std::ranges::count(m_errors, '\n'), 1) << c.name << ": " << m_errors;
        EXPECT_FALSE(fs::exists(Path("a.png"))) << c.name;
    }
}

TEST_F(Command, LeavesNothingBehindWhenItFails)
{
    const std::string in = WriteFile("in.svg", Red);
    EXPECT_EQ(Run("draw " + Path("missing.svg") + " " + Path("a.png")), 1);
    EXPECT_EQ(Run("draw " + m_folder.string() + " " + Path("a.png")), 1); // a folder
    EXPECT_EQ(Run("draw " + in + " " + Path("missing/a.png")), 1);
    EXPECT_TRUE(m_errors.starts_with("renderer: " + Path("missing/a.png") + ": ")) << m_errors;
    EXPECT_EQ(Run("draw " + in + " " + Path("a.png") + " --width 10000000"), 1);
    // A disk that is full behaves like a limit on the size of files.
    const std::string limited =
        "bash -c 'trap \"\" XFSZ; ulimit -f 1; exec " + std::string(RENDERER_COMMAND) + " draw " +
        in + " " + Path("a.png") + " --width 8000 --background red' 2>'" + Path("err") + "'";
    EXPECT_EQ(WEXITSTATUS(std::system(limited.c_str())), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder), {}), 3); // in.svg, out, err
}

TEST_F(Command, NotesWhatItLeavesOut)
{
    const std::string in = WriteFile("in.svg", MakeDocument("<text>a</text><text>b</text>"));
    EXPECT_EQ(Run("draw " + in + " " + Path("a.png")), 0);
    EXPECT_EQ(m_errors, "renderer: " + in + ": text is not drawn yet\n");
    EXPECT_TRUE(fs::exists(Path("a.png")));
}

} // namespace
