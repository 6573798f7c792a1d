#include <cmath>
#include <random>

#include <cstdio>
#include <jpeglib.h>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <kernel/MemoryOutStream.h>
#include <raster/Codecs.h>
#include <raster/Pixel.h>

#include "TestFiles.h"

using namespace Raster;
using namespace RasterTest;

namespace {

Bytes Write(const DynamicBitmap& bitmap, int quality)
{
    Kernel::MemoryOutStream out;
    WriteJPEG(out, bitmap, quality);
    return out.TakeData();
}

/// A smooth opaque picture, different in each channel.
template<class P>
Kernel::Counted<const DynamicBitmap> MakeSmooth(unsigned width, unsigned height,
                                                Profile profile = {})
{
    const auto buffer = DynamicBuffer::Create(FormatOfPixel<P>, width, height);
    for (unsigned y = 0; y < height; ++y) {
        P* row = reinterpret_cast<P*>(buffer->GetRow(y));
        for (unsigned x = 0; x < width; ++x) {
            row[x].Alpha() = 255;
            for (unsigned c = 0; c < P::ColourCount; ++c)
                row[x][c] = std::uint8_t(128 + 100 * std::sin(x * 0.05 * (c + 1) + y * 0.07));
        }
    }
    return Kernel::MakeCounted<const DynamicBitmap>(buffer, std::move(profile));
}

template<class P>
int MaxDifference(const DynamicBitmap& a, const DynamicBitmap& b)
{
    EXPECT_EQ(a.GetFormat(), b.GetFormat());
    EXPECT_EQ(a.GetWidth(), b.GetWidth());
    EXPECT_EQ(a.GetHeight(), b.GetHeight());
    int worst = 0;
    for (unsigned y = 0; y < a.GetHeight(); ++y) {
        const P* first = reinterpret_cast<const P*>(a.GetBuffer()->GetRow(y));
        const P* second = reinterpret_cast<const P*>(b.GetBuffer()->GetRow(y));
        for (unsigned x = 0; x < a.GetWidth(); ++x)
            for (std::size_t c = 0; c < P::ChannelCount; ++c)
                worst = std::max(worst, std::abs(int(first[x][c]) - int(second[x][c])));
    }
    return worst;
}

/// Every pixel of the file is \p expected, within 2.
template<class P>
void ExpectColour(const Bytes& file, const P& expected)
{
    const auto bitmap = ReadImage(file);
    ASSERT_EQ(bitmap->GetFormat(), FormatOfPixel<P>);
    for (unsigned y = 0; y < bitmap->GetHeight(); ++y) {
        const P* row = reinterpret_cast<const P*>(bitmap->GetBuffer()->GetRow(y));
        for (unsigned x = 0; x < bitmap->GetWidth(); ++x)
            for (std::size_t c = 0; c < P::ChannelCount; ++c)
                ASSERT_NEAR(row[x][c], expected[c], 2) << x << ' ' << y << ' ' << c;
    }
}

} // namespace

TEST(JPEG, ReadsEveryColourSpaceBaselineAndProgressive)
{
    for (const bool isProgressive : {false, true}) {
        const auto encode = [&](int input, int stored, const Bytes& colour, bool hasAdobeMarker) {
            return EncodeJpeg(
                {input, stored, unsigned(colour.size()), isProgressive, hasAdobeMarker}, colour, 37,
                19);
        };
        ExpectColour(encode(JCS_GRAYSCALE, JCS_GRAYSCALE, {200}, false), PixelIA8{{200, 255}});
        ExpectColour(encode(JCS_RGB, JCS_YCbCr, {200, 30, 90}, false),
                     PixelRGBA8{{200, 30, 90, 255}});
        ExpectColour(encode(JCS_RGB, JCS_RGB, {200, 30, 90}, true), PixelRGBA8{{200, 30, 90, 255}});
        ExpectColour(encode(JCS_CMYK, JCS_CMYK, {10, 20, 30, 40}, false),
                     PixelCMYKA8{{10, 20, 30, 40, 255}});
        // With the Adobe marker paper is 255.
        ExpectColour(encode(JCS_CMYK, JCS_CMYK, {10, 20, 30, 40}, true),
                     PixelCMYKA8{{245, 235, 225, 215, 255}});
        ExpectColour(encode(JCS_CMYK, JCS_YCCK, {10, 20, 30, 40}, true),
                     PixelCMYKA8{{245, 235, 225, 215, 255}});
    }
}

