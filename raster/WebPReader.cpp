#include <raster/Codecs.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>

#include <webp/decode.h>
#include <webp/demux.h>

#include <kernel/FormatException.h>
#include <raster/CodecSupport.h>
#include <raster/Convert.h>

namespace Raster {

namespace {

struct DeleteDemuxer
{
    void operator()(WebPDemuxer* demuxer) const noexcept { WebPDemuxDelete(demuxer); }
};
struct ReleaseFrame
{
    void operator()(WebPIterator* frame) const noexcept { WebPDemuxReleaseIterator(frame); }
};
struct ReleaseChunk
{
    void operator()(WebPChunkIterator* chunk) const noexcept
    {
        WebPDemuxReleaseChunkIterator(chunk);
    }
};

[[noreturn]] void Fail(const char* what)
{
    throw Kernel::FormatException("damaged WebP file: " + std::string(what));
}

Kernel::Counted<const ICCProfile> ReadProfile(const WebPDemuxer* demuxer)
{
    WebPChunkIterator chunk{};
    const std::unique_ptr<WebPChunkIterator, ReleaseChunk> owner(&chunk);
    if (!WebPDemuxGetChunk(demuxer, "ICCP", 1, &chunk))
        return nullptr;
    return ReadEmbeddedProfile({chunk.chunk.bytes, chunk.chunk.size}, Format::RGBA8);
}

/// Decodes a frame to its place on the canvas.
void ReadFrame(const WebPIterator& frame, DynamicBuffer& buffer)
{
    if (frame.width <= 0 || frame.height <= 0 || frame.x_offset < 0 || frame.y_offset < 0 ||
        unsigned(frame.x_offset) + unsigned(frame.width) > buffer.GetWidth() ||
        unsigned(frame.y_offset) + unsigned(frame.height) > buffer.GetHeight())
        Fail("a frame beyond the picture");
    WebPDecoderConfig config;
    if (!WebPInitDecoderConfig(&config))
        throw Kernel::FormatException("the WebP library is of another version");
    unsigned char* const start = buffer.GetRow(unsigned(frame.y_offset)) +
                                 std::size_t(frame.x_offset) * buffer.GetPixelSize();
    config.output.colorspace = MODE_RGBA;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = start;
    config.output.u.RGBA.stride = int(buffer.GetStride());
    config.output.u.RGBA.size = std::size_t(buffer.GetStride()) * std::size_t(frame.height - 1) +
                                std::size_t(frame.width) * buffer.GetPixelSize();
    const VP8StatusCode status = WebPDecode(frame.fragment.bytes, frame.fragment.size, &config);
    if (status == VP8_STATUS_OUT_OF_MEMORY)
        throw std::bad_alloc();
    if (status != VP8_STATUS_OK)
        Fail(status == VP8_STATUS_NOT_ENOUGH_DATA ? "it ends early" : "the pixels cannot be read");
}

} // namespace

Kernel::Counted<const DynamicBitmap> ReadWebP(std::span<const unsigned char> bytes,
                                              std::uint64_t maxPixels)
{
    if (bytes.size() < 12 || std::memcmp(bytes.data(), "RIFF", 4) != 0 ||
        std::memcmp(bytes.data() + 8, "WEBP", 4) != 0)
        throw Kernel::FormatException("this is not a WebP file", 0);
    const WebPData data{bytes.data(), bytes.size()};
    const std::unique_ptr<WebPDemuxer, DeleteDemuxer> demuxer(WebPDemux(&data));
    if (!demuxer)
        Fail("its parts do not fit together, or it ends early");
    WebPIterator frame{};
    const std::unique_ptr<WebPIterator, ReleaseFrame> owner(&frame);
    if (!WebPDemuxGetFrame(demuxer.get(), 1, &frame))
        Fail("there is no picture in it");

    const auto buffer =
        MakeDecodedBuffer(Format::RGBA8, WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH),
                          WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT), maxPixels);
    ReadFrame(frame, *buffer);
    for (unsigned y = 0; y < buffer->GetHeight(); ++y)
        Premultiply(Format::RGBA8, buffer->GetRow(y), buffer->GetWidth());
    return Kernel::MakeCounted<const DynamicBitmap>(buffer, ReadProfile(demuxer.get()));
}

} // namespace Raster
