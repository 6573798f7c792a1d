// The page of pictures in docs against what the library draws today.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <raster/Codecs.h>

namespace {

namespace fs = std::filesystem;

constexpr const char* Advice = ": if the change is meant, run scripts/gallery and look at the page";

std::string ReadText(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The files of the pictures by their names.
std::map<std::string, std::string> ReadPictures(const fs::path& folder)
{
    std::map<std::string, std::string> pictures;
    for (const auto& entry : fs::directory_iterator(folder / "pictures"))
        pictures[entry.path().filename().string()] = ReadText(entry.path());
    return pictures;
}

fs::path RunGallery(const std::string& name)
{
    const fs::path folder = fs::path(WORK) / name;
    fs::remove_all(folder);
    EXPECT_EQ(std::system((GALLERY " '" + folder.string() + "'").c_str()), 0);
    return folder;
}

/// The mean difference of the channels of two pictures in 8-bit steps; 255 when they differ in
/// kind.
double Compare(const std::string& a, const std::string& b)
{
    const auto read = [](const std::string& bytes) {
        return Raster::ReadPNG(
            {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
    };
    const auto first = read(a), second = read(b);
    const std::size_t row = std::size_t{first->GetWidth()} * first->GetBuffer()->GetPixelSize();
    if (first->GetWidth() != second->GetWidth() || first->GetHeight() != second->GetHeight() ||
        first->GetFormat() != second->GetFormat())
        return 255.0;
    double sum = 0.0;
    for (unsigned y = 0; y < first->GetHeight(); ++y)
        for (std::size_t i = 0; i < row; ++i)
            sum += std::abs(first->GetBuffer()->GetRow(y)[i] - second->GetBuffer()->GetRow(y)[i]);
    return sum / (static_cast<double>(row) * first->GetHeight());
}

TEST(Gallery, ShowsWhatTheLibraryDraws)
{
    const fs::path drawn = RunGallery("drawn");
    EXPECT_EQ(ReadText(drawn / "gallery.md"), ReadText(PROJECT "/docs/gallery.md")) << Advice;
    const auto ours = ReadPictures(drawn), kept = ReadPictures(PROJECT "/docs");
    ASSERT_EQ(ours.size(), kept.size()) << Advice;
    for (const auto& [name, bytes] : ours) {
        ASSERT_TRUE(kept.contains(name)) << name << Advice;
        // Room for the last bit of other mathematical libraries, no more.
        EXPECT_LE(Compare(bytes, kept.at(name)), 0.05) << name << Advice;
    }
    EXPECT_EQ(ours, ReadPictures(RunGallery("again"))) << "not the same bytes on every run";
}

/// The names of an enum in one of the project's headers.
std::vector<std::string> ReadEnumerators(const std::string& header, const std::string& name)
{
    const std::string text = ReadText(PROJECT "/" + header);
    std::smatch found;
    EXPECT_TRUE(
        std::regex_search(text, found, std::regex("enum (?:class )?" + name + "\\s*\\{([^}]*)\\}")))
        << name;
    std::vector<std::string> names;
    const std::string body = found[1].str();
    const std::regex line("\\n\\s*([A-Z]\\w*)\\s*=");
    for (std::sregex_iterator i(body.begin(), body.end(), line), end; i != end; ++i)
        names.push_back((*i)[1].str());
    return names;
}

TEST(Gallery, ShowsEveryValueOfTheEnums)
{
    struct Row
    {
        const char* header;
        const char* name;
        const char* scope;
        std::size_t count;
    };
    const std::vector<std::string> hidden{"Nameless", "None", "M8", "M16", "MF"};
    const std::string page = ReadText(PROJECT "/docs/gallery.md");
    for (const Row& row : std::initializer_list<Row>{
             {"renderer/paint/FillBlendMode.h", "BlendMode", "FillBlendMode", 33},
             {"raster/Format.h", "ResamplerType", "Raster::ResamplerType", 4},
             {"raster/Format.h", "ExtendType", "Raster::ExtendType", 5},
             {"raster/Format.h", "Format", "Raster::Format", 11},
             {"renderer/core/RenderTarget.h", "CompositeInit", "RenderTarget::CompositeInit", 4},
             {"renderer/paint/FillGradient.h", "FillGradientType", "FillGradient", 4},
             {"renderer/paint/FillGradient.h", "Spread", "FillGradient", 3},
             {"renderer/paint/LineStyle.h", "LineCap", "LineStyle", 3},
             {"renderer/paint/LineStyle.h", "LineJoin", "LineStyle", 4}}) {
        const auto names = ReadEnumerators(row.header, row.name);
        EXPECT_EQ(names.size(), row.count) << row.name;
        for (const std::string& name : names) {
            const bool isHidden = std::find(hidden.begin(), hidden.end(), name) != hidden.end();
            const std::regex value(std::string(row.scope) + "::" + name + "\\b");
            EXPECT_TRUE(isHidden || std::regex_search(page, value)) << row.scope << "::" << name;
        }
    }
}

} // namespace
