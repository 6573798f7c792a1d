#include <raster/Codecs.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <kernel/FormatException.h>
#include <raster/CodecSupport.h>
#include <raster/JpegProtect.h>

namespace Raster {

namespace {

/// Everything that is changed while libjpeg may jump.
struct ReadState
{
    JpegError error;
    jpeg_decompress_struct codec;
    jpeg_progress_mgr progress;
    const unsigned char* data;
    std::size_t size;

    JOCTET* profile; ///< from malloc
    unsigned profileSize;

    Format format;
    unsigned char* pixels;
    std::ptrdiff_t stride;
    unsigned char* row; ///< one row of grey or inks, where they need another layout
};

struct ReadStateCloser
{
    void operator()(ReadState* state) const noexcept
    {
        jpeg_destroy_decompress(&state->codec);
        std::free(state->profile);
    }
};

/// A scan may cost a few bytes and still go over all pixels. Real files have some ten.
void LimitScans(j_common_ptr codec)
{
    constexpr int maxScans = 256;
    if (reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number > maxScans)
        RaiseJpegError(codec, "too many scans");
}

/// The format of a colour space, with what libjpeg is asked for; None for others.
Format ChooseFormat(jpeg_decompress_struct& codec)
{
    switch (codec.jpeg_color_space) {
    case JCS_GRAYSCALE:
        codec.out_color_space = JCS_GRAYSCALE;
        return Format::IA8;
    case JCS_RGB:
    case JCS_YCbCr:
        codec.out_color_space = JCS_EXT_RGBA;
        return Format::RGBA8;
    case JCS_CMYK:
    case JCS_YCCK:
        codec.out_color_space = JCS_CMYK;
        return Format::CMYKA8;
    default:
        return Format::None;
    }
}

void ReadHeader(ReadState& state)
{
    jpeg_create_decompress(&state.codec);
    jpeg_mem_src(&state.codec, state.data, static_cast<unsigned long>(state.size));
    jpeg_save_markers(&state.codec, JPEG_APP0 + 2, 0xffff);
    jpeg_read_header(&state.codec, TRUE);
    state.format = ChooseFormat(state.codec);
    if (state.format == Format::None)
        RaiseJpegError(reinterpret_cast<j_common_ptr>(&state.codec), "unsupported colour space");
    if (!jpeg_read_icc_profile(&state.codec, &state.profile, &state.profileSize))
        state.profile = nullptr;
}

void SpreadGrey(const unsigned char* grey, unsigned char* pixels, unsigned width)
{
    for (unsigned x = 0; x < width; ++x) {
        pixels[2 * x] = grey[x];
        pixels[2 * x + 1] = 255;
    }
}

/// \param flip 255 where the inks are stored inverted, else 0.
void SpreadInks(const unsigned char* inks, unsigned char* pixels, unsigned width,
                unsigned char flip)
{
    for (unsigned x = 0; x < width; ++x, inks += 4, pixels += 5) {
        for (unsigned channel = 0; channel < 4; ++channel)
            pixels[channel] = inks[channel] ^ flip;
        pixels[4] = 255;
    }
}

void ReadRows(ReadState& state)
{
    jpeg_start_decompress(&state.codec);
    // Writers of the Adobe marker store paper as 255 (Adobe Technical Note 5116).
    const unsigned char flip = state.codec.saw_Adobe_marker ? 255 : 0;
    while (state.codec.output_scanline < state.codec.output_height) {
        unsigned char* pixels =
            state.pixels + state.stride * std::ptrdiff_t(state.codec.output_scanline);
        JSAMPROW row = state.format == Format::RGBA8 ? pixels : state.row;
        if (jpeg_read_scanlines(&state.codec, &row, 1) != 1)
            RaiseJpegError(reinterpret_cast<j_common_ptr>(&state.codec), "missing rows");
        if (state.format == Format::IA8)
            SpreadGrey(state.row, pixels, state.codec.output_width);
        else if (state.format == Format::CMYKA8)
            SpreadInks(state.row, pixels, state.codec.output_width, flip);
    }
    jpeg_finish_decompress(&state.codec);
}

[[noreturn]] void Fail(const ReadState& state)
{
    throw Kernel::FormatException("damaged JPEG file: " + std::string(state.error.message));
}

/// Huffman coding spends at least a bit on every block of 8 × 8 samples of some component that has
/// at least half of the pixels: more cannot be in the file, and nothing is allocated for it.
void CheckPlausible(const ReadState& state)
{
    constexpr std::uint64_t maxPixelsPerByte = 2 * 8 * 64;
    const std::uint64_t pixels = std::uint64_t{state.codec.image_width} * state.codec.image_height;
    if (!state.codec.arith_code && pixels / maxPixelsPerByte > state.size)
        throw Kernel::FormatException("damaged JPEG file: less data than its size needs",
                                      state.size);
}

} // namespace

Kernel::Counted<const DynamicBitmap> ReadJPEG(std::span<const unsigned char> bytes,
                                              std::uint64_t maxPixels)
{
    if (bytes.size() < 3 || bytes[0] != 0xff || bytes[1] != 0xd8)
        throw Kernel::FormatException("this is not a JPEG file", 0);
    ReadState state{};
    state.data = bytes.data();
    state.size = bytes.size();
    state.codec.err = InitialiseJpegError(state.error);
    const std::unique_ptr<ReadState, ReadStateCloser> closer(&state);
    if (!RunJpegStep(state.error, ReadHeader, state))
        Fail(state);

    CheckPlausible(state);
    const auto buffer = MakeDecodedBuffer(state.format, state.codec.image_width,
                                          state.codec.image_height, maxPixels);
    auto profile = ReadEmbeddedProfile({state.profile, state.profileSize}, state.format);
    std::vector<unsigned char> row(std::size_t{4} * buffer->GetWidth());
    state.row = row.data();
    state.pixels = buffer->GetData();
    state.stride = buffer->GetStride();
    state.progress.progress_monitor = LimitScans;
    state.codec.progress = &state.progress;
    if (!RunJpegStep(state.error, ReadRows, state))
        Fail(state);
    return Kernel::MakeCounted<const DynamicBitmap>(buffer, std::move(profile));
}

} // namespace Raster
