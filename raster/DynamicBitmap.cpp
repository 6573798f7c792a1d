#include <raster/DynamicBitmap.h>

#include <cassert>
#include <utility>

#include <kernel/FormatException.h>
#include <raster/CompressedRasterData.h>

namespace Raster {

DynamicBitmap::DynamicBitmap() : m_pixels(Kernel::MakeCounted<Pixels>()) {}

DynamicBitmap::DynamicBitmap(Kernel::Counted<const DynamicBuffer> buffer,
                             Kernel::Counted<const ICCProfile> profile)
    : DynamicBitmap(std::move(buffer), std::move(profile), nullptr)
{}

DynamicBitmap::DynamicBitmap(Kernel::Counted<const DynamicBuffer> buffer,
                             Kernel::Counted<const ICCProfile> profile,
                             Kernel::Counted<const CompressedRasterData> data)
    : m_format(buffer->GetFormat()),
      m_width(buffer->GetWidth()),
      m_height(buffer->GetHeight()),
      m_profile(std::move(profile)),
      m_pixels(Kernel::MakeCounted<Pixels>())
{
    assert(buffer);
    m_pixels->buffer = std::move(buffer);
    m_pixels->data = std::move(data);
}

DynamicBitmap::~DynamicBitmap() = default;

/// Leaves the buffer empty when the pixels are damaged. \pre the mutex is held.
void DynamicBitmap::DecodeOnce() const
{
    try {
        const auto& buffer = m_pixels->data->GetDecoded(*this)->GetBuffer();
        if (buffer->GetFormat() == m_format && buffer->GetWidth() == m_width &&
            buffer->GetHeight() == m_height)
            m_pixels->buffer = buffer;
    } catch (const Kernel::FormatException&) {
    }
}

const Kernel::Counted<const DynamicBuffer>& DynamicBitmap::Decode() const noexcept
{
    try {
        const std::lock_guard lock(m_pixels->mutex);
        if (!m_pixels->isDecoded.load(std::memory_order_relaxed)) {
            DecodeOnce();
            m_pixels->isDecoded.store(true, std::memory_order_release);
        }
        return m_pixels->buffer;
    } catch (...) { // no memory, or the file cannot be read: the next call may have more luck
        static const Kernel::Counted<const DynamicBuffer> none;
        return none;
    }
}

const DynamicBuffer& DynamicBitmap::GetPixels() const
{
    const auto& buffer = GetBuffer();
    if (!buffer)
        throw Kernel::FormatException("the pixels of a bitmap are damaged");
    return *buffer;
}

Kernel::Counted<const DynamicBitmap>
DynamicBitmap::WithProfile(Kernel::Counted<const ICCProfile> profile) const
{
    const Kernel::Counted<DynamicBitmap> result(new DynamicBitmap);
    result->m_format = m_format;
    result->m_width = m_width;
    result->m_height = m_height;
    result->m_profile = std::move(profile);
    result->m_pixels = m_pixels;
    return result;
}

Kernel::Counted<const CompressedRasterData> DynamicBitmap::GetCompressedData() const
{
    {
        const std::lock_guard lock(m_pixels->mutex);
        if (m_pixels->data)
            return m_pixels->data;
    }
    // Work is dispatched, which nobody may do under a lock that the pool's threads may wait for.
    // Without data the buffer is there from the start.
    auto data = Kernel::MakeCounted<const CompressedRasterData>(*m_pixels->buffer);
    const std::lock_guard lock(m_pixels->mutex);
    if (!m_pixels->data)
        m_pixels->data = std::move(data);
    return m_pixels->data;
}

} // namespace Raster
