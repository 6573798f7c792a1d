#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include <kernel/Export.h>
#include <kernel/String.h>

namespace Kernel {

/// Accumulates a 64-bit hash over the members of a value, in order.
///
/// The mixing step is the finaliser of SplitMix64 (Steele, Lea and Flood, 2014), whose output bits
/// all depend on all input bits.
class HashAccumulator
{
public:
    /// A number of this process alone, for hashes by which values are looked up: who makes a file
    /// must not know which values collide.
    KERNEL_EXPORT static std::uint64_t GetProcessSeed();

    /// \param seed makes another hash of the same values.
    explicit HashAccumulator(std::uint64_t seed = 0) noexcept : m_hash(seed) {}

    /// Adds one integer or enum.
    template<class T>
    requires(std::is_integral_v<T> || std::is_enum_v<T>) void Add(T value) noexcept
    {
        Mix(static_cast<std::uint64_t>(value));
    }

    /// Adds bytes: eight at a time, then the rest with its length.
    void AddToHash(const void* data, std::size_t size) noexcept
    {
        const auto* bytes = static_cast<const unsigned char*>(data);
        std::uint64_t word = 0;
        for (; size >= sizeof word; size -= sizeof word, bytes += sizeof word) {
            std::memcpy(&word, bytes, sizeof word);
            Mix(word);
        }
        if (size == 0)
            return;
        word = 0;
        std::memcpy(&word, bytes, size);
        Mix(word ^ std::uint64_t{size} << 56);
    }

    /// Adds the bytes of a number; −0 and 0, which compare equal, count as four zero bytes.
    void Add(double value) noexcept
    {
        static constexpr unsigned char Zero[4] = {};
        if (value == 0.0)
            AddToHash(Zero, sizeof Zero);
        else
            AddToHash(&value, sizeof value);
    }
    void Add(float value) noexcept { Add(static_cast<double>(value)); }

    /// Adds a text with its length.
    void Add(std::string_view text) noexcept
    {
        Mix(text.size());
        AddToHash(text.data(), text.size());
    }

    /// Adds the identity of a consolidated or shared object.
    void AddAddress(const void* address) noexcept
    {
        Mix(reinterpret_cast<std::uintptr_t>(address));
    }

    std::uint64_t GetHash() const noexcept { return m_hash; }

private:
    void Mix(std::uint64_t value) noexcept
    {
        std::uint64_t z = m_hash + 0x9e3779b97f4a7c15U + value;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
        m_hash = z ^ (z >> 31);
    }

    std::uint64_t m_hash;
};

/// Adds a text with its length.
template<class Encoding>
void AddToHash(HashAccumulator& hash, const StringT<Encoding>& text) noexcept
{
    hash.Add(std::string_view(text));
}

} // namespace Kernel
