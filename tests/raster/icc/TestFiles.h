#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include <kernel/Counted.h>
#include <kernel/MemoryOutStream.h>
#include <raster/DynamicBitmap.h>

#include "TestProfiles.h"

namespace RasterTest {

/// A PNG file put together chunk by chunk, with zlib alone.
struct PngFile
{
    unsigned width = 1;
    unsigned height = 1;
    unsigned depth = 8;
    unsigned colourType = 0;
    bool isInterlaced = false;
    std::vector<unsigned> samples; ///< row by row, channel by channel
    Bytes chunks;                  ///< whole chunks between the header and the data

    unsigned GetChannels() const;
    Bytes Encode() const;
};

Bytes MakePngChunk(const std::string& name, const Bytes& data);
Bytes Deflate(const Bytes& data);

/// What a JPEG file made by libjpeg directly is to be like.
struct JpegOptions
{
    int inputSpace;  ///< J_COLOR_SPACE of the samples
    int storedSpace; ///< and of the file
    unsigned channels;
    bool isProgressive = false;
    bool hasAdobeMarker = false;
};

/// A file of one colour, \p width × \p height, at the best quality.
Bytes EncodeJpeg(const JpegOptions& options, const Bytes& colour, unsigned width, unsigned height);

/// A bitmap of random pixels: noisy or in flat stretches; with random alpha or opaque.
Kernel::Counted<const Raster::DynamicBitmap> MakeRandomBitmap(Raster::Format format, unsigned width,
                                                              unsigned height, bool isFlat,
                                                              bool isOpaque, Profile profile = {});

/// The two have one format and size, and no channel differs by more than \p tolerance.
void ExpectSimilar(const Raster::DynamicBitmap& actual, const Raster::DynamicBitmap& expected,
                   double tolerance = 0);

/// Reads \p file cut off at many places, which must be refused unless every pixel is still there,
/// and \p rounds times with bytes changed at random, which must be read or refused.
void ReadDamaged(const Bytes& file,
                 Kernel::Counted<const Raster::DynamicBitmap> (*read)(
                     std::span<const unsigned char>, std::uint64_t),
                 int rounds);

/// What a codec's function makes of a bitmap.
template<class... Options>
Bytes Write(void (*write)(Kernel::OutStream&, const Raster::DynamicBitmap&, Options...),
            const Raster::DynamicBitmap& bitmap, std::type_identity_t<Options>... options)
{
    Kernel::MemoryOutStream out;
    write(out, bitmap, options...);
    return out.TakeData();
}

/// Throws something of its own after some bytes.
class FailingStream : public Kernel::OutStream
{
public:
    struct Failure
    {};
    explicit FailingStream(std::size_t room) : m_room(room) {}
    using Kernel::OutStream::Write;
    void Write(const void*, std::size_t size) override
    {
        if (size > m_room)
            throw Failure();
        m_room -= size;
    }
    void Close() override {}

private:
    std::size_t m_room;
};

} // namespace RasterTest
