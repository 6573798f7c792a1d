#pragma once

#include <bit>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace Kernel {

/// Accumulates a 64-bit hash over the members of a value, in order.
///
/// The mixing step is the finaliser of SplitMix64 (Steele, Lea and Flood, 2014), whose output bits
/// all depend on all input bits.
class HashAccumulator
{
public:
    /// Adds one integer or enum.
    template<class T>
    requires(std::is_integral_v<T> || std::is_enum_v<T>) void Add(T value) noexcept
    {
        Mix(static_cast<std::uint64_t>(value));
    }

    /// Adds a number; −0 hashes as 0, since the two compare equal.
    void Add(double value) noexcept
    {
        Mix(std::bit_cast<std::uint64_t>(value == 0.0 ? 0.0 : value));
    }
    void Add(float value) noexcept { Add(static_cast<double>(value)); }

    /// Adds a text with its length.
    void Add(std::string_view text) noexcept
    {
        Mix(text.size());
        for (const char c : text)
            Mix(static_cast<unsigned char>(c));
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

    std::uint64_t m_hash = 0;
};

} // namespace Kernel
