#include <raster/Codecs.h>

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include <raster/CodecSupport.h>
#include <raster/JpegProtect.h>

namespace Raster {

namespace {

constexpr std::size_t BlockSize = 1 << 16;

/// Everything that is changed while libjpeg may jump; owns only the codec.
struct WriteState
{
    JpegError error;
    jpeg_compress_struct codec;
    jpeg_destination_mgr destination;
    Kernel::OutStream* out;
    std::exception_ptr* thrown; ///< by the stream
    unsigned char* block;       ///< BlockSize bytes on their way to the stream

    const DynamicBuffer* buffer;
    const ICCProfile* profile; ///< null for sRGB
    int quality;
    unsigned char* row; ///< room for one row without alpha
};

struct WriteStateCloser
{
    void operator()(WriteState* state) const noexcept { jpeg_destroy_compress(&state->codec); }
};

/// An exception of the stream must not cross libjpeg: it is kept and thrown again outside.
void WriteBlock(j_compress_ptr codec, std::size_t size)
{
    auto* state = static_cast<WriteState*>(codec->client_data);
    try {
        state->out->Write(state->block, size);
        return;
    } catch (...) {
        *state->thrown = std::current_exception();
    }
    RaiseJpegError(reinterpret_cast<j_common_ptr>(codec), "cannot write");
}

void StartBlock(j_compress_ptr codec)
{
    auto* state = static_cast<WriteState*>(codec->client_data);
    state->destination.next_output_byte = state->block;
    state->destination.free_in_buffer = BlockSize;
}

boolean FlushBlock(j_compress_ptr codec)
{
    WriteBlock(codec, BlockSize);
    StartBlock(codec);
    return TRUE;
}

void FlushLastBlock(j_compress_ptr codec)
{
    WriteBlock(codec, BlockSize - codec->dest->free_in_buffer);
}

void StartCodec(WriteState& state)
{
    jpeg_create_compress(&state.codec);
    state.codec.client_data = &state;
    state.destination.init_destination = StartBlock;
    state.destination.empty_output_buffer = FlushBlock;
    state.destination.term_destination = FlushLastBlock;
    state.codec.dest = &state.destination;
    const Format format = state.buffer->GetFormat();
    state.codec.image_width = state.buffer->GetWidth();
    state.codec.image_height = state.buffer->GetHeight();
    state.codec.input_components = static_cast<int>(state.buffer->GetPixelSize()) - 1;
    state.codec.in_color_space = format == Format::IA8      ? JCS_GRAYSCALE
                                 : format == Format::CMYKA8 ? JCS_CMYK
                                                            : JCS_RGB;
    jpeg_set_defaults(&state.codec);
    if (format == Format::CMYKA8)
        jpeg_set_colorspace(&state.codec, JCS_YCCK); // with the Adobe marker
    jpeg_set_quality(&state.codec, state.quality, TRUE);
    // Halved chroma smears thin coloured lines, so it goes with low quality only.
    constexpr int fullChromaQuality = 90;
    if (state.quality >= fullChromaQuality) {
        for (int component = 0; component < state.codec.num_components; ++component)
            state.codec.comp_info[component].h_samp_factor =
                state.codec.comp_info[component].v_samp_factor = 1;
    }
}

/// Premultiplied over white: c + (255 − a).
void CompositeOnWhite(const unsigned char* pixels, unsigned channels, unsigned char* row,
                      unsigned width)
{
    for (unsigned x = 0; x < width; ++x, pixels += channels) {
        const unsigned white = 255u - pixels[channels - 1];
        for (unsigned channel = 0; channel + 1 < channels; ++channel)
            *row++ = static_cast<unsigned char>(std::min(255u, pixels[channel] + white));
    }
}

/// Premultiplied inks on paper are the inks themselves. Files with the Adobe marker store paper as
/// 255 (Adobe Technical Note 5116).
void InvertInks(const unsigned char* pixels, unsigned char* row, unsigned width)
{
    for (unsigned x = 0; x < width; ++x, pixels += 5) {
        for (unsigned channel = 0; channel < 4; ++channel)
            *row++ = static_cast<unsigned char>(255 - pixels[channel]);
    }
}

void MakeRow(WriteState& state, const unsigned char* pixels)
{
    if (state.buffer->GetFormat() == Format::CMYKA8)
        InvertInks(pixels, state.row, state.codec.image_width);
    else
        CompositeOnWhite(pixels, state.buffer->GetPixelSize(), state.row, state.codec.image_width);
}

void WritePicture(WriteState& state)
{
    StartCodec(state);
    jpeg_start_compress(&state.codec, TRUE);
    if (state.profile)
        jpeg_write_icc_profile(&state.codec, state.profile->GetBytes().data(),
                               static_cast<unsigned>(state.profile->GetBytes().size()));
    while (state.codec.next_scanline < state.codec.image_height) {
        MakeRow(state, state.buffer->GetRow(state.codec.next_scanline));
        jpeg_write_scanlines(&state.codec, &state.row, 1);
    }
    jpeg_finish_compress(&state.codec);
}

void CheckArguments(const DynamicBitmap& bitmap, int quality)
{
    const Format format = bitmap.GetFormat();
    if (format != Format::RGBA8 && format != Format::IA8 && format != Format::CMYKA8)
        throw std::invalid_argument("JPEG files hold RGB, grey or CMYK pictures of 8 bits");
    if (quality < 1 || quality > 100)
        throw std::invalid_argument("the quality of a JPEG file is from 1 to 100");
    if (bitmap.GetWidth() > JPEG_MAX_DIMENSION || bitmap.GetHeight() > JPEG_MAX_DIMENSION)
        throw std::invalid_argument("the sides of a JPEG picture have at most 65500 pixels");
}

} // namespace

void WriteJPEG(Kernel::OutStream& out, const DynamicBitmap& bitmap, int quality)
{
    CheckArguments(bitmap, quality);
    const DynamicBuffer& buffer = bitmap.GetPixels();
    const auto profile = GetProfileToEmbed(buffer.GetFormat(), bitmap.GetProfile());
    std::vector<unsigned char> row(std::size_t{4} * buffer.GetWidth());
    std::vector<unsigned char> block(BlockSize);
    std::exception_ptr thrown;

    WriteState state{};
    state.out = &out;
    state.thrown = &thrown;
    state.block = block.data();
    state.buffer = &buffer;
    state.profile = profile.Get();
    state.quality = quality;
    state.row = row.data();
    state.codec.err = InitialiseJpegError(state.error);
    const std::unique_ptr<WriteState, WriteStateCloser> closer(&state);

    const bool isDone = RunJpegStep(state.error, WritePicture, state);
    if (thrown)
        std::rethrow_exception(thrown);
    if (!isDone)
        throw Kernel::OutStream::WriteException("cannot write JPEG: " +
                                                std::string(state.error.message));
}

} // namespace Raster
