#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/FormatException.h>

namespace Kernel {

class ByteSource;

/// An open file of saved values, from which payloads are read when they are asked for. It outlives
/// the loading: whoever holds a payload that is not read yet holds the store. Another file may take
/// the place of this one meanwhile, since the store keeps the one that it opened; a file that is
/// overwritten instead gives no payloads any more. Safe from many threads.
class KERNEL_EXPORT FileStore : public Countable
{
public:
    /// What becomes of a file whose sections are damaged.
    enum class Damaged
    {
        Refused,
        Kept, ///< what lies before the damage, to be looked at
    };

    /// Opens a file and finds its sections.
    /// \throws FormatException when it is damaged, or is no file of saved values at all;
    ///         std::system_error when it cannot be read.
    static Counted<FileStore> Open(const std::filesystem::path& path,
                                   Damaged damaged = Damaged::Refused);
    /// A file in memory, which whoever reads it shares.
    using Memory = std::shared_ptr<const std::vector<unsigned char>>;
    /// The same for a file in memory.
    static Counted<FileStore> FromMemory(Memory bytes, Damaged damaged = Damaged::Refused);
    ~FileStore() override;

    std::uint64_t GetFileSize() const noexcept;
    /// What is wrong with the sections of a damaged file that was kept.
    const std::optional<FormatException>& GetDamage() const noexcept { return m_damage; }

    /// The number of payloads.
    std::size_t GetPayloadCount() const noexcept { return m_payloads.size(); }
    /// Bytes of one payload. \pre \p index is below the count.
    std::uint64_t GetPayloadSize(std::size_t index) const { return m_payloads[index].size; }
    /// Copies a part of one payload.
    /// \throws FormatException when the part is not within it or cannot be read any more, which is
    ///         so too when the file has changed: when its time of modification and its objects or
    ///         the sizes of its payloads did.
    void ReadPayload(std::size_t index, std::uint64_t offset, std::span<unsigned char> bytes) const;

    /// The file from its begin to the end of its objects: what must be in memory for loading.
    /// \param memory holds the bytes unless the store has them in memory itself.
    /// \pre KeepPayloads was not called.
    std::span<const unsigned char> ReadObjects(std::vector<unsigned char>& memory) const;

    /// Reads payloads that together are small into memory and closes the file, of which a process
    /// can have some hundred open only; keeps it open for larger ones, unless 256 others are. To be
    /// called once, when the objects were read, before others use the store.
    /// \param objects what ReadObjects gave.
    /// \throws FormatException when the file was cut short, std::system_error when it cannot be
    /// read.
    void KeepPayloads(std::span<const unsigned char> objects);

private:
    struct Payload
    {
        std::uint64_t offset;
        std::uint64_t size;
    };

    class KeptFile;

    FileStore(std::unique_ptr<ByteSource> source, Damaged damaged);
    void FindObjects(Damaged damaged);
    void FindPayloads();
    std::uint64_t Hash(std::span<const unsigned char> objects) const;
    void CheckUnchanged(std::uint64_t offset) const;

    std::unique_ptr<ByteSource> m_source;
    std::uint64_t m_objectsEnd = 0;
    std::vector<Payload> m_payloads;
    std::optional<FormatException> m_damage;
    std::unique_ptr<KeptFile> m_kept; ///< null where payloads are in memory
};

} // namespace Kernel
