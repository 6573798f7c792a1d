#include <kernel/InSerialiser.h>

#include <bit>
#include <cstring>
#include <limits>
#include <string_view>

#include <kernel/DelayLoadHolder.h>

#include <kernel/SavedReader.h>

namespace Kernel {
namespace {

using Kind = CborItem::Kind;

/// The entry of a tag, or null. Classes mostly ask in the order of the file, so the search begins
/// behind the last find.
const SavedEntry* Find(const SavedReader& reader, std::size_t first, std::size_t count,
                       std::size_t& next, IDTag tag)
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = next < count ? next : 0;
        const SavedEntry& entry = reader.GetEntry(first + at);
        next = at + 1;
        if (entry.tag == tag)
            return &entry;
    }
    return nullptr;
}

const CborItem* FindValue(const SavedReader& reader, std::size_t first, std::size_t count,
                          std::size_t& next, IDTag tag, Kind kind)
{
    const SavedEntry* const entry = Find(reader, first, count, next, tag);
    return entry && entry->value.kind == kind ? &entry->value : nullptr;
}

} // namespace

bool InSerialiser::HasItem(IDTag tag) const noexcept
{
    return Find(m_reader, m_first, m_count, m_next, tag) != nullptr;
}

bool InSerialiser::LoadType(IDTag tag, bool& value) const
{
    const CborItem* const item = FindValue(m_reader, m_first, m_count, m_next, tag, Kind::Bool);
    if (item)
        value = item->value != 0;
    return item != nullptr;
}

bool InSerialiser::LoadType(IDTag tag, StringT<TEncUtf8>& value) const
{
    const SavedEntry* const entry = Find(m_reader, m_first, m_count, m_next, tag);
    if (!entry || (entry->value.kind != Kind::Text && entry->value.kind != Kind::Bytes))
        return false;
    value = std::string_view(reinterpret_cast<const char*>(entry->value.data),
                             static_cast<std::size_t>(entry->value.value));
    return true;
}

bool InSerialiser::LoadInteger(IDTag tag, std::int64_t& value) const
{
    const SavedEntry* const entry = Find(m_reader, m_first, m_count, m_next, tag);
    if (!entry || entry->value.value > std::uint64_t{std::numeric_limits<std::int64_t>::max()})
        return false;
    const auto number = static_cast<std::int64_t>(entry->value.value);
    if (entry->value.kind == Kind::Unsigned)
        value = number;
    else if (entry->value.kind == Kind::Negative)
        value = -1 - number;
    else
        return false;
    return true;
}

bool InSerialiser::LoadDouble(IDTag tag, double& value) const
{
    const CborItem* const item = FindValue(m_reader, m_first, m_count, m_next, tag, Kind::Double);
    if (item)
        value = std::bit_cast<double>(item->value);
    return item != nullptr;
}

bool InSerialiser::LoadDoubles(IDTag tag, void* values, std::size_t count) const
{
    const CborItem* const item = FindValue(m_reader, m_first, m_count, m_next, tag, Kind::Doubles);
    if (!item || item->value != count * sizeof(double))
        return false;
    std::memcpy(values, item->data, count * sizeof(double));
    return true;
}

bool InSerialiser::LoadTypeArrayI(IDTag tag, std::vector<double>& values) const
{
    const CborItem* const item = FindValue(m_reader, m_first, m_count, m_next, tag, Kind::Doubles);
    if (!item)
        return false;
    values.resize(static_cast<std::size_t>(item->value) / sizeof(double));
    if (!values.empty())
        std::memcpy(values.data(), item->data, values.size() * sizeof(double));
    return true;
}

bool InSerialiser::LoadRawStructI(IDTag tag, std::span<const unsigned char>& data) const
{
    const CborItem* const item = FindValue(m_reader, m_first, m_count, m_next, tag, Kind::Bytes);
    if (item)
        data = {item->data, static_cast<std::size_t>(item->value)};
    return item != nullptr;
}

bool InSerialiser::LoadRawStructI(IDTag tag, void* data, std::size_t size) const
{
    std::span<const unsigned char> bytes;
    if (!LoadRawStructI(tag, bytes) || bytes.size() != size)
        return false;
    if (size != 0)
        std::memcpy(data, bytes.data(), size);
    return true;
}

bool InSerialiser::LoadEnumI(IDTag tag, const EnumSerialiser& serialiser, int& value) const
{
    std::int64_t number = 0;
    if (!LoadInteger(tag, number) || !serialiser.IsLegal(number))
        return false;
    value = static_cast<int>(number);
    return true;
}

bool InSerialiser::LoadFlagsI(IDTag tag, const FlagSerialiser& serialiser,
                              std::uint32_t& flags) const
{
    std::int64_t number = 0;
    if (!LoadInteger(tag, number) || number < 0 ||
        !serialiser.IsLegal(static_cast<std::uint64_t>(number)))
        return false;
    flags = static_cast<std::uint32_t>(number);
    return true;
}

bool InSerialiser::FindShared(IDTag tag, const SharedSerialisable*& object) const
{
    const SavedEntry* const entry = Find(m_reader, m_first, m_count, m_next, tag);
    return entry && m_reader.FindShared(entry->value, object);
}

bool InSerialiser::FindObject(IDTag tag, Serialisable*& object) const
{
    const SavedEntry* const entry = Find(m_reader, m_first, m_count, m_next, tag);
    return entry && m_reader.FindObject(entry->value, object);
}

bool InSerialiser::FindSharedArray(IDTag tag, std::vector<const SharedSerialisable*>& objects) const
{
    const SavedEntry* const entry = Find(m_reader, m_first, m_count, m_next, tag);
    if (!entry || entry->value.kind != Kind::Array)
        return false;
    m_reader.ForEachElement(*entry, [&](const CborItem& item) {
        const SharedSerialisable* object = nullptr;
        m_reader.FindShared(item, object); // null for what is none, which nobody takes
        objects.push_back(object);
    });
    return true;
}

bool InSerialiser::FindObjectArray(IDTag tag, std::vector<Serialisable*>& objects) const
{
    const SavedEntry* const entry = Find(m_reader, m_first, m_count, m_next, tag);
    if (!entry || entry->value.kind != Kind::Array)
        return false;
    m_reader.ForEachElement(*entry, [&](const CborItem& item) {
        Serialisable* object = nullptr;
        m_reader.FindObject(item, object);
        objects.push_back(object);
    });
    return true;
}

bool InSerialiser::LoadClass(IDTag tag, ClassLoader load, const void* context) const
{
    const SavedEntry* const entry = Find(m_reader, m_first, m_count, m_next, tag);
    return entry && m_reader.LoadClass(*entry, load, context);
}

bool InSerialiser::LoadNullPropClassI(IDTag tag) const noexcept
{
    return FindValue(m_reader, m_first, m_count, m_next, tag, Kind::Null) != nullptr;
}

bool InSerialiser::LoadDelayLoadObject(IDTag tag, FileStore&, DelayLoadHolder& payload) const
{
    const SavedEntry* const entry = Find(m_reader, m_first, m_count, m_next, tag);
    if (entry && entry->value.kind == Kind::Null)
        payload = {};
    else if (entry && entry->value.kind == Kind::Payload)
        payload = m_reader.GetPayload(static_cast<std::size_t>(entry->value.value));
    else
        return false;
    return true;
}

} // namespace Kernel
