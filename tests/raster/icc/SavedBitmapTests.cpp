#include <algorithm>
#include <atomic>
#include <cstring>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include <kernel/Dispatch.h>
#include <kernel/FormatException.h>
#include <kernel/InSerialiser.h>
#include <kernel/InSerialiserFile.h>
#include <kernel/MemoryOutStream.h>
#include <kernel/OutSerialiser.h>
#include <kernel/SavedClass.h>
#include <kernel/SerialiseFile.h>
#include <raster/Codecs.h>
#include <raster/CompressedRasterData.h>
#include <raster/Pixel.h>
#include <raster/RasterBrush.h>

#include "TestProfiles.h"

namespace {

using namespace Raster;
using Kernel::Counted;
using Kernel::InSerialiserFile;
using RasterTest::Bytes;
using Bitmap = Counted<const DynamicBitmap>;

constexpr Format AllFormats[] = {Format::RGBA8,  Format::RGBA16, Format::IA8, Format::IA16,
                                 Format::CMYKA8, Format::LABA16, Format::M8,  Format::M16,
                                 Format::RGBAUF, Format::MF};

/// A picture of slopes, noise and flat parts, of every bit pattern.
Counted<DynamicBuffer> MakePicture(Format format, unsigned width, unsigned height)
{
    const auto buffer = DynamicBuffer::Create(format, width, height);
    std::mt19937 random(width * 31 + height);
    for (unsigned y = 0; y < height; ++y) {
        unsigned char* const row = buffer->GetRow(y);
        for (unsigned i = 0; i < width * buffer->GetPixelSize(); ++i)
            row[i] = static_cast<unsigned char>(y % 16 == 7 ? random() : y % 16 < 7 ? i + y : 9);
    }
    return buffer;
}

bool AreEqual(const DynamicBuffer& a, const DynamicBuffer& b)
{
    const std::size_t size = std::size_t{a.GetWidth()} * a.GetPixelSize();
    bool equal = a.GetFormat() == b.GetFormat() && a.GetWidth() == b.GetWidth() &&
                 a.GetHeight() == b.GetHeight();
    for (unsigned y = 0; equal && y < a.GetHeight(); ++y)
        equal = std::memcmp(a.GetRow(y), b.GetRow(y), size) == 0;
    return equal;
}

Bytes Save(const Bitmap& bitmap)
{
    Kernel::MemoryOutStream out;
    Kernel::SerialiseToStream(out, Kernel::NonCounted<const Kernel::Serialisable>(bitmap.Get()));
    return out.TakeData();
}
Bitmap Load(Bytes bytes)
{
    return InSerialiserFile(std::move(bytes)).ParseWithChecks<DynamicBitmap>();
}

TEST(SavedBitmap, AnyFormatAndSizeComesBackToTheBit)
{
    for (const Format format : AllFormats) {
        const auto profile = RasterTest::MakeFullSet().GetProfile(format);
        for (const auto& [width, height] : {std::pair{1U, 1U},
                                            {1U, 300U},
                                            {700U, 1U},
                                            {63U, 65U},
                                            {600U, 700U}}) { // the last in bands
            const auto buffer = MakePicture(format, width, height);
            const Bytes bytes = Save(Kernel::MakeCounted<DynamicBitmap>(buffer, profile));
            const Bitmap loaded = Load(bytes);
            EXPECT_EQ(loaded->GetFormat(), format);
            EXPECT_EQ(loaded->GetWidth(), width);
            EXPECT_EQ(loaded->GetHeight(), height);
            EXPECT_EQ(loaded->GetProfile(), profile);
            EXPECT_TRUE(Save(loaded) == bytes);
            EXPECT_FALSE(loaded->IsDecoded());
            ASSERT_TRUE(loaded->GetBuffer());
            EXPECT_TRUE(AreEqual(*loaded->GetBuffer(), *buffer));
            EXPECT_TRUE(Save(loaded) == bytes);
        }
    }
}

TEST(SavedBitmap, PicturesOfFilesAreKeptAsTheFiles)
{
    const auto buffer = MakePicture(Format::RGBA16, 40, 30);
    Kernel::MemoryOutStream png;
    WritePNG(png, DynamicBitmap(buffer, RasterTest::MakeProfile(RasterTest::MakeWideRGBBytes(2))));
    const Bytes file = png.TakeData();
    const auto data = Kernel::MakeCounted<const CompressedRasterData>(file);
    const Bitmap bitmap = data->Decode();
    const Bytes bytes = Save(bitmap);
    EXPECT_TRUE(std::search(bytes.begin(), bytes.end(), file.begin(), file.end()) != bytes.end());
    const Bitmap loaded = Load(bytes);
    EXPECT_EQ(loaded->GetProfile(), bitmap->GetProfile());
    ASSERT_TRUE(loaded->GetBuffer());
    EXPECT_TRUE(AreEqual(*loaded->GetBuffer(), *bitmap->GetBuffer()));
    EXPECT_FALSE(loaded->GetCompressedData()->IsDeflated());
    EXPECT_TRUE(loaded->GetCompressedData()->GetBytes().Get() == file);
    EXPECT_THROW(CompressedRasterData(Bytes(file.begin(), file.begin() + 90)).Decode(),
                 Kernel::FormatException);
}

/// Bitmaps of one file that share their bytes share what is decoded from them, whoever is first.
class Pair : public Kernel::PlainSavedClass<Pair>
{
public:
    void Save(Kernel::OutSerialiser& out) const override
    {
        out.SaveObject("frst", first);
        out.SaveObject("scnd", second);
    }
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short) override
    {
        return in.LoadObjectI("frst", first) && in.LoadObjectI("scnd", second);
    }
    static const Kernel::ClassProperties& GetTypeClassProperties()
    {
        static const auto& record =
            *new Kernel::ClassProperties("TPar", &CreateObject, 1, nullptr, nullptr, "Pair");
        return record;
    }
    Counted<DynamicBitmap> first, second;
};
[[maybe_unused]] const auto& registration = Pair::GetTypeClassProperties();

