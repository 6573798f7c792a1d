#pragma once

#include <cstddef>
#include <cstdint>

#include <kernel/Countable.h>
#include <raster/Export.h>
#include <raster/ICCManager.h>

namespace Raster {

/// A colour adjustment that is applied to what is drawn. Immutable; used from many threads.
class RASTER_EXPORT ColourTransform : public Kernel::Countable
{
public:
    ~ColourTransform() override;

    /// Adjusts \p count unpremultiplied float RGBA pixels in place, in the encoding of the set's RGB
    /// profile. Alpha may be read and changed.
    virtual void Apply(PixelRGBAF* pixels, std::size_t count,
                       const ICCManager::ICCProfileSet& profiles) const = 0;
    /// Whether nothing is changed.
    virtual bool IsIdentity() const = 0;
    virtual std::uint64_t GetHash() const = 0;
    virtual bool IsEqual(const ColourTransform& other) const = 0;
};

} // namespace Raster
