#include <kernel/FileOutStream.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Kernel {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t BufferSize = std::size_t{1} << 16;
constexpr int MaxSymbolicLinks = 40; // the kernel's own limit

/// The path with the symbolic links of its last component followed, stopping at /proc, whose links
/// stand for open files rather than for names. A dangling link gives the name that it points to,
/// and links that go in a circle give the empty path.
fs::path FollowLinks(fs::path path)
{
    for (int i = 0; i < MaxSymbolicLinks; ++i) {
        std::error_code error;
        const fs::path folder =
            fs::canonical(path.has_parent_path() ? path.parent_path() : fs::path("."), error);
        if (error)
            return path; // opening the file will tell what is wrong
        path = folder / path.filename();
        if (path.native().starts_with("/proc/") || !fs::is_symlink(path, error))
            return path;
        const fs::path link = fs::read_symlink(path, error);
        path = folder / link; // an absolute link replaces the folder
    }
    return {};
}

/// The number of this process's open file that \p path names (as /dev/stdout does), or -1.
int GetOwnDescriptor(const fs::path& path)
{
    if (path.parent_path() != "/proc/" + std::to_string(getpid()) + "/fd")
        return -1;
    const std::string name = path.filename().native();
    int number = -1;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return error == std::errc() && end == name.data() + name.size() ? number : -1;
}

fs::path MakeTemporaryName(const fs::path& target)
{
    // Short, so that a target with a name of the longest size gets a neighbour, too.
    static std::atomic<unsigned> counter{0};
    return target.parent_path() /
           (".tmp-" + std::to_string(getpid()) + "-" + std::to_string(counter.fetch_add(1)));
}

} // namespace

FileOutStream::FileOutStream(const fs::path& path, Durability durability) : m_durability(durability)
{
    m_buffer.reserve(BufferSize);
    m_target = FollowLinks(path);
    if (m_target.empty())
        Fail(ELOOP);
    struct stat status = {};
    const bool exists = stat(m_target.c_str(), &status) == 0;
    if (m_target.native().starts_with("/proc/") || (exists && !S_ISREG(status.st_mode))) {
        OpenDirectly(m_target);
        return;
    }
    if (exists && faccessat(AT_FDCWD, m_target.c_str(), W_OK, AT_EACCESS) != 0)
        Fail(errno); // renaming would get past the write protection
    OpenTemporary();
    if (exists) {
        // Only the superuser may give files away; for others the file becomes their own. The owner
        // first, because changing it clears permission bits.
        [[maybe_unused]] const int ignored = fchown(m_file, status.st_uid, status.st_gid);
        if (fchmod(m_file, status.st_mode & 07777U) != 0)
            Fail(errno);
    }
}

FileOutStream::~FileOutStream()
{
    Discard();
}

void FileOutStream::OpenDirectly(const fs::path& path)
{
    // A duplicate shares the file's position, which a newly opened file would not.
    const int own = GetOwnDescriptor(path);
    m_file = own >= 0 ? fcntl(own, F_DUPFD_CLOEXEC, 0) : open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (m_file < 0)
        Fail(errno);
}

void FileOutStream::OpenTemporary()
{
    do {
        m_temporary = MakeTemporaryName(m_target);
        m_file = open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (m_file < 0 && errno == EEXIST);
    if (m_file < 0) {
        const int error = errno;
        m_temporary.clear();
        Fail(error);
    }
}

void FileOutStream::Write(const void* data, std::size_t size)
{
    if (m_file < 0)
        throw WriteException("cannot write: the file is closed");
    const auto* bytes = static_cast<const unsigned char*>(data);
    if (m_buffer.size() + size > BufferSize)
        Flush();
    if (size >= BufferSize)
        WriteThrough(bytes, size);
    else
        m_buffer.insert(m_buffer.end(), bytes, bytes + size);
}

void FileOutStream::WriteThrough(const unsigned char* data, std::size_t size)
{
    while (size != 0) {
        const ssize_t written = write(m_file, data, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            Fail(written < 0 ? errno : EIO);
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

void FileOutStream::Flush()
{
    WriteThrough(m_buffer.data(), m_buffer.size());
    m_buffer.clear();
}

void FileOutStream::Close()
{
    if (m_closed)
        return;
    if (m_file < 0)
        throw WriteException("cannot write: the file is closed");
    Flush();
    if (m_durability == Durability::Synced && !m_temporary.empty() && fsync(m_file) != 0)
        Fail(errno);
    // Some file systems report a full disk no earlier than here. The descriptor is gone either way.
    if (close(std::exchange(m_file, -1)) != 0 && errno != EINTR)
        Fail(errno);
    if (!m_temporary.empty() && rename(m_temporary.c_str(), m_target.c_str()) != 0)
        Fail(errno);
    m_temporary.clear();
    m_closed = true;
}

void FileOutStream::Discard() noexcept
{
    if (m_file >= 0)
        close(std::exchange(m_file, -1));
    if (!m_temporary.empty())
        unlink(m_temporary.c_str());
    m_temporary.clear();
}

void FileOutStream::Fail(int error)
{
    Discard(); // at once: it may be what filled the disk
    throw WriteException("cannot write: " + std::generic_category().message(error));
}

} // namespace Kernel
