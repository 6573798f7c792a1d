#pragma once

#include <concepts>

#include <kernel/Export.h>

/// Work that fans out over the processor's cores.
namespace Kernel::Dispatch {

/// What gets worker threads first when there are not enough for everybody.
enum Priority
{
    Low = 0,
    Normal = 1,
    High = 2,
};

/// Does the work of one index. \p context is what the caller passed on.
using Body = void (*)(void* context, unsigned index);

/// Calls \p body once for each index from 0 to \p count - 1, on worker threads and the calling
/// thread, in any order, and returns when all are done.
///
/// A single index runs on the calling thread. When a body throws, indices that have not begun are
/// left out and the first exception is thrown on. Bodies may dispatch work of their own; while a
/// thread waits for that, it takes on nothing else, so locks held by a body are safe.
/// \param priority 0 low, 1 normal, 2 high; values outside count as the nearest of these.
KERNEL_EXPORT void DispatchParallelFor(Body body, unsigned count, void* context,
                                       int priority = Normal);

/// The same for a callable that takes the index; it is called from several threads at once.
template<class Callable>
requires std::invocable<const Callable&, unsigned>
void DispatchParallelFor(const Callable& callable, unsigned count, int priority = Normal)
{
    // The callable is const throughout: the cast only carries it through the context pointer.
    DispatchParallelFor(
        [](void* context, unsigned index) { (*static_cast<const Callable*>(context))(index); },
        count, const_cast<void*>(static_cast<const void*>(&callable)), priority);
}

/// Limits how many threads, the caller's included, work on one dispatch; 1 does everything on the
/// calling thread, 0 means as many as there are processors. Larger limits than that gain nothing.
/// Takes effect for later dispatches.
KERNEL_EXPORT void SetThreadLimit(unsigned threads);

/// The number of threads that a dispatch may use now; at least 1.
KERNEL_EXPORT unsigned GetThreadLimit();

} // namespace Kernel::Dispatch
