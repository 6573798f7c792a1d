// Replaces the program's operator new by one that counts and fails on command.

#include <support/AllocationCount.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<unsigned long> allocations{0};
std::atomic<long> untilFailure{-1};

void* Allocate(std::size_t size) noexcept
{
    ++allocations;
    if (untilFailure.load() >= 0 && untilFailure-- == 0)
        return nullptr;
    return std::malloc(size ? size : 1);
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
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
