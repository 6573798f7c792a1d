#include <kernel/HashAccumulator.h>

#include <random>

namespace Kernel {

std::uint64_t HashAccumulator::GetProcessSeed()
{
    static const std::uint64_t seed = [] {
        std::random_device device;
        return std::uint64_t{device()} << 32U | device();
    }();
    return seed;
}

} // namespace Kernel
