// Replaces the program's operator new by one that counts.

#include <support/AllocationCount.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<unsigned long> allocations{0};

void* Allocate(std::size_t size) noexcept
{
    ++allocations;
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
