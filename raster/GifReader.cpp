#include <raster/Codecs.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gif_lib.h>

#include <kernel/FormatException.h>
#include <raster/CodecSupport.h>

namespace Raster {

namespace {

struct GifInput
{
    std::span<const unsigned char> bytes;
    std::size_t position = 0;
};

int ReadBytes(GifFileType* gif, GifByteType* destination, int count)
{
    auto* input = static_cast<GifInput*>(gif->UserData);
    const std::size_t rest = input->bytes.size() - input->position;
    const std::size_t size = std::min(rest, static_cast<std::size_t>(count));
    if (size > 0)
        std::memcpy(destination, input->bytes.data() + input->position, size);
    input->position += size;
    return int(size);
}

struct GifCloser
{
    void operator()(GifFileType* gif) const noexcept
    {
        int error = 0;
        DGifCloseFile(gif, &error);
    }
};

/// Reads the first frame of a file onto the file's canvas.
class Reader
{
public:
    explicit Reader(std::span<const unsigned char> bytes) : m_input{bytes}
    {
        int error = 0;
        m_gif.reset(DGifOpen(&m_input, ReadBytes, &error));
        if (!m_gif)
            Fail(error);
    }

    Kernel::Counted<const DynamicBitmap> Read(std::uint64_t maxPixels)
    {
        FindFrame();
        CheckPlausible();
        ReadColours();
        const auto buffer = MakeDecodedBuffer(Format::RGBA8, std::uint64_t(m_gif->SWidth),
                                              std::uint64_t(m_gif->SHeight), maxPixels);
        ReadRows(*buffer);
        return Kernel::MakeCounted<const DynamicBitmap>(buffer);
    }

private:
    [[noreturn]] void Fail(int error) const
    {
        const char* message = GifErrorString(error);
        Fail(message ? message : "unknown error");
    }
    [[noreturn]] void Fail(const char* message) const
    {
        throw Kernel::FormatException(std::string("damaged GIF file: ") + message,
                                      m_input.position);
    }
    void Check(int result) const
    {
        if (result != GIF_OK)
            Fail(m_gif->Error);
    }

    /// Goes to the first frame; notes the transparency that is told before it.
    void FindFrame()
    {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        for (;;) {
            Check(DGifGetRecordType(m_gif.get(), &type));
            if (type == IMAGE_DESC_RECORD_TYPE)
                break;
            if (type == TERMINATE_RECORD_TYPE)
                Fail("there is no picture in it");
            if (type == EXTENSION_RECORD_TYPE)
                ReadExtension();
        }
        Check(DGifGetImageDesc(m_gif.get()));
    }

    void ReadExtension()
    {
        int code = 0;
        GifByteType* block = nullptr;
        Check(DGifGetExtension(m_gif.get(), &code, &block));
        GraphicsControlBlock control;
        if (code == GRAPHICS_EXT_FUNC_CODE && block &&
            DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
            m_transparent = control.TransparentColor;
        while (block)
            Check(DGifGetExtensionNext(m_gif.get(), &block));
    }

    /// A code of 12 bits stands for at most 4096 pixels: larger pictures cannot be in the file, and
    /// nothing is allocated for them.
    void CheckPlausible() const
    {
        constexpr std::uint64_t pixelsPerByte = 4096 * 8 / 12;
        const GifImageDesc& frame = m_gif->Image;
        if (frame.Width <= 0 || frame.Height <= 0)
            Fail("the picture has no pixels");
        if (frame.Left < 0 || frame.Top < 0 || frame.Left + frame.Width > m_gif->SWidth ||
            frame.Top + frame.Height > m_gif->SHeight)
            Fail("the picture lies outside its canvas");
        if (std::uint64_t(m_gif->SWidth) * std::uint64_t(m_gif->SHeight) >
            m_input.bytes.size() * pixelsPerByte)
            Fail("less data than its size needs");
    }

    /// Indices beyond the colour table are transparent.
    void ReadColours()
    {
        const ColorMapObject* map =
            m_gif->Image.ColorMap ? m_gif->Image.ColorMap : m_gif->SColorMap;
        if (!map)
            Fail("there are no colours in it");
        m_colours.resize(256);
        for (int i = 0; i < map->ColorCount; ++i) {
            const GifColorType& colour = map->Colors[i];
            m_colours[std::size_t(i)] = {colour.Red, colour.Green, colour.Blue, 255};
        }
        if (m_transparent >= 0 && m_transparent < 256)
            m_colours[std::size_t(m_transparent)] = {};
    }

    void ReadRows(DynamicBuffer& buffer)
    {
        struct Pass
        {
            int first, step;
        };
        static constexpr Pass interlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
        static constexpr Pass plain[] = {{0, 1}};
        std::vector<GifByteType> row(std::size_t(m_gif->Image.Width));
        const std::span<const Pass> passes =
            m_gif->Image.Interlace ? std::span<const Pass>(interlaced) : plain;
        for (const Pass& pass : passes)
            for (int y = pass.first; y < m_gif->Image.Height; y += pass.step)
                ReadRow(buffer, row, y);
    }

    void ReadRow(DynamicBuffer& buffer, std::vector<GifByteType>& row, int y)
    {
        const GifImageDesc& frame = m_gif->Image;
        Check(DGifGetLine(m_gif.get(), row.data(), frame.Width));
        auto* pixels = reinterpret_cast<PixelRGBA8*>(buffer.GetRow(unsigned(frame.Top + y)));
        std::ranges::transform(row, pixels + frame.Left,
                               [&](GifByteType index) { return m_colours[index]; });
    }

    GifInput m_input;
    std::unique_ptr<GifFileType, GifCloser> m_gif;
    int m_transparent = NO_TRANSPARENT_COLOR;
    std::vector<PixelRGBA8> m_colours;
};

} // namespace

Kernel::Counted<const DynamicBitmap> ReadGIF(std::span<const unsigned char> bytes,
                                             std::uint64_t maxPixels)
{
    return Reader(bytes).Read(maxPixels);
}

} // namespace Raster
