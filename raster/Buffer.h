#pragma once

#include <algorithm>

#include <kernel/Counted.h>
#include <kernel/Rect.h>
#include <raster/DynamicBuffer.h>
#include <raster/Pixel.h>

namespace Raster {

/// The typed view of a DynamicBuffer; shares it. May be empty.
template<class C1, class C2, class C3, class C4, class C5>
class Buffer
{
public:
    using PixelType = Pixel<C1, C2, C3, C4, C5>;

    Buffer() noexcept = default;

    /// Views \p buffer. \return false, and the view is empty, when its format is another one.
    bool Attach(Kernel::Counted<DynamicBuffer> buffer) noexcept
    {
        m_buffer = buffer && buffer->GetFormat() == FormatOfPixel<PixelType> ? buffer : nullptr;
        return static_cast<bool>(m_buffer);
    }
    /// Makes a new buffer and views it. \return false when it cannot be made.
    bool Create(unsigned width, unsigned height)
    {
        return Attach(DynamicBuffer::Create(FormatOfPixel<PixelType>, width, height));
    }
    void Detach() noexcept { m_buffer.Reset(); }

    const Kernel::Counted<DynamicBuffer>& GetDynamicBuffer() const noexcept { return m_buffer; }
    explicit operator bool() const noexcept { return static_cast<bool>(m_buffer); }
    unsigned GetWidth() const noexcept { return m_buffer ? m_buffer->GetWidth() : 0; }
    unsigned GetHeight() const noexcept { return m_buffer ? m_buffer->GetHeight() : 0; }

    /// The pixels of row \p y, 0 ≤ y < height.
    PixelType* GetRow(unsigned y) const noexcept
    {
        return reinterpret_cast<PixelType*>(m_buffer->GetRow(y));
    }

    /// Fills everything with one pixel value.
    void Clear(const PixelType& pixel = {}) const noexcept
    {
        ClearRect({0, 0, int(GetWidth()), int(GetHeight())}, pixel);
    }
    /// Fills the part of \p rect that lies in the buffer.
    void ClearRect(const Kernel::RectT<int>& rect, const PixelType& pixel = {}) const noexcept
    {
        const auto part = rect.Intersect({0, 0, int(GetWidth()), int(GetHeight())});
        if (part.IsEmpty())
            return;
        for (int y = part.top; y < part.bottom; ++y)
            std::fill_n(GetRow(unsigned(y)) + part.left, part.Width(), pixel);
    }

private:
    Kernel::Counted<DynamicBuffer> m_buffer;
};

} // namespace Raster
