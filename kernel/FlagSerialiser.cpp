#include <kernel/FlagSerialiser.h>

#include <stdexcept>

namespace Kernel {

FlagSerialiser::~FlagSerialiser() = default;

void FlagSerialiser::RegisterFlagIndices(const unsigned* indices, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (indices[i] > 31)
            throw std::logic_error("flags have the indices 0 to 31");
        m_mask |= std::uint64_t{1} << indices[i];
    }
}

} // namespace Kernel
