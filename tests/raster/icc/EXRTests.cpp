#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include <ImfChannelList.h>
#include <ImfChromaticitiesAttribute.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStdIO.h>
#include <ImfTiledOutputFile.h>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <raster/Codecs.h>

#include "TestFiles.h"

using namespace Raster;
using namespace RasterTest;

namespace {

/// Random colours, some below 0 and beyond 1, premultiplied.
Kernel::Counted<const DynamicBitmap> MakeBitmap(unsigned width, unsigned height, bool isOpaque,
                                                Profile profile = {})
{
    const auto buffer = DynamicBuffer::Create(Format::RGBAUF, width, height);
    std::mt19937 random(3);
    std::uniform_real_distribution<float> colour(-0.5f, 3), alpha(0.01f, 1);
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            auto& pixel = reinterpret_cast<PixelRGBAUF*>(buffer->GetRow(y))[x];
            const float a = isOpaque ? 1 : alpha(random);
            pixel = {{colour(random) * a, colour(random) * a, colour(random) * a, a}};
        }
    }
    return Kernel::MakeCounted<const DynamicBitmap>(buffer, std::move(profile));
}

double FromSRGB(double v)
{
    const double m = std::abs(v);
    return std::copysign(m <= 0.04045 ? m / 12.92 : std::pow((m + 0.055) / 1.055, 2.4), v);
}

/// A file of a window that does not begin at 0, in half precision.
Bytes MakeFile(const std::vector<const char*>& names, const Imf::Chromaticities& chromaticities,
               Imf::Compression compression, bool isTiled)
{
    const Imath::Box2i window({-3, 5}, {16, 14});
    Imf::Header header({{0, 0}, {30, 30}}, window);
    header.compression() = compression;
    Imf::addChromaticities(header, chromaticities);
    std::vector<std::vector<Imath::half>> planes;
    Imf::FrameBuffer frame;
    for (const char* name : names) {
        header.channels().insert(name, Imf::Channel(Imf::HALF));
        auto& plane = planes.emplace_back(20 * 10);
        for (std::size_t i = 0; i < plane.size(); ++i)
            plane[i] = float(i + planes.size()) / 256;
        frame.insert(name, Imf::Slice::Make(Imf::HALF, plane.data(), window));
    }
    std::ostringstream text;
    Imf::StdOSStream stream;
    if (isTiled) {
        header.setTileDescription(Imf::TileDescription(8, 8));
        Imf::TiledOutputFile file(stream, header, 0);
        file.setFrameBuffer(frame);
        file.writeTiles(0, file.numXTiles() - 1, 0, file.numYTiles() - 1);
    } else {
        Imf::OutputFile file(stream, header, 0);
        file.setFrameBuffer(frame);
        file.writePixels(10);
    }
    const std::string bytes = stream.str();
    return {bytes.begin(), bytes.end()};
}

} // namespace

TEST(EXR, LinearPicturesComeBackUnchanged)
{
    const Profile linear = ICCManager::GetInstance().GetLinearRGBProfile();
    for (const bool isOpaque : {false, true}) {
        const auto bitmap = MakeBitmap(67, 41, isOpaque, linear);
        const Bytes bytes = Write(WriteEXR, *bitmap);
        const auto read = ReadImage(bytes);
        ExpectSimilar(*read, *bitmap);
        EXPECT_EQ(read->GetProfile().Get(), linear.Get());

        // OpenEXR's own reader finds the channels as they are stored.
        Imf::StdISStream stream;
        stream.str({bytes.begin(), bytes.end()});
        Imf::InputFile file(stream, 0);
        EXPECT_EQ(file.header().channels().findChannel("A") != nullptr, !isOpaque);
        std::vector<float> green(67 * 41);
        Imf::FrameBuffer frame;
        frame.insert("G", Imf::Slice::Make(Imf::FLOAT, green.data(), file.header().dataWindow()));
        file.setFrameBuffer(frame);
        file.readPixels(0, 40);
        const auto* row = reinterpret_cast<const PixelRGBAUF*>(bitmap->GetBuffer()->GetRow(40));
        EXPECT_EQ(green[40 * 67 + 66], row[66][1]);
    }
}

