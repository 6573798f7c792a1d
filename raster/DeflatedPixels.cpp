#include <raster/DeflatedPixels.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>

#include <zlib.h>

#include <kernel/Dispatch.h>
#include <kernel/FormatException.h>
#include <kernel/PropStruct.h>
#include <raster/Pixel.h>
#include <raster/RowFilters.h>

namespace Raster::DeflatedPixels {

namespace {

using Bytes = std::vector<unsigned char>;
using Signature = std::array<unsigned char, 8>;

constexpr Signature Mark = {0x8b, 'R', 'P', 'X', 0x0d, 0x0a, 0x1a, 0x01};
constexpr std::uint64_t HeaderSize = Mark.size() + 4 * sizeof(std::uint32_t);
constexpr std::uint64_t BandSize = 512 << 10; // bytes of pixels, about
constexpr int Level = 4;
/// Deflate shrinks by at most 1032 to 1.
constexpr std::uint64_t MaxRatio = 1032;

/// Rows of a band that is about BandSize.
std::uint32_t GetBandRows(std::uint64_t rowSize)
{
    return static_cast<std::uint32_t>(std::max<std::uint64_t>(1, BandSize / rowSize));
}

struct Header
{
    std::uint32_t format = 0, width = 0, height = 0, bandRows = 0;

