#include <kernel/MemoryOutStream.h>

namespace Kernel {

MemoryOutStream::~MemoryOutStream() = default;

void MemoryOutStream::Write(const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    m_data.insert(m_data.end(), bytes, bytes + size);
}

} // namespace Kernel
