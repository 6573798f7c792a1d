#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace Svg {

/// The files beside a drawing that it may show: those in its own folder and the folders in it.
/// Nothing else is read: no absolute path, no other scheme, nothing that leads out of the folder,
/// be it by `..` or by a symbolic link.
class Neighbours
{
public:
    /// Larger files are no pictures.
    static constexpr std::uintmax_t MaxBytes = std::uintmax_t{256} << 20;

    /// \param folder of the drawing; empty for a drawing that has none and may show no files.
    explicit Neighbours(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    /// Whether an address names a file that may be read; it need not be there.
    bool Allows(std::string_view address) const;
    /// The bytes of a file; nothing when it may not or cannot be read.
    /// \param address a relative path, perhaps with percent encoding.
    std::optional<std::vector<unsigned char>> Read(std::string_view address) const;

private:
    std::optional<std::filesystem::path> FindPath(std::string_view address) const;

    std::filesystem::path m_folder;
};

} // namespace Svg
