#include <raster/Codecs.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <ImfChannelList.h>
#include <ImfChromaticitiesAttribute.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfOutputFile.h>
#include <ImfStandardAttributes.h>

#include <raster/CodecSupport.h>
#include <raster/Convert.h>
#include <raster/ICCManager.h>
#include <raster/Pixel.h>

namespace Raster {

namespace {

constexpr const char* ChannelNames[] = {"R", "G", "B", "A"};

/// OpenEXR goes back to fill in the table of offsets, so the file is made in memory.
class MemoryFile : public Imf::OStream
{
public:
    MemoryFile() : Imf::OStream("EXR") {}

    void write(const char data[], int count) override
    {
        const std::size_t end = m_position + std::size_t(count);
        if (end > m_bytes.size())
            m_bytes.resize(end);
        std::memcpy(m_bytes.data() + m_position, data, std::size_t(count));
        m_position = end;
    }
    std::uint64_t tellp() override { return m_position; }
    void seekp(std::uint64_t position) override { m_position = position; }

    const std::vector<char>& GetBytes() const noexcept { return m_bytes; }

private:
    std::vector<char> m_bytes;
    std::size_t m_position = 0;
};

/// Brings rows from the bitmap's profile into the linear one.
class Lineariser
{
public:
    explicit Lineariser(const Kernel::Counted<const ICCProfile>& profile)
    {
        ICCManager& manager = ICCManager::GetInstance();
        ICCManager::ICCProfileSet from, to;
        from.SetAlternativeRGB(profile);
        to.SetAlternativeRGB(manager.GetLinearRGBProfile());
        m_transform = manager.GetTransform(Format::RGBAUF, from, Format::RGBAUF, to);
    }

    void Apply(std::vector<PixelRGBAUF>& row) const
    {
        for (PixelRGBAUF& pixel : row) {
            for (float& channel : pixel.channels)
                channel = std::isfinite(channel) ? channel : 0.0F;
        }
        if (!m_transform)
            return;
        Unpremultiply(Format::RGBAUF, row.data(), row.size());
        m_transform->Apply(row.data(), row.data(), row.size());
        Premultiply(Format::RGBAUF, row.data(), row.size());
    }

private:
    Kernel::Counted<const ICCTransform> m_transform; ///< null where the colours are linear already
};

void WriteRows(Imf::OStream& stream, const DynamicBuffer& buffer, const Lineariser& lineariser)
{
    const std::size_t channels = IsOpaque(buffer) ? 3 : 4;
    Imf::Header header(int(buffer.GetWidth()), int(buffer.GetHeight()));
    header.compression() = Imf::ZIP_COMPRESSION;
    Imf::addChromaticities(header, Imf::Chromaticities()); // those of sRGB
    for (std::size_t c = 0; c < channels; ++c)
        header.channels().insert(ChannelNames[c], Imf::Channel(Imf::FLOAT));
    Imf::OutputFile file(stream, header, 0);

    std::vector<PixelRGBAUF> row(buffer.GetWidth());
    Imf::FrameBuffer rows; // all of them in the same place, written one by one
    for (std::size_t c = 0; c < channels; ++c)
        rows.insert(ChannelNames[c],
                    Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(&row.front().channels[c]),
                               sizeof(PixelRGBAUF), 0));
    file.setFrameBuffer(rows);
    for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
        std::copy_n(reinterpret_cast<const PixelRGBAUF*>(buffer.GetRow(y)), row.size(), row.data());
        lineariser.Apply(row);
        file.writePixels(1);
    }
}

} // namespace

void WriteEXR(Kernel::OutStream& out, const DynamicBitmap& bitmap)
{
    if (bitmap.GetFormat() != Format::RGBAUF)
        throw std::invalid_argument("EXR files hold pictures in floating point");
    MemoryFile file;
    try {
        WriteRows(file, bitmap.GetPixels(), Lineariser(bitmap.GetProfile()));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw Kernel::OutStream::WriteException("cannot write EXR: " + std::string(error.what()));
    }
    out.Write(file.GetBytes().data(), file.GetBytes().size());
}

} // namespace Raster
