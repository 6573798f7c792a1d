#pragma once

#include <atomic>
#include <thread>

namespace Kernel {

/// A lock for sections of a few instructions: it waits actively, and gives its time slice away when
/// that takes long. Not recursive. Works with std::lock_guard.
class CriticalSectionSpin
{
public:
    CriticalSectionSpin() noexcept = default;
    CriticalSectionSpin(const CriticalSectionSpin&) = delete;
    CriticalSectionSpin& operator=(const CriticalSectionSpin&) = delete;

    void lock() noexcept
    {
        for (unsigned attempt = 0; !try_lock(); ++attempt) {
            if (attempt >= SpinsBeforeYield)
                std::this_thread::yield();
            else
                Pause();
        }
    }

    bool try_lock() noexcept
    {
        // Reading first keeps the cache line shared while somebody else holds the lock.
        return !m_locked.load(std::memory_order_relaxed) &&
               !m_locked.exchange(true, std::memory_order_acquire);
    }

    void unlock() noexcept { m_locked.store(false, std::memory_order_release); }

private:
    static constexpr unsigned SpinsBeforeYield = 64;

    static void Pause() noexcept
    {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#endif
    }

    std::atomic<bool> m_locked{false};
};

} // namespace Kernel
