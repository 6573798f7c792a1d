#include <kernel/Dispatch.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include <kernel/ParallelFor.h>

namespace Kernel::Dispatch {
namespace {

std::atomic<unsigned> g_threadLimit{0};

unsigned GetProcessorCount()
{
    static const unsigned count = std::max(1U, std::thread::hardware_concurrency());
    return count;
}

} // namespace

void DispatchParallelFor(Body body, unsigned count, void* context, int priority)
{
    const unsigned threads = std::min(GetThreadLimit(), count);
    if (threads <= 1) {
        for (unsigned index = 0; index < count; ++index)
            body(context, index);
        return;
    }
    ParallelFor(body, count, context,
                std::clamp(priority, static_cast<int>(Low), static_cast<int>(High)),
                GetThreadLimit());
}

void SetThreadLimit(unsigned threads)
{
    g_threadLimit.store(threads, std::memory_order_relaxed);
}

unsigned GetThreadLimit()
{
    const unsigned limit = g_threadLimit.load(std::memory_order_relaxed);
    return limit == 0 ? GetProcessorCount() : limit;
}

} // namespace Kernel::Dispatch
