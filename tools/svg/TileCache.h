#pragma once

#include <cstddef>
#include <vector>

#include <kernel/Counted.h>
#include <raster/DynamicBitmap.h>
#include <raster/Format.h>
#include <raster/ICCManager.h>

#include "Element.h"
#include "Length.h"
#include "TransformList.h"

namespace Svg {

/// What the pixels of a pattern's tile depend on.
struct TileKey
{
    const Element* owner = nullptr; ///< whose children are drawn
    unsigned width = 0;             ///< in pixels, as height
    unsigned height = 0;
    Transform content; ///< from the coordinates of the children to pixels
    LengthContext lengths;
    double opacity = 1.0;
    Raster::Format format = Raster::Format::RGBA8;
    Raster::ICCManager::ICCProfileSet profiles;

    friend bool operator==(const TileKey&, const TileKey&) = default;
};

/// The tiles that were drawn last, so that a pattern on many shapes is drawn once. Bounded in
/// entries and bytes.
class TileCache
{
public:
    static constexpr std::size_t MaxEntries = 64;
    static constexpr std::size_t MaxBytes = std::size_t{64} << 20;

    /// Null when the tile is not there.
    Kernel::Counted<const Raster::DynamicBitmap> Find(const TileKey& key) const;
    /// Keeps a tile, unless it is too large; older ones make room for it.
    void Keep(TileKey key, Kernel::Counted<const Raster::DynamicBitmap> tile);

private:
    struct Entry
    {
        TileKey key;
        Kernel::Counted<const Raster::DynamicBitmap> tile;
        std::size_t bytes;
    };

    std::vector<Entry> m_entries; ///< the oldest first
    std::size_t m_bytes = 0;
};

} // namespace Svg
