#pragma once

#include <algorithm>

#include <kernel/Point.h>
#include <kernel/Rect.h>
#include <raster/DynamicBuffer.h>

namespace Renderer {

/// Paints what the target's own buffer holds at the same device pixel; transparent outside of it.
template<class ProcessorT>
class BackBufferPopulator
{
public:
    using Processor = ProcessorT;
    using Pixel = typename Processor::Pixel;

    /// \param buffer of the processor's format; must outlive the populator.
    /// \param origin the device pixel of the buffer's left top corner.
    /// \param isPlain whether the buffer's colour is not premultiplied at present.
    BackBufferPopulator(const Raster::DynamicBuffer& buffer, Kernel::PointT<int> origin,
                        bool isPlain) noexcept
        : m_buffer(buffer), m_origin(origin), m_isPlain(isPlain)
    {}

    void Populate(int x, int y, unsigned length, Pixel* out) const noexcept
    {
        // 64-bit differences: a page may lie anywhere.
        const long row = long{y} - m_origin.y;
        if (row < 0 || row >= long{m_buffer.GetHeight()}) {
            std::fill_n(out, length, Pixel{});
            return;
        }
        const auto* pixels =
            reinterpret_cast<const Pixel*>(m_buffer.GetRow(static_cast<unsigned>(row)));
        const long first = long{x} - m_origin.x;
        for (unsigned i = 0; i < length; ++i) {
            const long column = first + long{i};
            const bool isInside = column >= 0 && column < long{m_buffer.GetWidth()};
            out[i] = isInside ? Read(pixels[column]) : Pixel{};
        }
    }

private:
    Pixel Read(const Pixel& pixel) const noexcept
    {
        if constexpr (!Processor::IsAlphaOnly)
            return m_isPlain ? Processor::Premultiply(pixel) : pixel;
        Pixel result{};
        result.Alpha() = pixel.Alpha();
        return result;
    }

    const Raster::DynamicBuffer& m_buffer;
    Kernel::PointT<int> m_origin;
    bool m_isPlain;
};

} // namespace Renderer
