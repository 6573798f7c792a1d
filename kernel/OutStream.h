#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include <kernel/Export.h>

namespace Kernel {

/// Where bytes are written to, one after another.
class KERNEL_EXPORT OutStream
{
public:
    /// Thrown when bytes cannot be written: a full disk, a folder without permission.
    class KERNEL_EXPORT WriteException : public std::runtime_error
    {
    public:
        explicit WriteException(const std::string& message) : std::runtime_error(message) {}
        ~WriteException() override;
    };

    OutStream() = default;
    OutStream(const OutStream&) = delete;
    OutStream& operator=(const OutStream&) = delete;
    virtual ~OutStream();

    /// Writes all \p size bytes. \throws WriteException
    virtual void Write(const void* data, std::size_t size) = 0;
    void Write(std::string_view text) { Write(text.data(), text.size()); }

    /// Hands everything on and completes the output: encoders write their last group and end mark,
    /// a file takes its final name. Nothing may be written after it. \throws WriteException
    virtual void Close() = 0;
};

} // namespace Kernel