TEST(EXR, EncodedColoursBecomeLinear)
{
    const auto bitmap = MakeBitmap(50, 3, false);
    const auto read = ReadEXR(Write(WriteEXR, *bitmap));
    for (unsigned x = 0; x < 50; ++x) {
        const auto& in = reinterpret_cast<const PixelRGBAUF*>(bitmap->GetBuffer()->GetRow(2))[x];
        const auto& out = reinterpret_cast<const PixelRGBAUF*>(read->GetBuffer()->GetRow(2))[x];
        const double alpha = in.Alpha();
        EXPECT_EQ(out.Alpha(), in.Alpha());
        for (std::size_t c = 0; c < 3; ++c)
            EXPECT_NEAR(out[c], FromSRGB(in[c] / alpha) * alpha, 2e-4 * (1 + std::abs(out[c])));
    }
    // What is not a number becomes 0.
    const auto buffer = DynamicBuffer::Create(Format::RGBAUF, 1, 1);
    *reinterpret_cast<PixelRGBAUF*>(buffer->GetData()) = {
        {NAN, std::numeric_limits<float>::infinity(), 0.5f, 1}};
    const auto cleaned = ReadEXR(Write(WriteEXR, DynamicBitmap(buffer)));
    const auto& pixel = *reinterpret_cast<const PixelRGBAUF*>(cleaned->GetBuffer()->GetRow(0));
    EXPECT_NEAR(pixel[0], 0, 1e-4);
    EXPECT_NEAR(pixel[1], 0, 1e-4);
}

TEST(EXR, ReadsOtherChannelsWindowsAndChromaticities)
{
    const Imf::Chromaticities wide({0.7f, 0.29f}, {0.17f, 0.79f}, {0.13f, 0.05f}, {0.31f, 0.33f});
    const Profile linear = ICCManager::GetInstance().GetLinearRGBProfile();
    for (const auto compression :
         {Imf::NO_COMPRESSION, Imf::RLE_COMPRESSION, Imf::ZIPS_COMPRESSION, Imf::PIZ_COMPRESSION}) {
        for (const bool isTiled : {false, true}) {
            const auto colour = ReadEXR(MakeFile({"R", "G", "A", "Z"}, {}, compression, isTiled));
            ASSERT_EQ(colour->GetWidth(), 20u);
            ASSERT_EQ(colour->GetHeight(), 10u);
            EXPECT_EQ(colour->GetProfile().Get(), linear.Get());
            const auto* row = reinterpret_cast<const PixelRGBAUF*>(colour->GetBuffer()->GetRow(1));
            EXPECT_EQ(row[2], (PixelRGBAUF{{23 / 256.f, 24 / 256.f, 0, 25 / 256.f}}));

            const auto grey = ReadEXR(MakeFile({"Y"}, wide, compression, isTiled));
            row = reinterpret_cast<const PixelRGBAUF*>(grey->GetBuffer()->GetRow(9));
            EXPECT_EQ(row[19], (PixelRGBAUF{{200 / 256.f, 200 / 256.f, 200 / 256.f, 1}}));
            EXPECT_NE(grey->GetProfile().Get(), linear.Get());
        }
    }
    EXPECT_THROW(ReadEXR(MakeFile({"Z"}, {}, Imf::ZIP_COMPRESSION, false)),
                 Kernel::FormatException);
}

TEST(EXR, DamageIsRefused)
{
    ReadDamaged(Write(WriteEXR, *MakeBitmap(9, 20, false)), ReadEXR, 2000);
    for (const auto compression :
         {Imf::NO_COMPRESSION, Imf::RLE_COMPRESSION, Imf::PIZ_COMPRESSION, Imf::PXR24_COMPRESSION,
          Imf::B44_COMPRESSION, Imf::DWAA_COMPRESSION})
        ReadDamaged(
            MakeFile({"R", "G", "B", "A"}, {}, compression, compression == Imf::RLE_COMPRESSION),
            ReadEXR, 1000);
}
