#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include <kernel/ClassPropertiesBase.h>
#include <kernel/DelayLoadHolder.h>
#include <kernel/FourCharCode.h>
#include <kernel/OutSerialiser.h>
#include <kernel/OutStream.h>

namespace Kernel {

/// Lays the objects of a file out in memory, then writes the file.
class SavedWriter
{
public:
    explicit SavedWriter(bool full) : m_full(full), m_out(*this) {}

    bool IsFullSave() const noexcept { return m_full; }

    /// \name Data items
    /// @{
    void Key(IDTag tag);
    void Integer(std::int64_t value);
    void Double(double value);
    void Bool(bool value);
    void Null();
    void Text(std::string_view text);
    void Bytes(const void* data, std::size_t size);
    void Doubles(const void* values, std::size_t count);
    void Payload(const DelayLoadHolder& payload);
    void BeginArray(std::size_t count);
    void EndArray() noexcept { --m_depth; }
    void BeginClass(ClassUID uid, unsigned short version);
    void EndClass();
    /// @}

    /// \name Objects
    /// @{
    void Shared(const SharedSerialisable* object);
    void Plain(const Serialisable& object);
    /// @}

    /// Writes the header, the objects and the payloads.
    /// \throws OutStream::WriteException, FormatException for a payload that can't be read
    void WriteTo(OutStream& out) const;

private:
    struct OpenMap
    {
        std::size_t position; ///< of the map's head
        std::uint64_t count = 0;
    };

    template<class Encode>
    void Put(const Encode& encode);
    void PutCode(std::uint32_t code);
    void Append(const void* data, std::size_t size);
    void Enter(unsigned levels);
    template<class Object>
    void WriteObject(const Object& object, const ClassPropertiesBase& record);

    bool m_full;
    OutSerialiser m_out;
    std::vector<unsigned char> m_bytes;
    std::vector<OpenMap> m_maps;
    unsigned m_depth = 0;
    std::uint32_t m_objectCount = 0;
    /// Indices in the file. Objects live as long as they are known here, or another could be taken
    /// for one.
    std::unordered_map<Counted<const SharedSerialisable>, std::uint32_t> m_shared;
    std::vector<const SharedSerialisable*> m_open; ///< shared objects being written
    std::vector<DelayLoadHolder> m_payloads;
    std::unordered_map<const void*, std::size_t> m_payloadIndices;
};

} // namespace Kernel
