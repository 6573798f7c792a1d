#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include <kernel/FourCharCode.h>

#include <kernel/CborReader.h>
#include <kernel/SavedFormat.h>

namespace Kernel {

/// One item of an object that is being read.
struct SavedEntry
{
    IDTag tag;
    std::uint32_t position;    ///< of the value
    std::uint32_t firstObject; ///< index that the first object within the value has
    CborItem value;
};

/// The head of an object or of a nested class item.
struct SavedClass
{
    ClassUID uid;
    std::uint64_t version;
};

/// Walks over the objects of a saved file and checks every rule of the container.
///
/// The items of the objects that are open lie one object after another in a single table, which
/// keeps its memory: there is nothing to allocate per item or per object.
/// \tparam Sink is told what is found:
///   - `BeginObject(SavedClass)` and `EndObject(std::size_t firstEntry)`, the entries being the
///   last
///     of the table;
///   - `BeginItem(IDTag, position)`, then `Value(CborItem, position)` for each value within the
///   item,
///     containers before their contents, and `EndContainer()` after all of them but objects;
///   - `SkipObject(index, position)`: answers the position behind an object that was seen before
///     (when part of a file is walked again) and the next index, or 0 for a new one;
///   - `CheckReference(index)` and `CheckPayload(index)` answer whether there is such a thing.
template<class Sink>
class SavedParser
{
public:
    using Kind = CborItem::Kind;

    SavedParser(std::span<const unsigned char> bytes, Sink& sink) : m_in(bytes), m_sink(sink) {}

    const CborReader& GetReader() const noexcept { return m_in; }
    const std::vector<SavedEntry>& GetEntries() const noexcept { return m_entries; }

    /// Reads the one object that the bytes hold from \p position on.
    void ParseRoot(std::size_t position)
    {
        m_in.SetPosition(position);
        if (ParseValue().kind != Kind::Object)
            m_in.Fail("the file does not begin with an object", position);
        if (m_in.GetBytesLeft() != 0)
            m_in.Fail("bytes behind the last object", m_in.GetPosition());
    }

    /// Goes on at \p position, where the next new object has the index \p nextObject, after parts
    /// were walked again.
    void Continue(std::size_t position, std::size_t nextObject) noexcept
    {
        m_in.SetPosition(position);
        m_nextObject = nextObject;
    }

    /// Reads the items of a nested class item again, onto the end of the table.
    /// \pre \p item is a structure.
    void ParseStructureAgain(const SavedEntry& item)
    {
        ReadStructureHead(item);
        m_nextObject = item.firstObject;
        ParseMap();
    }
    /// Drops the entries behind the first \p count.
    void DropEntries(std::size_t count) { m_entries.resize(count); }

    /// The head of a nested class item. \pre \p item is a structure.
    SavedClass ReadStructureHead(const SavedEntry& item)
    {
        m_in.SetPosition(item.position);
        m_in.Next(); // the array of three
        return ParseClassHead();
    }

    /// Calls \p use with every element of an array that was walked before.
    template<class Use>
    void ForEachElement(const SavedEntry& item, const Use& use)
    {
        m_in.SetPosition(item.position);
        m_nextObject = item.firstObject;
        const CborItem array = m_in.Next();
        for (std::uint64_t i = 0; i < array.value; ++i)
            use(ParseValue());
    }

private:
    /// Counts a level of nesting while it lives.
    class Level
    {
    public:
        Level(SavedParser& parser, std::size_t position) : m_depth(parser.m_depth)
        {
            if (++m_depth > SavedFormat::MaxDepth) {
                --m_depth;
                parser.m_in.Fail("items are nested too deeply", position);
            }
        }
        Level(const Level&) = delete;
        ~Level() { --m_depth; }

    private:
        unsigned& m_depth;
    };

