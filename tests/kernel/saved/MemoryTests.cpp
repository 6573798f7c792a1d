#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <kernel/MemoryOutStream.h>
#include <kernel/SerialiseFile.h>

#include <support/AllocationCount.h>
#include <support/TestFolder.h>

#include "SavedSamples.h"

namespace {

using namespace Samples;
namespace fs = std::filesystem;

TEST(SavedMemory, ManyObjectsTakeAtMostThreeTimesTheFile)
{
    const TestSupport::TestFolder folder;
    const fs::path path = folder / "points";
    std::vector<Consolidated<Point>> points;
    for (int i = 0; i < 50'000; ++i)
        points.push_back(Point::Create(i, 0.5 * i, -i));
    Consolidated<Cloud> cloud = Cloud::Create(std::move(points));
    TestSupport::ResetPeak();
    Kernel::SerialiseToFile(path, cloud);
    const auto size = static_cast<double>(fs::file_size(path));
    const double written = static_cast<double>(TestSupport::GetPeak()) / size;
    RecordProperty("written", std::to_string(written));
    EXPECT_LE(written, 3.0);

    cloud = nullptr;
    points = {};
    TestSupport::ResetPeak();
    cloud = Kernel::SerialiseFromFile<Cloud>(path);
    ASSERT_NE(cloud, nullptr);
    const double read = static_cast<double>(TestSupport::GetPeak()) / size;
    RecordProperty("read", std::to_string(read));
    EXPECT_LE(read, 3.0); // the objects themselves among it
}

TEST(SavedMemory, HostileFilesTakeASmallMultipleOfTheirSize)
{
    const auto head = [](unsigned majorType, std::uint64_t argument) {
        std::string bytes(1, static_cast<char>(majorType << 5 | 27U));
        for (int shift = 56; shift >= 0; shift -= 8)
            bytes += static_cast<char>(argument >> shift & 0xffU);
        return bytes;
    };
    const auto repeat = [](const std::string& text, int count) {
        std::string all;
        for (int i = 0; i < count; ++i)
            all += text;
        return all;
    };
    const std::string item = "\xd8\x1c\x83\x64Smpl\x01\xa1\x64";
    constexpr int Count = 100'000;
    std::string keys;
    for (int i = 0; i < Count; ++i)
        keys += "\x64" + std::to_string(10'000'000 + i).substr(4) + "\xf6"; // many are there twice
    const std::string tiny = "\xd8\x1c\x83\x64None\x01\xa0";
    const std::string objects[] = {
        item + "what" + head(4, Count) + repeat(tiny, Count),            // unknown classes
        item + "chil" + head(4, Count) + repeat("\xf6", Count),          // nulls
        item + "text" + head(3, 1ULL << 40U) + repeat("x", Count),       // longer than the file
        item + "chil" + head(4, Count * 2) + repeat("\x80", Count),      //
        item + "map_" + head(5, Count) + keys,                           //
        item + "list" + "\xd8\x56" + head(2, ~0ULL) + repeat("x", Count) //
    };
    for (const std::string& section : objects) {
        for (const std::string& payloads : {std::string("\x80"), head(4, 1ULL << 33U)}) {
            const std::string text =
                "\x8bRSV\r\n\x1a\x01" + head(0, section.size()) + section + payloads;
            const Kernel::InSerialiserFile file(
                std::vector<unsigned char>(text.begin(), text.end()));
            TestSupport::ResetPeak();
            try {
                file.ParseWithChecks();
            } catch (const Kernel::FormatException&) {
            }
            EXPECT_LE(TestSupport::GetPeak(), 20 * text.size() + 20'000);
        }
    }
}

} // namespace
