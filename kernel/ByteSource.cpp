#include <kernel/ByteSource.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <kernel/FormatException.h>

namespace Kernel {
namespace {

constexpr std::size_t MaxMemory = std::size_t{1} << 30;

[[noreturn]] void Fail(int error)
{
    throw std::system_error(error, std::generic_category(), "cannot read");
}

/// Closes a file unless it is taken over.
class OpenFile
{
public:
    explicit OpenFile(const std::filesystem::path& path)
        : m_file(open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        if (m_file < 0)
            Fail(errno);
    }
    OpenFile(const OpenFile&) = delete;
    ~OpenFile()
    {
        if (m_file >= 0)
            close(m_file);
    }
    int Get() const noexcept { return m_file; }
    int Take() noexcept { return std::exchange(m_file, -1); }

private:
    int m_file;
};

std::vector<unsigned char> ReadToEnd(int file)
{
    std::vector<unsigned char> bytes;
    std::array<unsigned char, 65536> chunk;
    for (;;) {
        const ssize_t count = read(file, chunk.data(), chunk.size());
        if (count == 0)
            return bytes;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            Fail(errno);
        if (bytes.size() + static_cast<std::size_t>(count) > MaxMemory)
            Fail(EFBIG);
        bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + count);
    }
}

} // namespace

ByteSource::ByteSource(const std::filesystem::path& path)
{
    OpenFile file(path);
    struct stat status = {};
    if (fstat(file.Get(), &status) != 0)
        Fail(errno);
    if (S_ISREG(status.st_mode)) {
        m_size = static_cast<std::uint64_t>(status.st_size);
        m_file = file.Take();
    } else {
        m_memory = std::make_shared<const std::vector<unsigned char>>(ReadToEnd(file.Get()));
        m_size = m_memory->size();
    }
}

ByteSource::ByteSource(std::shared_ptr<const std::vector<unsigned char>> memory) noexcept
    : m_size(memory->size()), m_memory(std::move(memory))
{}

ByteSource::~ByteSource()
{
    Close();
}

void ByteSource::Close() noexcept
{
    if (m_file >= 0)
        close(std::exchange(m_file, -1));
}

ByteSource::State ByteSource::GetState() const
{
    if (m_file < 0)
        return {};
    struct stat status = {};
    if (fstat(m_file, &status) != 0)
        Fail(errno);
    return {static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec};
}

void ByteSource::KeepFrom(std::uint64_t offset)
{
    if (m_file < 0)
        return;
    std::vector<unsigned char> kept(static_cast<std::size_t>(m_size - offset));
    Read(offset, kept);
    m_memory = std::make_shared<const std::vector<unsigned char>>(std::move(kept));
    m_memoryBegin = offset;
    Close();
}

void ByteSource::Read(std::uint64_t offset, std::span<unsigned char> bytes) const
{
    if (offset > m_size || bytes.size() > m_size - offset)
        throw FormatException("the file is cut off", m_size);
    if (m_file < 0) {
        if (!bytes.empty())
            std::memcpy(bytes.data(), m_memory->data() + (offset - m_memoryBegin), bytes.size());
        return;
    }
    while (!bytes.empty()) {
        const ssize_t count = pread(m_file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            Fail(errno);
        if (count == 0)
            throw FormatException("the file was cut short while it was open", offset);
        offset += static_cast<std::uint64_t>(count);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

} // namespace Kernel
