#include <kernel/DelayLoadHolder.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

#include <kernel/FormatException.h>

namespace Kernel {

/// What copies share: bytes, or a store to read them from, which is let go when they are read.
class DelayLoadHolder::Payload : public Countable
{
public:
    explicit Payload(Bytes bytes) : m_size(bytes.size()), m_bytes(std::move(bytes)) {}
    Payload(Counted<const FileStore> store, std::size_t index)
        : m_size(store->GetPayloadSize(index)), m_store(std::move(store)), m_index(index)
    {}
    ~Payload() override;

    std::uint64_t GetSize() const noexcept { return m_size; }

    /// The store to read from, or null when the bytes are in memory.
    Counted<const FileStore> GetStore() const
    {
        const std::lock_guard lock(m_mutex);
        return m_store;
    }
    std::size_t GetIndex() const noexcept { return m_index; }
    /// The bytes as they are in memory. \pre GetStore() was null.
    const Bytes& GetBytes() const noexcept { return m_bytes; }

    const Bytes& Load()
    {
        const std::lock_guard lock(m_mutex);
        if (m_store) {
            Bytes bytes(static_cast<std::size_t>(m_size));
            m_store->ReadPayload(m_index, 0, bytes);
            m_bytes = std::move(bytes);
            m_store.Reset();
        }
        return m_bytes;
    }

    std::mutex decodedMutex; // held while decoding, which reads the bytes
    Counted<const Countable> decoded;

private:
    mutable std::mutex m_mutex;
    std::uint64_t m_size;
    Counted<const FileStore> m_store;
    std::size_t m_index = 0;
    Bytes m_bytes;
};

DelayLoadHolder::Payload::~Payload() = default;

DelayLoadHolder::DelayLoadHolder() noexcept = default;

DelayLoadHolder::DelayLoadHolder(Bytes bytes) : m_payload(new Payload(std::move(bytes))) {}

DelayLoadHolder::DelayLoadHolder(Counted<const FileStore> store, std::size_t index)
    : m_payload(new Payload(std::move(store), index))
{}

DelayLoadHolder::DelayLoadHolder(const DelayLoadHolder& other) noexcept = default;
DelayLoadHolder::DelayLoadHolder(DelayLoadHolder&& other) noexcept = default;
DelayLoadHolder::~DelayLoadHolder() = default;

DelayLoadHolder& DelayLoadHolder::operator=(DelayLoadHolder other) noexcept
{
    m_payload.Swap(other.m_payload);
    return *this;
}

bool DelayLoadHolder::IsLoaded() const noexcept
{
    return !m_payload || !m_payload->GetStore();
}

std::uint64_t DelayLoadHolder::GetSize() const noexcept
{
    return m_payload ? m_payload->GetSize() : 0;
}

const void* DelayLoadHolder::GetIdentity() const noexcept
{
    return m_payload.Get();
}

const DelayLoadHolder::Bytes& DelayLoadHolder::Get() const
{
    static const Bytes none;
    return m_payload ? m_payload->Load() : none;
}

DelayLoadHolder::Decoded::Decoded(const DelayLoadHolder& holder)
    : lock(holder.m_payload->decodedMutex), value(holder.m_payload->decoded)
{}

void DelayLoadHolder::Read(std::uint64_t offset, std::span<unsigned char> bytes) const
{
    if (offset > GetSize() || bytes.size() > GetSize() - offset)
        throw FormatException("read beyond the end of a payload");
    if (bytes.empty())
        return;
    if (const Counted<const FileStore> store = m_payload->GetStore())
        store->ReadPayload(m_payload->GetIndex(), offset, bytes);
    else
        std::memcpy(bytes.data(), m_payload->GetBytes().data() + offset, bytes.size());
}

void DelayLoadHolder::WriteTo(OutStream& out) const
{
    if (!m_payload)
        return;
    const Counted<const FileStore> store = m_payload->GetStore();
    if (!store) {
        out.Write(m_payload->GetBytes().data(), m_payload->GetBytes().size());
        return;
    }
    constexpr std::uint64_t ChunkSize = 65536;
    Bytes chunk;
    for (std::uint64_t offset = 0; offset < m_payload->GetSize(); offset += chunk.size()) {
        chunk.resize(static_cast<std::size_t>(std::min(ChunkSize, m_payload->GetSize() - offset)));
        store->ReadPayload(m_payload->GetIndex(), offset, chunk);
        out.Write(chunk.data(), chunk.size());
    }
}

} // namespace Kernel
