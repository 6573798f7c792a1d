#include <raster/TiffFile.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

#include <kernel/OutStream.h>

namespace Raster {

namespace {

/// libtiff refuses to take more at once; more than any strip or tile that is not an attack.
constexpr tmsize_t MaxAllocation = tmsize_t{1} << 30;

} // namespace

/// What libtiff calls. Nothing may be thrown out of these.
struct TiffFile::Callbacks
{
    static TiffFile& Get(thandle_t handle) { return *static_cast<TiffFile*>(handle); }

    static tmsize_t Read(thandle_t handle, void* destination, tmsize_t size)
    {
        TiffFile& file = Get(handle);
        const std::span bytes = file.GetBytes();
        if (size <= 0 || file.m_position >= bytes.size())
            return 0;
        const std::size_t count =
            std::min(std::size_t(size), bytes.size() - std::size_t(file.m_position));
        std::memcpy(destination, bytes.data() + file.m_position, count);
        file.m_position += count;
        return tmsize_t(count);
    }

    static tmsize_t Write(thandle_t handle, void* source, tmsize_t size)
    {
        TiffFile& file = Get(handle);
        if (!file.m_isWriting || size < 0)
            return 0;
        try {
            const std::uint64_t end = file.m_position + std::uint64_t(size);
            if (end > file.m_written.size())
                file.m_written.resize(end);
        } catch (const std::exception&) {
            file.m_isOutOfMemory = true;
            return 0;
        }
        std::copy_n(static_cast<const unsigned char*>(source), size,
                    file.m_written.begin() + std::ptrdiff_t(file.m_position));
        file.m_position += std::uint64_t(size);
        return size;
    }

    static toff_t Seek(thandle_t handle, toff_t offset, int origin)
    {
        TiffFile& file = Get(handle);
        const std::uint64_t base = origin == SEEK_CUR   ? file.m_position
                                   : origin == SEEK_END ? file.GetBytes().size()
                                                        : 0;
        file.m_position = base + offset; // negative offsets wrap around
        return file.m_position;
    }

    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t handle) { return Get(handle).GetBytes().size(); }

    static int KeepError(TIFF*, void* handle, const char*, const char* format, va_list arguments)
    {
        TiffFile& file = Get(handle);
        char message[256];
        std::vsnprintf(message, sizeof(message), format, arguments);
        try {
            if (file.m_error.empty())
                file.m_error = message;
        } catch (const std::bad_alloc&) {
            file.m_isOutOfMemory = true;
        }
        return 1;
    }
    static int IgnoreWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }
};

TiffFile::TiffFile(std::span<const unsigned char> bytes) : m_source(bytes), m_isWriting(false)
{
    Open("rm"); // without mapping: some of libtiff's decoders write to what they map
}

TiffFile::TiffFile(bool isBig) : m_isWriting(true)
{
    Open(isBig ? "w8" : "w");
}

std::span<const unsigned char> TiffFile::GetBytes() const noexcept
{
    return m_isWriting ? std::span<const unsigned char>(m_written) : m_source;
}

void TiffFile::Open(const char* mode)
{
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(
        TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
    if (!options)
        throw std::bad_alloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), MaxAllocation);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Callbacks::KeepError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Callbacks::IgnoreWarning, this);
    m_tiff.reset(TIFFClientOpenExt("TIFF", mode, this, Callbacks::Read, Callbacks::Write,
                                   Callbacks::Seek, Callbacks::Close, Callbacks::Size, nullptr,
                                   nullptr, options.get()));
}

std::vector<unsigned char> TiffFile::Finish()
{
    if (!TIFFFlush(m_tiff.get()))
        FailWriting();
    m_tiff.reset();
    if (m_isOutOfMemory || !m_error.empty())
        FailWriting();
    return std::move(m_written);
}

void TiffFile::FailWriting() const
{
    if (m_isOutOfMemory)
        throw std::bad_alloc();
    throw Kernel::OutStream::WriteException("cannot write TIFF: " + GetError());
}

} // namespace Raster
