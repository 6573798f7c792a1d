#include <raster/DynamicBitmap.h>

#include <cassert>
#include <utility>

#include <kernel/FormatException.h>
#include <raster/CompressedRasterData.h>

namespace Raster {

DynamicBitmap::DynamicBitmap() = default;

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
      m_buffer(std::move(buffer)),
      m_data(std::move(data))
{
    assert(m_buffer);
}

DynamicBitmap::~DynamicBitmap() = default;

/// Leaves the buffer empty when the pixels are damaged. \pre the mutex is held.
void DynamicBitmap::DecodeOnce() const
{
    try {
        const auto& buffer = m_data->GetDecoded(*this)->GetBuffer();
        if (buffer->GetFormat() == m_format && buffer->GetWidth() == m_width &&
            buffer->GetHeight() == m_height)
            m_buffer = buffer;
    } catch (const Kernel::FormatException&) {
    }
}

const Kernel::Counted<const DynamicBuffer>& DynamicBitmap::Decode() const noexcept
{
    try {
        const std::lock_guard lock(m_mutex);
        if (!m_isDecoded.load(std::memory_order_relaxed)) {
            DecodeOnce();
            m_isDecoded.store(true, std::memory_order_release);
        }
        return m_buffer;
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
    const std::lock_guard lock(m_mutex);
    result->m_isDecoded.store(m_isDecoded.load(std::memory_order_relaxed),
                              std::memory_order_relaxed);
    result->m_buffer = m_buffer;
    result->m_data = m_data;
    return result;
}

Kernel::Counted<const CompressedRasterData> DynamicBitmap::GetCompressedData() const
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_data)
            return m_data;
    }
    // Work is dispatched, which nobody may do under a lock that the pool's threads may wait for.
    // Without data the buffer is there from the start.
    auto data = Kernel::MakeCounted<const CompressedRasterData>(*m_buffer);
    const std::lock_guard lock(m_mutex);
    if (!m_data)
        m_data = std::move(data);
    return m_data;
}

} // namespace Raster
