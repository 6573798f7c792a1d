#include <kernel/SavedReader.h>

#include <algorithm>
#include <limits>

#include <kernel/ClassProperties.h>
#include <kernel/FutureVersionException.h>
#include <kernel/SharedClassProperties.h>

namespace Kernel {
namespace {

void CheckVersion(const SavedClass& head, const ClassPropertiesBase& record)
{
    if (record.GetVersion() != 0 && head.version > record.GetVersion())
        throw FutureVersionException(head.uid, record.GetName(),
                                     static_cast<unsigned>(head.version), record.GetVersion());
}

} // namespace

SavedReader::SavedReader(std::span<const unsigned char> bytes, FileStore& store)
    : m_store(store), m_parser(bytes, *this)
{}

void SavedReader::Read()
{
    m_parser.ParseRoot(SavedFormat::HeaderSize);
}

Consolidated<SharedSerialisable> SavedReader::GetSharedRoot() const
{
    const auto* root = std::get_if<Counted<const SharedSerialisable>>(&m_objects.front().value);
    return root ? Consolidated<SharedSerialisable>(*root) : nullptr;
}

Counted<Serialisable> SavedReader::GetPlainRoot() const
{
    const auto* root = std::get_if<Counted<Serialisable>>(&m_objects.front().value);
    return root ? *root : nullptr;
}

const ClassPropertiesBase* SavedReader::FindRecord(ClassUID uid)
{
    // The sum of the characters tells most identifiers apart.
    const std::uint32_t code = uid.GetCode();
    KnownClass& known =
        m_classes[(code + (code >> 8) + (code >> 16) + (code >> 24)) % m_classes.size()];
    if (!known.record || known.uid != uid)
        known = {uid, ClassPropertiesBase::Find(uid)};
    return known.record;
}

SavedReader::Behind SavedReader::SkipObject(std::size_t index, std::size_t)
{
    if (index < m_objects.size())
        return {m_objects[index].end, m_objects[index].next};
    m_objects.emplace_back();
    return {0, 0};
}

void SavedReader::BeginObject(const SavedClass& head)
{
    const ClassPropertiesBase* const record = FindRecord(head.uid);
    if (record)
        CheckVersion(head, *record);
    if (m_open.empty())
        m_rootUID = head.uid;
    m_open.push_back({static_cast<std::uint32_t>(m_objects.size() - 1), head, record});
}

void SavedReader::EndObject(std::size_t firstEntry)
{
    const Open open = m_open.back();
    const std::size_t end = m_parser.GetReader().GetPosition();
    if (open.record) {
        const InSerialiser in(*this, firstEntry, m_parser.GetEntries().size() - firstEntry);
        Object made;
        Make(made, open, in);
        m_objects[open.index] = std::move(made);
        m_parser.Continue(end, m_objects.size()); // Load may have walked over parts again
    }
    m_objects[open.index].end = static_cast<std::uint32_t>(end);
    m_objects[open.index].next = static_cast<std::uint32_t>(m_objects.size());
    m_open.pop_back();
}

void SavedReader::Make(Object& object, const Open& open, const InSerialiser& in)
{
    const auto version = static_cast<unsigned short>(open.head.version);
    if (open.record->IsShared()) {
        const auto& record = static_cast<const SharedClassProperties&>(*open.record);
        const Counted<SharedSerialisable> fresh = record.CreateObject();
        if (fresh && fresh->Load(in, m_store, version))
            object.value = SharedClassProperties::ConsolidateObjectSacrifice(fresh).GetCounted();
    } else {
        const auto& record = static_cast<const ClassProperties&>(*open.record);
        Counted<Serialisable> fresh = record.CreateObject();
        if (fresh && fresh->Load(in, m_store, version))
            object.value = std::move(fresh);
    }
}

bool SavedReader::CheckReference(std::uint64_t index) const noexcept
{
    return index < m_objects.size() && m_objects[static_cast<std::size_t>(index)].end != 0;
}

bool SavedReader::CheckPayload(std::uint64_t index) const noexcept
{
    return index < m_store.GetPayloadCount();
}

bool SavedReader::FindShared(const CborItem& item, const SharedSerialisable*& object) const
{
    if (item.kind == CborItem::Kind::Null) {
        object = nullptr;
        return true;
    }
    if (item.kind != CborItem::Kind::Object && item.kind != CborItem::Kind::Reference)
        return false;
    const auto& value = m_objects[static_cast<std::size_t>(item.value)].value;
    const auto* shared = std::get_if<Counted<const SharedSerialisable>>(&value);
    if (shared)
        object = shared->Get();
    return shared != nullptr;
}

bool SavedReader::FindObject(const CborItem& item, Serialisable*& object) const
{
    if (item.kind == CborItem::Kind::Null) {
        object = nullptr;
        return true;
    }
    if (item.kind != CborItem::Kind::Object) // a plain object has one holder
        return false;
    const auto& value = m_objects[static_cast<std::size_t>(item.value)].value;
    const auto* plain = std::get_if<Counted<Serialisable>>(&value);
    if (plain)
        object = plain->Get();
    return plain != nullptr;
}

bool SavedReader::LoadClass(const SavedEntry& entry, InSerialiser::ClassLoader load,
                            const void* context)
{
    if (entry.value.kind != CborItem::Kind::Structure)
        return false;
    const SavedClass head = m_parser.ReadStructureHead(entry);
    if (const ClassPropertiesBase* const record = FindRecord(head.uid))
        CheckVersion(head, *record);
    const std::size_t first = m_parser.GetEntries().size();
    m_parser.ParseStructureAgain(SavedEntry(entry));
    const InSerialiser in(*this, first, m_parser.GetEntries().size() - first);
    constexpr std::uint64_t LargestVersion = std::numeric_limits<unsigned short>::max();
    const auto version = static_cast<unsigned short>(std::min(head.version, LargestVersion));
    const bool loaded = load(context, in, head.uid, version);
    m_parser.DropEntries(first);
    return loaded;
}

DelayLoadHolder SavedReader::GetPayload(std::size_t index)
{
    // Items of one file that mean the same payload share it.
    const auto [found, isNew] = m_payloads.try_emplace(index);
    if (isNew)
        found->second = DelayLoadHolder(Counted<const FileStore>(&m_store), index);
    return found->second;
}

} // namespace Kernel
