#include <kernel/FileStore.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

#include <kernel/ByteSource.h>
#include <kernel/CborReader.h>
#include <kernel/HashAccumulator.h>
#include <kernel/SavedFormat.h>

namespace Kernel {
namespace {

using Kind = CborItem::Kind;

/// The head of a data item at \p offset.
struct Head
{
    unsigned majorType;
    std::uint64_t argument;
    std::uint64_t end; ///< offset behind it
};

/// Reads heads through a small window, so that many small payloads do not take a call of the system
/// each.
class HeadReader
{
public:
    explicit HeadReader(const ByteSource& source) noexcept : m_source(source) {}

    /// The head alone, of an item that may be larger than memory: its argument is encoded like an
    /// unsigned integer, and read as one.
    Head Read(std::uint64_t offset)
    {
        if (offset >= m_source.GetSize())
            throw FormatException("the file ends where an item should be", offset);
        constexpr std::uint64_t MaxHeadSize = 9;
        const std::uint64_t size = std::min(MaxHeadSize, m_source.GetSize() - offset);
        Fetch(offset, size);
        std::array<unsigned char, MaxHeadSize> bytes = {};
        std::memcpy(bytes.data(), m_window.data() + (offset - m_begin),
                    static_cast<std::size_t>(size));
        const unsigned majorType = bytes[0] >> 5U;
        bytes[0] &= 0x1fU;
        CborReader reader({bytes.data(), static_cast<std::size_t>(size)},
                          static_cast<std::size_t>(offset));
        const std::uint64_t argument = reader.Next().value;
        return {majorType, argument, offset + reader.GetPosition()};
    }

private:
    void Fetch(std::uint64_t offset, std::uint64_t size)
    {
        if (offset >= m_begin && offset + size <= m_begin + m_window.size())
            return;
        constexpr std::uint64_t WindowSize = 4096;
        m_window.resize(
            static_cast<std::size_t>(std::min(WindowSize, m_source.GetSize() - offset)));
        m_begin = offset;
        m_source.Read(offset, m_window);
    }

    const ByteSource& m_source;
    std::uint64_t m_begin = 0;
    std::vector<unsigned char> m_window;
};

constexpr unsigned UnsignedType = 0;
constexpr unsigned BytesType = 2;
constexpr unsigned ArrayType = 4;

void CheckMagic(const ByteSource& source)
{
    constexpr std::size_t Size = sizeof SavedFormat::Magic;
    std::array<unsigned char, Size> magic = {};
    const std::size_t available = std::min<std::uint64_t>(Size, source.GetSize());
    source.Read(0, std::span(magic).first(available));
    if (std::memcmp(magic.data(), SavedFormat::Magic, Size - 1) != 0)
        throw FormatException("not a file of saved values", 0);
    if (magic.back() != SavedFormat::Version)
        throw FormatException("the file is of another version of the format", Size - 1);
}

/// Files that stay open together, of the thousand or so that a process may have.
constexpr int MaxKeptFiles = 256;
std::atomic<int> keptFiles = 0;

} // namespace

/// What an open file was like when its objects were read.
class FileStore::KeptFile
{
public:
    explicit KeptFile(const ByteSource::State& state) noexcept : state(state) {}
    KeptFile(const KeptFile&) = delete;
    ~KeptFile()
    {
        if (isCounted)
            --keptFiles;
    }
    /// \return false when too many files are kept already.
    bool Count() noexcept
    {
        isCounted = true;
        return ++keptFiles <= MaxKeptFiles;
    }

