#pragma once

#include <cstdint>

#include <kernel/Countable.h>
#include <kernel/HashAccumulator.h>

namespace Kernel {

class SharedClassProperties;

/// Root of the immutable value objects that many holders share: colours, fills, gradients, line
/// styles. Identity is by value: after construction an object is handed to its class's
/// SharedClassProperties, which keeps it as the canonical instance or drops it in favour of an
/// equal one. Setters of such classes are used only while a fresh object is built, before that.
class KERNEL_EXPORT SharedSerialisable : public virtual Countable
{
public:
    /// Adds every member that CompareMembers looks at to the look-up key.
    virtual void AccumulateHash(HashAccumulator& hash) const = 0;

    /// The static record of the object's dynamic type.
    virtual const SharedClassProperties& GetObjectSharedClassProperties() const = 0;

protected:
    friend class SharedClassProperties;

    /// Whether all members equal those of \p other, which is of the same dynamic type.
    virtual bool CompareMembers(const SharedSerialisable& other) const = 0;

public:
    /// Removes the object from the table of canonical instances if it is one.
    ~SharedSerialisable() override;

    /// Whether this is the canonical instance of its value.
    bool IsConsolidated() const noexcept { return m_record != nullptr; }

    /// Whether both have the same dynamic type and equal members.
    bool IsEqual(const SharedSerialisable& other) const;

protected:
    SharedSerialisable() noexcept = default;
    /// A copy is a new value under construction and not consolidated.
    SharedSerialisable(const SharedSerialisable& other) noexcept : Countable(other) {}
    SharedSerialisable& operator=(const SharedSerialisable&) = delete;

private:
    const SharedClassProperties* m_record = nullptr; // set while the object is canonical
    std::uint64_t m_hash = 0;
};

} // namespace Kernel
