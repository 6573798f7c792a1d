#include <cmath>

#include <cstdio>
#include <jpeglib.h>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <raster/Codecs.h>
#include <raster/Pixel.h>

#include "TestFiles.h"

using namespace Raster;
using namespace RasterTest;

namespace {

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
    const auto inks = MakeSmooth<PixelCMYKA8>(150, 83);
    ExpectSimilar(*ReadJPEG(Write(WriteJPEG, *colour, 100)), *colour, 5);
    ExpectSimilar(*ReadJPEG(Write(WriteJPEG, *colour, 75)), *colour, 24);
    ExpectSimilar(*ReadJPEG(Write(WriteJPEG, *grey, 95)), *grey, 6);
    ExpectSimilar(*ReadJPEG(Write(WriteJPEG, *inks, 100)), *inks, 5);
    const Bytes file = Write(WriteJPEG, *colour, 90);
    EXPECT_LT(Write(WriteJPEG, *colour, 30).size(), file.size());
    EXPECT_EQ(Write(WriteJPEG, *colour, 90), file);
    // From 90 on colours are as fine as light.
    const auto getSampling = [](const Bytes& bytes) {
        const Bytes mark{0xff, 0xc0}; // its eleventh byte behind is that of the first component
        return std::search(bytes.begin(), bytes.end(), mark.begin(), mark.end())[11];
    };
    EXPECT_EQ(getSampling(file), 0x11);
    EXPECT_EQ(getSampling(Write(WriteJPEG, *colour, 89)), 0x22);

    // Transparency shows white.
    const auto expectFlat = []<class P>(const P& pixel, const P& expected) {
        const auto buffer = DynamicBuffer::Create(FormatOfPixel<P>, 16, 16);
        for (unsigned y = 0; y < 16; ++y)
            std::fill_n(reinterpret_cast<P*>(buffer->GetRow(y)), 16, pixel);
        ExpectColour(Write(WriteJPEG, DynamicBitmap(buffer), 100), expected);
    };
    expectFlat(PixelRGBA8{{0, 100, 0, 100}}, PixelRGBA8{{155, 255, 155, 255}});
    expectFlat(PixelCMYKA8{{0, 100, 30, 10, 100}}, PixelCMYKA8{{0, 100, 30, 10, 255}});
}

TEST(JPEG, ProfilesOfManyMarkersAreKept)
{
    Bytes bytes = MakeWideRGBBytes(1.7);
    constexpr std::size_t size = 150000; // three markers
    bytes.resize(size);
    for (unsigned i = 0; i < 4; ++i)
        bytes[i] = static_cast<unsigned char>(size >> (24 - 8 * i));
    const Profile large = MakeProfile(bytes);
    const Bytes file = Write(WriteJPEG, *MakeSmooth<PixelRGBA8>(20, 20, large), 90);
    EXPECT_GT(file.size(), size);
    EXPECT_EQ(ReadJPEG(file)->GetProfile().Get(), large.Get());
    Bytes damaged = file;
    const std::string mark = "ICC_PROFILE";
    const auto found = std::search(damaged.begin(), damaged.end(), mark.begin(), mark.end());
    found[12] = 9; // its number in the sequence
    EXPECT_FALSE(ReadJPEG(damaged)->GetProfile());
}

TEST(JPEG, DamageIsRefused)
{
    for (const bool isProgressive : {false, true}) {
        const JpegOptions options{JCS_RGB, JCS_YCbCr, 3, isProgressive, false};
        ReadDamaged(EncodeJpeg(options, {200, 30, 90}, 40, 40), ReadJPEG, 2000);
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
