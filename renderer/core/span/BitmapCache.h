#pragma once

#include <cstddef>
#include <vector>

#include <kernel/Counted.h>
#include <raster/DynamicBitmap.h>
#include <raster/DynamicBuffer.h>
#include <raster/Format.h>
#include <raster/ICCManager.h>

namespace Renderer {

/// The bitmaps that a target has converted into its own format, the latest used first, so that a
/// bitmap that is drawn again and again is converted once. Keeps the originals alive. Bounded in
/// entries and bytes. Serves one thread.
class BitmapCache
{
public:
    static constexpr std::size_t MaxEntries = 8;
    static constexpr std::size_t DefaultByteBudget = std::size_t{128} << 20;

    explicit BitmapCache(std::size_t byteBudget = DefaultByteBudget) : m_byteBudget(byteBudget) {}

    /// The bitmap's pixels, premultiplied, in \p format and the profiles of \p profiles; its own
    /// buffer where nothing needs converting.
    /// \param ignoreAlpha makes every pixel opaque, with its unpremultiplied colour.
    /// \return null when the memory cannot be had.
    Kernel::Counted<const Raster::DynamicBuffer>
    Get(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap, Raster::Format format,
        const Raster::ICCManager::ICCProfileSet& profiles, bool ignoreAlpha);

    /// Drops everything.
    void Clear() noexcept { m_entries.clear(); }

    std::size_t GetEntryCount() const noexcept { return m_entries.size(); }
    /// Bytes of the converted pixels that are kept.
    std::size_t GetByteCount() const noexcept;

private:
    struct Entry
    {
        Kernel::Counted<const Raster::DynamicBitmap> bitmap;
        Raster::Format format;
        Raster::ICCManager::ICCProfileSet profiles;
        bool ignoreAlpha;
        Kernel::Counted<const Raster::DynamicBuffer> converted;
    };

    void Keep(Entry entry);

    std::size_t m_byteBudget;
    std::vector<Entry> m_entries;
};

} // namespace Renderer
