#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <csignal>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include <kernel/DescribeSavedFile.h>
#include <kernel/FormatException.h>
#include <kernel/FutureVersionException.h>
#include <kernel/MemoryOutStream.h>
#include <kernel/SerialiseFile.h>

#include <support/TestFolder.h>

#include "SavedSamples.h"

namespace {

namespace fs = std::filesystem;
using namespace Samples;
using Kernel::DelayLoadHolder;
using Kernel::InSerialiserFile;
using WriteException = Kernel::OutStream::WriteException;

class SavedFile : public testing::Test
{
protected:
    std::string Read() const { return m_folder.Read("file"); }

    TestSupport::TestFolder m_folder;
    const fs::path m_path = m_folder / "file";
};

Consolidated<Sample> MakeSample()
{
    Values values;
    values.text = "kept";
    return Sample::Create(values);
}

TEST_F(SavedFile, FailedSavesLeaveTheOldFileWhole)
{
    const auto sample = MakeSample();
    Kernel::SerialiseToFile(m_path, sample);
    const std::string before = Read();
    EXPECT_EQ(Kernel::SerialiseFromFile<Sample>(m_path), sample);

    Values large;
    large.text = std::string(300'000, 'x');
    rlimit limits = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limits), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limited = {100'000, limits.rlim_max}; // stands for a disk that fills up
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    EXPECT_THROW(Kernel::SerialiseToFile(m_path, Sample::Create(large)), WriteException);
    setrlimit(RLIMIT_FSIZE, &limits);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(Read(), before);

    const Counted<Box> cycle(new Box);
    cycle->inner = cycle;
    EXPECT_THROW(Kernel::SerialiseToFile(m_path, *cycle), WriteException);
    cycle->inner = nullptr;
    EXPECT_EQ(Read(), before);
    EXPECT_EQ(m_folder.CountFiles(), 1);

    EXPECT_THROW(Kernel::SerialiseToFile("/sys/saved", sample), WriteException); // read-only
    EXPECT_THROW(Kernel::SerialiseToFile("/dev/full", sample), WriteException);
}

TEST_F(SavedFile, WhatCannotBeLoadedGivesAnEmptyReference)
{
    const auto load = [this] { return Kernel::SerialiseFromFile<Sample>(m_path); };
    EXPECT_EQ(load(), nullptr);
    EXPECT_THROW(InSerialiserFile(m_path).ParseWithChecks(), std::system_error);
    EXPECT_EQ(Kernel::SerialiseFromFile<Sample>(m_folder.GetPath()), nullptr);

    Kernel::SerialiseToFile(m_path, MakeSample());
    const std::string good = Read();
    EXPECT_THROW(Kernel::SerialiseToFile(m_path, Kernel::Consolidated<Sample>()), WriteException);
    EXPECT_EQ(Read(), good);
    EXPECT_NE(load(), nullptr);
    EXPECT_NE(Kernel::SerialiseFromFile<Kernel::SharedSerialisable>(m_path), nullptr);
    EXPECT_EQ(Kernel::SerialiseFromFile<Box>(m_path), nullptr);
    EXPECT_EQ(Kernel::SerialiseFromFile<Point>(m_path), nullptr);

    m_folder.Write("file", good.substr(0, good.size() - 1));
    EXPECT_EQ(load(), nullptr);
    std::string newer = good;
    newer[newer.find("Smpl") + 4] = 4;
    m_folder.Write("file", newer);
    EXPECT_EQ(load(), nullptr);
    EXPECT_THROW(InSerialiserFile(m_path).ParseWithChecks(), Kernel::FutureVersionException);
}

TEST_F(SavedFile, PayloadsAreReadWhenAskedForAndOutliveTheFile)
{
    DelayLoadHolder::Bytes bytes(500'000);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(i * i >> 3U);
    const DelayLoadHolder payload(bytes);
    const DelayLoadHolder empty((DelayLoadHolder::Bytes()));
    const auto twin = Sample::Create({}, {}, nullptr, payload);
    Kernel::SerialiseToFile(
        m_path, Sample::Create({}, {Sample::Create({}, {twin}, nullptr, empty)}, twin, payload));
    EXPECT_LT(fs::file_size(m_path), bytes.size() + 1000); // once

    const auto loaded = Kernel::SerialiseFromFile<Sample>(m_path);
    const DelayLoadHolder holder = loaded->payload;
    EXPECT_EQ(holder, loaded->next->payload);
    EXPECT_FALSE(holder.IsLoaded());
    EXPECT_EQ(holder.GetSize(), bytes.size());
    const std::string before = Read();
    Kernel::SerialiseToFile(m_path, loaded); // over the file that the payload is read from
    EXPECT_FALSE(holder.IsLoaded());
    EXPECT_TRUE(Read() == before);
    fs::remove(m_path);

    std::atomic<int> right{0};
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] { right += holder.Get() == bytes; });
    }
    EXPECT_EQ(right, 4);
    EXPECT_TRUE(holder.IsLoaded());
    EXPECT_TRUE(loaded->children[0]->payload.Get().empty());
    EXPECT_FALSE(loaded->children[0]->payload.IsEmpty());
}

