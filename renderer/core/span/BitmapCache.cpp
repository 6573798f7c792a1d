#include <renderer/core/span/BitmapCache.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include <raster/Convert.h>
#include <raster/Pixel.h>

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

} // namespace Renderer
