#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <kernel/Dispatch.h>

using namespace Kernel::Dispatch;

namespace {

/// Sets a thread limit for one test.
struct ThreadLimit
{
    explicit ThreadLimit(unsigned threads) { SetThreadLimit(threads); }
    ~ThreadLimit() { SetThreadLimit(0); }
};

TEST(Dispatch, RunsEveryIndexOnceAtAnyPriority)
{
    const Body body = [](void* context, unsigned index) {
        ++static_cast<std::vector<std::atomic<int>>*>(context)->at(index);
    };
    for (const int priority : {-1, 0, 1, 2, 3}) {
        for (const unsigned count : {0U, 1U, 2U, 7U, 1024U, 5000U}) {
            std::vector<std::atomic<int>> calls(count);
            DispatchParallelFor(body, count, &calls, priority);
            for (const auto& call : calls)
                ASSERT_EQ(call, 1) << "of " << count;
        }
    }
}

TEST(Dispatch, OneIndexAndOneThreadStayOnTheCaller)
{
    const auto caller = std::this_thread::get_id();
    std::thread::id seen;
    DispatchParallelFor([&](unsigned) { seen = std::this_thread::get_id(); }, 1);
    EXPECT_EQ(seen, caller);

    const ThreadLimit limit(1);
    bool elsewhere = false;
    DispatchParallelFor([&](unsigned) { elsewhere |= std::this_thread::get_id() != caller; }, 100);
    EXPECT_FALSE(elsewhere);
}

TEST(Dispatch, LimitBoundsTheThreadsAtWork)
{
    const ThreadLimit limit(2);
    EXPECT_EQ(GetThreadLimit(), 2U);
    std::atomic<int> running{0};
    std::atomic<int> most{0};
    DispatchParallelFor(
        [&](unsigned) {
            int seen = most;
            const int now = ++running;
            while (now > seen && !most.compare_exchange_weak(seen, now)) {
            }
            std::this_thread::yield();
            --running;
        },
        2000);
    EXPECT_LE(most, 2);
}

TEST(Dispatch, ExceptionReachesTheCallerAndTheNextDispatchWorks)
{
    for (const unsigned count : {1U, 500U}) {
        EXPECT_THROW(DispatchParallelFor(
                         [&](unsigned index) {
                             if (index == count / 2)
                                 throw std::runtime_error("stop");
                         },
                         count),
                     std::runtime_error);
    }
    std::atomic<unsigned> sum{0};
    DispatchParallelFor([&](unsigned index) { sum += index; }, 100);
    EXPECT_EQ(sum, 4950U);
}

TEST(Dispatch, NestedDispatchUnderALockDoesNotDeadlock)
{
    const ThreadLimit limit(4);
    std::mutex mutex;
    unsigned total = 0;
    DispatchParallelFor(
        [&](unsigned) {
            const std::lock_guard lock(mutex);
            std::atomic<unsigned> inner{0};
            DispatchParallelFor([&](unsigned) { ++inner; }, 50, High);
            total += inner;
        },
        40);
    EXPECT_EQ(total, 2000U);
}

TEST(Dispatch, SeveralCallersAtOnceWhileTheLimitChanges)
{
    const ThreadLimit limit(0);
    std::atomic<unsigned> total{0};
    {
        std::vector<std::jthread> callers;
        for (unsigned c = 0; c < 4; ++c) {
            callers.emplace_back([&total, c] {
                for (unsigned round = 0; round < 25; ++round) {
                    SetThreadLimit(1 + (c + round) % 4);
                    DispatchParallelFor([&](unsigned) { ++total; }, 20, static_cast<int>(c % 3));
                }
            });
        }
    }
    EXPECT_EQ(total, 2000U);
}

} // namespace
