#pragma once

#include <cstddef>
#include <memory>
#include <new>

#include <kernel/Counted.h>
#include <raster/DynamicBase.h>
#include <raster/Format.h>

namespace Raster {

/// A rectangle of pixels of any format, in memory that it owns. Rows run from the top; their
/// distance is a multiple of 16 bytes. Colour channels are premultiplied.
class RASTER_EXPORT DynamicBuffer : public DynamicBase
{
public:
    /// Makes a buffer of transparent (all zero) pixels.
    /// \return null when the format stores no pixels, a side is 0, a row's bytes or the height
    /// exceed
    ///         2³¹ − 16, or the memory cannot be had.
    static Kernel::Counted<DynamicBuffer> Create(Format format, unsigned width, unsigned height);

    ~DynamicBuffer() override;

    Format GetFormat() const noexcept { return m_format; }
    unsigned GetWidth() const noexcept { return m_width; }
    unsigned GetHeight() const noexcept { return m_height; }
    /// Bytes from one row to the next.
    std::ptrdiff_t GetStride() const noexcept { return m_stride; }
    unsigned GetPixelSize() const noexcept { return m_pixelSize; }

    unsigned char* GetData() noexcept { return m_data.get(); }
    const unsigned char* GetData() const noexcept { return m_data.get(); }
    /// The first pixel of row \p y, 0 ≤ y < height.
    unsigned char* GetRow(unsigned y) noexcept
    {
        return m_data.get() + m_stride * std::ptrdiff_t(y);
    }
    const unsigned char* GetRow(unsigned y) const noexcept
    {
        return m_data.get() + m_stride * std::ptrdiff_t(y);
    }

protected:
    /// A buffer of transparent pixels for hosts that keep a second copy of them and override the
    /// hooks. \throws std::bad_alloc where Create returns null.
    DynamicBuffer(Format format, unsigned width, unsigned height);

private:
    struct FreeMemory
    {
        void operator()(unsigned char* memory) const noexcept;
    };
    using Memory = std::unique_ptr<unsigned char[], FreeMemory>;

    /// Leaves GetData() null where the buffer cannot be had.
    DynamicBuffer(std::nothrow_t, Format format, unsigned width, unsigned height) noexcept;

    Format m_format;
    unsigned m_width;
    unsigned m_height;
    unsigned m_pixelSize;
    std::ptrdiff_t m_stride = 0;
    Memory m_data;
};

} // namespace Raster
