#pragma once

#include <kernel/Counted.h>
#include <raster/DynamicBuffer.h>
#include <raster/ICCProfile.h>

namespace Raster {

/// An immutable picture: a buffer that is not written any more, and the profile of its colours (none
/// means the default of its format).
class RASTER_EXPORT DynamicBitmap : public DynamicBase
{
public:
    /// \pre \p buffer is not null and nobody writes to it any more.
    explicit DynamicBitmap(Kernel::Counted<const DynamicBuffer> buffer,
                           Kernel::Counted<const ICCProfile> profile = {});
    ~DynamicBitmap() override;

    const Kernel::Counted<const DynamicBuffer>& GetBuffer() const noexcept { return m_buffer; }
    const Kernel::Counted<const ICCProfile>& GetProfile() const noexcept { return m_profile; }
    Format GetFormat() const noexcept { return m_buffer->GetFormat(); }
    unsigned GetWidth() const noexcept { return m_buffer->GetWidth(); }
    unsigned GetHeight() const noexcept { return m_buffer->GetHeight(); }

private:
    Kernel::Counted<const DynamicBuffer> m_buffer;
    Kernel::Counted<const ICCProfile> m_profile;
};

} // namespace Raster
