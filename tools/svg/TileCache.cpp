#include "TileCache.h"

#include <algorithm>
#include <utility>

namespace Svg {

Kernel::Counted<const Raster::DynamicBitmap> TileCache::Find(const TileKey& key) const
{
    const auto found = std::ranges::find(m_entries, key, &Entry::key);
    return found == m_entries.end() ? Kernel::Counted<const Raster::DynamicBitmap>() : found->tile;
}

void TileCache::Keep(TileKey key, Kernel::Counted<const Raster::DynamicBitmap> tile)
{
    const auto& buffer = *tile->GetBuffer();
    const std::size_t bytes = std::size_t(buffer.GetStride()) * buffer.GetHeight();
    if (bytes > MaxBytes)
        return;
    while (m_entries.size() == MaxEntries || m_bytes + bytes > MaxBytes) {
        m_bytes -= m_entries.front().bytes;
        m_entries.erase(m_entries.begin());
    }
    m_entries.push_back({std::move(key), std::move(tile), bytes});
    m_bytes += bytes;
}

} // namespace Svg