    CborItem ParseValue()
    {
        const std::size_t position = m_in.GetPosition();
        CborItem item = m_in.Next();
        switch (item.kind) {
        case Kind::Array:
            if (item.value == 3 && IsAtClass())
                return ParseStructure(position);
            m_sink.Value(item, position);
            ParseArray(item, position);
            return item;
        case Kind::Map: {
            m_sink.Value(item, position);
            const Level level(*this, position);
            DropEntries(ParseItems(item, position));
            m_sink.EndContainer();
            return item;
        }
        case Kind::Tag:
            return ParseTagged(item.value, position);
        default:
            m_sink.Value(item, position);
            return item;
        }
    }

    void ParseArray(const CborItem& array, std::size_t position)
    {
        const Level level(*this, position);
        if (array.value > m_in.GetBytesLeft())
            m_in.Fail("an array is longer than the file", position);
        for (std::uint64_t i = 0; i < array.value; ++i)
            ParseValue();
        m_sink.EndContainer();
    }

    CborItem ParseTagged(std::uint64_t tag, std::size_t position)
    {
        switch (tag) {
        case SavedFormat::ObjectTag:
            return ParseObject(position);
        case SavedFormat::ReferenceTag:
            return ParseIndex(Kind::Reference, position);
        case SavedFormat::PayloadTag:
            return ParseIndex(Kind::Payload, position);
        case SavedFormat::DoublesTag: {
            CborItem item = m_in.Next();
            if (item.kind != Kind::Bytes || item.value % sizeof(double) != 0)
                m_in.Fail("an array of doubles is not made of doubles", position);
            item.kind = Kind::Doubles;
            m_sink.Value(item, position);
            return item;
        }
        default: { // of no meaning here, and so is what it marks
            const CborItem other = {Kind::Tag, tag, nullptr};
            m_sink.Value(other, position);
            const Level level(*this, position);
            ParseValue();
            m_sink.EndContainer();
            return other;
        }
        }
    }

    CborItem ParseIndex(Kind kind, std::size_t position)
    {
        CborItem item = m_in.Next();
        const bool reference = kind == Kind::Reference;
        if (item.kind != Kind::Unsigned ||
            !(reference ? m_sink.CheckReference(item.value) : m_sink.CheckPayload(item.value)))
            m_in.Fail(reference ? "a reference to no object before it" : "no such payload",
                      position);
        item.kind = kind;
        m_sink.Value(item, position);
        return item;
    }

    CborItem ParseObject(std::size_t position)
    {
        const CborItem object = {Kind::Object, m_nextObject, nullptr};
        m_sink.Value(object, position);
        if (const auto [behind, next] = m_sink.SkipObject(m_nextObject, position); behind != 0) {
            m_in.SetPosition(behind);
            m_nextObject = next;
            return object;
        }
        ++m_nextObject;
        const std::size_t arrayPosition = m_in.GetPosition();
        const Level arrayLevel(*this, arrayPosition);
        const Level mapLevel(*this, arrayPosition);
        const CborItem array = m_in.Next();
        if (array.kind != Kind::Array || array.value != 3)
            m_in.Fail("an object is not an array of three", arrayPosition);
        m_sink.BeginObject(ParseClassHead());
        const std::size_t first = ParseMap();
        m_sink.EndObject(first);
        DropEntries(first);
        return object;
    }

    /// Whether what follows the head of an array of three makes it a nested class item.
    bool IsAtClass()
    {
        const std::size_t position = m_in.GetPosition();
        const CborItem uid = m_in.Next();
        const bool isClass = uid.kind == Kind::Text && uid.value == 4 &&
                             m_in.Next().kind == Kind::Unsigned && m_in.Next().kind == Kind::Map;
        m_in.SetPosition(position);
        return isClass;
    }

    CborItem ParseStructure(std::size_t position)
    {
        const CborItem structure = {Kind::Structure, 0, nullptr};
        m_sink.Value(structure, position);
        const Level arrayLevel(*this, position);
        const Level mapLevel(*this, position);
        m_sink.BeginStructure(ParseClassHead());
        DropEntries(ParseMap());
        m_sink.EndContainer();
        return structure;
    }

