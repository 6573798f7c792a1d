#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include <kernel/Counted.h>
#include <kernel/FileStore.h>
#include <kernel/OutStream.h>

namespace Kernel {

/// A large payload of a saved object, such as the file that a bitmap came from: bytes in memory, or
/// bytes that are still in the file that the object was loaded from. Copies share the payload, and
/// saving copies writes it once. Safe from many threads.
class KERNEL_EXPORT DelayLoadHolder
{
public:
    using Bytes = std::vector<unsigned char>;

    /// No payload.
    DelayLoadHolder() noexcept;
    /// A payload in memory.
    explicit DelayLoadHolder(Bytes bytes);
    /// A payload of an open file. \pre \p index is below the store's count.
    DelayLoadHolder(Counted<const FileStore> store, std::size_t index);
    DelayLoadHolder(const DelayLoadHolder& other) noexcept;
    DelayLoadHolder(DelayLoadHolder&& other) noexcept;
    DelayLoadHolder& operator=(DelayLoadHolder other) noexcept;
    ~DelayLoadHolder();

    bool IsEmpty() const noexcept { return !m_payload; }
    /// Whether the bytes are in memory.
    bool IsLoaded() const noexcept;
    /// Bytes of the payload; 0 without one.
    std::uint64_t GetSize() const noexcept;

    /// The bytes, read from the file by the first call; empty without a payload. They live as long
    /// as the payload. \throws FormatException when the file was changed since it was opened.
    const Bytes& Get() const;

    /// Fills \p bytes with a part of the payload, without keeping any in memory.
    /// \throws FormatException when the part is not within it or the file was changed.
    void Read(std::uint64_t offset, std::span<unsigned char> bytes) const;

    /// Writes the bytes without keeping them in memory.
    /// \throws OutStream::WriteException, FormatException
    void WriteTo(OutStream& out) const;

    /// What is made of the bytes, such as a decoded picture: made once and kept beside them, for
    /// all copies.
    /// \param make `Counted<const T>()`: makes it, on the calling thread, while others that ask for
    ///        it wait. What it throws goes on to the caller, and the next one tries again.
    /// \pre there is a payload, and T is the same for all calls.
    template<class T, class Make>
    Counted<const T> GetDecoded(const Make& make) const
    {
        const Decoded decoded(*this);
        if (!decoded.value)
            decoded.value = Counted<const Countable>(make());
        return Counted<const T>(&dynamic_cast<const T&>(*decoded.value));
    }

    /// Holders are equal when they share one payload.
    friend bool operator==(const DelayLoadHolder& a, const DelayLoadHolder& b) noexcept
    {
        return a.m_payload == b.m_payload;
    }
    /// What tells payloads apart in tables.
    const void* GetIdentity() const noexcept;

private:
    class Payload;
    /// The place of what was decoded, locked.
    struct KERNEL_EXPORT Decoded
    {
        explicit Decoded(const DelayLoadHolder& holder);
        std::unique_lock<std::mutex> lock;
        Counted<const Countable>& value;
    };

    Counted<Payload> m_payload;
};

} // namespace Kernel
