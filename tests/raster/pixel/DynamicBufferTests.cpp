#include <algorithm>
#include <cstdint>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "TestPictures.h"

using namespace Raster;

namespace {

std::uint64_t GetResidentBytes()
{
    std::uint64_t total = 0;
    std::uint64_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * std::uint64_t(sysconf(_SC_PAGESIZE));
}

} // namespace

TEST(DynamicBuffer, RowsAreZeroedAndAligned)
{
    ForEachPixelType([](auto pixel) {
        const auto buffer = DynamicBuffer::Create(FormatOfPixel<decltype(pixel)>, 13, 3);
        ASSERT_TRUE(buffer);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer->GetData()) % 64, 0U);
        EXPECT_EQ(buffer->GetStride() % 16, 0);
        EXPECT_GE(buffer->GetStride(), std::ptrdiff_t(13 * sizeof(pixel)));
        EXPECT_EQ(buffer->GetPixelSize(), sizeof(pixel));
        EXPECT_TRUE(std::all_of(buffer->GetData(), buffer->GetData() + 3 * buffer->GetStride(),
                                [](unsigned char byte) { return byte == 0; }));
    });
}

TEST(DynamicBuffer, RefusesWhatCannotBe)
{
    EXPECT_FALSE(DynamicBuffer::Create(Format::None, 5, 5));
    EXPECT_FALSE(DynamicBuffer::Create(Format(77), 5, 5));
    EXPECT_FALSE(DynamicBuffer::Create(Format::RGBA8, 0, 5));
    EXPECT_FALSE(DynamicBuffer::Create(Format::RGBA8, 5, 0));
    EXPECT_FALSE(DynamicBuffer::Create(Format::RGBA8, 1U << 29, 1));
    EXPECT_FALSE(DynamicBuffer::Create(Format::M8, 1, 0x80000000U));
    EXPECT_FALSE(DynamicBuffer::Create(Format::RGBAUF, 100000000, 2000000000));
}

TEST(DynamicBuffer, UntouchedPixelsCostNoMemory)
{
    const auto before = GetResidentBytes();
    const auto buffer = DynamicBuffer::Create(Format::RGBA8, 16384, 16384);
    if (!buffer)
        GTEST_SKIP() << "no gigabyte of address space";
    EXPECT_EQ(GetPixel<PixelRGBA8>(*buffer, 16383, 16383), PixelRGBA8{});
    EXPECT_LT(GetResidentBytes(), before + (std::uint64_t{256} << 20));
}

TEST(Buffer, ViewsOnlyItsOwnFormatAndClearsInside)
{
    Buffer<Intensity8, Alpha8, X3, X4, X5> view;
    EXPECT_FALSE(view.Attach(DynamicBuffer::Create(Format::RGBA8, 2, 2)));
    ASSERT_TRUE(view.Create(3, 2));
    view.ClearRect({-5, 1, 2, 900}, {{9, 10}});
    const auto& pixels = *view.GetDynamicBuffer();
    EXPECT_EQ(GetPixel<PixelIA8>(pixels, 1, 1), (PixelIA8{{9, 10}}));
    EXPECT_EQ(GetPixel<PixelIA8>(pixels, 2, 1), PixelIA8{});
    EXPECT_EQ(GetPixel<PixelIA8>(pixels, 1, 0), PixelIA8{});
}
