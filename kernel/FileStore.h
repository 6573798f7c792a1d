#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include <kernel/Countable.h>
#include <kernel/Counted.h>

namespace Kernel {

class ByteSource;

/// An open file of saved values, from which payloads are read when they are asked for. It outlives
/// the loading: whoever holds a payload that is not read yet holds the store. Another file may take
/// the place of this one meanwhile, since the store keeps the one that it opened; but nobody may
/// write to that one. Safe from many threads.
class KERNEL_EXPORT FileStore : public Countable
{
public:
    /// Opens a file and finds its sections.
    /// \throws FormatException when it is damaged, std::system_error when it cannot be read.
    static Counted<FileStore> Open(const std::filesystem::path& path);
    /// A file in memory, which whoever reads it shares.
    using Memory = std::shared_ptr<const std::vector<unsigned char>>;
    /// The same for a file in memory.
    static Counted<FileStore> FromMemory(Memory bytes);
    ~FileStore() override;

    std::uint64_t GetFileSize() const noexcept;

    /// The number of payloads.
    std::size_t GetPayloadCount() const noexcept { return m_payloads.size(); }
    /// Bytes of one payload. \pre \p index is below the count.
    std::uint64_t GetPayloadSize(std::size_t index) const { return m_payloads[index].size; }
    /// Copies a part of one payload.
    /// \throws FormatException when the part is not within it or cannot be read any more.
    void ReadPayload(std::size_t index, std::uint64_t offset, std::span<unsigned char> bytes) const;

    /// The file from its begin to the end of its objects: what must be in memory for loading.
    /// \param memory holds the bytes unless the store has them in memory itself.
    /// \pre KeepPayloads was not called.
    std::span<const unsigned char> ReadObjects(std::vector<unsigned char>& memory) const;

    /// Reads payloads that together are small into memory and closes the file, of which a process
    /// can have some hundred open only; keeps it open for larger ones. To be called when the
    /// objects were read, before others use the store. \throws like ReadPayload
    void KeepPayloads();

private:
    struct Payload
    {
        std::uint64_t offset;
        std::uint64_t size;
    };

    explicit FileStore(std::unique_ptr<ByteSource> source);
    void ReadDirectory();

    std::unique_ptr<ByteSource> m_source;
    std::uint64_t m_objectsEnd = 0;
    std::vector<Payload> m_payloads;
};

} // namespace Kernel
