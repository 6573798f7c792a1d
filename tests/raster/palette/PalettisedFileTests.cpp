#include <cstring>
#include <random>
#include <stdexcept>

#include <gif_lib.h>
#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <kernel/MemoryOutStream.h>
#include <raster/Codecs.h>
#include <raster/ICCManager.h>

#include "../icc/TestFiles.h"

using namespace Raster;
using namespace RasterTest;

namespace {

/// Random indices into a palette of random colours; of these, some have other alpha.
Kernel::Counted<const PalettisedBitmap> MakePicture(unsigned colours, unsigned translucent,
                                                    std::uint8_t alpha, unsigned width = 37,
                                                    unsigned height = 21, Profile profile = {})
{
    std::mt19937 random(colours);
    DynamicPalette palette;
    for (unsigned i = 0; i < colours; ++i) {
        PixelRGBA8 colour;
        for (auto& channel : colour.channels)
            channel = std::uint8_t(random());
        colour.Alpha() = i < translucent ? alpha : 255;
        palette.Add(DynamicPixel(colour));
    }
    std::vector<std::uint8_t> indices(std::size_t{width} * height);
    for (auto& index : indices)
        index = std::uint8_t(random() % colours);
    return Kernel::MakeCounted<const PalettisedBitmap>(width, height, indices, palette, profile);
}

template<class Writer>
Bytes Write(const Writer& write, const PalettisedBitmap& bitmap)
{
    Kernel::MemoryOutStream out;
    write(out, bitmap);
    return out.TakeData();
}

void ToPNG(Kernel::OutStream& out, const PalettisedBitmap& bitmap)
{
    WritePNG(out, bitmap);
}

DynamicBitmap Expand(const PalettisedBitmap& bitmap)
{
    return DynamicBitmap(bitmap.MakeBuffer());
}

TEST(PalettisedFile, BothKindsKeepEveryPixel)
{
    for (const unsigned colours : {1U, 2U, 3U, 4U, 5U, 16U, 17U, 128U, 129U, 256U}) {
        for (const unsigned translucent : {0U, 1U, colours / 2}) {
            const auto picture = MakePicture(colours, translucent, 0);
            ExpectSimilar(*ReadImage(Write(WriteGIF, *picture)), Expand(*picture));
            const auto glass = MakePicture(colours, translucent, 99);
            const Bytes png = Write(ToPNG, *glass);
            ExpectSimilar(*ReadImage(png), Expand(*glass));
            const int depth = colours <= 2 ? 1 : colours <= 4 ? 2 : colours <= 16 ? 4 : 8;
            EXPECT_EQ(png[24], depth);
            EXPECT_EQ(png[25], 3) << "palette";
        }
    }
    // The largest side that GIF has, and one pixel more.
    const auto wide = MakePicture(256, 1, 0, 65535, 2);
    ExpectSimilar(*ReadGIF(Write(WriteGIF, *wide)), Expand(*wide));
    EXPECT_THROW(Write(WriteGIF, *MakePicture(2, 0, 0, 65536, 1)), std::invalid_argument);
}

TEST(PalettisedFile, GIFHasOneBitOfAlphaAndSRGB)
{
    const auto picture = MakePicture(8, 4, 127);
    const auto read = ReadGIF(Write(WriteGIF, *picture));
    EXPECT_EQ(Write(WriteGIF, *picture)[4], '9');
    EXPECT_EQ(Write(WriteGIF, *MakePicture(8, 4, 128))[4], '7') << "opaque";
    for (unsigned x = 0; x < picture->GetWidth(); ++x)
        EXPECT_EQ(read->GetBuffer()->GetRow(3)[4 * x + 3], picture->GetRow(3)[x] < 4 ? 0 : 255);

    const auto profile = MakeProfile(MakeWideRGBBytes(2.2));
    const auto wide = MakePicture(16, 0, 255, 16, 1, profile);
    const auto sRGB = ReadGIF(Write(WriteGIF, *wide));
    ICCManager::ICCProfileSet profiles;
    profiles.SetRGB(profile);
    const Bytes bytes = Write(ToPNG, *wide);
    EXPECT_EQ(ReadPNG(bytes)->GetProfile()->GetBytes().size(), profile->GetBytes().size());
    for (unsigned x = 0; x < 16; ++x) {
        auto expected = wide->GetPalette().Get<PixelRGBA8>(wide->GetRow(0)[x]);
        ICCManager::GetInstance().DoTransform(Format::RGBA8, profiles, &expected, Format::RGBA8, {},
                                              &expected, 1);
        EXPECT_EQ(std::memcmp(sRGB->GetBuffer()->GetRow(0) + 4 * x, &expected, 4), 0) << x;
    }
}

int AppendTo(GifFileType* gif, const GifByteType* data, int count)
{
    auto* bytes = static_cast<Bytes*>(gif->UserData);
    bytes->insert(bytes->end(), data, data + count);
    return count;
}

/// A file of another writer: a small interlaced frame with colours of its own in the middle of its
/// canvas, a comment, and a second frame.
Bytes MakeAnimation(bool isInterlaced, int left)
{
    Bytes bytes;
    GifFileType* gif = EGifOpen(&bytes, AppendTo, nullptr);
    EGifSetGifVersion(gif, true);
    EGifPutScreenDesc(gif, 20, 30, 8, 0, nullptr);
    EGifPutComment(gif, "a comment");
    const GifColorType colours[] = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {1, 2, 3}};
    ColorMapObject* map = GifMakeMapObject(4, colours);
    const GraphicsControlBlock control{DISPOSE_BACKGROUND, false, 10, 2};
    GifByteType extension[4];
    EGifGCBToExtension(&control, extension);
    EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, extension);
    for (int frame = 0; frame < 2; ++frame) {
        EGifPutImageDesc(gif, left, 4, 11, 19, isInterlaced, map);
        constexpr int passes[][2] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}, {19, 1}};
        constexpr int plain[][2] = {{0, 1}, {19, 1}};
        for (const auto* pass = isInterlaced ? passes : plain; (*pass)[0] < 19; ++pass) {
            for (int y = (*pass)[0]; y < 19; y += (*pass)[1]) {
                GifByteType row[11];
                for (int x = 0; x < 11; ++x)
                    row[x] = GifByteType((x + y * y + frame) % 4);
                EGifPutLine(gif, row, 11);
            }
        }
    }
    EGifCloseFile(gif, nullptr);
    GifFreeMapObject(map);
    return bytes;
}

