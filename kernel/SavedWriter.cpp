#include <kernel/SavedWriter.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

#include <cbor.h>

#include <kernel/ClassProperties.h>
#include <kernel/SharedClassProperties.h>

#include <kernel/SavedFormat.h>

namespace Kernel {
namespace {

using WriteException = OutStream::WriteException;

constexpr std::size_t MaxHeadSize = 9; // the longest beginning of a data item

} // namespace

/// Appends what \p encode writes into room for the head of a data item.
template<class Encode>
void SavedWriter::Put(const Encode& encode)
{
    unsigned char head[MaxHeadSize];
    Append(head, encode(head, sizeof head));
}

void SavedWriter::Append(const void* data, std::size_t size)
{
    const auto* const bytes = static_cast<const unsigned char*>(data);
    m_bytes.insert(m_bytes.end(), bytes, bytes + size);
}

void SavedWriter::PutCode(std::uint32_t code)
{
    constexpr unsigned char TextOfFour = 0x64;
    const unsigned char text[] = {
        TextOfFour, static_cast<unsigned char>(code >> 24), static_cast<unsigned char>(code >> 16),
        static_cast<unsigned char>(code >> 8), static_cast<unsigned char>(code)};
    Append(text, sizeof text);
}

void SavedWriter::Key(IDTag tag)
{
    ++m_maps.back().count;
    PutCode(tag.GetCode());
}

void SavedWriter::Integer(std::int64_t value)
{
    Put([value](unsigned char* at, std::size_t size) {
        return value < 0 ? cbor_encode_negint(static_cast<std::uint64_t>(-1 - value), at, size)
                         : cbor_encode_uint(static_cast<std::uint64_t>(value), at, size);
    });
}

void SavedWriter::Double(double value)
{
    Put([value](unsigned char* at, std::size_t size) {
        return cbor_encode_double(value, at, size);
    });
}

void SavedWriter::Bool(bool value)
{
    Put([value](unsigned char* at, std::size_t size) { return cbor_encode_bool(value, at, size); });
}

void SavedWriter::Null()
{
    Put([](unsigned char* at, std::size_t size) { return cbor_encode_null(at, size); });
}

void SavedWriter::Text(std::string_view text)
{
    Put([&](unsigned char* at, std::size_t size) {
        return cbor_encode_string_start(text.size(), at, size);
    });
    Append(text.data(), text.size());
}

void SavedWriter::Bytes(const void* data, std::size_t length)
{
    Put([length](unsigned char* at, std::size_t size) {
        return cbor_encode_bytestring_start(length, at, size);
    });
    Append(data, length);
}

void SavedWriter::Doubles(const void* values, std::size_t count)
{
    Put([](unsigned char* at, std::size_t size) {
        return cbor_encode_tag(SavedFormat::DoublesTag, at, size);
    });
    Bytes(values, count * sizeof(double));
}

void SavedWriter::Payload(const DelayLoadHolder& payload)
{
    if (payload.IsEmpty())
        return Null();
    const auto [found, isNew] =
        m_payloadIndices.try_emplace(payload.GetIdentity(), m_payloads.size());
    if (isNew)
        m_payloads.push_back(payload);
    Put([](unsigned char* at, std::size_t size) {
        return cbor_encode_tag(SavedFormat::PayloadTag, at, size);
    });
    Integer(static_cast<std::int64_t>(found->second));
}

void SavedWriter::Enter(unsigned levels)
{
    if (m_depth + levels > SavedFormat::MaxDepth)
        throw WriteException("cannot save: objects are nested too deeply");
    m_depth += levels;
}

void SavedWriter::BeginArray(std::size_t count)
{
    Enter(1);
    Put([count](unsigned char* at, std::size_t size) {
        return cbor_encode_array_start(count, at, size);
    });
}

void SavedWriter::BeginClass(ClassUID uid, unsigned short version)
{
    Enter(1);
    BeginArray(3);
    PutCode(uid.GetCode());
    Integer(version);
    m_maps.push_back({m_bytes.size()});
    m_bytes.push_back(0); // of the head, which EndClass writes
}

void SavedWriter::EndClass()
{
    const OpenMap map = m_maps.back();
    m_maps.pop_back();
    unsigned char head[MaxHeadSize];
    const std::size_t size = cbor_encode_map_start(map.count, head, sizeof head);
    const auto at = m_bytes.begin() + static_cast<std::ptrdiff_t>(map.position);
    *at = head[0];
    m_bytes.insert(at + 1, head + 1, head + size);
    m_depth -= 2;
}

template<class Object>
void SavedWriter::WriteObject(const Object& object, const ClassPropertiesBase& record)
{
    if (record.GetVersion() == 0)
        throw std::logic_error("an object of a class that is not registered cannot be saved");
    if (m_objectCount == std::numeric_limits<std::uint32_t>::max())
        throw WriteException("cannot save: too many objects");
    ++m_objectCount;
    Put([](unsigned char* at, std::size_t size) {
        return cbor_encode_tag(SavedFormat::ObjectTag, at, size);
    });
    BeginClass(record.GetClassUID(), record.GetVersion());
    object.Save(m_out);
    EndClass();
}

void SavedWriter::Shared(const SharedSerialisable* object)
{
    if (!object)
        return Null();
    const auto [found, isNew] = m_shared.try_emplace(object, m_objectCount);
    if (isNew) {
        m_open.push_back(object);
        WriteObject(*object, object->GetObjectSharedClassProperties());
        m_open.pop_back();
        return;
    }
    if (std::ranges::find(m_open, object) != m_open.end())
        throw WriteException("cannot save: an object is part of itself");
    Put([](unsigned char* at, std::size_t size) {
        return cbor_encode_tag(SavedFormat::ReferenceTag, at, size);
    });
    Integer(found->second);
}

void SavedWriter::Plain(const Serialisable& object)
{
    WriteObject(object, object.GetObjectClassProperties());
}

void SavedWriter::WriteTo(OutStream& out) const
{
    if (m_bytes.size() > SavedFormat::MaxObjectsEnd - SavedFormat::HeaderSize)
        throw WriteException("cannot save: the objects take more than 4 GiB");
    unsigned char head[MaxHeadSize];
    out.Write(SavedFormat::Magic, sizeof SavedFormat::Magic);
    out.Write(head, cbor_encode_uint64(m_bytes.size(), head, sizeof head));
    out.Write(m_bytes.data(), m_bytes.size());
    out.Write(head, cbor_encode_array_start(m_payloads.size(), head, sizeof head));
    for (const DelayLoadHolder& payload : m_payloads) {
        const auto size = static_cast<std::size_t>(payload.GetSize());
        out.Write(head, cbor_encode_bytestring_start(size, head, sizeof head));
        payload.WriteTo(out);
    }
}

} // namespace Kernel