TEST(SavedBitmap, SharedPixelsAreWrittenAndDecodedOnce)
{
    const auto pair = Kernel::MakeCounted<Pair>();
    pair->first = Kernel::MakeCounted<DynamicBitmap>(
        MakePicture(Format::RGBA8, 300, 200),
        RasterTest::MakeProfile(RasterTest::MakeWideRGBBytes(2)));
    const auto plain = pair->first->WithProfile({});
    const Bytes one = Save(pair->first);
    EXPECT_EQ(plain->GetCompressedData(), pair->first->GetCompressedData());
    pair->second = pair->first;
    Kernel::MemoryOutStream out;
    Kernel::SerialiseToStream(out, *pair);
    EXPECT_LT(out.GetData().size(), one.size() + 200);
    const auto loaded = InSerialiserFile(out.TakeData()).ParseWithChecks<Pair>();
    EXPECT_EQ(loaded->second->GetProfile(), pair->first->GetProfile());
    const DynamicBuffer* seen[4] = {};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&, i] { seen[i] = (i % 2 ? loaded->first : loaded->second)->GetBuffer().Get(); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(seen[0] && AreEqual(*seen[0], *pair->first->GetBuffer()));
    for (const DynamicBuffer* buffer : seen)
        EXPECT_EQ(buffer, seen[0]);
}

/// Threads of the pool wait for the pixels while somebody else decodes them.
TEST(SavedBitmap, FirstUseFromManyThreadsAtOnce)
{
    const auto buffer = MakePicture(Format::RGBA8, 600, 700);
    const Bytes bytes = Save(Kernel::MakeCounted<DynamicBitmap>(buffer));
    for (int round = 0; round < 30; ++round) {
        const Bitmap loaded = Load(bytes);
        std::atomic<bool> go{false};
        std::thread other([&] {
            while (!go)
                std::this_thread::yield();
            loaded->GetBuffer();
        });
        Kernel::Dispatch::DispatchParallelFor(
            [&](unsigned) {
                go = true;
                EXPECT_TRUE(loaded->GetBuffer());
            },
            8);
        other.join();
        EXPECT_TRUE(AreEqual(*loaded->GetBuffer(), *buffer));
    }
}

TEST(SavedBitmap, TipsOfBrushesAreComparedWithoutDecoding)
{
    const auto makeBrush = [](unsigned width) {
        return RasterBrush(Kernel::MakeCounted<DynamicBitmap>(MakePicture(Format::M8, width, 9)));
    };
    const auto load = [](const RasterBrush& brush) {
        Kernel::MemoryOutStream out;
        Kernel::SerialiseToStream(out, brush);
        return InSerialiserFile(out.TakeData()).ParseWithChecks<RasterBrush>();
    };
    const auto a = load(makeBrush(20)), b = load(makeBrush(20)), other = load(makeBrush(21));
    EXPECT_TRUE(*a == *b);
    EXPECT_FALSE(*a == *other);
    EXPECT_FALSE(a->GetTip()->IsDecoded() || b->GetTip()->IsDecoded());
    EXPECT_TRUE(*a == makeBrush(20));
    b->GetTip()->GetBuffer();
    EXPECT_TRUE(*a == *b && *b == makeBrush(20));
    const auto hash = [](const RasterBrush& brush) {
        Kernel::HashAccumulator accumulator;
        brush.AccumulateHash(accumulator);
        return accumulator.GetHash();
    };
    EXPECT_EQ(hash(*b), hash(makeBrush(20)));
    auto pixels = MakePicture(Format::M8, 20, 9);
    pixels->GetRow(8)[19] ^= 1;
    const RasterBrush changed(Kernel::MakeCounted<DynamicBitmap>(std::move(pixels)));
    EXPECT_FALSE(*a == changed);
    EXPECT_NE(hash(*a), hash(changed));
}

