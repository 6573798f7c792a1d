#include <cmath>
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>
#include <kernel/Dispatch.h>
#include <raster/Resample.h>

#include "TestPictures.h"

using namespace Raster;

namespace {

/// The common length of result pixel \p i and source pixel \p j, in units of 1/(source·target) of
/// the whole.
std::uint64_t GetOverlap(unsigned i, unsigned j, std::uint64_t source, std::uint64_t target)
{
    const std::uint64_t begin = std::max(i * source, j * target);
    const std::uint64_t end = std::min((i + 1) * source, (j + 1) * target);
    return end > begin ? end - begin : 0;
}

/// Expects channel \p c of result pixel (x, y) to be the weighted sum over the whole source.
template<class P>
void CheckChannel(const DynamicBuffer& source, const DynamicBuffer& result, unsigned x, unsigned y,
                  std::size_t c)
{
    long double sum = 0; // holds 64-bit integers exactly
    for (unsigned j = 0; j < source.GetHeight(); ++j)
        for (unsigned i = 0; i < source.GetWidth(); ++i)
            sum +=
                static_cast<long double>(GetOverlap(x, i, source.GetWidth(), result.GetWidth()) *
                                         GetOverlap(y, j, source.GetHeight(), result.GetHeight())) *
                static_cast<long double>(GetPixel<P>(source, i, j)[c]);
    const long double area = static_cast<long double>(source.GetWidth()) * source.GetHeight();
    const long double got = GetPixel<P>(result, x, y)[c];
    if (std::is_floating_point_v<typename P::ChannelType>)
        EXPECT_NEAR(double(got), double(sum / area), 1e-7);
    else
        EXPECT_LE(std::abs(2 * (got * area - sum)), area) << x << ", " << y;
}

} // namespace

TEST(ReduceByArea, IsTheExactMean)
{
    const unsigned sizes[][4] = {{7, 5, 3, 2},  {12, 8, 4, 4}, {1, 9, 1, 2},
                                 {90, 3, 7, 1}, {6, 6, 6, 5},  {5, 4, 4, 3}};
    ForEachPixelType([&](auto pixel) {
        using P = decltype(pixel);
        for (const auto& [sourceWidth, sourceHeight, width, height] : sizes) {
            const auto source = MakePicture<P>(sourceWidth, sourceHeight);
            const auto result = ReduceByArea(source, width, height);
            ASSERT_TRUE(result);
            ASSERT_EQ(result->GetWidth(), width);
            ASSERT_EQ(result->GetHeight(), height);
            for (unsigned y = 0; y < height; ++y)
                for (unsigned x = 0; x < width; ++x)
                    for (std::size_t c = 0; c < P::ChannelCount; ++c)
                        CheckChannel<P>(*source, *result, x, y, c);
        }
    });
}

TEST(ReduceByArea, NeverEnlargesAndNeverVanishes)
{
    const Kernel::Counted<const DynamicBuffer> source = MakePicture<PixelRGBA8>(6, 4);
    EXPECT_EQ(ReduceByArea(source, 6, 100), source);
    EXPECT_EQ(ReduceByArea(source, 100, 2)->GetWidth(), 6U);
    EXPECT_EQ(ReduceByArea(source, 0, 0)->GetHeight(), 1U);
    EXPECT_FALSE(ReduceByArea({}, 1, 1));
}

TEST(ReduceByArea, IsTheSameWithAnyNumberOfThreads)
{
    const auto source = MakePicture<PixelRGBA16>(900, 700);
    Kernel::Dispatch::SetThreadLimit(1);
    const auto serial = ReduceByArea(source, 333, 211);
    Kernel::Dispatch::SetThreadLimit(0);
    const auto parallel = ReduceByArea(source, 333, 211);
    EXPECT_EQ(
        std::memcmp(serial->GetData(), parallel->GetData(), std::size_t(serial->GetStride()) * 211),
        0);
}

TEST(ReduceByArea, LongColumnsOfWhiteStayWhite)
{
    // More than 32 bits of sum.
    const auto source = DynamicBuffer::Create(Format::M16, 3, 70000);
    std::fill_n(source->GetData(), std::size_t(source->GetStride()) * 70000, 255);
    EXPECT_EQ(GetPixel<PixelAlpha16>(*ReduceByArea(source, 2, 1), 1, 0)[0], 65535);
}
