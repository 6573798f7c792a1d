#include <renderer/core/CompositeGroup.h>

#include <cstdint>
#include <cstring>

namespace Renderer {

using Kernel::Counted;
using Raster::DynamicBuffer;

Counted<DynamicBuffer> SpareBuffers::Take(Raster::Format format, unsigned width, unsigned height)
{
    const auto size = [](const Counted<DynamicBuffer>& buffer) {
        return std::uint64_t{buffer->GetWidth()} * buffer->GetHeight();
    };
    auto best = m_buffers.end(), smallest = m_buffers.begin();
    for (auto it = m_buffers.begin(); it != m_buffers.end(); ++it) {
        if ((*it)->GetFormat() == format && (*it)->GetWidth() >= width &&
            (*it)->GetHeight() >= height && (best == m_buffers.end() || size(*it) < size(*best)))
            best = it;
        if (size(*it) < size(*smallest))
            smallest = it;
    }
    if (best != m_buffers.end()) {
        Counted<DynamicBuffer> buffer = std::move(*best);
        m_buffers.erase(best);
        return buffer;
    }
    // The new one will serve where the smallest did.
    if (smallest != m_buffers.end())
        m_buffers.erase(smallest);
    return DynamicBuffer::Create(format, width, height);
}

void SpareBuffers::Give(Counted<DynamicBuffer> buffer, const Kernel::RectT<int>& used)
{
    // Somebody who still looks at the pixels keeps the buffer.
    if (!buffer || buffer->GetReferenceCount() != 1)
        return;
    const std::size_t pixelSize = buffer->GetPixelSize();
    for (int y = used.top; y < used.bottom; ++y)
        std::memset(buffer->GetRow(unsigned(y)) + std::size_t(used.left) * pixelSize, 0,
                    std::size_t(used.Width()) * pixelSize);
    m_buffers.push_back(std::move(buffer));
}

} // namespace Renderer