TEST_F(SavedFile, OnlyLargePayloadsKeepTheFileOpen)
{
    const auto countOpenFiles = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), {});
    };
    const auto load = [this](std::size_t size) {
        const DelayLoadHolder::Bytes bytes(size);
        Kernel::SerialiseToFile(m_path, Sample::Create({}, {}, nullptr, DelayLoadHolder(bytes)));
        return Kernel::SerialiseFromFile<Sample>(m_path);
    };
    const auto before = countOpenFiles();
    const auto small = load(60'000);
    EXPECT_EQ(countOpenFiles(), before);
    fs::resize_file(m_path, 1000);
    EXPECT_EQ(small->payload.Get(), DelayLoadHolder::Bytes(60'000));

    constexpr int MaxKept = 256;
    std::vector<Consolidated<Sample>> all;
    for (int i = 0; i < MaxKept + 2; ++i) {
        all.push_back(load(100'000 + std::size_t(i)));
        EXPECT_EQ(countOpenFiles() - before, std::min(i + 1, MaxKept));
    }
    EXPECT_EQ(all.back()->payload.Get().size(), 100'000U + MaxKept + 1);
    all.clear();
    EXPECT_EQ(countOpenFiles(), before);
}

TEST_F(SavedFile, FilesThatAreOverwrittenWhileTheyAreOpenGiveNoPayloads)
{
    const auto save = [](const fs::path& path, const char* text, unsigned char fill) {
        Values values;
        values.text = text;
        const DelayLoadHolder payload(DelayLoadHolder::Bytes(100'000, fill));
        Kernel::SerialiseToFile(path, Sample::Create(values, {}, nullptr, payload));
    };
    const auto overwrite = [&](const char* bytesOf) {
        const auto before = fs::last_write_time(m_path);
        m_folder.Write("file", m_folder.Read(bytesOf));
        fs::last_write_time(m_path, before + std::chrono::seconds(1));
    };
    save(m_path, "one", 1);
    save(m_folder / "same", "one", 1);
    save(m_folder / "other", "two", 2);
    const auto loaded = Kernel::SerialiseFromFile<Sample>(m_path);
    unsigned char byte = 0;
    overwrite("same");
    loaded->payload.Read(50'000, {&byte, 1});
    EXPECT_EQ(byte, 1);
    overwrite("other");
    EXPECT_THROW(loaded->payload.Read(50'000, {&byte, 1}), Kernel::FormatException);
    EXPECT_THROW(Kernel::SerialiseToFile(m_folder / "copy", loaded), Kernel::FormatException);
    EXPECT_FALSE(fs::exists(m_folder / "copy"));
    overwrite("same");
    loaded->payload.Read(50'000, {&byte, 1});
    EXPECT_EQ(byte, 1);
    fs::resize_file(m_path, 1000);
    EXPECT_THROW(loaded->payload.Get(), Kernel::FormatException);
}

TEST_F(SavedFile, EightThreadsLoadOneObjectPerValue)
{
    constexpr int Threads = 8;
    std::vector<Consolidated<Point>> points;
    for (int i = 0; i < 300; ++i)
        points.push_back(Point::Create(i % 100, 0, i / 100 * 1000));
    Kernel::SerialiseToFile(m_path, Cloud::Create(std::move(points)));
    points.clear();
    const std::size_t before = Point::GetTypeSharedClassProperties().GetInstanceCount();
    for (int round = 0; round < 20; ++round) {
        std::vector<Consolidated<Cloud>> clouds(Threads);
        {
            std::vector<std::jthread> threads;
            for (auto& cloud : clouds)
                threads.emplace_back([&] { cloud = Kernel::SerialiseFromFile<Cloud>(m_path); });
        }
        ASSERT_NE(clouds[0], nullptr);
        for (const auto& cloud : clouds)
            EXPECT_EQ(cloud, clouds[0]);
    }
    EXPECT_EQ(Point::GetTypeSharedClassProperties().GetInstanceCount(), before);
}

TEST(SavedClasses, RecordsAreFoundByIdentifier)
{
    const auto* record = Kernel::ClassPropertiesBase::Find("Smpl");
    EXPECT_EQ(record, &Sample::GetTypeSharedClassProperties());
    EXPECT_EQ(record->GetVersion(), 3);
    EXPECT_TRUE(record->IsShared());
    EXPECT_FALSE(Kernel::ClassPropertiesBase::Find("Box_")->IsShared());
    EXPECT_EQ(Kernel::ClassPropertiesBase::Find("none"), nullptr);
    EXPECT_THROW(Kernel::ClassProperties("Smpl", &Box::CreateObject, 1, nullptr, nullptr, "Second"),
                 std::logic_error);

    const auto sample = MakeSample();
    const auto equal = Kernel::MakeCounted<Sample>();
    EXPECT_EQ(Kernel::SharedClassProperties::FindConsolidatedObject(*equal), nullptr);
    equal->values.text = "kept";
    EXPECT_EQ(Kernel::SharedClassProperties::FindConsolidatedObject(*equal), sample);
    EXPECT_FALSE(Kernel::SharedClassProperties::AddAsConsolidated(equal));
    EXPECT_TRUE(Kernel::SharedSerialisable::Equals(equal.Get(), sample.Get()));
    EXPECT_FALSE(Kernel::SharedSerialisable::Equals(equal.Get(), nullptr));
}

TEST(SavedClasses, GenerationsOfAnEnum)
{
    class Growing : public Kernel::EnumSerialiser
    {
    public:
        void Add(std::vector<Kernel::EnumEntry> entries)
        {
            RegisterEnumSet(entries.data(), entries.size());
        }
    };
    Growing growing;
    EXPECT_FALSE(growing.IsLegal(0));
    growing.Add({{4, 0}, {0, 0}});
    growing.Add({{1, 0}, {0, 0}, {4, 0}});
    EXPECT_THROW(growing.Add({{0, 0}, {1, 0}, {2, 0}}), std::logic_error);
    EXPECT_EQ(growing.GetGenerationCount(), 2U);
    EXPECT_EQ(growing.GetGeneration(0).size(), 2U);
    for (const std::int64_t value : {0, 1, 4})
        EXPECT_TRUE(growing.IsLegal(value));
    for (const std::int64_t value : {-1L, 2L, 5L, 1L << 32U})
        EXPECT_FALSE(growing.IsLegal(value));
}

TEST(SavedClasses, ZeroesHashAlike)
{
    const auto hash = [](double value) {
        Kernel::HashAccumulator accumulator;
        accumulator.Add(value);
        return accumulator.GetHash();
    };
    Kernel::HashAccumulator fourBytes;
    fourBytes.AddToHash("\0\0\0", 4);
    EXPECT_EQ(hash(0.0), hash(-0.0));
    EXPECT_EQ(hash(0.0), fourBytes.GetHash());
    EXPECT_NE(hash(0.0), hash(5e-324));
    const auto hashBytes = [](std::string_view bytes) {
        Kernel::HashAccumulator accumulator;
        accumulator.AddToHash(bytes.data(), bytes.size());
        return accumulator.GetHash();
    };
    EXPECT_NE(hashBytes(std::string(9, '\0')), hashBytes(std::string(10, '\0')));
}

} // namespace
