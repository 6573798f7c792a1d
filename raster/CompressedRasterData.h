#pragma once

#include <atomic>
#include <cstdint>
#include <utility>
#include <vector>

#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/DelayLoadHolder.h>
#include <raster/DynamicBuffer.h>
#include <raster/Export.h>

namespace Raster {

class DynamicBitmap;

/// A picture in compressed form: the bytes of the file that it came from (PNG, JPEG and whatever
/// else ReadImage knows), or pixels deflated without loss. They may still lie in the document that
/// they were loaded from. Immutable; safe from many threads.
class RASTER_EXPORT CompressedRasterData : public Kernel::Countable
{
public:
    /// Takes compressed bytes, which are not looked at yet.
    explicit CompressedRasterData(Kernel::DelayLoadHolder bytes) : m_bytes(std::move(bytes)) {}
    /// Takes the bytes of a picture's file.
    explicit CompressedRasterData(std::vector<unsigned char> file)
        : CompressedRasterData(Kernel::DelayLoadHolder(std::move(file)))
    {}
    /// Deflates a buffer that nobody writes to meanwhile. \throws std::bad_alloc
    explicit CompressedRasterData(const DynamicBuffer& buffer);
    ~CompressedRasterData() override;

    const Kernel::DelayLoadHolder& GetBytes() const noexcept { return m_bytes; }

    /// Whether these are deflated pixels; otherwise they are a picture's file. Reads the first
    /// bytes. \throws Kernel::FormatException when the document was cut short.
    bool IsDeflated() const;

    /// Decodes the picture, anew each time. The bitmap is saved in this form again. Files tell its
    /// profile; deflated pixels have none.
    /// \throws as ReadImage, for damage of deflated pixels, too.
    Kernel::Counted<const DynamicBitmap> Decode() const;

    /// A hash of all bytes, which are read, but not kept in memory, by the first call. Bytes that
    /// cannot be read count as none.
    std::uint64_t GetHash() const;

    /// Data are equal when they are the same bytes in memory or in a document.
    friend bool operator==(const CompressedRasterData& a, const CompressedRasterData& b) noexcept
    {
        return a.m_bytes == b.m_bytes;
    }

private:
    friend class DynamicBitmap;
    /// The decoded picture, which does not know where it came from.
    /// \param expected where pixels shall go: deflated ones of another format or size, and files
    ///        of more pixels, are refused before they take memory; null: anything goes.
    Kernel::Counted<const DynamicBitmap> DecodePlain(const DynamicBitmap* expected) const;
    /// The same, made once for all who share the bytes and kept as long as them. Who comes first
    /// tells what is expected.
    Kernel::Counted<const DynamicBitmap> GetDecoded(const DynamicBitmap& expected) const;

    Kernel::DelayLoadHolder m_bytes;
    mutable std::atomic<std::uint64_t> m_hash{0}; // 0: not known yet
};

} // namespace Raster
