#include <renderer/core/CompositeGroup.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include <renderer/core/MakeRoom.h>

#include <kernel/Tiles.h>

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
    if (smallest == m_buffers.end())
        return DynamicBuffer::Create(format, width, height);
    // The new one will serve where the smallest did, too, unless that takes far more memory than
    // either, as a buffer both as wide as one and as tall as the other may.
    const std::uint64_t smallestSize = size(*smallest);
    const unsigned bothWidth = std::max(width, (*smallest)->GetWidth());
    const unsigned bothHeight = std::max(height, (*smallest)->GetHeight());
    m_buffers.erase(smallest);
    if (std::uint64_t{bothWidth} * bothHeight <=
        2 * std::max(smallestSize, std::uint64_t{width} * height))
        if (auto both = DynamicBuffer::Create(format, bothWidth, bothHeight))
            return both;
    return DynamicBuffer::Create(format, width, height);
}

bool SpareBuffers::Give(Counted<DynamicBuffer> buffer, const Kernel::RectT<int>& used)
{
    // Somebody who still looks at the pixels keeps the buffer.
    if (!buffer || buffer->GetReferenceCount() != 1 || m_buffers.size() >= MostBuffers)
        return false;
    try {
        MakeRoomForOne(m_buffers);
    } catch (const std::bad_alloc&) {
        return false; // the group is painted all the same
    }
    const std::size_t pixelSize = buffer->GetPixelSize();
    Kernel::ForEachTile(used, [&](const Kernel::RectT<int>& tile) {
        for (int y = tile.top; y < tile.bottom; ++y)
            std::memset(buffer->GetRow(unsigned(y)) + std::size_t(tile.left) * pixelSize, 0,
                        std::size_t(tile.Width()) * pixelSize);
    });
    m_buffers.push_back(std::move(buffer));
    return true;
}

} // namespace Renderer
