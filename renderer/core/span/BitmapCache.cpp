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

template<class Entries>
std::size_t GetBytesOf(const Entries& entries) noexcept
{
    std::size_t total = 0;
    for (const auto& entry : entries)
        total += GetByteSize(*entry.pixels);
    return total;
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

/// A side halved as often as it stays at least as long as needed.
unsigned Halve(unsigned side, unsigned needed) noexcept
{
    while (side > 1 && (side + 1) / 2 >= needed)
        side = (side + 1) / 2;
    return side;
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
    Entry wanted{bitmap, format, profiles, ignoreAlpha, {}};
    if (const Entry* const known =
            Find(m_entries, [&](const Entry& entry) { return entry.HasOrigin(wanted); }))
        return known->pixels;
    if (!bitmap->GetBuffer())
        return {};
    auto converted =
        Raster::ConvertBuffer(bitmap->GetBuffer(), bitmap->GetProfile(), format, profiles);
    if (converted && ignoreAlpha)
        converted = MakeOpaque(*converted);
    if (converted && converted != bitmap->GetBuffer()) {
        wanted.pixels = converted;
        Keep(m_entries, MaxEntries, std::move(wanted));
    }
    return converted;
}

Kernel::Counted<const Raster::DynamicBuffer>
BitmapCache::GetReduced(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
                        Raster::Format format, const Raster::ICCManager::ICCProfileSet& profiles,
                        bool ignoreAlpha, const Raster::AffineTransform::Params& deviceToUnit,
                        bool halves)
{
    if (!bitmap->GetBuffer())
        return {};
    const Raster::PictureSize whole{bitmap->GetBuffer()->GetWidth(),
                                    bitmap->GetBuffer()->GetHeight()};
    Raster::PictureSize size = Raster::GetReducedSize(whole, deviceToUnit);
    if (halves)
        size = {Halve(whole.width, size.width), Halve(whole.height, size.height)};
    if (size == whole)
        return Get(bitmap, format, profiles, ignoreAlpha);
    Entry wanted{bitmap, format, profiles, ignoreAlpha, {}};
    if (const Entry* const known = Find(m_reductions, [&](const Entry& entry) {
            return entry.pixels->GetWidth() == size.width &&
                   entry.pixels->GetHeight() == size.height && entry.HasOrigin(wanted);
        }))
        return known->pixels;
    const auto pixels = Get(bitmap, format, profiles, ignoreAlpha);
    auto reduced = Raster::ReduceByArea(pixels, size.width, size.height);
    if (!reduced)
        return pixels;
    DropOrphans();
    wanted.pixels = reduced;
    Keep(m_reductions, MaxReductions, std::move(wanted));
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
    return GetBytesOf(m_entries);
}

void BitmapCache::Keep(Entries& entries, std::size_t maxEntries, Entry entry)
{
    const std::size_t size = GetByteSize(*entry.pixels);
    if (size > m_byteBudget)
        return;
    while (entries.size() >= maxEntries || GetBytesOf(entries) + size > m_byteBudget)
        entries.pop_back();
    entries.insert(entries.begin(), std::move(entry));
}

void BitmapCache::DropOrphans()
{
    const auto countHolders = [&](const Entry& entry) {
        const auto holds = [&](const Entry& other) { return other.bitmap == entry.bitmap; };
        return unsigned(std::ranges::count_if(m_entries, holds) +
                        std::ranges::count_if(m_reductions, holds));
    };
    for (std::size_t i = m_reductions.size(); i-- > 0;)
        if (m_reductions[i].bitmap->GetReferenceCount() == countHolders(m_reductions[i]))
            m_reductions.erase(m_reductions.begin() + std::ptrdiff_t(i));
    // These may be of pixels that were just dropped.
    std::erase_if(m_opacities,
                  [](const Opacity& opacity) { return opacity.source->GetReferenceCount() == 1; });
}

} // namespace Renderer
