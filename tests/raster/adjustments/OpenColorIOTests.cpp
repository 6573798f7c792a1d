#include <cmath>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <raster/adjustments/InvertAdjustment.h>
#include <raster/adjustments/OpenColorIOAdjustment.h>
#include <support/TestFolder.h>

using namespace Raster;

namespace {

const std::string Configuration = R"(ocio_profile_version: 1
search_path: tables
roles:
  default: plain
displays:
  screen:
    - !<View> {name: film, colorspace: encoded}
colorspaces:
  - !<ColorSpace>
    name: plain
    isdata: false
  - !<ColorSpace>
    name: encoded
    from_reference: !<ExponentTransform> {value: [0.5, 0.5, 0.5, 1]}
  - !<ColorSpace>
    name: mixed
    from_reference: !<MatrixTransform> {matrix: [0, 2, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1], offset: [0, 0, 0.25, 0]}
  - !<ColorSpace>
    name: tabled
    from_reference: !<FileTransform> {src: table.spi1d, interpolation: linear}
  - !<ColorSpace>
    name: lost
    from_reference: !<FileTransform> {src: none.spi1d, interpolation: linear}
)";

class OpenColorIO : public testing::Test
{
protected:
    OpenColorIO()
    {
        std::filesystem::create_directory(m_folder / "tables");
        m_folder.Write("tables/table.spi1d",
                       "Version 1\nFrom 0.0 1.0\nLength 3\nComponents 1\n{\n0.0\n0.2\n1.0\n}\n");
        m_folder.Write("config.ocio", Configuration);
    }

    std::filesystem::path GetFile() const { return m_folder / "config.ocio"; }

    /// As targets take it.
    Kernel::Counted<ColourTransform> Make(const std::string& destination)
    {
        return OpenColorIOAdjustment::Create({GetFile(), "plain", destination, "", ""});
    }

    static std::vector<PixelRGBAF> Apply(const ColourTransform& transform)
    {
        std::vector<PixelRGBAF> pixels(130, {{0.25f, 0.5f, 0.75f, 0.4f}});
        transform.Apply(pixels.data(), 67, {});
        transform.Apply(pixels.data() + 67, 63, {});
        return pixels;
    }

    TestSupport::TestFolder m_folder;
};

} // namespace

TEST_F(OpenColorIO, DoesWhatTheConfigurationSays)
{
    struct Case
    {
        const char* destination;
        PixelRGBAF expected;
    };
    const float half = std::sqrt(0.5f);
    for (const Case& c :
         {Case{"encoded", {{0.5f, half, std::sqrt(0.75f), 0.4f}}},
          Case{"mixed", {{1, 0.25f, 1, 0.4f}}}, Case{"tabled", {{0.1f, 0.2f, 0.6f, 0.4f}}}}) {
        const auto transform = Make(c.destination);
        EXPECT_FALSE(transform->IsIdentity());
        for (const PixelRGBAF& pixel : Apply(*transform)) {
            for (std::size_t i = 0; i < 4; ++i)
                EXPECT_NEAR(pixel[i], c.expected[i], 2e-5) << c.destination;
            EXPECT_EQ(pixel, Apply(*transform)[0]);
        }
    }
    const auto view = OpenColorIOAdjustment::Create({GetFile(), "plain", "", "screen", "film"});
    EXPECT_EQ(Apply(*view), Apply(*Make("encoded")));
    std::vector<PixelRGBAF> odd{{{NAN, INFINITY, -INFINITY, 1}}};
    Make("tabled")->Apply(odd.data(), 1, {});
    EXPECT_EQ(odd[0], (PixelRGBAF{{0, 0, 0, 1}}));
}

TEST_F(OpenColorIO, ComparesWhatIsComputed)
{
    EXPECT_TRUE(Make("plain")->IsIdentity());
    EXPECT_TRUE(Make("mixed")->IsEqual(*Make("mixed")));
    EXPECT_EQ(Make("mixed")->GetHash(), Make("mixed")->GetHash());
    EXPECT_FALSE(Make("mixed")->IsEqual(*Make("encoded")));
    EXPECT_NE(Make("mixed")->GetHash(), Make("encoded")->GetHash());
    EXPECT_FALSE(Make("mixed")->IsEqual(InvertAdjustment()));
    EXPECT_FALSE(InvertAdjustment().IsEqual(*Make("mixed")));
}

TEST_F(OpenColorIO, RefusesWhatItCannotDo)
{
    EXPECT_THROW(Make("nowhere"), Kernel::FormatException);
    EXPECT_THROW(OpenColorIOAdjustment::Create({GetFile(), "plain", "", "screen", "none"}),
                 Kernel::FormatException);
    EXPECT_THROW(OpenColorIOAdjustment::Create({m_folder / "none.ocio", "plain", "mixed", "", ""}),
                 Kernel::FormatException);
    EXPECT_THROW(Make("lost"), Kernel::FormatException);
    for (const std::size_t size : {0u, 1u, 30u, 200u}) {
        m_folder.Write("config.ocio", Configuration.substr(0, size));
        EXPECT_THROW(Make("mixed"), Kernel::FormatException) << size;
    }
}
