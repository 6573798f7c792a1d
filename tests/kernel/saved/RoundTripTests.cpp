#include <bit>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <kernel/MemoryOutStream.h>
#include <kernel/SerialiseFile.h>

#include "SavedSamples.h"

namespace {

using namespace Samples;
using Kernel::DelayLoadHolder;
using Kernel::InSerialiserFile;
using Bytes = std::vector<unsigned char>;
using WriteException = Kernel::OutStream::WriteException;

template<class Object>
Bytes Save(const Object& object, Kernel::SaveMode mode = Kernel::SaveMode::Full)
{
    Kernel::MemoryOutStream out;
    Kernel::SerialiseToStream(out, object, mode);
    return out.TakeData();
}

Bytes SavePlain(const Counted<Box>& box, Kernel::SaveMode mode = Kernel::SaveMode::Full)
{
    return Save(Kernel::NonCounted<const Kernel::Serialisable>(box.Get()), mode);
}

Values MakeValues()
{
    Values values;
    values.number = -0.0;
    values.flag = true;
    values.byte = 255;
    values.small = -32768;
    values.whole = std::numeric_limits<std::int32_t>::min();
    values.text = "π ≈ 3\0.14";
    values.shape = -1;
    values.sides = 0x80000003U;
    values.raw = {1.5F, -0.0F, std::numeric_limits<float>::infinity()};
    values.limit = 1.4142135623730951;
    values.cap = 2;
    values.on = true;
    values.list = {0.1, -0.0, std::numeric_limits<double>::infinity()};
    values.map = {{2, 0, 10, 0, 0.5, -20}};
    values.hasMargin = true;
    values.margin = {0.25, "wide"};
    return values;
}

TEST(Saved, EveryKindOfItemComesBackAndSavesToTheSameBytes)
{
    std::vector<Values> all(8, MakeValues());
    all[0] = Values();
    all[2].number = std::bit_cast<double>(0x7ff4000000abcdefU); // signalling, with a payload
    all[3].number = std::bit_cast<double>(0xfff8000000000001U);
    all[3].text = std::string(3'000'000, 'x') + "\xf4\x8f\xbf\xbf";
    all[4].text = std::string("not UTF-8: \xff\xc0\x80", 14);
    all[5].list.assign(100'000, 0.5);
    all[6].small = 32767;
    all[6].whole = std::numeric_limits<std::int32_t>::max();
    all[7].text = std::string("a\0b", 3);
    for (const Values& values : all) {
        const std::string expected = values.Describe();
        const Bytes bytes = Save(Sample::Create(values)); // the object is gone now
        const auto loaded = InSerialiserFile(bytes).ParseWithChecks<Sample>();
        EXPECT_TRUE(loaded->values.Describe() == expected);
        EXPECT_EQ(loaded->loadedVersion, 3);
        EXPECT_EQ(loaded, Sample::Create(values));
        EXPECT_TRUE(Save(loaded) == bytes);
    }
}

TEST(Saved, NestedObjectsComeBack)
{
    const auto leaf = Sample::Create(MakeValues());
    const auto twig = Sample::Create({}, {leaf, leaf}, leaf);
    const Counted<Box> box(new Box("outer"));
    box->inner = new Box("inner");
    box->inner->sample = twig;
    box->inner->inner = new Box("innermost");
    box->parts = {new Box("a"), box->inner, new Box("b")};
    box->sample = leaf;
    box->cache = "kept";
    const Bytes full = SavePlain(box);
    const auto loaded = InSerialiserFile(full).ParseWithChecks<Box>();
    EXPECT_EQ(loaded->inner->inner->name, "innermost");
    EXPECT_EQ(loaded->inner->sample, twig);
    ASSERT_EQ(loaded->parts.size(), 3U);
    EXPECT_EQ(loaded->parts[1]->sample, twig);
    EXPECT_NE(loaded->parts[1], loaded->inner); // plain objects have one holder
    EXPECT_EQ(loaded->parts[2]->name, "b");
    EXPECT_EQ(loaded->parts[2]->inner, nullptr);
    EXPECT_EQ(loaded->sample, leaf);
    EXPECT_EQ(loaded->cache, "kept");
    EXPECT_TRUE(SavePlain(loaded) == full);

    const Bytes partial = SavePlain(box, Kernel::SaveMode::Partial);
    EXPECT_LT(partial.size(), full.size());
    EXPECT_TRUE(InSerialiserFile(partial).ParseWithChecks<Box>()->cache.IsEmpty());
}

TEST(Saved, SharedObjectsAreWrittenOnce)
{
    Values values;
    values.text = std::string(5000, 's');
    std::vector<Consolidated<Sample>> children(1000, Sample::Create(values));
    const Bytes bytes = Save(Sample::Create({}, children, children.front()));
    EXPECT_LT(bytes.size(), 10'000U);
    children.clear();
    const auto loaded = InSerialiserFile(bytes).ParseWithChecks<Sample>();
    ASSERT_EQ(loaded->children.size(), 1000U);
    for (const auto& child : loaded->children)
        EXPECT_EQ(child, loaded->next);
    EXPECT_EQ(loaded->next, Sample::Create(values));
}

TEST(Saved, TenThousandObjects)
{
    std::vector<Consolidated<Point>> points;
    for (int i = 0; i < 10'000; ++i)
        points.push_back(Point::Create(i, 0.5 * i, -i));
    const Bytes bytes = Save(Cloud::Create(points));
    const auto loaded = InSerialiserFile(bytes).ParseWithChecks<Cloud>();
    EXPECT_TRUE(loaded->GetPoints() == points);
    points.clear();
    EXPECT_TRUE(Save(loaded) == bytes);
}

TEST(Saved, CyclesAndDeepNestingAreRefused)
{
    const auto sample = Sample::Create(MakeValues());
    auto& changed = const_cast<Sample&>(*sample);
    changed.next = sample;
    EXPECT_THROW(Save(sample), WriteException);
    changed.next = nullptr;

    const Counted<Box> box(new Box);
    box->inner = box;
    EXPECT_THROW(SavePlain(box), WriteException);
    box->inner = nullptr;
    Counted<Box> chain;
    for (int boxes = 1; boxes <= 127; ++boxes) { // each two levels, and one for its parts
        const Counted<Box> outer(new Box);
        outer->inner = chain;
        chain = outer;
    }
    EXPECT_TRUE(SavePlain(InSerialiserFile(SavePlain(chain)).ParseWithChecks<Box>()) ==
                SavePlain(chain));
    box->inner = chain;
    EXPECT_THROW(SavePlain(box), WriteException);
}

} // namespace
