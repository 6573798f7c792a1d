#pragma once

#include <cstddef>
#include <cstring>

#include <raster/Format.h>
#include <raster/Pixel.h>

namespace Raster {

/// One pixel of a format that is known at run time.
class DynamicPixel
{
public:
    DynamicPixel() = default;

    template<class C1, class C2, class C3, class C4, class C5>
    explicit DynamicPixel(const Pixel<C1, C2, C3, C4, C5>& pixel) noexcept
        : m_format(FormatOfPixel<Pixel<C1, C2, C3, C4, C5>>)
    {
        std::memcpy(m_bytes, &pixel, sizeof(pixel));
    }

    Format GetFormat() const noexcept { return m_format; }
    /// The pixel's bytes, as many as its format has.
    const void* GetData() const noexcept { return m_bytes; }

    /// The pixel as its own type. \pre the type stores GetFormat().
    template<class P>
    P Get() const noexcept
    {
        P pixel;
        std::memcpy(&pixel, m_bytes, sizeof(P));
        return pixel;
    }

    friend bool operator==(const DynamicPixel& a, const DynamicPixel& b) noexcept
    {
        return a.m_format == b.m_format && std::memcmp(a.m_bytes, b.m_bytes, sizeof(m_bytes)) == 0;
    }

private:
    Format m_format = Format::None;
    alignas(4) unsigned char m_bytes[16] = {};
};

} // namespace Raster
