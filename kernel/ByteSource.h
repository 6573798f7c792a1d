#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace Kernel {

/// Bytes that are read at any place: an open file, or memory. Safe from many threads.
class ByteSource
{
public:
    /// Opens a file. What cannot be read at any place, such as a pipe, is read into memory, up to
    /// 1 GiB. \throws std::system_error
    explicit ByteSource(const std::filesystem::path& path);
    explicit ByteSource(std::shared_ptr<const std::vector<unsigned char>> memory) noexcept;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    ~ByteSource();

    std::uint64_t GetSize() const noexcept { return m_size; }

    /// What tells that a file was written to since: its size and time of modification. Its inode
    /// would not, nor the time of its change, which another file that takes its place changes too.
    struct State
    {
        std::uint64_t size = 0;
        std::int64_t seconds = 0;
        std::int64_t nanoseconds = 0;
        friend bool operator==(const State&, const State&) = default;
    };
    /// How the file is now; always the same for memory. \throws std::system_error
    State GetState() const;

    /// Fills \p bytes from \p offset on.
    /// \throws FormatException beyond the end, std::system_error when reading fails.
    /// \pre \p offset is not before what is kept.
    void Read(std::uint64_t offset, std::span<unsigned char> bytes) const;

    /// Reads what lies behind \p offset into memory, forgets the rest and closes the file. Does
    /// nothing for what is in memory. Not while other threads use the source.
    /// \throws like Read
    void KeepFrom(std::uint64_t offset);

    /// The bytes where they are, if all of them are in memory; empty otherwise.
    std::span<const unsigned char> GetMemory() const noexcept
    {
        return m_memory && m_memoryBegin == 0 ? std::span(*m_memory)
                                              : std::span<const unsigned char>();
    }

private:
    void Close() noexcept;

    int m_file = -1; // descriptor, -1 for memory
    std::uint64_t m_size = 0;
    std::uint64_t m_memoryBegin = 0;                            // where the memory lies in the file
    std::shared_ptr<const std::vector<unsigned char>> m_memory; // null for a file
};

} // namespace Kernel
