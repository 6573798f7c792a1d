#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <variant>
#include <vector>

#include <kernel/ClassPropertiesBase.h>
#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/DelayLoadHolder.h>
#include <kernel/FileStore.h>
#include <kernel/InSerialiser.h>
#include <kernel/Serialisable.h>
#include <kernel/SharedSerialisable.h>

#include <kernel/SavedParser.h>

namespace Kernel {

/// Makes the objects of a file in one walk over it: each is created and loaded when its last item
/// has been walked over, those within it before.
class SavedReader
{
public:
    SavedReader(std::span<const unsigned char> bytes, FileStore& store);

    /// Reads the file. \throws FormatException, FutureVersionException
    void Read();
    /// The objects of the file's outermost object; at most one is not null.
    Consolidated<SharedSerialisable> GetSharedRoot() const;
    Counted<Serialisable> GetPlainRoot() const;
    /// The class of the outermost object as the file names it.
    ClassUID GetRootUID() const noexcept { return m_rootUID; }

    /// \name What the parser tells
    /// @{
    void BeginObject(const SavedClass& head);
    void EndObject(std::size_t firstEntry);
    void BeginStructure(const SavedClass&) noexcept {}
    void BeginItem(IDTag, std::size_t) noexcept {}
    void Value(const CborItem&, std::size_t) noexcept {}
    void EndContainer() noexcept {}
    struct Behind
    {
        std::size_t position;
        std::size_t nextObject;
    };
    Behind SkipObject(std::size_t index, std::size_t position);
    bool CheckReference(std::uint64_t index) const noexcept;
    bool CheckPayload(std::uint64_t index) const noexcept;
    /// @}

    /// \name What InSerialiser asks for
    /// @{
    const SavedEntry& GetEntry(std::size_t index) const { return m_parser.GetEntries()[index]; }
    /// A shared object or null. \return false for what is no shared object.
    bool FindShared(const CborItem& item, const SharedSerialisable*& object) const;
    bool FindObject(const CborItem& item, Serialisable*& object) const;
    template<class Use>
    void ForEachElement(const SavedEntry& entry, const Use& use)
    {
        m_parser.ForEachElement(entry, use);
    }
    bool LoadClass(const SavedEntry& entry, InSerialiser::ClassLoader load, const void* context);
    DelayLoadHolder GetPayload(std::size_t index);
    /// @}

private:
    struct Object
    {
        std::variant<std::monostate, Counted<const SharedSerialisable>, Counted<Serialisable>>
            value;
        std::uint32_t end = 0;  ///< position behind it, 0 while it is being read
        std::uint32_t next = 0; ///< index of the first object behind it
    };
    struct Open
    {
        std::uint32_t index;
        SavedClass head;
        const ClassPropertiesBase* record;
    };

    const ClassPropertiesBase* FindRecord(ClassUID uid);
    void Make(Object& object, const Open& open, const InSerialiser& in);

    FileStore& m_store;
    SavedParser<SavedReader> m_parser;
    std::vector<Object> m_objects;
    std::vector<Open> m_open;
    ClassUID m_rootUID;
    std::unordered_map<std::size_t, DelayLoadHolder> m_payloads;

    struct KnownClass
    {
        ClassUID uid;
        const ClassPropertiesBase* record = nullptr;
    };
    std::array<KnownClass, 32> m_classes; // the registry takes a lock; this is asked first
};

} // namespace Kernel
