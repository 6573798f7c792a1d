#include <raster/Codecs.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include <kernel/FormatException.h>
#include <raster/CodecSupport.h>
#include <raster/Convert.h>
#include <raster/PngProtect.h>

namespace Raster {

namespace {

/// Everything that is changed while libpng may jump.
struct ReadState
{
    PngError error;
    png_structp png;
    png_infop info;
    const unsigned char* data;
    std::size_t size;
    std::size_t position;

    // from the header
    png_uint_32 width;
    png_uint_32 height;
    int depth;
    int colourType;
    int passes;
    std::uint64_t filteredSize; ///< bytes of the image data before compression, without interlacing
    const unsigned char* profile;
    png_uint_32 profileSize;

    // where the rows go
    unsigned char* pixels;
    std::ptrdiff_t stride;
    std::size_t rowSize;
};

struct ReadStateCloser
{
    void operator()(ReadState* state) const noexcept
    {
        png_destroy_read_struct(&state->png, &state->info, nullptr);
    }
};

void ReadBytes(png_structp png, png_bytep destination, std::size_t count)
{
    auto* state = static_cast<ReadState*>(png_get_io_ptr(png));
    if (count > state->size - state->position)
        png_error(png, "the file ends early");
    std::memcpy(destination, state->data + state->position, count);
    state->position += count;
}

/// Texts and the like are skipped unread: each could inflate to the limit of a chunk.
void SkipUnusedChunks(png_structp png)
{
    static constexpr unsigned char names[] = "tEXt\0zTXt\0iTXt\0eXIf\0sPLT\0hIST\0pCAL\0sCAL\0"
                                             "gAMA\0cHRM\0tIME\0bKGD\0pHYs\0oFFs\0sBIT";
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, names, sizeof(names) / 5);
}

void ReadHeader(ReadState& state)
{
    constexpr png_alloc_size_t maxChunk = 16 << 20; // a profile; press profiles have some 2 MB
    state.info = png_create_info_struct(state.png);
    if (!state.info)
        png_error(state.png, "out of memory");
    png_set_read_fn(state.png, &state, ReadBytes);
    png_set_user_limits(state.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_chunk_malloc_max(state.png, maxChunk);
    SkipUnusedChunks(state.png);
    png_read_info(state.png, state.info);
    png_get_IHDR(state.png, state.info, &state.width, &state.height, &state.depth,
                 &state.colourType, nullptr, nullptr, nullptr);
    state.filteredSize =
        (std::uint64_t{png_get_rowbytes(state.png, state.info)} + 1) * state.height;

    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    if (png_get_iCCP(state.png, state.info, &name, &compression, &profile, &state.profileSize))
        state.profile = profile;
}

/// Asks libpng for colour and alpha of 8 or 16 bits in the order and endianness of our pixels.
void SetTransforms(ReadState& state)
{
    png_set_expand(state.png);
    if (std::endian::native == std::endian::little)
        png_set_swap(state.png);
    // Counts only where the file has no transparency of its own.
    png_set_add_alpha(state.png, state.depth == 16 ? 0xffff : 0xff, PNG_FILLER_AFTER);
    state.passes = png_set_interlace_handling(state.png);
    png_read_update_info(state.png, state.info);
    if (png_get_rowbytes(state.png, state.info) != state.rowSize)
        png_error(state.png, "unexpected layout of pixels");
}

void ReadRows(ReadState& state)
{
    SetTransforms(state);
    for (int pass = 0; pass < state.passes; ++pass) {
        for (png_uint_32 y = 0; y < state.height; ++y)
            png_read_row(state.png, state.pixels + state.stride * std::ptrdiff_t(y), nullptr);
    }
    png_read_end(state.png, nullptr);
}

[[noreturn]] void Fail(const ReadState& state)
{
    throw Kernel::FormatException("damaged PNG file: " + std::string(state.error.message),
                                  state.position);
}

Format GetFormat(const ReadState& state)
{
    if (state.colourType & PNG_COLOR_MASK_COLOR)
        return state.depth == 16 ? Format::RGBA16 : Format::RGBA8;
    return state.depth == 16 ? Format::IA16 : Format::IA8;
}

/// Deflate shrinks by at most 1032 to 1: more pixels than that cannot be in the file, and nothing
/// is allocated for them.
void CheckPlausible(const ReadState& state)
{
    constexpr std::uint64_t maxRatio = 1032;
    if (state.filteredSize / maxRatio > state.size)
        throw Kernel::FormatException("damaged PNG file: less data than its size needs",
                                      state.size);
}

} // namespace

Kernel::Counted<const DynamicBitmap> ReadPNG(std::span<const unsigned char> bytes,
                                             std::uint64_t maxPixels)
{
    if (bytes.size() < 8 || png_sig_cmp(bytes.data(), 0, 8) != 0)
        throw Kernel::FormatException("this is not a PNG file", 0);
    ReadState state{};
    state.data = bytes.data();
    state.size = bytes.size();
    state.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state.error, RaisePngError,
                                       IgnorePngWarning);
    if (!state.png)
        throw std::bad_alloc();
    const std::unique_ptr<ReadState, ReadStateCloser> closer(&state);

    if (!RunPngStep(state.png, ReadHeader, state))
        Fail(state);
    const Format format = GetFormat(state);
    if (std::uint64_t{state.width} * state.height > maxPixels)
        throw Kernel::FormatException("the picture is too large");
    CheckPlausible(state);
    const auto buffer = MakeDecodedBuffer(format, state.width, state.height, maxPixels);
    auto profile = ReadEmbeddedProfile({state.profile, state.profileSize}, format);

    state.pixels = buffer->GetData();
    state.stride = buffer->GetStride();
    state.rowSize = std::size_t{buffer->GetPixelSize()} * state.width;
    if (!RunPngStep(state.png, ReadRows, state))
        Fail(state);
    for (unsigned y = 0; y < buffer->GetHeight(); ++y)
        Premultiply(format, buffer->GetRow(y), buffer->GetWidth());
    return Kernel::MakeCounted<const DynamicBitmap>(buffer, std::move(profile));
}

} // namespace Raster
