#pragma once

#include <cstddef>
#include <vector>

#include <kernel/Counted.h>
#include <raster/AffineTransform.h>
#include <raster/DynamicBitmap.h>
#include <raster/DynamicBuffer.h>
#include <raster/Format.h>
#include <raster/ICCManager.h>

namespace Renderer {

/// What a target has derived from bitmaps, the latest used first, so that a bitmap that is drawn
/// again and again is worked on once: conversions into the target's own format, reductions for
/// smaller placements, and whether pixels are opaque. Only for pixels that do not change any more.
///
/// Bounded in entries and bytes, reductions apart from conversions. Conversions keep the originals
/// alive; the others are dropped, when the next of them is made, once nobody else holds their
/// originals. Serves one thread.
class BitmapCache
{
public:
    static constexpr std::size_t MaxEntries = 8;
    static constexpr std::size_t MaxReductions = 16;
    static constexpr std::size_t MaxOpacities = 16;
    static constexpr std::size_t DefaultByteBudget = std::size_t{128} << 20;

    explicit BitmapCache(std::size_t byteBudget = DefaultByteBudget) : m_byteBudget(byteBudget) {}

    /// The bitmap's pixels, premultiplied, in \p format and the profiles of \p profiles; its own
    /// buffer where nothing needs converting.
    /// \param ignoreAlpha makes every pixel opaque, with its unpremultiplied colour.
    /// \return null when the memory cannot be had.
    Kernel::Counted<const Raster::DynamicBuffer>
    Get(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap, Raster::Format format,
        const Raster::ICCManager::ICCProfileSet& profiles, bool ignoreAlpha);

    /// The same reduced by area for a map from the device to the unit square that the bitmap
    /// occupies; not reduced where the map does not minify or the memory cannot be had. A bitmap
    /// whose conversion is too large to be kept is not converted again for the same reduction.
    /// \param halves only halves, as often as it can be done without becoming smaller: up to twice
    ///        the pixels a side, but the same for many placements.
    Kernel::Counted<const Raster::DynamicBuffer>
    GetReduced(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap, Raster::Format format,
               const Raster::ICCManager::ICCProfileSet& profiles, bool ignoreAlpha,
               const Raster::AffineTransform::Params& deviceToUnit, bool halves = false);

    /// Whether all pixels have full alpha, if that can be told cheaply: large pictures count as
    /// not opaque.
    bool IsOpaque(const Kernel::Counted<const Raster::DynamicBuffer>& pixels);

    /// Drops everything.
    void Clear() noexcept
    {
        m_entries.clear();
        m_reductions.clear();
        m_opacities.clear();
    }

    /// Conversions that are kept.
    std::size_t GetEntryCount() const noexcept { return m_entries.size(); }
    std::size_t GetReductionCount() const noexcept { return m_reductions.size(); }
    /// Bytes of the converted pixels that are kept.
    std::size_t GetByteCount() const noexcept;

private:
    /// What is derived from a bitmap: a conversion or a reduction of one.
    struct Entry
    {
        Kernel::Counted<const Raster::DynamicBitmap> bitmap;
        Raster::Format format;
        Raster::ICCManager::ICCProfileSet profiles;
        bool ignoreAlpha;
        Kernel::Counted<const Raster::DynamicBuffer> pixels;

        /// Whether both stem from the same pixels in the same format and profiles.
        bool HasOrigin(const Entry& other) const noexcept
        {
            return bitmap == other.bitmap && format == other.format &&
                   ignoreAlpha == other.ignoreAlpha && profiles == other.profiles;
        }
    };
    using Entries = std::vector<Entry>;

    struct Opacity
    {
        Kernel::Counted<const Raster::DynamicBuffer> source;
        bool isOpaque;
    };

    /// Puts an entry first and drops the last ones that are beyond the bounds.
    void Keep(Entries& entries, std::size_t maxEntries, Entry entry);
    /// Drops reductions of bitmaps and opacities of pixels that nobody else holds any more.
    void DropOrphans();

    std::size_t m_byteBudget;
    Entries m_entries; // conversions
    Entries m_reductions;
    std::vector<Opacity> m_opacities;
};

} // namespace Renderer
