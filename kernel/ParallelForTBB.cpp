#ifndef RENDERER_THREAD_SANITIZER

#include <kernel/ParallelFor.h>

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>

#include <tbb/blocked_range.h>
#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>
#include <tbb/task_arena.h>

namespace Kernel::Dispatch {
namespace {

constexpr std::array Priorities = {tbb::task_arena::priority::low,
                                   tbb::task_arena::priority::normal,
                                   tbb::task_arena::priority::high};

/// One arena per priority, all of one size.
struct Arenas
{
    explicit Arenas(unsigned size) : threads(size)
    {
        for (std::size_t i = 0; i < arenas.size(); ++i)
            arenas[i].initialize(static_cast<int>(size), 1, Priorities[i]);
    }

    unsigned threads;
    std::array<tbb::task_arena, Priorities.size()> arenas;
};

/// The arenas of the given size: those of the last call, unless the limit was changed since. Work
/// under way keeps the ones that it runs in.
std::shared_ptr<Arenas> GetArenas(unsigned threads)
{
    // Never destroyed: worker threads may outlive static objects.
    static std::mutex& mutex = *new std::mutex;
    static auto& arenas = *new std::shared_ptr<Arenas>;
    const std::lock_guard lock(mutex);
    if (!arenas || arenas->threads != threads)
        arenas = std::make_shared<Arenas>(threads);
    return arenas;
}

} // namespace

void ParallelFor(Body body, unsigned count, void* context, int priority, unsigned threads)
{
    // TBB has no more threads than processors to give and complains when asked.
    const auto available = static_cast<unsigned>(tbb::info::default_concurrency());
    const std::shared_ptr<Arenas> arenas = GetArenas(std::min(threads, available));
    // Single indices balance tiles of unequal cost; ranges keep long loops of small bodies cheap.
    const tbb::blocked_range<unsigned> indices(0, count, 1 + count / 1024);
    const auto run = [&](const tbb::blocked_range<unsigned>& range) {
        for (unsigned index = range.begin(); index != range.end(); ++index)
            body(context, index);
    };
    arenas->arenas[static_cast<std::size_t>(priority)].execute([&] {
        // Isolated, a waiting thread does not pick up foreign work while its own body holds a lock.
        tbb::this_task_arena::isolate(
            [&] { tbb::parallel_for(indices, run, tbb::simple_partitioner()); });
    });
}

} // namespace Kernel::Dispatch

#endif