TEST(JPEG, WrittenPicturesComeBackClose)
{
    const auto colour = MakeSmooth<PixelRGBA8>(150, 83);
    const auto grey = MakeSmooth<PixelIA8>(150, 83);
    EXPECT_LE(MaxDifference<PixelRGBA8>(*colour, *ReadJPEG(Write(*colour, 100))), 5);
    EXPECT_LE(MaxDifference<PixelRGBA8>(*colour, *ReadJPEG(Write(*colour, 75))), 24);
    EXPECT_LE(MaxDifference<PixelIA8>(*grey, *ReadJPEG(Write(*grey, 95))), 6);
    const auto inks = MakeSmooth<PixelCMYKA8>(150, 83, MakeProfile(MakeCMYKBytes()));
    const auto read = ReadJPEG(Write(*inks, 100));
    EXPECT_LE(MaxDifference<PixelCMYKA8>(*inks, *read), 5);
    EXPECT_EQ(read->GetProfile().Get(), inks->GetProfile().Get());
    EXPECT_LT(Write(*colour, 30).size(), Write(*colour, 95).size());
    EXPECT_EQ(Write(*colour, 90), Write(*colour, 90));

    // Transparency shows white.
    const auto buffer = DynamicBuffer::Create(Format::RGBA8, 16, 16);
    for (unsigned y = 0; y < 16; ++y)
        std::fill_n(reinterpret_cast<PixelRGBA8*>(buffer->GetRow(y)), 16,
                    PixelRGBA8{{0, 100, 0, 100}});
    ExpectColour(Write(DynamicBitmap(buffer), 100), PixelRGBA8{{155, 255, 155, 255}});
    const auto paper = DynamicBuffer::Create(Format::CMYKA8, 16, 16);
    for (unsigned y = 0; y < 16; ++y)
        std::fill_n(reinterpret_cast<PixelCMYKA8*>(paper->GetRow(y)), 16,
                    PixelCMYKA8{{0, 100, 30, 10, 100}});
    ExpectColour(Write(DynamicBitmap(paper), 100), PixelCMYKA8{{0, 100, 30, 10, 255}});
}

TEST(JPEG, ProfilesOfManyMarkersAreKept)
{
    Bytes bytes = MakeWideRGBBytes(1.7);
    constexpr std::size_t size = 150000; // three markers
    bytes.resize(size);
    for (unsigned i = 0; i < 4; ++i)
        bytes[i] = static_cast<unsigned char>(size >> (24 - 8 * i));
    const Profile large = MakeProfile(bytes);
    const Bytes file = Write(*MakeSmooth<PixelRGBA8>(20, 20, large), 90);
    EXPECT_GT(file.size(), size);
    EXPECT_EQ(ReadJPEG(file)->GetProfile().Get(), large.Get());
    const Profile grey = MakeProfile(MakeGreyBytes(1.7));
    EXPECT_EQ(ReadJPEG(Write(*MakeSmooth<PixelIA8>(20, 20, grey), 90))->GetProfile().Get(),
              grey.Get());

    Bytes damaged = file;
    const std::string mark = "ICC_PROFILE";
    const auto found = std::search(damaged.begin(), damaged.end(), mark.begin(), mark.end());
    found[12] = 9; // its number in the sequence
    EXPECT_FALSE(ReadJPEG(damaged)->GetProfile());
}

TEST(JPEG, DamageIsRefused)
{
    for (const bool isProgressive : {false, true}) {
        const Bytes whole =
            EncodeJpeg({JCS_RGB, JCS_YCbCr, 3, isProgressive, false}, {200, 30, 90}, 40, 40);
        for (std::size_t size = 0; size < whole.size(); ++size)
            EXPECT_THROW(ReadJPEG({whole.data(), size}), Kernel::FormatException) << size;
        std::mt19937 random(4);
        for (int round = 0; round < 2000; ++round) {
            Bytes bytes = whole;
            for (int hits = 0; hits < 3; ++hits)
                bytes[2 + random() % (bytes.size() - 2)] = static_cast<unsigned char>(random());
            try {
                ReadJPEG(bytes);
            } catch (const Kernel::FormatException&) {
            }
        }
    }
}

TEST(JPEG, BombsAreRefused)
{
    // A size that the data cannot back: height and width follow the length and depth of SOF0.
    Bytes file = EncodeJpeg({JCS_GRAYSCALE, JCS_GRAYSCALE, 1, false, false}, {200}, 8, 8);
    const Bytes mark{0xff, 0xc0};
    const auto frame = std::search(file.begin(), file.end(), mark.begin(), mark.end());
    std::fill_n(frame + 5, 4, static_cast<unsigned char>(0x60));
    EXPECT_THROW(ReadJPEG(file), Kernel::FormatException);

    // Thousands of scans, each a few bytes.
    Bytes scans = EncodeJpeg({JCS_GRAYSCALE, JCS_GRAYSCALE, 1, true, false}, {200}, 64, 64);
    const Bytes start{0xff, 0xda};
    const auto last = std::find_end(scans.begin(), scans.end(), start.begin(), start.end());
    const Bytes scan(last, scans.end() - 2);
    Bytes many(scans.begin(), scans.end() - 2);
    for (int i = 0; i < 5000; ++i)
        many.insert(many.end(), scan.begin(), scan.end());
    many.insert(many.end(), {0xff, 0xd9});
    try {
        ReadJPEG(many);
        FAIL();
    } catch (const Kernel::FormatException& exception) {
        EXPECT_NE(std::string(exception.what()).find("too many scans"), std::string::npos)
            << exception.what();
    }
}

TEST(JPEG, WritingFailsCleanly)
{
    const auto bitmap = MakeRandomBitmap(Format::RGBA8, 300, 300, false, true);
    for (const std::size_t room : {0, 1000, 70000}) {
        FailingStream out(room);
        EXPECT_THROW(WriteJPEG(out, *bitmap, 100), FailingStream::Failure);
    }
    Kernel::MemoryOutStream out;
    EXPECT_THROW(WriteJPEG(out, *bitmap, 0), std::invalid_argument);
    EXPECT_THROW(WriteJPEG(out, *MakeRandomBitmap(Format::RGBA16, 2, 2, false, false)),
                 std::invalid_argument);
    EXPECT_THROW(WriteJPEG(out, *MakeRandomBitmap(Format::IA8, 65501, 1, false, false)),
                 std::invalid_argument);
    EXPECT_TRUE(out.GetData().empty());
}
