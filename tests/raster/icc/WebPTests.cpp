#include <gtest/gtest.h>
#include <webp/decode.h>
#include <webp/mux.h>

#include <kernel/FormatException.h>
#include <raster/Codecs.h>
#include <raster/Convert.h>

#include "TestFiles.h"

using namespace Raster;
using namespace RasterTest;

TEST(WebP, LosslessPicturesComeBackUnchanged)
{
    for (const bool isFlat : {false, true}) {
        for (const bool isOpaque : {false, true}) {
            const auto bitmap = MakeRandomBitmap(Format::RGBA8, 61, 23, isFlat, isOpaque);
            const Bytes file = Write(WriteWebP, *bitmap, {});
            const auto read = ReadImage(file);
            ExpectSimilar(*read, *bitmap);
            EXPECT_FALSE(read->GetProfile());
            WebPBitstreamFeatures features;
            ASSERT_EQ(WebPGetFeatures(file.data(), file.size(), &features), VP8_STATUS_OK);
            EXPECT_EQ(features.has_alpha, int(!isOpaque));
            EXPECT_EQ(features.format, 2); // lossless
        }
    }
}

TEST(WebP, LossyPicturesComeBackAlike)
{
    const auto buffer = DynamicBuffer::Create(Format::RGBA8, 64, 48);
    for (unsigned y = 0; y < 48; ++y) {
        for (unsigned x = 0; x < 64; ++x) {
            const PixelRGBA8 pixel{
                {std::uint8_t(2 * x + 60), std::uint8_t(3 * y + 50), 90, std::uint8_t(255 - x)}};
            reinterpret_cast<PixelRGBA8*>(buffer->GetRow(y))[x] = pixel;
        }
        Premultiply(Format::RGBA8, buffer->GetRow(y), 64);
    }
    const auto bitmap = Kernel::MakeCounted<const DynamicBitmap>(buffer);
    const Bytes best = Write(WriteWebP, *bitmap, 100), small = Write(WriteWebP, *bitmap, 40);
    EXPECT_LT(small.size(), best.size());
    ExpectSimilar(*ReadWebP(best), *bitmap, 6);
    ExpectSimilar(*ReadWebP(small), *bitmap, 16);
}

TEST(WebP, ReadsTheFirstFrameOfAnAnimation)
{
    const auto frame = MakeRandomBitmap(Format::RGBA8, 6, 4, false, false);
    const Bytes bytes = Write(WriteWebP, *frame, {});
    WebPMux* mux = WebPMuxNew();
    const WebPMuxAnimParams parameters{0, 0};
    ASSERT_EQ(WebPMuxSetAnimationParams(mux, &parameters), WEBP_MUX_OK);
    WebPMuxFrameInfo info{};
    info.bitstream = {bytes.data(), bytes.size()};
    info.x_offset = 2;
    info.y_offset = 8;
    info.id = WEBP_CHUNK_ANMF;
    info.duration = 100;
    for (int i = 0; i < 2; ++i, info.x_offset += 2)
        ASSERT_EQ(WebPMuxPushFrame(mux, &info, 1), WEBP_MUX_OK);
    ASSERT_EQ(WebPMuxSetCanvasSize(mux, 12, 12), WEBP_MUX_OK);
    WebPData file{};
    ASSERT_EQ(WebPMuxAssemble(mux, &file), WEBP_MUX_OK);
    const auto read = ReadWebP({file.bytes, file.size});
    WebPDataClear(&file);
    WebPMuxDelete(mux);
    ASSERT_EQ(read->GetWidth(), 12u);
    const auto expected = DynamicBuffer::Create(Format::RGBA8, 12, 12);
    for (unsigned y = 0; y < 4; ++y)
        std::copy_n(frame->GetBuffer()->GetRow(y), 24, expected->GetRow(y + 8) + 8);
    ExpectSimilar(*read, DynamicBitmap(expected));
}

TEST(WebP, DamageIsRefused)
{
    const auto bitmap =
        MakeRandomBitmap(Format::RGBA8, 17, 9, true, false, MakeProfile(MakeWideRGBBytes(1.9)));
    for (const auto quality : {std::optional<int>(), std::optional<int>(80)}) {
        const Bytes file = Write(WriteWebP, *bitmap, quality);
        ReadDamaged(file, ReadWebP, 3000);
        for (const unsigned side : {0xffffffu, 0x7fffu}) {
            // The canvas of the extended header claims more than the picture has.
            Bytes bomb = file;
            for (unsigned i = 0; i < 3; ++i)
                bomb[24 + i] = bomb[27 + i] = static_cast<unsigned char>(side >> (8 * i));
            EXPECT_THROW(ReadWebP(bomb), Kernel::FormatException);
        }
    }
}
