#include <filesystem>
#include <string>
#include <vector>

#include <support/TestFolder.h>
#include <svg/Images.h>
#include <svg/Neighbours.h>

#include "Picture.h"

namespace {

namespace fs = std::filesystem;

/// A folder with pictures of 2 × 1 pixels in it, beside it and behind links.
class NeighbourTest : public testing::Test
{
protected:
    NeighbourTest()
    {
        fs::create_directories(m_folder / "in side");
        const auto pixels = Svg::DecodeDataAddress(
            "data:image/png;base64,iVBORw0KGgoAAAANSUhEUgAAAAIAAAABCAIAAAB7QOjdAAAAD0lEQVR4nGP8"
            "z8DAwMAAAAYIAQHLR3Z1AAAAAElFTkSuQmCC");
        for (const char* name :
             {"secret.png", "drawing2.png", "drawing/a.png", "drawing/in side/b.png"})
            m_base.Write(name, {pixels.begin(), pixels.end()});
        m_base.Write("drawing/damaged.png", "no picture");
        fs::create_symlink("a.png", m_folder / "link.png");
        fs::create_symlink("../secret.png", m_folder / "escape.png");
        fs::create_directory_symlink("..", m_folder / "up");
    }

    TestSupport::TestFolder m_base;
    fs::path m_folder = m_base / "drawing";
};

TEST_F(NeighbourTest, ReadsWhatLiesInTheFolder)
{
    const Svg::Neighbours neighbours(m_folder);
    for (const char* address : {"a.png", "./a.png", " a.png\n", "in side/b.png", "in%20side/b.png",
                                "in side/../a.png", "a.png#part", "link.png"}) {
        EXPECT_TRUE(neighbours.Allows(address)) << address;
        EXPECT_TRUE(neighbours.Read(address)) << address;
    }
    EXPECT_TRUE(neighbours.Allows("missing.png"));
    EXPECT_FALSE(neighbours.Read("missing.png"));
    EXPECT_FALSE(neighbours.Read("in side"));
}

TEST_F(NeighbourTest, ReadsNothingElse)
{
    const Svg::Neighbours neighbours(m_folder);
    const std::string whole = (m_folder / "a.png").string();
    for (const std::string& address :
         {std::string("../secret.png"), std::string("%2e%2e/secret.png"), std::string("escape.png"),
          std::string("up/secret.png"), std::string("../drawing2.png"), std::string("."),
          std::string(), whole, "file://" + whole, std::string("file:a.png"),
          std::string("http://localhost/a.png"), std::string("//localhost/a.png"),
          std::string("..\\secret.png"), std::string("a.png%00.jpg"),
          std::string("in side/../../secret.png")}) {
        EXPECT_FALSE(neighbours.Allows(address)) << address;
        EXPECT_FALSE(neighbours.Read(address)) << address;
    }
    EXPECT_FALSE(Svg::Neighbours({}).Read("a.png"));
    EXPECT_FALSE(Svg::Neighbours(m_base / "nowhere").Read("a.png"));
}

TEST_F(NeighbourTest, ShowsThemInDrawings)
{
    const auto draw = [&](const std::string& address, const fs::path& folder) {
        return Picture(MakeDocument("<image href='" + address + "' width='100' height='50'/>"), 1.0,
                       folder);
    };
    const Picture shown = draw("a.png", m_folder);
    EXPECT_EQ(shown.GetArea(), 100 * 50);
    EXPECT_EQ(shown.GetNotices(), "");
    const std::vector<std::pair<std::string, std::string>> notices{
        {"../secret.png", "outside"},
        {"missing.png", "missing"},
        {"damaged.png", "cannot be read"}};
    for (const auto& [address, word] : notices) {
        const Picture blank = draw(address, m_folder);
        EXPECT_EQ(blank.GetArea(), 0.0) << address;
        EXPECT_NE(blank.GetNotices().find(word), std::string::npos) << address;
    }
    EXPECT_EQ(draw("a.png", {}).GetArea(), 0.0);
}

} // namespace
