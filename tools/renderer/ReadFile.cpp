#include "ReadFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "DrawCommand.h"

namespace Command {

namespace {

constexpr std::size_t MaxFileSize = std::size_t{1} << 30;

struct CloseFile
{
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

} // namespace

std::string ReadFile(const std::string& path)
{
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (!file)
        throw FileException(path, std::strerror(errno));
    std::string bytes;
    std::array<char, 65536> chunk;
    while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), file.get())) {
        bytes.append(chunk.data(), count);
        if (bytes.size() > MaxFileSize)
            throw FileException(path, "the file is larger than 1 GiB");
    }
    if (std::ferror(file.get()) != 0)
        throw FileException(path, std::strerror(errno));
    return bytes;
}

} // namespace Command
