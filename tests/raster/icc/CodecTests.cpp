// What the codecs of all kinds of files have in common.

#include <algorithm>
#include <stdexcept>

#include <gtest/gtest.h>

#include <raster/Codecs.h>

#include "TestFiles.h"

using namespace Raster;
using namespace RasterTest;

namespace {

struct Codec
{
    const char* name;
    void (*write)(Kernel::OutStream&, const DynamicBitmap&);
    Kernel::Counted<const DynamicBitmap> (*read)(std::span<const unsigned char>, std::uint64_t);
    std::vector<Format> formats; ///< that it writes
};

const Codec Codecs[] = {
    {"PNG",
     [](auto& out, const auto& bitmap) { WritePNG(out, bitmap); },
     ReadPNG,
     {Format::RGBA8, Format::RGBA16, Format::IA8, Format::IA16}},
    {"JPEG",
     [](auto& out, const auto& bitmap) { WriteJPEG(out, bitmap, 100); },
     ReadJPEG,
     {Format::RGBA8, Format::IA8, Format::CMYKA8}},
    {"WebP",
     [](auto& out, const auto& bitmap) { WriteWebP(out, bitmap, {}); },
     ReadWebP,
     {Format::RGBA8}},
    {"TIFF",
     WriteTIFF,
     ReadTIFF,
     {Format::RGBA8, Format::RGBA16, Format::IA8, Format::IA16, Format::CMYKA8, Format::LABA16}},
    {"EXR", WriteEXR, ReadEXR, {Format::RGBAUF}},
};

} // namespace

TEST(Codecs, KeepProfilesThatFit)
{
    const auto set = MakeFullSet();
    for (const Codec& codec : Codecs) {
        for (const Format format : codec.formats) {
            if (format == Format::LABA16 || format == Format::RGBAUF)
                continue; // such files have one meaning
            SCOPED_TRACE(testing::Message() << codec.name << " format " << int(format));
            const auto through = [&](const Profile& profile) {
                const auto bitmap = MakeRandomBitmap(format, 9, 5, false, false, profile);
                return codec.read(Write(codec.write, *bitmap), MaxDecodedPixels)->GetProfile();
            };
            const Profile own = set.GetProfile(format), other = set.GetLAB();
            EXPECT_EQ(through(own).Get(), own.Get());
            EXPECT_NE(through(other).Get(), other.Get());
        }
    }
}

TEST(Codecs, FailCleanlyWhenWriting)
{
    for (const Codec& codec : Codecs) {
        for (int number = 0; number <= int(Format::MF); ++number) {
            const auto format = Format(number);
            if (format == Format::None)
                continue;
            SCOPED_TRACE(testing::Message() << codec.name << " format " << number);
            const auto bitmap = MakeRandomBitmap(format, 300, 300, false, true);
            if (std::ranges::count(codec.formats, format) != 0) {
                for (const std::size_t room : {0, 1, 40, 8192, 70000}) {
                    FailingStream out(room);
                    EXPECT_THROW(codec.write(out, *bitmap), FailingStream::Failure) << room;
                }
            } else {
                Kernel::MemoryOutStream out;
                EXPECT_THROW(codec.write(out, *bitmap), std::invalid_argument);
                EXPECT_TRUE(out.GetData().empty());
            }
        }
    }
    Kernel::MemoryOutStream out;
    const auto small = MakeRandomBitmap(Format::RGBA8, 2, 2, false, false);
    EXPECT_THROW(WritePNG(out, *small, 10), std::invalid_argument);
    EXPECT_THROW(WriteJPEG(out, *small, 0), std::invalid_argument);
    EXPECT_THROW(WriteWebP(out, *small, 0), std::invalid_argument);
    const auto plain = [](unsigned width) {
        return DynamicBitmap(DynamicBuffer::Create(Format::RGBA8, width, 1));
    };
    EXPECT_THROW(WriteJPEG(out, plain(65501)), std::invalid_argument);
    EXPECT_THROW(WriteWebP(out, plain(16384)), std::invalid_argument);
    EXPECT_TRUE(out.GetData().empty());
}
