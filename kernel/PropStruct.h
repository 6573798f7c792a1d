#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <type_traits>

/// Property structures: numbers one after another as little-endian bytes, without padding.
namespace Kernel::PropStruct {

static_assert(std::endian::native == std::endian::little, "values are copied as they are");

/// The bytes that the fields take.
template<class... Fields>
constexpr std::size_t Size = (std::size_t{0} + ... + sizeof(Fields));

template<class... Fields>
std::array<unsigned char, Size<Fields...>> Pack(const Fields&... fields) noexcept
{
    static_assert((std::is_arithmetic_v<Fields> && ...));
    std::array<unsigned char, Size<Fields...>> bytes;
    std::size_t at = 0;
    ((std::memcpy(bytes.data() + at, &fields, sizeof fields), at += sizeof fields), ...);
    return bytes;
}

/// One field from its bytes; any byte but 0 makes a bool true.
template<class Field>
void UnpackField(const unsigned char*& bytes, Field& field) noexcept
{
    static_assert(std::is_arithmetic_v<Field>);
    if constexpr (std::is_same_v<Field, bool>)
        field = *bytes != 0;
    else
        std::memcpy(&field, bytes, sizeof field);
    bytes += sizeof field;
}

template<class... Fields>
void Unpack(const unsigned char* bytes, Fields&... fields) noexcept
{
    (UnpackField(bytes, fields), ...);
}

} // namespace Kernel::PropStruct
