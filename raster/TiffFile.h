#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <tiffio.h>

namespace Raster {

/// A TIFF file in memory that libtiff has open, and the first error that it reported. libtiff
/// returns after errors, so C++ objects may live across its calls.
class TiffFile
{
public:
    /// Opens \p bytes for reading; they are referred to, not copied.
    explicit TiffFile(std::span<const unsigned char> bytes);
    /// Starts a new file. \param isBig whether it may exceed 4 GiB (BigTIFF).
    explicit TiffFile(bool isBig);
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    /// libtiff's handle; null when the file could not be opened.
    TIFF* Get() const noexcept { return m_tiff.get(); }
    /// libtiff's first message, or a general one.
    std::string GetError() const { return m_error.empty() ? "unknown error" : m_error; }
    /// The value of a tag that has a default, or \p fallback.
    template<class T>
    T GetTag(std::uint32_t tag, T fallback) const
    {
        T value = fallback;
        return TIFFGetFieldDefaulted(m_tiff.get(), tag, &value) ? value : fallback;
    }

    /// Completes a written file and hands its bytes over. \throws std::bad_alloc;
    /// Kernel::OutStream::WriteException when libtiff has failed.
    std::vector<unsigned char> Finish();
    /// Throws what Finish would for a step that failed.
    [[noreturn]] void FailWriting() const;

private:
    struct Closer
    {
        void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
    };
    struct Callbacks;

    void Open(const char* mode);
    std::span<const unsigned char> GetBytes() const noexcept;

    std::span<const unsigned char> m_source;
    std::vector<unsigned char> m_written;
    std::uint64_t m_position = 0;
    bool m_isWriting;
    bool m_isOutOfMemory = false;
    std::string m_error;
    std::unique_ptr<TIFF, Closer> m_tiff; // the last member: closing it may still write
};

} // namespace Raster
