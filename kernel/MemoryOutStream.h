#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include <kernel/OutStream.h>

namespace Kernel {

/// Collects the bytes in memory. May be written to after Close().
class KERNEL_EXPORT MemoryOutStream : public OutStream
{
public:
    MemoryOutStream() = default;
    ~MemoryOutStream() override;

    using OutStream::Write;
    void Write(const void* data, std::size_t size) override;
    void Close() override {}

    /// All bytes written so far.
    const std::vector<unsigned char>& GetData() const noexcept { return m_data; }
    /// The same bytes as text; valid until the next write.
    std::string_view GetText() const noexcept
    {
        return {reinterpret_cast<const char*>(m_data.data()), m_data.size()};
    }
    /// Hands the bytes over and leaves the stream empty.
    std::vector<unsigned char> TakeData() noexcept { return std::exchange(m_data, {}); }

private:
    std::vector<unsigned char> m_data;
};

} // namespace Kernel
