// Replaces the program's operator new by one that counts and fails on command.

#include <support/AllocationCount.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

std::atomic<unsigned long> allocations{0};
std::atomic<long> untilFailure{-1};

std::atomic<std::size_t> inUse{0};
std::atomic<std::size_t> peak{0};
std::atomic<std::size_t> atReset{0};

void* Allocate(std::size_t size) noexcept
{
    ++allocations;
    if (untilFailure.load() >= 0 && untilFailure-- == 0)
        return nullptr;
    void* const memory = std::malloc(size ? size : 1);
    const std::size_t now = inUse += malloc_usable_size(memory);
    std::size_t before = peak;
    while (before < now && !peak.compare_exchange_weak(before, now)) {
    }
    return memory;
}

void Free(void* memory) noexcept
{
    inUse -= malloc_usable_size(memory);
    std::free(memory);
}

void* AllocateOrThrow(std::size_t size)
{
    if (void* const memory = Allocate(size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

unsigned long TestSupport::GetAllocationCount()
{
    return allocations;
}

void TestSupport::FailAllocationAfter(long count)
{
    untilFailure = count;
}

bool TestSupport::HasAllocationFailed()
{
    return untilFailure < 0;
}

std::size_t TestSupport::GetPeak()
{
    return peak - atReset;
}

void TestSupport::ResetPeak()
{
    peak = atReset = inUse.load();
}

void* operator new(std::size_t size)
{
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size)
{
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    Free(memory);
}
void operator delete[](void* memory) noexcept
{
    Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    Free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    Free(memory);
}
