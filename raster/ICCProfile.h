#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <raster/Export.h>
#include <raster/Format.h>

namespace Raster {

/// An ICC profile: its bytes and the space that it describes. Immutable. Profiles of equal bytes have
/// equal identity.
class RASTER_EXPORT ICCProfile : public Kernel::Countable
{
public:
    /// Reads a profile. \throws Kernel::FormatException when the bytes are not a usable profile of an
    /// RGB, grey, CMYK or Lab space.
    static Kernel::Counted<const ICCProfile> Create(std::span<const unsigned char> bytes);

    ~ICCProfile() override;

    ColourSpace GetColourSpace() const noexcept { return m_space; }
    const std::vector<unsigned char>& GetBytes() const noexcept { return m_bytes; }
    /// A hash of the bytes; equal profiles have equal identities.
    std::uint64_t GetIdentity() const noexcept { return m_identity; }

private:
    ICCProfile(std::vector<unsigned char> bytes, ColourSpace space);

    std::vector<unsigned char> m_bytes;
    ColourSpace m_space;
    std::uint64_t m_identity;
};

} // namespace Raster
