#include <raster/DynamicBitmap.h>

#include <cassert>
#include <utility>

namespace Raster {

DynamicBitmap::DynamicBitmap(Kernel::Counted<const DynamicBuffer> buffer,
                             Kernel::Counted<const ICCProfile> profile)
    : m_buffer(std::move(buffer)), m_profile(std::move(profile))
{
    assert(m_buffer);
}

DynamicBitmap::~DynamicBitmap() = default;

} // namespace Raster
