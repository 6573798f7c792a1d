#include <raster/Codecs.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>

#include <Iex.h>
#include <ImfChannelList.h>
#include <ImfChromaticitiesAttribute.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputPart.h>
#include <ImfIO.h>
#include <ImfMultiPartInputFile.h>
#include <ImfStandardAttributes.h>

#include <kernel/FormatException.h>
#include <raster/CodecSupport.h>
#include <raster/ICCManager.h>
#include <raster/ICCTransforms.h>
#include <raster/Pixel.h>

namespace Raster {

namespace {

class MemoryFile : public Imf::IStream
{
public:
    explicit MemoryFile(std::span<const unsigned char> bytes) : Imf::IStream("EXR"), m_bytes(bytes)
    {}

    bool read(char destination[], int count) override
    {
        if (count < 0 || m_position > m_bytes.size() ||
            std::size_t(count) > m_bytes.size() - std::size_t(m_position))
            throw Iex::InputExc("the file ends early");
        std::memcpy(destination, m_bytes.data() + m_position, std::size_t(count));
        m_position += std::uint64_t(count);
        return m_position < m_bytes.size();
    }
    std::uint64_t tellg() override { return m_position; }
    void seekg(std::uint64_t position) override { m_position = position; }

private:
    std::span<const unsigned char> m_bytes;
    std::uint64_t m_position = 0;
};

/// Walks over the attributes of all headers (name, type, size, value; an empty name ends a header)
/// and checks that they lie in the file: OpenEXR allocates what their sizes say before it reads.
void CheckAttributes(std::span<const unsigned char> bytes)
{
    constexpr std::size_t start = 8; // mark and version
    constexpr unsigned char multiPart = 0x10;
    const auto fail = [](std::size_t offset) {
        throw Kernel::FormatException("damaged EXR file: an attribute beyond its end", offset);
    };
    std::size_t position = start;
    const auto skipText = [&] {
        const auto end = std::find(bytes.begin() + std::ptrdiff_t(position), bytes.end(), 0);
        if (end == bytes.end())
            fail(position);
        const bool isEmpty = end == bytes.begin() + std::ptrdiff_t(position);
        position = std::size_t(end - bytes.begin()) + 1;
        return isEmpty;
    };
    if (bytes.size() < start)
        fail(bytes.size());
    bool isFirst = true; // of its header
    while (true) {
        if (skipText()) {
            if (isFirst || !(bytes[5] & multiPart))
                return;
            isFirst = true;
            continue;
        }
        isFirst = false;
        skipText();
        if (bytes.size() - position < 4)
            fail(position);
        const std::uint32_t size = bytes[position] | std::uint32_t{bytes[position + 1]} << 8 |
                                   std::uint32_t{bytes[position + 2]} << 16 |
                                   std::uint32_t{bytes[position + 3]} << 24;
        position += 4;
        if (size > bytes.size() - position)
            fail(position);
        position += size;
    }
}

struct Extent
{
    std::uint64_t width;
    std::uint64_t height;
};

Extent GetExtent(const Imf::Header& header)
{
    const auto& window = header.dataWindow();
    const auto side = [](int low, int high) {
        return std::uint64_t(std::max<std::int64_t>(0, std::int64_t{high} - low + 1));
    };
    return {side(window.min.x, window.max.x), side(window.min.y, window.max.y)};
}

/// Nothing is allocated for more than the file can hold. Runs shrink by 64 at most, Deflate by 1032
/// (PXR24 drops a byte of four before), the Huffman runs of PIZ by some 400, the cosine
/// coefficients of DWA by some 20,000.
void CheckPlausible(const Imf::Header& header, const Extent& extent, std::size_t fileSize,
                    std::uint64_t maxPixels)
{
    constexpr std::uint64_t maxSide = std::numeric_limits<std::int32_t>::max() / 16;
    if (extent.width > maxSide || extent.height > maxSide ||
        extent.width * extent.height > maxPixels)
        throw Kernel::FormatException("the picture is too large");
    if (header.hasTileDescription() &&
        std::uint64_t{header.tileDescription().xSize} * header.tileDescription().ySize >
            std::max<std::uint64_t>(std::uint64_t{1} << 24, extent.width * extent.height))
        throw Kernel::FormatException("damaged EXR file: tiles of an impossible size");
    const auto compression = header.compression();
    const std::uint64_t ratio =
        compression == Imf::NO_COMPRESSION                                             ? 1
        : compression == Imf::RLE_COMPRESSION                                          ? 64
        : compression == Imf::DWAA_COMPRESSION || compression == Imf::DWAB_COMPRESSION ? 1 << 16
                                                                                       : 2048;
    constexpr std::uint64_t bytesPerPixel = 2; // one channel of half precision
    if (extent.width * extent.height * bytesPerPixel / ratio > fileSize)
        throw Kernel::FormatException("damaged EXR file: less data than its size needs", fileSize);
}

/// The file's channel for each of ours. Missing colours are 0, missing alpha is 1.
std::array<const char*, 4> ChooseChannels(const Imf::ChannelList& channels)
{
    if (channels.findChannel("R") || channels.findChannel("G") || channels.findChannel("B"))
        return {"R", "G", "B", "A"};
    if (channels.findChannel("Y") && !channels.findChannel("RY"))
        return {"Y", "Y", "Y", "A"};
    throw Kernel::FormatException("EXR file without channels of colour that can be read");
}

void ReadChannels(Imf::InputPart& part, DynamicBuffer& buffer)
{
    const auto& window = part.header().dataWindow();
    const auto names = ChooseChannels(part.header().channels());
    const bool isGrey = names[0] == names[1];
    Imf::FrameBuffer target;
    for (std::size_t c = 0; c < names.size(); ++c) {
        if (isGrey && (c == 1 || c == 2))
            continue; // copied below
        target.insert(names[c],
                      Imf::Slice::Make(Imf::FLOAT, buffer.GetData() + c * sizeof(float), window,
                                       sizeof(PixelRGBAUF), std::size_t(buffer.GetStride()), 1, 1,
                                       c == 3 ? 1.0 : 0.0));
    }
    part.setFrameBuffer(target);
    part.readPixels(window.min.y, window.max.y);
    for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
        auto* row = reinterpret_cast<PixelRGBAUF*>(buffer.GetRow(y));
        for (unsigned x = 0; x < buffer.GetWidth(); ++x) {
            if (isGrey)
                row[x][1] = row[x][2] = row[x][0];
            for (float& channel : row[x].channels)
                channel = std::isfinite(channel) ? channel : 0.0F;
            row[x].Alpha() = std::clamp(row[x].Alpha(), 0.0F, 1.0F);
        }
    }
}

Kernel::Counted<const ICCProfile> MakeProfile(const Imf::Header& header)
{
    if (Imf::hasChromaticities(header)) {
        const Imf::Chromaticities c = Imf::chromaticities(header);
        const ICCChromaticities values{c.red.x,  c.red.y,  c.green.x, c.green.y,
                                       c.blue.x, c.blue.y, c.white.x, c.white.y};
        const bool isSRGB = std::ranges::equal(
            values, SRGBChromaticities, [](double a, double b) { return std::abs(a - b) < 1e-5; });
        if (!isSRGB) {
            if (auto profile = ReadEmbeddedProfile(MakeLinearICCProfile(values), Format::RGBAUF))
                return profile;
        }
    }
    return ICCManager::GetInstance().GetLinearRGBProfile();
}

Kernel::Counted<const DynamicBitmap> Read(std::span<const unsigned char> bytes,
                                          std::uint64_t maxPixels)
{
    CheckAttributes(bytes);
    MemoryFile stream(bytes);
    // Opens without memory for pixels: that comes with the part.
    Imf::MultiPartInputFile file(stream, 0, false);
    const Imf::Header& header = file.header(0);
    const Extent extent = GetExtent(header);
    CheckPlausible(header, extent, bytes.size(), maxPixels);
    const auto buffer = MakeDecodedBuffer(Format::RGBAUF, extent.width, extent.height, maxPixels);
    Imf::InputPart part(file, 0);
    ReadChannels(part, *buffer);
    return Kernel::MakeCounted<const DynamicBitmap>(buffer, MakeProfile(header));
}

} // namespace

Kernel::Counted<const DynamicBitmap> ReadEXR(std::span<const unsigned char> bytes,
                                             std::uint64_t maxPixels)
{
    constexpr unsigned char mark[] = {0x76, 0x2f, 0x31, 0x01};
    if (bytes.size() < 4 || !std::ranges::equal(bytes.first(4), mark))
        throw Kernel::FormatException("this is not an EXR file", 0);
    try {
        return Read(bytes, maxPixels);
    } catch (const Kernel::FormatException&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw Kernel::FormatException("damaged EXR file: " + std::string(error.what()));
    }
}

} // namespace Raster
