#pragma once

#include <filesystem>
#include <vector>

#include <kernel/OutStream.h>

namespace Kernel {

/// Writes a file that appears under its name only when it is complete.
///
/// The bytes go to a temporary file in the same folder, which Close() renames over the target. A
/// stream that is destroyed without Close() removes the temporary file, so whatever was there
/// before stays untouched. The permissions of a replaced file are kept, and a symbolic link is
/// followed. Targets that are not regular files (devices, pipes, `/dev/stdout`) are written to
/// directly.
class KERNEL_EXPORT FileOutStream : public OutStream
{
public:
    /// What Close() waits for.
    enum class Durability
    {
        Cached, ///< the system has the bytes: they outlive the program
        Synced, ///< the disk has them: after a power cut the name stands for all of them or for
                ///< all that was there before
    };

    /// Opens the output. \throws WriteException when the folder or the file cannot be written.
    explicit FileOutStream(const std::filesystem::path& path,
                           Durability durability = Durability::Cached);
    /// Drops an output that was not closed.
    ~FileOutStream() override;

    using OutStream::Write;
    void Write(const void* data, std::size_t size) override;

    /// Writes what is buffered and gives the file its name; further calls do nothing.
    void Close() override;

private:
    void OpenDirectly(const std::filesystem::path& path);
    void OpenTemporary();
    void WriteThrough(const unsigned char* data, std::size_t size);
    void Flush();
    void Discard() noexcept;
    [[noreturn]] void Fail(int error);

    Durability m_durability;
    int m_file = -1;                   // descriptor, -1 when closed or failed
    bool m_closed = false;             // Close() succeeded
    std::filesystem::path m_target;    // final name, symbolic links resolved
    std::filesystem::path m_temporary; // empty when the target is written directly
    std::vector<unsigned char> m_buffer;
};

} // namespace Kernel
