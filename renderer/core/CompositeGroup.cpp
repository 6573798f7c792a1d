#include <renderer/core/CompositeGroup.h>

#include <algorithm>
#include <cstring>

namespace Renderer {

using Kernel::Counted;
using Raster::DynamicBuffer;

Counted<DynamicBuffer> SpareBuffers::Take(Raster::Format format, unsigned width, unsigned height)
{
    // A spare buffer may be up to four times too large: clearing touches the needed part alone.
    const std::uint64_t needed = std::uint64_t{width} * height;
    const auto fits = [&](const Counted<DynamicBuffer>& buffer) {
        return buffer->GetFormat() == format && buffer->GetWidth() >= width &&
               buffer->GetHeight() >= height &&
               std::uint64_t{buffer->GetWidth()} * buffer->GetHeight() <= 4 * needed;
    };
    const auto found = std::find_if(m_buffers.begin(), m_buffers.end(), fits);
    if (found == m_buffers.end())
        return DynamicBuffer::Create(format, width, height);
    Counted<DynamicBuffer> buffer = std::move(*found);
    m_buffers.erase(found);
    for (unsigned y = 0; y < height; ++y)
        std::memset(buffer->GetRow(y), 0, std::size_t{width} * buffer->GetPixelSize());
    return buffer;
}

void SpareBuffers::Give(Counted<DynamicBuffer> buffer)
{
    // Somebody who still looks at the pixels keeps the buffer.
    if (!buffer || buffer->GetReferenceCount() != 1)
        return;
    if (m_buffers.size() == MaxCount)
        m_buffers.erase(m_buffers.begin());
    m_buffers.push_back(std::move(buffer));
}

} // namespace Renderer