    SavedClass ParseClassHead()
    {
        const ClassUID uid(ParseCode("a class identifier is not a text of four bytes"));
        const std::size_t versionPosition = m_in.GetPosition();
        const CborItem version = m_in.Next();
        if (version.kind != Kind::Unsigned)
            m_in.Fail("a class version is not a number", versionPosition);
        return {uid, version.value};
    }

    /// A text of four bytes, which every item begins with.
    std::uint32_t ParseCode(const char* message)
    {
        constexpr std::size_t Size = 5;
        constexpr unsigned char TextOfFour = 0x64;
        if (m_in.GetBytesLeft() >= Size && *m_in.GetHere() == TextOfFour) { // the shortest encoding
            const unsigned char* const code = m_in.GetHere() + 1;
            m_in.SetPosition(m_in.GetPosition() + Size);
            return Pack(code);
        }
        const std::size_t position = m_in.GetPosition();
        const CborItem item = m_in.Next();
        if (item.kind != Kind::Text || item.value != 4)
            m_in.Fail(message, position);
        return Pack(item.data);
    }

    static std::uint32_t Pack(const unsigned char* code) noexcept
    {
        return std::uint32_t{code[0]} << 24 | std::uint32_t{code[1]} << 16 |
               std::uint32_t{code[2]} << 8 | std::uint32_t{code[3]};
    }

    /// Reads the map of a class. \return its first entry in the table.
    std::size_t ParseMap()
    {
        const std::size_t position = m_in.GetPosition();
        const CborItem map = m_in.Next();
        if (map.kind != Kind::Map)
            m_in.Fail("the items of an object are not a map", position);
        return ParseItems(map, position);
    }

    /// Reads keys and values onto the end of the table. \return the first entry.
    std::size_t ParseItems(const CborItem& map, std::size_t position)
    {
        if (map.value > m_in.GetBytesLeft() / SavedFormat::MinItemSize)
            m_in.Fail("an object has more items than the file can hold", position);
        const std::size_t first = m_entries.size();
        for (std::uint64_t i = 0; i < map.value; ++i) {
            const IDTag tag(ParseCode("a key is not a text of four bytes"));
            const auto valuePosition = static_cast<std::uint32_t>(m_in.GetPosition());
            const auto firstObject = static_cast<std::uint32_t>(m_nextObject);
            m_sink.BeginItem(tag, valuePosition);
            const CborItem value = ParseValue();
            m_entries.push_back({tag, valuePosition, firstObject, value});
        }
        CheckKeys(first);
        return first;
    }

    void CheckKeys(std::size_t first)
    {
        constexpr std::ptrdiff_t Few = 16;
        const auto begin = m_entries.begin() + static_cast<std::ptrdiff_t>(first);
        const auto end = m_entries.end();
        if (end - begin <= Few) {
            for (auto entry = begin; entry != end; ++entry)
                for (auto before = begin; before != entry; ++before)
                    if (before->tag == entry->tag)
                        FailKey(*entry);
            return;
        }
        std::vector<SavedEntry> sorted(begin, end);
        const auto byTag = [](const SavedEntry& a, const SavedEntry& b) { return a.tag < b.tag; };
        std::stable_sort(sorted.begin(), sorted.end(), byTag);
        const auto twin = std::adjacent_find(
            sorted.begin(), sorted.end(),
            [](const SavedEntry& a, const SavedEntry& b) { return a.tag == b.tag; });
        if (twin != sorted.end())
            FailKey(*(twin + 1));
    }

    [[noreturn]] void FailKey(const SavedEntry& entry) const
    {
        m_in.Fail("the key " + entry.tag.ToString() + " is there twice", entry.position);
    }

    CborReader m_in;
    Sink& m_sink;
    std::vector<SavedEntry> m_entries;
    std::size_t m_nextObject = 0;
    unsigned m_depth = 0;
};

} // namespace Kernel
