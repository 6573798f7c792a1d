#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace Kernel {

/// A name of four characters in 32 bits, the first character in the most significant byte.
/// \tparam Kind keeps codes of different meaning apart.
template<class Kind>
class FourCharCode
{
public:
    constexpr FourCharCode() noexcept = default;
    explicit constexpr FourCharCode(std::uint32_t code) noexcept : m_code(code) {}
    /// From a literal of four characters, at compile time.
    consteval FourCharCode(const char (&text)[5]) noexcept : m_code(Pack(text)) {}

    constexpr std::uint32_t GetCode() const noexcept { return m_code; }

    /// The four characters, to be read by people: bytes that are not printable ASCII become
    /// `\xNN`.
    std::string ToString() const
    {
        std::string text;
        for (int shift = 24; shift >= 0; shift -= 8) {
            const std::uint32_t byte = m_code >> shift & 0xffU;
            if (byte >= 0x20 && byte < 0x7f)
                text += static_cast<char>(byte);
            else
                text += {'\\', 'x', "0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15U]};
        }
        return text;
    }

    friend constexpr auto operator<=>(const FourCharCode&, const FourCharCode&) noexcept = default;

private:
    static constexpr std::uint32_t Pack(const char (&text)[5]) noexcept
    {
        std::uint32_t code = 0;
        for (std::size_t i = 0; i < 4; ++i)
            code = code << 8 | static_cast<unsigned char>(text[i]);
        return code;
    }

    std::uint32_t m_code = 0;
};

/// Identifies a saved class in files.
using ClassUID = FourCharCode<struct ClassUIDKind>;

/// Names one item of a saved object. Unique within a class and its bases, which write into the same
/// object.
using IDTag = FourCharCode<struct IDTagKind>;

} // namespace Kernel

template<class Kind>
struct std::hash<Kernel::FourCharCode<Kind>>
{
    std::size_t operator()(const Kernel::FourCharCode<Kind>& code) const noexcept
    {
        return code.GetCode();
    }
};