TEST(PalettisedFile, ReadsTheFirstFrameOfAnyGIF)
{
    for (const bool isInterlaced : {false, true}) {
        const auto bitmap = ReadImage(MakeAnimation(isInterlaced, 3));
        ASSERT_EQ(bitmap->GetWidth(), 20U);
        ASSERT_EQ(bitmap->GetHeight(), 30U);
        for (int y = 0; y < 30; ++y) {
            for (int x = 0; x < 20; ++x) {
                const bool isInside = x >= 3 && x < 14 && y >= 4 && y < 23;
                const int index = isInside ? (x - 3 + (y - 4) * (y - 4)) % 4 : 2;
                constexpr PixelRGBA8 colours[] = {
                    {10, 20, 30, 255}, {40, 50, 60, 255}, {}, {1, 2, 3, 255}};
                ASSERT_EQ(reinterpret_cast<const PixelRGBA8*>(
                              bitmap->GetBuffer()->GetRow(unsigned(y)))[x],
                          colours[index])
                    << x << ' ' << y << isInterlaced;
            }
        }
    }
    EXPECT_THROW(ReadGIF(MakeAnimation(false, 10)), Kernel::FormatException) << "beyond the canvas";
    EXPECT_THROW(ReadGIF({}), Kernel::FormatException);
}

TEST(PalettisedFile, DamageIsRefusedAndFailingStreamsAreReported)
{
    const Bytes small = Write(WriteGIF, *MakePicture(200, 3, 0));
    ReadDamaged(small, ReadGIF, 3000);
    ReadDamaged(MakeAnimation(true, 3), ReadGIF, 3000);
    // A canvas that the file cannot fill.
    Bytes vast = Write(WriteGIF, *MakePicture(2, 0, 0, 1, 1));
    std::memset(vast.data() + 6, 0xff, 4);
    EXPECT_THROW(ReadGIF(vast), Kernel::FormatException);

    const auto picture = MakePicture(200, 3, 0, 100, 100);
    const std::size_t size = Write(WriteGIF, *picture).size();
    for (std::size_t room = 0; room < size; room += 1 + room / 3) {
        FailingStream gif(room), png(room / 2);
        EXPECT_THROW(WriteGIF(gif, *picture), FailingStream::Failure);
        EXPECT_THROW(WritePNG(png, *picture), FailingStream::Failure);
    }
    FailingStream last(size - 1);
    EXPECT_THROW(WriteGIF(last, *picture), FailingStream::Failure);
}

} // namespace
