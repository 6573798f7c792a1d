#include <renderer/core/span/BitmapCache.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include <raster/Convert.h>
#include <raster/Pixel.h>
#include <raster/Resample.h>

namespace Renderer {

namespace {

std::size_t GetByteSize(const Raster::DynamicBuffer& buffer) noexcept
{
    return static_cast<std::size_t>(buffer.GetStride()) * buffer.GetHeight();
}

void SetAlphaFull(Raster::Format format, void* pixels, unsigned count)
{
    Raster::WithPixelOfFormat(format, false, [&](auto kind) {
        using Pixel = decltype(kind);
        auto* pixel = static_cast<Pixel*>(pixels);
        for (unsigned i = 0; i < count; ++i)
            pixel[i].Alpha() = Pixel::Max;
        return true;
    });
}

/// A copy with plain colours and full alpha; null when the memory cannot be had.
Kernel::Counted<const Raster::DynamicBuffer> MakeOpaque(const Raster::DynamicBuffer& source)
{
    const Raster::Format format = source.GetFormat();
    const unsigned width = source.GetWidth();
    const auto result = Raster::DynamicBuffer::Create(format, width, source.GetHeight());
    if (!result)
        return {};
    for (unsigned y = 0; y < source.GetHeight(); ++y) {
        unsigned char* row = result->GetRow(y);
        std::memcpy(row, source.GetRow(y), std::size_t{width} * source.GetPixelSize());
        Raster::Unpremultiply(format, row, width);
        SetAlphaFull(format, row, width);
    }
    return result;
}

/// Larger pictures are not worth a look at every pixel.
constexpr std::uint64_t MaxExaminedPixels = std::uint64_t{1} << 22;

bool HasFullAlpha(const Raster::DynamicBuffer& buffer)
{
    return Raster::WithPixelOfFormat(buffer.GetFormat(), false, [&](auto kind) {
        using Pixel = decltype(kind);
        for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
            const auto* row = reinterpret_cast<const Pixel*>(buffer.GetRow(y));
            bool isFull = true;
            for (unsigned x = 0; x < buffer.GetWidth(); ++x)
                isFull &= row[x].Alpha() == Pixel::Max;
            if (!isFull)
                return false;
        }
        return true;
    });
}

/// Finds an entry, which comes first then; null when there is none.
template<class Entries, class IsWanted>
auto Find(Entries& entries, IsWanted isWanted)
{
    const auto found = std::find_if(entries.begin(), entries.end(), isWanted);
    if (found != entries.end())
        std::rotate(entries.begin(), found, found + 1);
    return found != entries.end() ? &entries.front() : nullptr;
}

} // namespace

Kernel::Counted<const Raster::DynamicBuffer>
BitmapCache::Get(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap, Raster::Format format,
                 const Raster::ICCManager::ICCProfileSet& profiles, bool ignoreAlpha)
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
        return entry.bitmap == bitmap && entry.format == format &&
               entry.ignoreAlpha == ignoreAlpha && entry.profiles == profiles;
    });
    if (found != m_entries.end()) {
        std::rotate(m_entries.begin(), found, found + 1);
        return m_entries.front().converted;
    }
    auto converted =
        Raster::ConvertBuffer(bitmap->GetBuffer(), bitmap->GetProfile(), format, profiles);
    if (converted && ignoreAlpha)
        converted = MakeOpaque(*converted);
    if (converted && converted != bitmap->GetBuffer())
        Keep({bitmap, format, profiles, ignoreAlpha, converted});
    return converted;
}

Kernel::Counted<const Raster::DynamicBuffer>
BitmapCache::GetReduced(const Kernel::Counted<const Raster::DynamicBuffer>& pixels,
                        const Raster::AffineTransform::Params& deviceToUnit)
{
    const Raster::PictureSize whole{pixels->GetWidth(), pixels->GetHeight()};
    const Raster::PictureSize size = Raster::GetReducedSize(whole, deviceToUnit);
    if (size == whole)
        return pixels;
    const Reduction* const known = Find(m_reductions, [&](const Reduction& reduction) {
        return reduction.source == pixels && reduction.reduced->GetWidth() == size.width &&
               reduction.reduced->GetHeight() == size.height;
    });
    if (known)
        return known->reduced;
    auto reduced = Raster::ReduceByArea(pixels, size.width, size.height);
    if (!reduced)
        return pixels;
    DropOrphans();
    Keep({pixels, reduced});
    return reduced;
}

bool BitmapCache::IsOpaque(const Kernel::Counted<const Raster::DynamicBuffer>& pixels)
{
    if (std::uint64_t{pixels->GetWidth()} * pixels->GetHeight() > MaxExaminedPixels)
        return false;
    if (const Opacity* const known =
            Find(m_opacities, [&](const Opacity& opacity) { return opacity.source == pixels; }))
        return known->isOpaque;
    const bool isOpaque = HasFullAlpha(*pixels);
    DropOrphans();
    if (m_opacities.size() >= MaxOpacities)
        m_opacities.pop_back();
    m_opacities.insert(m_opacities.begin(), {pixels, isOpaque});
    return isOpaque;
}

std::size_t BitmapCache::GetByteCount() const noexcept
{
    std::size_t total = 0;
    for (const Entry& entry : m_entries)
        total += GetByteSize(*entry.converted);
    return total;
}

void BitmapCache::Keep(Entry entry)
{
    const std::size_t size = GetByteSize(*entry.converted);
    if (size > m_byteBudget)
        return;
    while (m_entries.size() >= MaxEntries || GetByteCount() + size > m_byteBudget)
        m_entries.pop_back();
    m_entries.insert(m_entries.begin(), std::move(entry));
}

void BitmapCache::DropOrphans()
{
    const auto isOrphan = [&](const auto& entry) {
        const auto hasSource = [&](const auto& other) { return other.source == entry.source; };
        const auto ours = std::count_if(m_reductions.begin(), m_reductions.end(), hasSource) +
                          std::count_if(m_opacities.begin(), m_opacities.end(), hasSource);
        return entry.source->GetReferenceCount() == unsigned(ours);
    };
    const auto drop = [&](auto& entries) {
        for (std::size_t i = entries.size(); i-- > 0;)
            if (isOrphan(entries[i]))
                entries.erase(entries.begin() + std::ptrdiff_t(i));
    };
    drop(m_reductions); // these hold pixels whose opacity is known
    drop(m_opacities);
}

void BitmapCache::Keep(Reduction reduction)
{
    const std::size_t size = GetByteSize(*reduction.reduced);
    if (size > m_byteBudget)
        return;
    const auto getByteCount = [&] {
        std::size_t total = size;
        for (const Reduction& kept : m_reductions)
            total += GetByteSize(*kept.reduced);
        return total;
    };
    while (m_reductions.size() >= MaxReductions || getByteCount() > m_byteBudget)
        m_reductions.pop_back();
    m_reductions.insert(m_reductions.begin(), std::move(reduction));
}

} // namespace Renderer
