#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <stdlib.h>

namespace TestSupport {

/// A folder for the files of one test, removed with all that is in it.
class TestFolder
{
public:
    TestFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "renderer-XXXXXX").string();
        m_path = mkdtemp(name.data());
    }
    ~TestFolder() { std::filesystem::remove_all(m_path); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    /// The path of a file, which need not exist.
    std::filesystem::path operator/(const std::filesystem::path& name) const
    {
        return m_path / name;
    }
    const std::filesystem::path& GetPath() const { return m_path; }

    /// Writes a file, over one of that name. \return its path.
    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(m_path / name, std::ios::binary) << bytes;
        return (m_path / name).string();
    }

    std::string Read(const std::string& name) const
    {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::ptrdiff_t CountFiles() const
    {
        return std::distance(std::filesystem::directory_iterator(m_path), {});
    }

private:
    std::filesystem::path m_path;
};

} // namespace TestSupport
