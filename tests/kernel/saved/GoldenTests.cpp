#include <bit>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include <kernel/DescribeSavedFile.h>
#include <kernel/MemoryOutStream.h>
#include <kernel/SerialiseFile.h>

#include "SavedSamples.h"

namespace {

using namespace Samples;

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Counted<Box> MakeBox()
{
    Values values;
    values.number = std::bit_cast<double>(0x7ff8000000000123U);
    values.flag = true;
    values.byte = 200;
    values.small = -300;
    values.whole = 70'000;
    values.text = "Grün \"10 €\"";
    values.shape = -1;
    values.sides = 0x80000001U;
    values.raw = {1, 2, 3};
    values.limit = 1.4142135623730951;
    values.cap = 2;
    values.list = {-0.0, 1e300, 0.1};
    values.map = {{2, 0, 10, 0, 0.5, -20}};
    values.hasMargin = true;
    values.margin = {0.25, "wide"};
    const auto leaf = Sample::Create(values, {}, nullptr, Kernel::DelayLoadHolder({9, 8, 7}));
    values.text = "not UTF-8: \xff";
    const auto other =
        Sample::Create(values, {leaf, leaf}, leaf,
                       Kernel::DelayLoadHolder(Kernel::DelayLoadHolder::Bytes(30, 'p')));
    const Counted<Box> box(new Box("outer"));
    box->inner = new Box("");
    box->inner->sample = other;
    box->parts = {new Box("part")};
    box->sample = leaf;
    return box;
}

/// The file must stay as it is, so that files of earlier versions stay readable. Set
/// RENDERER_UPDATE_REFERENCES to write it anew.
TEST(SavedGolden, FilesKeepTheirBytes)
{
    const std::filesystem::path path = std::filesystem::path(SAVED_GOLDEN) / "box.saved";
    const auto box = MakeBox();
    if (std::getenv("RENDERER_UPDATE_REFERENCES"))
        Kernel::SerialiseToFile(path, *box);
    Kernel::MemoryOutStream out;
    Kernel::SerialiseToStream(out, *box);
    EXPECT_TRUE(out.GetText() == ReadFile(path));
    const auto loaded = Kernel::SerialiseFromFile<Box>(path);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->inner->sample->values.text, "not UTF-8: \xff");
    EXPECT_EQ(loaded->inner->sample->payload.Get().size(), 30U);
}

TEST(SavedGolden, DescriptionsControlNoTerminal)
{
    const Kernel::IDTag tag(0x1b5b324a), next(0x9b0a7f21);
    EXPECT_EQ(tag.ToString() + next.ToString(), "\\x1b[2J\\x9b\\x0a\\x7f!");
    Box box = *MakeBox();
    const auto sample = Kernel::MakeCounted<Sample>();
    sample->values.text = "Grün \u009b2J \x1b \u00a0 \U0001f600";
    box.sample = Kernel::Consolidated<Sample>(Counted<const Sample>(sample));
    Kernel::MemoryOutStream file, out;
    Kernel::SerialiseToStream(file, box);
    Kernel::DescribeSavedFile(
        *Kernel::FileStore::FromMemory(
            std::make_shared<const std::vector<unsigned char>>(file.GetData())),
        out);
    EXPECT_NE(out.GetText().find("\"Grün \\xc2\\x9b2J \\x1b \u00a0 \U0001f600\""),
              std::string_view::npos);
}

TEST(SavedGolden, DescriptionTellsEverything)
{
    Kernel::MemoryOutStream out;
    Kernel::DescribeSavedFile(
        *Kernel::FileStore::Open(std::filesystem::path(SAVED_GOLDEN) / "box.saved"), out);
    const std::string text(out.GetText());
    for (const char* line : {
             "#0 Box_ version 1, Box\n",
             "\n  innr  #1 Box_ version 1, Box\n",
             "\n      numb  NaN 0x7ff8000000000123\n",
             "\n      smal  -300\n",
             "\n      text  12 bytes: 6e 6f 74", // of wrong UTF-8
             "\n      prop  10 bytes: cd 3b 7f 66 9e a0 f6 3f 02 00\n",
             "\n      list  3 doubles: -0, 1e+300, 0.1\n",
             "\n      marg  Marg version 1\n        widt  0.25\n",
             "\n      chil  array of 2\n        #3 Smpl version 3, Sample\n",
             "\n          text  \"Grün \\\"10 €\\\"\"\n",
             "\n        -> #3\n      next  -> #3\n      load  payload 1, 30 bytes\n",
             "\n  smpl  -> #3\n  cach  \"\"\n",
             " bytes, 2 payloads\n",
         })
        EXPECT_NE(text.find(line), std::string::npos) << line << "in\n" << text;
}

/// Whatever is lost behind a byte, all that lies before it is told.
TEST(SavedGolden, DescriptionsOfCutFilesGoAsFarAsTheFile)
{
    const std::string path = std::string(SAVED_GOLDEN) + "/box.saved";
    const std::string whole = ReadFile(path);
    const auto describe = [](std::string_view file, std::uint64_t& damage) {
        Kernel::MemoryOutStream out;
        damage = 0;
        try {
            const auto bytes =
                std::make_shared<const std::vector<unsigned char>>(file.begin(), file.end());
            Kernel::DescribeSavedFile(
                *Kernel::FileStore::FromMemory(bytes, Kernel::FileStore::Damaged::Kept), out);
        } catch (const Kernel::FormatException& error) {
            damage = error.GetOffset().value();
        }
        return std::string(out.GetText());
    };
    std::uint64_t damage = 0;
    const std::string text = describe(whole, damage);
    EXPECT_EQ(damage, 0U);
    std::size_t shown = 0;
    for (std::size_t size = 17; size < whole.size(); ++size) {
        std::string part = describe(std::string_view(whole).substr(0, size), damage);
        EXPECT_GE(damage, 17U);
        EXPECT_LE(damage, size);
        if (part.find(", which is missing") == std::string::npos) {
            EXPECT_TRUE(text.starts_with(part)) << size << '\n' << part;
            EXPECT_GE(part.size(), shown) << size;
        }
        shown = part.size();
    }
    const auto lastLine = text.rfind('\n', text.size() - 2) + 1;
    EXPECT_GE(shown, lastLine); // the payloads were cut, the objects not
}

} // namespace
