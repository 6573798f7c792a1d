#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace Renderer {

/// Holds the contexts of the span populators of one drawing call.
///
/// Memory comes from blocks that stay for the next call, so that a target that has drawn a while
/// allocates nothing. Objects do not move. Serves one thread.
class PopulatorStore
{
public:
    PopulatorStore() = default;
    ~PopulatorStore() { Reset(); }
    PopulatorStore(const PopulatorStore&) = delete;
    PopulatorStore& operator=(const PopulatorStore&) = delete;

    /// Makes an object that lives until Reset.
    template<class T, class... Args>
    T& Emplace(Args&&... args)
    {
        if constexpr (std::is_trivially_destructible_v<T>) {
            return *new (Allocate(sizeof(T), alignof(T))) T(std::forward<Args>(args)...);
        } else {
            // The entry comes first: once the object exists nothing may throw any more.
            const std::size_t entry = m_destructions.size();
            m_destructions.push_back({nullptr, [](void*) {}});
            T* object = new (Allocate(sizeof(T), alignof(T))) T(std::forward<Args>(args)...);
            m_destructions[entry] = {object, [](void* p) { static_cast<T*>(p)->~T(); }};
            return *object;
        }
    }

    /// Memory for \p count objects without a destructor, not initialised; lives until Reset.
    template<class T>
    T* AllocateArray(std::size_t count)
    {
        static_assert(std::is_trivially_destructible_v<T> && std::is_trivially_copyable_v<T>);
        return static_cast<T*>(Allocate(count * sizeof(T), alignof(T)));
    }

    /// Destroys everything, the latest first, and keeps the memory.
    void Reset() noexcept
    {
        for (; !m_destructions.empty(); m_destructions.pop_back())
            m_destructions.back().destroy(m_destructions.back().object);
        m_block = 0;
        m_used = 0;
    }

    /// Bytes of the blocks that are held.
    std::size_t GetCapacity() const noexcept
    {
        std::size_t total = 0;
        for (const Block& block : m_blocks)
            total += block.size;
        return total;
    }

private:
    struct Block
    {
        std::unique_ptr<std::byte[]> memory;
        std::size_t size;
    };
    struct Destruction
    {
        void* object;
        void (*destroy)(void*);
    };

    static constexpr std::size_t BlockSize = std::size_t{64} << 10;

    void* Allocate(std::size_t size, std::size_t alignment)
    {
        for (; m_block < m_blocks.size(); ++m_block, m_used = 0) {
            if (void* memory = Take(m_blocks[m_block], size, alignment))
                return memory;
        }
        const std::size_t blockSize = size + alignment > BlockSize ? size + alignment : BlockSize;
        m_blocks.push_back({std::make_unique_for_overwrite<std::byte[]>(blockSize), blockSize});
        m_used = 0;
        return Take(m_blocks.back(), size, alignment);
    }

    void* Take(const Block& block, std::size_t size, std::size_t alignment) noexcept
    {
        std::size_t space = block.size - m_used;
        void* memory = block.memory.get() + m_used;
        if (!std::align(alignment, size, memory, space))
            return nullptr;
        m_used = block.size - space + size;
        return memory;
    }

    std::vector<Block> m_blocks;
    std::vector<Destruction> m_destructions;
    std::size_t m_block = 0; // the block that is being filled
    std::size_t m_used = 0;  // bytes taken of it
};

} // namespace Renderer
