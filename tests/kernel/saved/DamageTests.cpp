#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <kernel/DescribeSavedFile.h>
#include <kernel/FormatException.h>
#include <kernel/FutureVersionException.h>
#include <kernel/MemoryOutStream.h>
#include <kernel/SerialiseFile.h>

#include "SavedSamples.h"

namespace {

using namespace Samples;
using namespace std::string_literals;
using Kernel::FormatException;
using Kernel::InSerialiserFile;
using Bytes = std::vector<unsigned char>;

// Files written by hand, in the terms of docs/saved-values.md.

std::string Head(unsigned majorType, std::uint64_t argument) // always of nine bytes
{
    std::string head(1, static_cast<char>(majorType << 5 | 27U));
    for (int shift = 56; shift >= 0; shift -= 8)
        head += static_cast<char>(argument >> shift & 0xffU);
    return head;
}

std::string Text(const std::string& text)
{
    return char(0x60 + text.size()) + text;
}

/// \param items keys and values; \param count how many the map says that there are.
std::string Class(const std::string& uid, int version, int count, const std::string& items)
{
    return "\x83" + Text(uid) + char(version) + char(0xa0 + count) + items;
}

std::string Object(const std::string& uid, int version, int count, const std::string& items)
{
    return "\xd8\x1c" + Class(uid, version, count, items);
}

std::string Key(const std::string& tag)
{
    return Text(tag);
}

std::string File(const std::string& objects, const std::string& payloads = "\x80")
{
    return "\x8bRSV\r\n\x1a\x01" + Head(0, objects.size()) + objects + payloads;
}

Bytes ToBytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

Consolidated<Sample> LoadSample(const std::string& file)
{
    return InSerialiserFile(ToBytes(file)).ParseWithChecks<Sample>();
}

TEST(SavedDamage, ItemsOfTheWrongKindCountAsAbsent)
{
    const std::string number = "\xfb\x40\x08\x00\x00\x00\x00\x00\x00"s; // 3.0
    const std::string items[] = {
        Key("numb") + "\x03",          // an integer
        Key("numb") + "\xf9\x42\x00"s, // half precision
        Key("flag") + "\x01",          //
        Key("byte") + "\x19\x01\x00"s, // 256
        Key("byte") + "\x20",          // -1
        Key("smal") + "\x19\x80\x00"s, // 32768
        Key("whol") + "\x1b\xff\xff\xff\xff\xff\xff\xff\xff",
        Key("text") + "\xf6",                                        // null
        Key("shap") + "\x03",                                        // of no generation
        Key("side") + "\x04",                                        // bit 2
        Key("raw_") + "\x41x",                                       // too short
        Key("prop") + Text("0123456789"),                            // text
        Key("list") + "\x81" + number,                               // a general array
        Key("map_") + "\xd8\x56\x48" + "01234567",                   // one double
        Key("marg") + Class("Othr", 1, 0, ""),                       // refused by the class
        Key("marg") + "\x83\x01\x02\x03",                            //
        Key("chil") + "\x81\xf6",                                    // null among the elements
        Key("chil") + "\x81" + Object("Poin", 1, 0, ""),             // another class
        Key("next") + Object("None", 9, 1, Key("abcd") + "\x01"),    // unknown class
        Key("next") + Object("Box_", 1, 1, Key("name") + Text("b")), // plain
        Key("load") + "\x00"s,                                       // an integer
        Key("what") + "\x82\xa1" + Key("deep") + "\xf7\xc1\x05"s,    // unknown
    };
    const Consolidated<Sample> untouched = Sample::Create({});
    for (const std::string& item : items)
        EXPECT_EQ(LoadSample(File(Object("Smpl", 3, 1, item))), untouched)
            << testing::PrintToString(item);
    const auto three = LoadSample(File(Object("Smpl", 2, 2, items[21] + Key("numb") + number)));
    EXPECT_EQ(three->values.number, 3.0);
    EXPECT_EQ(three->loadedVersion, 2);
}

TEST(SavedDamage, ReferencesReachObjectsWithinItemsThatAreSkipped)
{
    const std::string flag = Key("flag") + "\xf5";
    const auto sample =
        LoadSample(File(Object("Smpl", 3, 2,
                               Key("what") + "\x81" + Object("Smpl", 3, 1, flag) + Key("chil") +
                                   "\x82\xd8\x1d\x01" + "\xd8\x1d\x01")));
    Values values;
    values.flag = true;
    ASSERT_EQ(sample->children.size(), 2U);
    EXPECT_EQ(sample->children[1], Sample::Create(values));
}

TEST(SavedDamage, DamageIsToldWithItsPlace)
{
    const std::string good = Object("Smpl", 3, 0, "");
    const std::string flag = Key("flag") + "\xf5";
    std::string many;
    for (int i = 0; i < 23; ++i)
        many += Key("k0" + std::to_string(10 + i % 22)) + "\x01"; // k010 is there twice
    struct Case
    {
        std::string file;
        std::size_t offset;
        std::string message;
    };
    const std::string wrong = "\x8bRSV\r\n\x1a\x02" + File(good).substr(8);
    const Case cases[] = {
        {"", 0, "not a file of saved values"},
        {"\x89PNG\r\n\x1a\n", 0, "not a file of saved values"},
        {wrong, 7, "the file is of another version of the format"},
        {File(good).substr(0, 12), 8, "the file ends within an item"},
        {"\x8bRSV\r\n\x1a\x01\x05" + good, 8, "the length of the objects is missing"},
        {"\x8bRSV\r\n\x1a\x01" + Head(0, 1000) + good, 8, "the objects are longer than the file"},
        {"\x8bRSV\r\n\x1a\x01" + Head(0, ~0ULL) + good, 8, "the objects are longer than the file"},
        {File(good, Head(4, 1) + "\x60"), 36, "a payload is not a string of bytes"},
        {File(good, Head(4, ~0ULL)), 27, "the payloads are not an array that the file can hold"},
        {File(good, "\x80z"), 28, "bytes behind the last payload"},
        {File(good + "\x01"), 27, "bytes behind the last object"},
        {File("\x01"), 17, "the file does not begin with an object"},
        {File("\xd8\x1c\x82"), 19, "an object is not an array of three"},
        {File("\xd8\x1c\x83" + Text("Smp")), 20, "a class identifier is not a text of four bytes"},
        {File("\xd8\x1c\x83" + Text("Smpl") + "\x20"), 25, "a class version is not a number"},
        {File("\xd8\x1c\x83" + Text("Smpl") + "\x01\x80"), 26,
         "the items of an object are not a map"},
        {File("\xd8\x1c\x83" + Text("Smpl") + "\x01" + Head(5, ~0ULL)), 26,
         "an object has more items than the file can hold"},
        {File(Object("Smpl", 3, 1, Text("flags") + "\xf5")), 27,
         "a key is not a text of four bytes"},
        {File(Object("Smpl", 3, 2, flag + flag)), 38, "the key flag is there twice"},
        {File(Object("Smpl", 3, 23, many)), 164, "the key k010 is there twice"},
        {File(Object("Smpl", 3, 1, Key("next") + "\xd8\x1d\x00"s)), 32,
         "a reference to no object before it"}, // itself
        {File(Object("Smpl", 3, 1, Key("next") + "\xd8\x1d\x01")), 32,
         "a reference to no object before it"},
        {File(Object("Smpl", 3, 1, Key("load") + "\xdaPAYL\x00"s)), 32, "no such payload"},
        {File(Object("Smpl", 3, 1, Key("list") + "\xd8\x56\x47" + "1234567")), 32,
         "an array of doubles is not made of doubles"},
        {File(Object("Smpl", 3, 1, Key("chil") + Head(4, 1ULL << 40))), 32,
         "an array is longer than the file"},
        {File(Object("Smpl", 3, 1, Key("text") + Head(3, ~0ULL))), 32,
         "the file ends within an item"},
        {File(Object("Smpl", 3, 1, Key("list") + "\x9f\xff")), 32, "an item of indefinite length"},
        {File(Object("Smpl", 3, 1, Key("list") + "\x1c")), 32, "a byte that begins no item"},
        {File(Object("Smpl", 3, 1, Key("list") + std::string(254, '\x81') + "\x80")), 286,
         "items are nested too deeply"},
        {File(Object("Smpl", 3, 1, Key("list") + std::string(100000, '\xc1') + "\x80")), 286,
         "items are nested too deeply"},
        {File(Object("Box_", 1, 0, "")), 17,
         "the object of class Box_ is of no known class or lacks what it needs"},
        {File(Object("None", 1, 0, "")), 17,
         "the object of class None is of no known class or lacks what it needs"},
        {File(Object("Poin", 1, 0, "")), 17, "the file holds an object of another class"},
    };
    for (const Case& item : cases) {
        try {
            LoadSample(item.file);
            ADD_FAILURE() << "nothing was thrown; expected: " << item.message;
        } catch (const FormatException& error) {
            EXPECT_EQ(error.what(), item.message);
            EXPECT_EQ(error.GetOffset(), item.offset) << item.message;
        }
    }
}

std::string MakeLargeFile()
{
    Values values;
    values.text = "a name";
    values.list = {1, 2, 3};
    values.hasMargin = true;
    const auto leaf = Sample::Create(values);
    Kernel::MemoryOutStream out;
    Kernel::SerialiseToStream(
        out, Sample::Create({}, {leaf, leaf}, leaf, Kernel::DelayLoadHolder({1, 2, 3, 4})));
    return std::string(out.GetText());
}

TEST(SavedDamage, NoCutOrChangedByteIsTakenForMoreThanItIs)
{
    const std::string file = MakeLargeFile();
    for (std::size_t size = 0; size < file.size(); ++size)
        EXPECT_THROW(LoadSample(file.substr(0, size)), FormatException) << size;
    int loaded = 0;
    for (std::size_t at = 0; at < file.size(); ++at) {
        for (const int change : {1, 2, 4, 8, 16, 32, 64, 128, 255}) {
            std::string changed = file;
            changed[at] = static_cast<char>(changed[at] ^ change);
            try {
                LoadSample(changed);
                ++loaded;
            } catch (const FormatException& error) {
                EXPECT_LE(error.GetOffset().value(), file.size());
            } catch (const Kernel::FutureVersionException&) {
            }
        }
    }
    EXPECT_GT(loaded, 500); // changed contents
}

TEST(SavedDamage, NewerVersionsAreRefusedWhereverTheyAre)
{
    const std::string newer = Object("Poin", 2, 0, "");
    for (const std::string& objects :
         {Object("Smpl", 4, 0, ""), Object("Smpl", 3, 1, Key("what") + newer)}) {
        try {
            LoadSample(File(objects));
            ADD_FAILURE() << "nothing was thrown";
        } catch (const Kernel::FutureVersionException& error) {
            EXPECT_EQ(error.GetFoundVersion(), error.GetKnownVersion() + 1);
        }
    }
}

} // namespace
