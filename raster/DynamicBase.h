#pragma once

#include <kernel/Countable.h>
#include <kernel/Rect.h>
#include <raster/Export.h>

namespace Raster {

/// What buffers and bitmaps share: hooks for a host that keeps a second copy of the pixels, for
/// instance on a graphics card. Without a host cache they do nothing.
class RASTER_EXPORT DynamicBase : public virtual Kernel::Countable
{
public:
    ~DynamicBase() override;

    /// Brings the host's copy of the pixels up to date before the CPU reads or writes them.
    virtual void SyncHostCache() const;
    /// Says that the CPU has changed the pixels of \p rect, in pixels from the first one; perhaps
    /// empty. Must not throw.
    virtual void InvalidateHardwareCache(const Kernel::RectT<int>& rect);
};

} // namespace Raster