    std::mutex mutex;        // of the members below
    ByteSource::State state; // in which the file had the hash
    std::uint64_t hash = 0;
    bool isCounted = false;
};

FileStore::FileStore(std::unique_ptr<ByteSource> source, Damaged damaged)
    : m_source(std::move(source))
{
    if (m_source->GetMemory().empty())
        m_kept = std::make_unique<KeptFile>(m_source->GetState());
    CheckMagic(*m_source);
    try {
        FindObjects(damaged);
        FindPayloads();
    } catch (const FormatException& error) {
        if (damaged == Damaged::Refused || m_objectsEnd < SavedFormat::HeaderSize)
            throw;
        if (!m_damage)
            m_damage = error;
    }
}

FileStore::~FileStore() = default;

Counted<FileStore> FileStore::Open(const std::filesystem::path& path, Damaged damaged)
{
    return Counted<FileStore>(new FileStore(std::make_unique<ByteSource>(path), damaged));
}

Counted<FileStore> FileStore::FromMemory(Memory bytes, Damaged damaged)
{
    return Counted<FileStore>(
        new FileStore(std::make_unique<ByteSource>(std::move(bytes)), damaged));
}

std::uint64_t FileStore::GetFileSize() const noexcept
{
    return m_source->GetSize();
}

void FileStore::FindObjects(Damaged damaged)
{
    constexpr std::size_t LengthPosition = sizeof SavedFormat::Magic;
    HeadReader heads(*m_source);
    const std::uint64_t fileSize = m_source->GetSize();
    const Head length = heads.Read(LengthPosition);
    if (length.majorType != UnsignedType || length.end != SavedFormat::HeaderSize)
        throw FormatException("the length of the objects is missing", LengthPosition);
    m_objectsEnd = length.end + length.argument;
    if (length.argument <= fileSize - length.end &&
        length.argument <= SavedFormat::MaxObjectsEnd - length.end)
        return;
    const FormatException error("the objects are longer than the file", LengthPosition);
    if (damaged == Damaged::Refused)
        throw error;
    m_damage = error;
    m_objectsEnd = std::min(fileSize, SavedFormat::MaxObjectsEnd);
}

void FileStore::FindPayloads()
{
    HeadReader heads(*m_source);
    const std::uint64_t fileSize = m_source->GetSize();
    const std::uint64_t objectsLength = m_objectsEnd - SavedFormat::HeaderSize;
    const Head array = heads.Read(m_objectsEnd);
    // Each payload belongs to an item, which bounds what the directory takes.
    if (array.majorType != ArrayType || array.argument > fileSize - array.end ||
        array.argument > objectsLength / SavedFormat::MinItemSize)
        throw FormatException("the payloads are not an array that the file can hold", m_objectsEnd);
    std::uint64_t offset = array.end;
    for (std::uint64_t i = 0; i < array.argument; ++i) {
        const Head payload = heads.Read(offset);
        if (payload.majorType != BytesType)
            throw FormatException("a payload is not a string of bytes", offset);
        if (payload.argument > fileSize - payload.end)
            throw FormatException("a payload is longer than the file", offset);
        m_payloads.push_back({payload.end, payload.argument});
        offset = payload.end + payload.argument;
    }
    if (offset != fileSize)
        throw FormatException("bytes behind the last payload", offset);
}

/// The hash of all but the payloads' bytes.
std::uint64_t FileStore::Hash(std::span<const unsigned char> objects) const
{
    HashAccumulator hash;
    hash.AddToHash(objects.data(), objects.size());
    std::uint64_t offset = m_objectsEnd;
    std::vector<unsigned char> head;
    for (const Payload& payload : m_payloads) {
        head.resize(static_cast<std::size_t>(payload.offset - offset));
        m_source->Read(offset, head);
        hash.AddToHash(head.data(), head.size());
        offset = payload.offset + payload.size;
    }
    return hash.GetHash();
}

/// A file that was merely touched, by a program that copies times for instance, goes on.
void FileStore::CheckUnchanged(std::uint64_t offset) const
{
    if (!m_kept)
        return;
    const std::lock_guard lock(m_kept->mutex);
    const ByteSource::State state = m_source->GetState();
    if (state == m_kept->state)
        return;
    std::vector<unsigned char> memory;
    if (state.size != m_kept->state.size || Hash(ReadObjects(memory)) != m_kept->hash)
        throw FormatException("the file was changed while it was open", offset);
    m_kept->state = state;
}

void FileStore::ReadPayload(std::size_t index, std::uint64_t offset,
                            std::span<unsigned char> bytes) const
{
    const Payload& payload = m_payloads[index];
    if (offset > payload.size || bytes.size() > payload.size - offset)
        throw FormatException("read beyond the end of a payload", payload.offset);
    try {
        m_source->Read(payload.offset + offset, bytes);
        CheckUnchanged(payload.offset + offset); // afterwards: it may change while it is read
    } catch (const std::system_error& error) {   // a network drive has gone, for instance
        throw FormatException(std::string("the file cannot be read: ") + error.what(),
                              payload.offset + offset);
    }
}

std::span<const unsigned char> FileStore::ReadObjects(std::vector<unsigned char>& memory) const
{
    const auto size = static_cast<std::size_t>(m_objectsEnd);
    if (const std::span<const unsigned char> all = m_source->GetMemory(); !all.empty())
        return all.first(size);
    memory.resize(size);
    m_source->Read(0, memory);
    return memory;
}

void FileStore::KeepPayloads(std::span<const unsigned char> objects)
{
    constexpr std::uint64_t MaxMemory = 65536;
    if (!m_kept)
        return;
    if (m_source->GetSize() - m_objectsEnd > MaxMemory && m_kept->Count()) {
        m_kept->hash = Hash(objects);
    } else {
        m_source->KeepFrom(m_objectsEnd);
        m_kept.reset();
    }
}

} // namespace Kernel
