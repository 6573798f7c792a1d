#include "TestFiles.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <random>

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <zlib.h>

#include <kernel/FormatException.h>
#include <raster/Codecs.h>
#include <raster/Convert.h>
#include <raster/Pixel.h>

namespace RasterTest {

namespace {

void AppendNumber(Bytes& bytes, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<unsigned char>(value >> shift));
}

void Append(Bytes& bytes, const Bytes& more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

struct Pass
{
    unsigned left, top, stepX, stepY;
};
constexpr Pass Adam7[] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                          {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
constexpr Pass Whole{0, 0, 1, 1};

/// The rows of one pass, unfiltered, samples packed from the highest bit on.
void AppendPass(const PngFile& file, const Pass& pass, Bytes& raw)
{
    if (pass.left >= file.width)
        return;
    for (unsigned y = pass.top; y < file.height; y += pass.stepY) {
        raw.push_back(0);
        unsigned bits = 0, count = 0;
        for (unsigned x = pass.left; x < file.width; x += pass.stepX) {
            for (unsigned c = 0; c < file.GetChannels(); ++c) {
                bits = bits << file.depth |
                       file.samples[(y * file.width + x) * file.GetChannels() + c];
                for (count += file.depth; count >= 8; count -= 8)
                    raw.push_back(static_cast<unsigned char>(bits >> (count - 8)));
            }
        }
        if (count > 0)
            raw.push_back(static_cast<unsigned char>(bits << (8 - count)));
    }
}

} // namespace

unsigned PngFile::GetChannels() const
{
    constexpr unsigned channels[] = {1, 0, 3, 1, 2, 0, 4};
    return channels[colourType];
}

Bytes MakePngChunk(const std::string& name, const Bytes& data)
{
    Bytes chunk;
    AppendNumber(chunk, std::uint32_t(data.size()));
    chunk.insert(chunk.end(), name.begin(), name.end());
    Append(chunk, data);
    AppendNumber(chunk, std::uint32_t(crc32(0, chunk.data() + 4, uInt(chunk.size() - 4))));
    return chunk;
}

Bytes Deflate(const Bytes& data)
{
    uLongf size = compressBound(uLong(data.size()));
    Bytes compressed(size);
    compress(compressed.data(), &size, data.data(), uLong(data.size()));
    compressed.resize(size);
    return compressed;
}

Bytes PngFile::Encode() const
{
    Bytes header;
    AppendNumber(header, width);
    AppendNumber(header, height);
    Append(header, {static_cast<unsigned char>(depth), static_cast<unsigned char>(colourType), 0, 0,
                    isInterlaced});
    Bytes raw;
    if (isInterlaced) {
        for (const Pass& pass : Adam7)
            AppendPass(*this, pass, raw);
    } else if (!samples.empty()) {
        AppendPass(*this, Whole, raw);
    }
    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    Append(file, MakePngChunk("IHDR", header));
    Append(file, chunks);
    Append(file, MakePngChunk("IDAT", Deflate(raw)));
    Append(file, MakePngChunk("IEND", {}));
    return file;
}

Bytes EncodeJpeg(const JpegOptions& options, const Bytes& colour, unsigned width, unsigned height)
{
    jpeg_compress_struct codec{};
    jpeg_error_mgr error;
    codec.err = jpeg_std_error(&error);
    jpeg_create_compress(&codec);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &data, &size);
    codec.image_width = width;
    codec.image_height = height;
    codec.input_components = int(options.channels);
    codec.in_color_space = J_COLOR_SPACE(options.inputSpace);
    jpeg_set_defaults(&codec);
    jpeg_set_colorspace(&codec, J_COLOR_SPACE(options.storedSpace));
    codec.write_Adobe_marker = options.hasAdobeMarker;
    jpeg_set_quality(&codec, 100, TRUE);
    if (options.isProgressive)
        jpeg_simple_progression(&codec);
    jpeg_start_compress(&codec, TRUE);
    Bytes row;
    for (unsigned x = 0; x < width; ++x)
        Append(row, colour);
    JSAMPROW rows = row.data();
    while (codec.next_scanline < height)
        jpeg_write_scanlines(&codec, &rows, 1);
    jpeg_finish_compress(&codec);
    Bytes file(data, data + size);
    jpeg_destroy_compress(&codec);
    std::free(data);
    return file;
}

Kernel::Counted<const Raster::DynamicBitmap> MakeRandomBitmap(Raster::Format format, unsigned width,
                                                              unsigned height, bool isFlat,
                                                              bool isOpaque, Profile profile)
{
    const auto buffer = Raster::DynamicBuffer::Create(format, width, height);
    std::mt19937 random(5);
    Raster::WithPixelOfFormat(format, false, [&]<class P>(P pixel) {
        for (unsigned y = 0; y < height; ++y) {
            P* row = reinterpret_cast<P*>(buffer->GetRow(y));
            for (unsigned x = 0; x < width; ++x) {
                if (!isFlat || x % 8 == 0) {
                    for (auto& channel : pixel.channels)
                        channel = static_cast<typename P::ChannelType>(random());
                    if (isOpaque || random() % 4 == 0)
                        pixel.Alpha() = P::Max;
                }
                row[x] = pixel;
            }
            Raster::Premultiply(format, row, width);
        }
        return true;
    });
    return Kernel::MakeCounted<const Raster::DynamicBitmap>(buffer, std::move(profile));
}

void ExpectSimilar(const Raster::DynamicBitmap& actual, const Raster::DynamicBitmap& expected,
                   double tolerance)
{
    ASSERT_EQ(actual.GetFormat(), expected.GetFormat());
    ASSERT_EQ(actual.GetWidth(), expected.GetWidth());
    ASSERT_EQ(actual.GetHeight(), expected.GetHeight());
    Raster::WithPixelOfFormat(actual.GetFormat(), false, [&]<class P>(P) {
        double worst = 0;
        for (unsigned y = 0; y < actual.GetHeight(); ++y) {
            const auto* a = reinterpret_cast<const P*>(actual.GetBuffer()->GetRow(y));
            const auto* b = reinterpret_cast<const P*>(expected.GetBuffer()->GetRow(y));
            for (unsigned x = 0; x < actual.GetWidth(); ++x)
                for (std::size_t c = 0; c < P::ChannelCount; ++c)
                    worst = std::max(worst, std::abs(double(a[x][c]) - double(b[x][c])));
        }
        EXPECT_LE(worst, tolerance);
        return true;
    });
}

void ReadDamaged(const Bytes& file,
                 Kernel::Counted<const Raster::DynamicBitmap> (*read)(
                     std::span<const unsigned char>, std::uint64_t),
                 int rounds)
{
    const auto whole = read(file, Raster::MaxDecodedPixels);
    int refused = 0;
    for (std::size_t size = 0; size < file.size(); size += 1 + size / 100) {
        // A copy, so that reading beyond its end is noticed.
        const Bytes part(file.begin(), file.begin() + std::ptrdiff_t(size));
        try {
            ExpectSimilar(*read(part, Raster::MaxDecodedPixels), *whole);
        } catch (const Kernel::FormatException&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 0);
    std::mt19937 random(2);
    for (int round = 0; round < rounds; ++round) {
        Bytes bytes = file;
        for (unsigned change = 0; change <= random() % 3; ++change)
            bytes[random() % bytes.size()] ^= static_cast<unsigned char>(1 + random() % 255);
        try {
            read(bytes, Raster::MaxDecodedPixels);
        } catch (const Kernel::FormatException&) {
            continue;
        } catch (const std::bad_alloc&) {
            ADD_FAILURE() << "memory was asked for in round " << round;
        }
    }
}

} // namespace RasterTest
