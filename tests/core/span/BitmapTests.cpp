#include <cmath>

#include <kernel/Counted.h>
#include <renderer/paint/FillBackBuffer.h>
#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillBuffer.h>

#include "Painter.h"

namespace Renderer {

namespace {

using Raster::DynamicBitmap;
using Raster::DynamicBuffer;
using Raster::ExtendType;
using Raster::ResamplerType;

constexpr int Width = 8;
constexpr int Height = 6;

/// A value of a channel, different at every pixel; even, so that means of pairs are whole.
template<class P>
typename P::ChannelType GetValue(int x, int y, std::size_t c)
{
    const int step = 2 * ((x * 7 + y * 13 + int(c) * 5) % 60);
    return static_cast<typename P::ChannelType>(
        std::is_integral_v<typename P::ChannelType> ? step : step / 255.0);
}

template<class P>
P GetSource(int x, int y)
{
    P pixel;
    for (std::size_t c = 0; c < P::ColourCount; ++c)
        pixel[c] = GetValue<P>(x, y, c);
    pixel.Alpha() = static_cast<typename P::ChannelType>(
        std::is_integral_v<typename P::ChannelType> ? 120 + 4 * x : (120 + 4 * x) / 255.0);
    return pixel;
}

template<class P>
Kernel::Counted<DynamicBuffer> MakeBuffer()
{
    auto buffer = DynamicBuffer::Create(Raster::FormatOfPixel<P>, Width, Height);
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x)
            reinterpret_cast<P*>(buffer->GetRow(unsigned(y)))[x] = GetSource<P>(x, y);
    return buffer;
}

template<class P>
class BitmapTest : public testing::Test
{
protected:
    /// Paints the rectangle and compares it with a function of the device pixel.
    template<class Expected>
    void Check(const Params& map, const Kernel::RectT<int>& rect, double tolerance,
               Expected expected, ResamplerType up = ResamplerType::Bilinear,
               ExtendType extend = ExtendType::Transparent)
    {
        const auto fill = FillBitmap::Create(m_bitmap, extend, up);
        const auto pixels = m_painter.Paint(*fill, map, rect);
        ASSERT_FALSE(pixels.empty());
        std::size_t i = 0;
        for (int y = rect.top; y < rect.bottom; ++y)
            for (int x = rect.left; x < rect.right; ++x, ++i)
                for (std::size_t c = 0; c < P::ChannelCount; ++c)
                    ASSERT_NEAR(double(pixels[i][c]), expected(x, y, c), tolerance)
                        << x << ", " << y << ", " << c;
    }

    static double Source(int x, int y, std::size_t c)
    {
        const bool isInside = x >= 0 && x < Width && y >= 0 && y < Height;
        return isInside ? double(GetSource<P>(x, y)[c]) : 0.0;
    }

    static constexpr double Rounding =
        std::is_integral_v<typename P::ChannelType> ? 0.501 : 1e-6; // of a mean

