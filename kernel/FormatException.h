#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include <kernel/Export.h>

namespace Kernel {

/// Thrown when a file that is read (container, image, profile, font, drawing) is damaged or of the
/// wrong kind.
class KERNEL_EXPORT FormatException : public std::runtime_error
{
public:
    /// \param message what is wrong, as one line for the user.
    /// \param offset the byte where the damage was found, when known.
    explicit FormatException(const std::string& message,
                             std::optional<std::uint64_t> offset = std::nullopt)
        : std::runtime_error(message), m_offset(offset)
    {}
    ~FormatException() override;

    /// The byte offset of the damage, if known.
    std::optional<std::uint64_t> GetOffset() const noexcept { return m_offset; }

private:
    std::optional<std::uint64_t> m_offset;
};

} // namespace Kernel
