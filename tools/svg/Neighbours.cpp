#include "Neighbours.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "Percents.h"
#include "Scanner.h"

namespace Svg {

namespace {

namespace fs = std::filesystem;

/// Whether \p path, both without links, lies inside \p folder.
bool IsInside(const fs::path& path, const fs::path& folder)
{
    const auto [inFolder, inPath] =
        std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return inFolder == folder.end() && inPath != path.end();
}

} // namespace

std::optional<fs::path> Neighbours::FindPath(std::string_view address) const
{
    address = Trim(address);
    address = address.substr(0, address.find_first_of("?#"));
    const std::string name = DecodePercents(address);
    // A colon is that of a scheme or a drive.
    if (m_folder.empty() || name.empty() || name.front() == '/' ||
        name.find_first_of(std::string_view("\\:\0", 3)) != name.npos)
        return std::nullopt;
    std::error_code error;
    const fs::path folder = fs::canonical(m_folder, error);
    if (error)
        return std::nullopt;
    const fs::path path = fs::weakly_canonical(folder / name, error);
    return error || !IsInside(path, folder) ? std::nullopt : std::optional(path);
}

bool Neighbours::Allows(std::string_view address) const
{
    return FindPath(address).has_value();
}

std::optional<std::vector<unsigned char>> Neighbours::Read(std::string_view address) const
{
    const auto path = FindPath(address);
    std::error_code error;
    if (!path || !fs::is_regular_file(*path, error) || fs::file_size(*path, error) > MaxBytes ||
        error)
        return std::nullopt;
    std::ifstream file(*path, std::ios::binary);
    std::vector<unsigned char> bytes(std::istreambuf_iterator<char>(file), {});
    return file.bad() || bytes.empty() ? std::nullopt : std::optional(std::move(bytes));
}

} // namespace Svg