TEST(SavedBitmap, ProfilesOfOtherSpacesAreLeftOut)
{
    const auto inks = RasterTest::MakeFullSet().GetCMYK();
    const auto buffer = MakePicture(Format::RGBA8, 4, 4);
    EXPECT_FALSE(Load(Save(Kernel::MakeCounted<DynamicBitmap>(buffer, inks)))->GetProfile());
}

TEST(SavedBitmap, PixelsOfAnotherSizeThanTheBitmapAreRefused)
{
    const auto large = MakePicture(Format::RGBA8, 40, 30);
    Kernel::MemoryOutStream out;
    WritePNG(out, DynamicBitmap(large));
    const Bytes png = out.TakeData();
    EXPECT_TRUE(ReadImage(png, 1200));
    EXPECT_THROW(ReadImage(png, 1199), Kernel::FormatException);
    for (const auto& data : {Kernel::MakeCounted<const CompressedRasterData>(png),
                             Kernel::MakeCounted<const CompressedRasterData>(*large)}) {
        for (const auto& [width, height] :
             {std::pair{1U, 1U}, {40U, 30U}, {30U, 40U}, {80U, 30U}}) {
            const Bitmap bitmap = Kernel::MakeCounted<DynamicBitmap>(
                MakePicture(Format::RGBA8, width, height), nullptr, data);
            const Bitmap loaded = Load(Save(bitmap));
            EXPECT_EQ(bool(loaded->GetBuffer()), width == 40);
            EXPECT_TRUE(Save(loaded) == Save(bitmap));
        }
    }
}

/// Whatever happens to a byte, the file is refused, or the bitmap has pixels or none; and it is
/// saved as it came.
TEST(SavedBitmap, DamageIsFoundWhenPixelsAreAskedFor)
{
    const auto buffer = MakePicture(Format::CMYKA8, 20, 10);
    const Bytes whole = Save(Kernel::MakeCounted<DynamicBitmap>(buffer));
    int refused = 0, empty = 0, changed = 0;
    for (std::size_t i = 17; i < whole.size(); ++i) {
        for (const int flip : {1, 0x80, 0xff}) {
            Bytes bytes = whole;
            bytes[i] = static_cast<unsigned char>(bytes[i] ^ flip);
            try {
                const Bitmap loaded = Load(bytes);
                if (!loaded->GetBuffer())
                    ++empty;
                else if (!AreEqual(*loaded->GetBuffer(), *buffer))
                    ++changed;
                EXPECT_TRUE(InSerialiserFile(Save(loaded)).ParseWithChecks<DynamicBitmap>());
            } catch (const Kernel::FormatException&) {
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(empty, 200); // the checksum of the pixels finds nearly all
    EXPECT_EQ(changed, 0);
}

TEST(SavedBitmap, HostileSizesTakeNoMemory)
{
    const auto buffer = MakePicture(Format::RGBA8, 8, 8);
    const Bytes good = CompressedRasterData(*buffer).GetBytes().Get();
    // Format, width, height, rows of a band, size of the first band.
    const std::uint32_t Huge = 0x7ffffff0;
    const std::pair<std::size_t, std::vector<std::uint32_t>> cases[] = {
        {8, {0, Huge, 8}},
        {8, {0, 8, Huge, Huge}},
        {8, {0, Huge, Huge, 1}},
        {8, {9, 0xffffffff, 0xffffffff, 0xffffffff}},
        {8, {8, 8, 8}},
        {8, {77, 8, 8}},
        {12, {0, 8}},
        {12, {8, 0}},
        {20, {0}},
        {20, {1}},
        {20, {16385}}, // bands of more than 512 KiB
        {24, {0xffffffff}},
        {24, {0}},
        {12, {9}},
        {16, {7}}};
    for (const auto& [at, numbers] : cases) {
        Bytes bytes = good;
        std::memcpy(bytes.data() + at, numbers.data(), numbers.size() * sizeof(std::uint32_t));
        EXPECT_THROW(CompressedRasterData(bytes).Decode(), Kernel::FormatException);
    }
    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_THROW(
            CompressedRasterData(Bytes(good.begin(), good.begin() + std::ptrdiff_t(size))).Decode(),
            Kernel::FormatException);
}

} // namespace
