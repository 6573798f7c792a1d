#pragma once

#include <cstddef>
#include <cstdint>

#include <kernel/Export.h>

namespace Kernel {

/// Knows which bits of a set of flags are legal in files. One class per set derives from it, a
/// singleton made on first use whose constructor registers the bits of each generation.
class KERNEL_EXPORT FlagSerialiser
{
public:
    FlagSerialiser(const FlagSerialiser&) = delete;
    FlagSerialiser& operator=(const FlagSerialiser&) = delete;
    virtual ~FlagSerialiser();

    /// Whether every bit that is set is registered.
    bool IsLegal(std::uint64_t flags) const noexcept { return (flags & ~m_mask) == 0; }

protected:
    FlagSerialiser() = default;

    /// Adds bits by their indices, 0 to 31. \throws std::logic_error for any other index.
    void RegisterFlagIndices(const unsigned* indices, std::size_t count);

private:
    std::uint64_t m_mask = 0;
};

} // namespace Kernel
