#pragma once

#include <cstdint>

namespace Kernel {

/// The kinds of values that an item can hold as such.
enum class PropType : unsigned short
{
    Byte = 1,             ///< 8-bit integer
    Int16 = 2,            ///< 16-bit integer
    Int32 = 7,            ///< 32-bit integer
    Double = 10,          ///< 64-bit floating point
    AffineTransform = 40, ///< six doubles
};

/// The kind that values of the type T are saved as: `PropTypeOf<T>::value`. A structure of six
/// doubles becomes an affine transform by a specialisation beside it.
template<class T>
struct PropTypeOf;

template<PropType Type>
struct PropTypeConstant
{
    static constexpr PropType value = Type;
};

template<>
struct PropTypeOf<std::int8_t> : PropTypeConstant<PropType::Byte>
{};
template<>
struct PropTypeOf<std::uint8_t> : PropTypeConstant<PropType::Byte>
{};
template<>
struct PropTypeOf<std::int16_t> : PropTypeConstant<PropType::Int16>
{};
template<>
struct PropTypeOf<std::uint16_t> : PropTypeConstant<PropType::Int16>
{};
template<>
struct PropTypeOf<std::int32_t> : PropTypeConstant<PropType::Int32>
{};
template<>
struct PropTypeOf<std::uint32_t> : PropTypeConstant<PropType::Int32>
{};
template<>
struct PropTypeOf<double> : PropTypeConstant<PropType::Double>
{};

} // namespace Kernel
