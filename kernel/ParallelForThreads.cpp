#ifdef RENDERER_THREAD_SANITIZER

// The sanitizer does not see the synchronisation inside TBB, which is compiled without it, and
// would report races that are none. Threads started here are understood in full.

#include <kernel/ParallelFor.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace Kernel::Dispatch {
namespace {

/// What the threads of one dispatch share.
class Work
{
public:
    Work(Body body, unsigned count, void* context)
        : m_body(body), m_count(count), m_context(context)
    {}

    /// Takes indices until none is left or a body has thrown.
    void Run() noexcept
    {
        try {
            for (unsigned index = m_next++; index < m_count && !m_failed; index = m_next++)
                m_body(m_context, index);
        } catch (...) {
            const std::lock_guard lock(m_mutex);
            m_failed = true;
            if (!m_exception)
                m_exception = std::current_exception();
        }
    }

    void ThrowIfFailed() const
    {
        if (m_exception)
            std::rethrow_exception(m_exception);
    }

private:
    Body m_body;
    unsigned m_count;
    void* m_context;
    std::atomic<unsigned> m_next{0};
    std::atomic<bool> m_failed{false};
    std::mutex m_mutex;
    std::exception_ptr m_exception;
};

} // namespace

void ParallelFor(Body body, unsigned count, void* context, int /*priority*/, unsigned threads)
{
    Work work(body, count, context);
    {
        std::vector<std::jthread> helpers;
        helpers.reserve(threads - 1);
        for (unsigned i = 1; i < std::min(threads, count); ++i)
            helpers.emplace_back([&work] { work.Run(); });
        work.Run();
    } // all helpers have ended
    work.ThrowIfFailed();
}

} // namespace Kernel::Dispatch

#endif
