#include <kernel/Countable.h>

namespace Kernel {

Countable::~Countable() = default;

bool Countable::TryRetain() const noexcept
{
    unsigned count = m_count.load(std::memory_order_relaxed);
    while (count != 0) {
        if (m_count.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel))
            return true;
    }
    return false;
}

} // namespace Kernel
