#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include <kernel/Counted.h>
#include <kernel/Rect.h>
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

/// What the pixels of a device depend on that is covered with tiles.
struct CoverKey
{
    TileKey tile;
    Transform toDevice; ///< from the pattern's coordinates
    Kernel::RectT<int> pixels;

    friend bool operator==(const CoverKey&, const CoverKey&) = default;
};

/// Bitmaps by what they depend on. Bounded in entries and bytes; the oldest make room.
template<class Key>
class BitmapStore
{
public:
    static constexpr std::size_t MaxEntries = 64;
    static constexpr std::size_t MaxBytes = std::size_t{64} << 20;

    /// Null when the bitmap is not there.
    Kernel::Counted<const Raster::DynamicBitmap> Find(const Key& key) const
    {
        const auto found = std::ranges::find(m_entries, key, &Entry::key);
        return found == m_entries.end() ? Bitmap() : found->bitmap;
    }

    /// Keeps a bitmap, unless it is too large.
    void Keep(Key key, Kernel::Counted<const Raster::DynamicBitmap> bitmap)
    {
        const auto& buffer = *bitmap->GetBuffer();
        const std::size_t bytes = std::size_t(buffer.GetStride()) * buffer.GetHeight();
        if (bytes > MaxBytes)
            return;
        while (m_entries.size() == MaxEntries || m_bytes + bytes > MaxBytes) {
            m_bytes -= m_entries.front().bytes;
            m_entries.erase(m_entries.begin());
        }
        m_entries.push_back({std::move(key), std::move(bitmap), bytes});
        m_bytes += bytes;
    }

private:
    using Bitmap = Kernel::Counted<const Raster::DynamicBitmap>;
    struct Entry
    {
        Key key;
        Bitmap bitmap;
        std::size_t bytes;
    };

    std::vector<Entry> m_entries; ///< the oldest first
    std::size_t m_bytes = 0;
};

/// The bitmaps of patterns that were drawn last, so that a pattern on many shapes is drawn once.
struct TileCache
{
    BitmapStore<TileKey> tiles;
    /// Whole devices covered with tiles, for patterns on so many shapes that this is less work.
    BitmapStore<CoverKey> covers;
    /// The cover that is wanted at present, and how many pixels were drawn for want of it.
    CoverKey wanted;
    double wantedPixels = 0.0;
};

} // namespace Svg
