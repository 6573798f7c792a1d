#include <kernel/CborReader.h>

#include <bit>

#include <cbor.h>

namespace Kernel {
namespace {

using Kind = CborItem::Kind;

template<Kind K, class Value>
void SetNumber(void* item, Value value)
{
    *static_cast<CborItem*>(item) = {K, value, nullptr};
}

template<Kind K>
void SetString(void* item, cbor_data data, std::size_t length)
{
    *static_cast<CborItem*>(item) = {K, length, data};
}

void SetDouble(void* item, double value)
{
    *static_cast<CborItem*>(item) = {Kind::Double, std::bit_cast<std::uint64_t>(value), nullptr};
}

void SetFloat(void* item, float)
{
    *static_cast<CborItem*>(item) = {};
}

void SetBool(void* item, bool value)
{
    *static_cast<CborItem*>(item) = {Kind::Bool, value, nullptr};
}

void SetNull(void* item)
{
    *static_cast<CborItem*>(item) = {Kind::Null, 0, nullptr};
}

void SetOther(void* item)
{
    *static_cast<CborItem*>(item) = {};
}

/// Lengths that are not given, and the end of them.
constexpr std::uint64_t Indefinite = 1;

void SetIndefinite(void* item)
{
    *static_cast<CborItem*>(item) = {Kind::Other, Indefinite, nullptr};
}

constexpr cbor_callbacks MakeCallbacks()
{
    cbor_callbacks callbacks = {};
    callbacks.uint8 = SetNumber<Kind::Unsigned, std::uint8_t>;
    callbacks.uint16 = SetNumber<Kind::Unsigned, std::uint16_t>;
    callbacks.uint32 = SetNumber<Kind::Unsigned, std::uint32_t>;
    callbacks.uint64 = SetNumber<Kind::Unsigned, std::uint64_t>;
    callbacks.negint8 = SetNumber<Kind::Negative, std::uint8_t>;
    callbacks.negint16 = SetNumber<Kind::Negative, std::uint16_t>;
    callbacks.negint32 = SetNumber<Kind::Negative, std::uint32_t>;
    callbacks.negint64 = SetNumber<Kind::Negative, std::uint64_t>;
    callbacks.byte_string = SetString<Kind::Bytes>;
    callbacks.string = SetString<Kind::Text>;
    callbacks.array_start = SetNumber<Kind::Array, std::size_t>;
    callbacks.map_start = SetNumber<Kind::Map, std::size_t>;
    callbacks.tag = SetNumber<Kind::Tag, std::uint64_t>;
    callbacks.float2 = SetFloat;
    callbacks.float4 = SetFloat;
    callbacks.float8 = SetDouble;
    callbacks.undefined = SetOther;
    callbacks.null = SetNull;
    callbacks.boolean = SetBool;
    callbacks.byte_string_start = SetIndefinite;
    callbacks.string_start = SetIndefinite;
    callbacks.indef_array_start = SetIndefinite;
    callbacks.indef_map_start = SetIndefinite;
    callbacks.indef_break = SetIndefinite;
    return callbacks;
}

constexpr cbor_callbacks Callbacks = MakeCallbacks();

} // namespace

CborItem CborReader::Next()
{
    CborItem item;
    const cbor_decoder_result result =
        cbor_stream_decode(GetHere(), GetBytesLeft(), &Callbacks, &item);
    if (result.status == CBOR_DECODER_NEDATA)
        Fail("the file ends within an item", m_position);
    if (result.status != CBOR_DECODER_FINISHED)
        Fail("a byte that begins no item", m_position);
    if (item.kind == Kind::Other && item.value == Indefinite)
        Fail("an item of indefinite length", m_position);
    m_position += result.read;
    return item;
}

} // namespace Kernel
