#pragma once

#include <atomic>

#include <kernel/Export.h>

namespace Kernel {

/// Base of every object that is shared by intrusive, atomic reference counting.
///
/// A new object has the count 0: the first Counted that takes it owns it. Copying an object copies
/// its value and never its count. Counting is const, so that references to const objects can own.
class KERNEL_EXPORT Countable
{
public:
    Countable() noexcept = default;
    Countable(const Countable&) noexcept {}
    Countable& operator=(const Countable&) noexcept { return *this; }
    virtual ~Countable();

    /// Adds one reference.
    void Retain() const noexcept { m_count.fetch_add(1, std::memory_order_relaxed); }

    /// Drops one reference; the last one deletes the object.
    void Release() const noexcept
    {
        if (m_count.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

    /// Adds one reference unless the count is 0, which means that the object is about to be
    /// deleted. \return whether a reference was added. For weak tables, which know the address but
    /// own nothing.
    bool TryRetain() const noexcept;

    /// The present number of references; for tests and diagnostics, since other threads may change
    /// it.
    unsigned GetReferenceCount() const noexcept { return m_count.load(std::memory_order_relaxed); }

private:
    mutable std::atomic<unsigned> m_count{0};
};

} // namespace Kernel
