#include <kernel/OutSerialiser.h>

#include <kernel/SavedWriter.h>

namespace Kernel {
namespace {

/// Whether the bytes are UTF-8 as RFC 3629 has it: shortest forms, no surrogates, up to U+10FFFF.
bool IsUtf8(std::string_view text) noexcept
{
    const auto* at = reinterpret_cast<const unsigned char*>(text.data());
    const unsigned char* const end = at + text.size();
    while (at != end) {
        const unsigned lead = *at++;
        if (lead < 0x80)
            continue;
        const int following = lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : 1;
        if (lead < 0xc2 || lead > 0xf4 || end - at < following)
            return false;
        // Leads whose second byte has a narrower range than 80 to BF.
        const unsigned low = lead == 0xe0 ? 0xa0 : lead == 0xf0 ? 0x90 : 0x80;
        const unsigned high = lead == 0xed ? 0x9f : lead == 0xf4 ? 0x8f : 0xbf;
        if (*at < low || *at > high)
            return false;
        for (int i = 1; i < following; ++i)
            if ((at[i] & 0xc0U) != 0x80)
                return false;
        at += following;
    }
    return true;
}

} // namespace

bool OutSerialiser::IsFullSave() const noexcept
{
    return m_writer.IsFullSave();
}

void OutSerialiser::SaveType(IDTag tag, const bool& value)
{
    m_writer.Key(tag);
    m_writer.Bool(value);
}

void OutSerialiser::SaveType(IDTag tag, const StringT<TEncUtf8>& value)
{
    const std::string_view text = value;
    m_writer.Key(tag);
    if (IsUtf8(text))
        m_writer.Text(text);
    else
        m_writer.Bytes(text.data(), text.size());
}

void OutSerialiser::SaveInteger(IDTag tag, std::int64_t value)
{
    m_writer.Key(tag);
    m_writer.Integer(value);
}

void OutSerialiser::SaveDouble(IDTag tag, double value)
{
    m_writer.Key(tag);
    m_writer.Double(value);
}

void OutSerialiser::SaveDoubles(IDTag tag, const void* values, std::size_t count)
{
    m_writer.Key(tag);
    m_writer.Doubles(values, count);
}

void OutSerialiser::SaveRawStructI(IDTag tag, const void* data, std::size_t size)
{
    m_writer.Key(tag);
    m_writer.Bytes(data, size);
}

void OutSerialiser::SaveEnumI(IDTag tag, const EnumSerialiser& serialiser, int value)
{
    if (serialiser.IsLegal(value))
        SaveInteger(tag, value);
}

void OutSerialiser::SaveFlagsI(IDTag tag, const FlagSerialiser& serialiser, std::uint32_t flags)
{
    if (serialiser.IsLegal(flags))
        SaveInteger(tag, flags);
}

void OutSerialiser::SaveNull(IDTag tag)
{
    m_writer.Key(tag);
    m_writer.Null();
}

void OutSerialiser::SaveSharedObject(IDTag tag, const Consolidated<SharedSerialisable>& object)
{
    m_writer.Key(tag);
    m_writer.Shared(object.Get());
}

void OutSerialiser::SaveObject(IDTag tag, NonCounted<const Serialisable> object)
{
    m_writer.Key(tag);
    m_writer.Plain(*object);
}

void OutSerialiser::BeginArray(IDTag tag, std::size_t count)
{
    m_writer.Key(tag);
    m_writer.BeginArray(count);
}

void OutSerialiser::AddShared(const SharedSerialisable* object)
{
    m_writer.Shared(object);
}

void OutSerialiser::AddObject(const Serialisable& object)
{
    m_writer.Plain(object);
}

void OutSerialiser::EndArray()
{
    m_writer.EndArray();
}

void OutSerialiser::BeginClass(IDTag tag, ClassUID uid, unsigned short version)
{
    m_writer.Key(tag);
    m_writer.BeginClass(uid, version);
}

void OutSerialiser::EndClass()
{
    m_writer.EndClass();
}

void OutSerialiser::SaveDelayLoadObject(IDTag tag, const DelayLoadHolder& payload)
{
    m_writer.Key(tag);
    m_writer.Payload(payload);
}

} // namespace Kernel