    std::uint64_t GetPixelSize() const noexcept
    {
        return Raster::GetPixelSize(static_cast<Format>(format));
    }
    std::uint64_t GetRowSize() const noexcept { return GetPixelSize() * width; }
    std::uint64_t GetBandCount() const noexcept
    {
        return (std::uint64_t{height} + bandRows - 1) / bandRows;
    }
    /// Rows of a band.
    std::uint64_t GetRowCount(std::uint64_t band) const noexcept
    {
        return std::min<std::uint64_t>(bandRows, height - band * bandRows);
    }
    /// Bytes of a band before compression: each row's filter and bytes.
    std::uint64_t GetFilteredSize(std::uint64_t band) const noexcept
    {
        return GetRowCount(band) * (GetRowSize() + 1);
    }
    RowFilters MakeFilters() const
    {
        const std::size_t channel =
            WithPixelOfFormat(static_cast<Format>(format), std::size_t{1}, [](auto pixel) {
                return sizeof(typename decltype(pixel)::ChannelType);
            });
        return {static_cast<std::size_t>(GetRowSize()), static_cast<std::size_t>(GetPixelSize()),
                channel};
    }
};

Bytes WriteBand(const DynamicBuffer& buffer, const Header& header, unsigned band)
{
    RowFilters filters = header.MakeFilters();
    Bytes filtered;
    filtered.reserve(static_cast<std::size_t>(header.GetFilteredSize(band)));
    const auto first = static_cast<unsigned>(std::uint64_t{band} * header.bandRows);
    for (unsigned y = 0; y < header.GetRowCount(band); ++y)
        filters.Filter(buffer.GetRow(first + y), filtered);
    Bytes packed(compressBound(filtered.size()));
    uLongf size = packed.size();
    if (compress2(packed.data(), &size, filtered.data(), filtered.size(), Level) != Z_OK)
        throw std::bad_alloc(); // nothing else is left to fail
    packed.resize(size);
    packed.shrink_to_fit();
    return packed;
}

/// Where a band lies in the payload.
struct Band
{
    std::uint64_t offset;
    std::uint32_t size;
};

[[noreturn]] void Fail(const char* what)
{
    throw Kernel::FormatException(what);
}

Header ReadHeader(const Kernel::DelayLoadHolder& payload)
{
    std::array<unsigned char, HeaderSize> bytes;
    payload.Read(0, bytes);
    Header header;
    Kernel::PropStruct::Unpack(bytes.data() + Mark.size(), header.format, header.width,
                               header.height, header.bandRows);
    if (header.GetRowSize() == 0 || header.height == 0 || header.bandRows == 0)
        Fail("compressed pixels have no format or size");
    if (header.bandRows > GetBandRows(header.GetRowSize()))
        Fail("compressed pixels have bands of too many rows");
    if (header.GetBandCount() > (payload.GetSize() - HeaderSize) / sizeof(std::uint32_t))
        Fail("compressed pixels have more bands than bytes");
    return header;
}

/// Finds the bands, which end where the payload does and can hold what they are said to.
std::vector<Band> FindBands(const Kernel::DelayLoadHolder& payload, const Header& header)
{
    Bytes table(static_cast<std::size_t>(header.GetBandCount()) * sizeof(std::uint32_t));
    payload.Read(HeaderSize, table);
    std::vector<Band> bands(static_cast<std::size_t>(header.GetBandCount()));
    std::uint64_t offset = HeaderSize + table.size();
    for (std::size_t i = 0; i < bands.size(); ++i) {
        bands[i].offset = offset;
        Kernel::PropStruct::Unpack(table.data() + i * sizeof(std::uint32_t), bands[i].size);
        if (header.GetFilteredSize(i) / MaxRatio > bands[i].size)
            Fail("compressed pixels have less data than their size needs");
        offset += bands[i].size;
    }
    if (offset != payload.GetSize())
        Fail("compressed pixels are cut off");
    return bands;
}

void ReadBand(const Kernel::DelayLoadHolder& payload, const Header& header, const Band& band,
              unsigned index, DynamicBuffer& buffer)
{
    Bytes packed(band.size);
    payload.Read(band.offset, packed);
    Bytes filtered(static_cast<std::size_t>(header.GetFilteredSize(index)));
    uLongf size = filtered.size();
    if (uncompress(filtered.data(), &size, packed.data(), packed.size()) != Z_OK ||
        size != filtered.size())
        Fail("compressed pixels are damaged");
    RowFilters filters = header.MakeFilters();
    const std::size_t step = static_cast<std::size_t>(header.GetRowSize()) + 1;
    const auto first = static_cast<unsigned>(std::uint64_t{index} * header.bandRows);
    for (unsigned y = 0; y < header.GetRowCount(index); ++y)
        if (!filters.Restore(std::span(filtered).subspan(y * step, step), buffer.GetRow(first + y)))
            Fail("compressed pixels are damaged");
}

} // namespace

std::vector<unsigned char> Write(const DynamicBuffer& buffer)
{
    buffer.SyncHostCache();
    Header header{static_cast<std::uint32_t>(buffer.GetFormat()), buffer.GetWidth(),
                  buffer.GetHeight()};
    header.bandRows = GetBandRows(header.GetRowSize());
    std::vector<Bytes> bands(static_cast<std::size_t>(header.GetBandCount()));
    Kernel::Dispatch::DispatchParallelFor(
        [&](unsigned band) { bands[band] = WriteBand(buffer, header, band); },
        static_cast<unsigned>(bands.size()));

    std::size_t size = static_cast<std::size_t>(HeaderSize) + bands.size() * sizeof(std::uint32_t);
    for (const Bytes& band : bands)
        size += band.size();
    Bytes bytes(size);
    auto at = bytes.begin();
    const auto append = [&](const auto& part) { at = std::copy(part.begin(), part.end(), at); };
    append(Mark);
    append(Kernel::PropStruct::Pack(header.format, header.width, header.height, header.bandRows));
    for (const Bytes& band : bands)
        append(Kernel::PropStruct::Pack(static_cast<std::uint32_t>(band.size())));
    for (Bytes& band : bands) {
        append(band);
        Bytes().swap(band);
    }
    return bytes;
}

bool IsHere(const Kernel::DelayLoadHolder& payload)
{
    Signature signature;
    if (payload.GetSize() < HeaderSize)
        return false;
    payload.Read(0, signature);
    return signature == Mark;
}

Kernel::Counted<const DynamicBuffer> Read(const Kernel::DelayLoadHolder& payload,
                                          const std::optional<Shape>& expected)
{
    if (!IsHere(payload))
        Fail("these are no compressed pixels");
    const Header header = ReadHeader(payload);
    if (expected && (static_cast<Format>(header.format) != expected->format ||
                     header.width != expected->width || header.height != expected->height))
        Fail("compressed pixels are of another format or size than the bitmap");
    const std::vector<Band> bands = FindBands(payload, header);
    const auto buffer =
        DynamicBuffer::Create(static_cast<Format>(header.format), header.width, header.height);
    if (!buffer)
        throw std::bad_alloc();
    // Not dispatched: callers hold a lock that threads of the pool may be waiting for.
    for (unsigned band = 0; band < bands.size(); ++band)
        ReadBand(payload, header, bands[band], band, *buffer);
    return buffer;
}

} // namespace Raster::DeflatedPixels
