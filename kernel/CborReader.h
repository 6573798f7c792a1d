#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include <kernel/FormatException.h>

namespace Kernel {

/// One data item of CBOR without what it contains, or one of the container's items that are made of
/// several.
struct CborItem
{
    enum class Kind : unsigned char
    {
        Unsigned,
        Negative, ///< value is -1 - number
        Bytes,    ///< value is the length, as for Text and Doubles
        Text,
        Array, ///< value is the number of elements, as for Map
        Map,
        Tag,
        Double, ///< value is the bits
        Bool,
        Null,
        Other, ///< well-formed, and nothing that the container uses
        // Made of several:
        Structure, ///< a nested class item
        Doubles,   ///< little-endian, in data
        Object,    ///< value is the object's index
        Reference, ///< value is the index of the object meant
        Payload,   ///< value is the payload's index
    };

    Kind kind = Kind::Other;
    std::uint64_t value = 0;
    const unsigned char* data = nullptr; // of strings
};

/// Walks over encoded bytes, an item at a time.
class CborReader
{
public:
    /// \param offset of the first byte in the file, for messages.
    explicit CborReader(std::span<const unsigned char> bytes, std::size_t offset = 0) noexcept
        : m_bytes(bytes), m_offset(offset)
    {}

    std::size_t GetPosition() const noexcept { return m_position; }
    void SetPosition(std::size_t position) noexcept { m_position = position; }
    std::size_t GetBytesLeft() const noexcept { return m_bytes.size() - m_position; }
    const unsigned char* GetHere() const noexcept { return m_bytes.data() + m_position; }

    /// The next item. \throws FormatException for what is cut off, malformed or of indefinite
    /// length.
    CborItem Next();

    /// \throws FormatException that names the item that begins at \p position.
    [[noreturn]] void Fail(const std::string& message, std::size_t position) const
    {
        throw FormatException(message, m_offset + position);
    }

private:
    std::span<const unsigned char> m_bytes;
    std::size_t m_offset;
    std::size_t m_position = 0;
};

} // namespace Kernel