    Painter<P> m_painter;
    Kernel::Counted<const DynamicBitmap> m_bitmap =
        Kernel::MakeCounted<DynamicBitmap>(MakeBuffer<P>());
};
TYPED_TEST_SUITE(BitmapTest, TestedPixels);

TYPED_TEST(BitmapTest, MapsPutPixelsInPlace)
{
    const auto source = &TestFixture::Source;
    this->Check({Width, 0, 20, 0, Height, -3}, {15, -6, 33, 6}, 0.0,
                [&](int x, int y, std::size_t c) { return source(x - 20, y + 3, c); });
    this->Check({Width, 0, 20.5, 0, Height, 0}, {21, 0, 28, 6}, this->Rounding,
                [&](int x, int y, std::size_t c) {
                    return (source(x - 21, y, c) + source(x - 20, y, c)) / 2;
                });
    // A quarter turn: the x axis of the bitmap runs down the page, its y axis to the left.
    this->Check(
        {0, -Height, 20, Width, 0, 10}, {10, 8, 24, 20}, this->Rounding,
        [&](int x, int y, std::size_t c) { return source(y - 10, 19 - x, c); },
        ResamplerType::NearestNeighbour);
    // Half its size: means of four.
    this->Check({Width / 2, 0, 20, 0, Height / 2, 10}, {20, 10, 24, 13}, this->Rounding,
                [&](int x, int y, std::size_t c) {
                    const int i = 2 * (x - 20), j = 2 * (y - 10);
                    return (source(i, j, c) + source(i + 1, j, c) + source(i, j + 1, c) +
                            source(i + 1, j + 1, c)) /
                           4;
                });
}

TYPED_TEST(BitmapTest, BuffersPaintLikeBitmaps)
{
    using P = TypeParam;
    const Params map{9.3, 1.1, 3, -2.2, 12.4, 5};
    const auto bitmap =
        FillBitmap::Create(this->m_bitmap, ExtendType::Wrap, ResamplerType::Bicubic);
    const auto buffer =
        FillBuffer::Create(this->m_bitmap->GetBuffer(), ExtendType::Wrap, ResamplerType::Bicubic);
    const Kernel::RectT<int> rect{-5, -5, 80, 10};
    EXPECT_EQ(this->m_painter.Paint(*bitmap, map, rect), Painter<P>().Paint(*buffer, map, rect));
}

TYPED_TEST(BitmapTest, IgnoredAlphaIsFullAndLeavesThePlainColour)
{
    using P = TypeParam;
    const auto fill = FillBitmap::Create(this->m_bitmap, ExtendType::Transparent,
                                         ResamplerType::NearestNeighbour, true);
    const auto pixels =
        this->m_painter.Paint(*fill, {Width, 0, 0, 0, Height, 0}, {0, 0, Width, Height});
    for (int i = 0; i < Width * Height; ++i) {
        const P source = GetSource<P>(i % Width, i / Width);
        const P& pixel = pixels[std::size_t(i)];
        ASSERT_EQ(pixel.Alpha(), P::Max);
        for (std::size_t c = 0; c < P::ColourCount; ++c)
            ASSERT_NEAR(double(pixel[c]),
                        double(source[c]) / double(source.Alpha()) * double(P::Max),
                        this->Rounding);
    }
}

TYPED_TEST(BitmapTest, TransparencyReadsTheAlphaOfTheBitmap)
{
    using P = TypeParam;
    const auto fill =
        FillBitmap::Create(this->m_bitmap, ExtendType::Transparent, ResamplerType::Bilinear);
    ASSERT_TRUE(
        this->m_painter.Make(*fill, {Width, 0, 0, 0, Height, 0}, PopulatorRole::Transparency));
    P white;
    white.channels.fill(P::Max);
    const auto row = this->m_painter.Run(0, 2, std::vector<P>(Width + 1, white));
    for (int x = 0; x <= Width; ++x)
        for (std::size_t c = 0; c < P::ChannelCount; ++c)
            ASSERT_EQ(double(row[std::size_t(x)][c]), this->Source(x, 2, P::AlphaIndex)) << x;
}

TYPED_TEST(BitmapTest, BitmapsOfOtherFormatsAreConvertedOnce)
{
    using P = TypeParam;
    // 128/255, in another format than the target's.
    using Grey = std::conditional_t<std::is_same_v<P, Raster::PixelIA16>, Raster::PixelIA8,
                                    Raster::PixelIA16>;
    const auto grey = DynamicBuffer::Create(Raster::FormatOfPixel<Grey>, 2, 1);
    auto* pixels = reinterpret_cast<Grey*>(grey->GetRow(0));
    pixels[0] = {{Grey::Max / 255 * 128, Grey::Max}};
    const auto bitmap = Kernel::MakeCounted<DynamicBitmap>(grey);
    const auto fill = FillBitmap::Create(bitmap, ExtendType::Clamp, ResamplerType::Bilinear);
    const auto row = this->m_painter.Paint(*fill, {2, 0, 0, 0, 1, 0}, {0, 0, 2, 1});
    P expected;
    MakeColour(128 / 255.0F, 128 / 255.0F, 128 / 255.0F, 1)->GetColour(expected, true, {});
    for (std::size_t c = 0; c < P::ChannelCount; ++c)
        EXPECT_NEAR(double(row[0][c]) / double(P::Max), double(expected[c]) / double(P::Max),
                    1.0 / 255);
    EXPECT_EQ(row[1], P{});
    const auto first = this->m_painter.m_bitmaps.Get(bitmap, Raster::FormatOfPixel<P>, {}, false);
    EXPECT_EQ(this->m_painter.m_bitmaps.GetEntryCount(), 1U);
    EXPECT_EQ(first, this->m_painter.m_bitmaps.Get(bitmap, Raster::FormatOfPixel<P>, {}, false));
}

TYPED_TEST(BitmapTest, RefusesSingularMapsAndMissingPixels)
{
    const auto fill =
        FillBitmap::Create(this->m_bitmap, ExtendType::Clamp, ResamplerType::Bilinear);
    EXPECT_FALSE(this->m_painter.Make(*fill, {1, 2, 0, 2, 4, 0}));
    EXPECT_FALSE(this->m_painter.Make(*fill, {std::nan(""), 0, 0, 0, 1, 0}));
    EXPECT_FALSE(this->m_painter.Make(FillBitmap(), {}));
    EXPECT_FALSE(this->m_painter.Make(FillBuffer(), {}));
    EXPECT_FALSE(this->m_painter.Make(FillBackBuffer(), {}));
}

TYPED_TEST(BitmapTest, BackBufferIsReadAtTheSamePixel)
{
    using P = TypeParam;
    const auto buffer = MakeBuffer<P>();
    this->m_painter.m_context.backBuffer = buffer.Get();
    this->m_painter.m_context.backBufferOrigin = {-4, 7};
    const auto pixels = this->m_painter.Paint(FillBackBuffer(), {5, 1, 0, 0, 5, 0}, {-6, 5, 8, 15});
    std::size_t i = 0;
    for (int y = 5; y < 15; ++y)
        for (int x = -6; x < 8; ++x, ++i)
            for (std::size_t c = 0; c < P::ChannelCount; ++c)
                ASSERT_EQ(double(pixels[i][c]), this->Source(x + 4, y - 7, c)) << x << ", " << y;
}

TYPED_TEST(BitmapTest, MinifiedBitmapsAreReducedOnceButBuffersAreReadAnew)
{
    using P = TypeParam;
    const Params half{Width / 2, 0, 0, 0, Height / 2, 0};
    const Kernel::RectT<int> rect{0, 0, Width / 2, Height / 2};
    const auto bitmap =
        FillBitmap::Create(this->m_bitmap, ExtendType::Clamp, ResamplerType::Bilinear);
    const auto first = this->m_painter.Paint(*bitmap, half, rect);
    EXPECT_EQ(this->m_painter.m_bitmaps.GetReductionCount(), 1U);
    EXPECT_EQ(this->m_painter.Paint(*bitmap, half, rect), first);
    EXPECT_EQ(this->m_painter.m_bitmaps.GetReductionCount(), 1U);
    this->m_painter.Paint(*bitmap, {3, 0, 0, 0, 2, 0}, rect);
    EXPECT_EQ(this->m_painter.m_bitmaps.GetReductionCount(), 2U);

    const auto pixels = MakeBuffer<P>();
    const auto buffer = FillBuffer::Create(pixels, ExtendType::Clamp, ResamplerType::Bilinear);
    EXPECT_EQ(this->m_painter.Paint(*buffer, half, rect), first);
    for (unsigned y = 0; y < pixels->GetHeight(); ++y)
        std::fill_n(reinterpret_cast<P*>(pixels->GetRow(y)), Width, GetSource<P>(1, 1));
    for (const P& pixel : this->m_painter.Paint(*buffer, half, rect))
        for (std::size_t c = 0; c < P::ChannelCount; ++c)
            ASSERT_NEAR(double(pixel[c]), double(GetSource<P>(1, 1)[c]), 1e-6);
    EXPECT_EQ(this->m_painter.m_bitmaps.GetReductionCount(), 2U);
}

TYPED_TEST(BitmapTest, OpaquePaintIsKnownAsSuch)
{
    using P = TypeParam;
    const auto isOpaque = [&](const Kernel::Counted<const DynamicBitmap>& bitmap, double size,
                              ExtendType extend, PopulatorRole role = PopulatorRole::Colour) {
        const auto fill = FillBitmap::Create(bitmap, extend, ResamplerType::NearestNeighbour);
        EXPECT_TRUE(this->m_painter.Make(*fill, {size, 0, 0.3, 0, size, 0.1}, role));
        return this->m_painter.m_populator.isOpaque;
    };
    const auto pixels = MakeBuffer<P>();
    for (unsigned y = 0; y < pixels->GetHeight(); ++y)
        for (unsigned x = 0; x < pixels->GetWidth(); ++x)
            reinterpret_cast<P*>(pixels->GetRow(y))[x].Alpha() = P::Max;
    const auto opaque = Kernel::MakeCounted<DynamicBitmap>(pixels);
    for (const double size : {20.0, 3.0}) {
        EXPECT_TRUE(isOpaque(opaque, size, ExtendType::Clamp));
        EXPECT_TRUE(isOpaque(opaque, size, ExtendType::Wrap));
        EXPECT_FALSE(isOpaque(opaque, size, ExtendType::Transparent));
        EXPECT_FALSE(isOpaque(opaque, size, ExtendType::Clamp, PopulatorRole::ColourOver));
        EXPECT_FALSE(isOpaque(this->m_bitmap, size, ExtendType::Clamp));
    }
    // Whoever holds a buffer may change it.
    const auto buffer =
        FillBuffer::Create(pixels, ExtendType::Clamp, ResamplerType::NearestNeighbour);
    ASSERT_TRUE(this->m_painter.Make(*buffer, {9, 0, 0, 0, 9, 0}));
    EXPECT_FALSE(this->m_painter.m_populator.isOpaque);
}

TEST(BitmapCache, LetsGoOfReductionsThatNobodyWants)
{
    const auto make = [](unsigned size) {
        return Kernel::MakeCounted<const DynamicBitmap>(
            DynamicBuffer::Create(Raster::Format::RGBA8, size, size));
    };
    BitmapCache cache(5000);
    const auto reduce = [&](const auto& bitmap, double side,
                            Raster::Format format = Raster::Format::RGBA8) {
        return cache.GetReduced(bitmap, format, {}, false, {1 / side, 0, 0, 0, 1 / side, 0});
    };
    auto first = make(60);
    const auto reduced = reduce(first, 10);
    EXPECT_EQ(reduced->GetWidth(), 10U);
    EXPECT_EQ(reduce(first, 10), reduced);
    EXPECT_FALSE(cache.IsOpaque(first->GetBuffer()));
    EXPECT_EQ(reduce(first, 60), first->GetBuffer());
    // Known again, though the conversion that it was made from is too large to be kept.
    const auto other = reduce(first, 10, Raster::Format::RGBA16);
    EXPECT_EQ(other->GetFormat(), Raster::Format::RGBA16);
    EXPECT_EQ(reduce(first, 10, Raster::Format::RGBA16), other);
    EXPECT_EQ(cache.GetReductionCount(), 2U);
    EXPECT_EQ(cache.GetEntryCount(), 0U);
    first = {};
    const auto second = make(70);
    reduce(second, 10);
    EXPECT_EQ(cache.GetReductionCount(), 1U);

    for (int side = 1; side < 60; ++side) // at most 14 KB each
        reduce(second, side);
    EXPECT_GT(cache.GetReductionCount(), 0U);
    EXPECT_LE(cache.GetReductionCount(), BitmapCache::MaxReductions);
    cache.Clear();
    EXPECT_EQ(second->GetReferenceCount(), 1U);
}

TEST(BitmapCache, StaysWithinItsBoundsAndDropsTheOldest)
{
    const auto make = [](unsigned size) {
        return Kernel::MakeCounted<const DynamicBitmap>(
            DynamicBuffer::Create(Raster::Format::IA8, size, size));
    };
    BitmapCache cache(100 * 100 * 4 * 3);
    std::vector<Kernel::Counted<const DynamicBitmap>> bitmaps;
    for (int i = 0; i < 4; ++i) {
        bitmaps.push_back(make(100));
        ASSERT_TRUE(cache.Get(bitmaps.back(), Raster::Format::RGBA8, {}, false));
    }
    EXPECT_EQ(cache.GetEntryCount(), 3U);
    EXPECT_LE(cache.GetByteCount(), 100U * 100 * 4 * 3);
    EXPECT_EQ(bitmaps[0]->GetReferenceCount(), 1U);
    EXPECT_EQ(bitmaps[1]->GetReferenceCount(), 2U);

    EXPECT_TRUE(cache.Get(make(1000), Raster::Format::RGBA8, {}, false)); // larger than the budget
    EXPECT_EQ(cache.GetEntryCount(), 3U);
    for (int i = 0; i < 20; ++i)
        cache.Get(make(4), Raster::Format::RGBA8, {}, false);
    EXPECT_EQ(cache.GetEntryCount(), BitmapCache::MaxEntries);

    const auto native = Kernel::MakeCounted<const DynamicBitmap>(
        DynamicBuffer::Create(Raster::Format::RGBA8, 4, 4));
    cache.Clear();
    EXPECT_EQ(cache.Get(native, Raster::Format::RGBA8, {}, false), native->GetBuffer());
    EXPECT_EQ(cache.GetEntryCount(), 0U);
}

} // namespace

} // namespace Renderer
