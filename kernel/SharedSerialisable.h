#pragma once

#include <cstdint>

#include <kernel/Countable.h>
#include <kernel/HashAccumulator.h>

namespace Kernel {

class FileStore;
class InSerialiser;
class OutSerialiser;
class SharedClassProperties;

/// Root of the immutable value objects that many holders share: colours, fills, gradients, line
/// styles. Identity is by value: after construction an object is handed to its class's
/// SharedClassProperties, which keeps it as the canonical instance or drops it in favour of an
/// equal one. Setters of such classes are used only while a fresh object is built, before that.
class KERNEL_EXPORT SharedSerialisable : public virtual Countable
{
public:
    /// Writes the members as items, those of the base class first. The default writes none.
    virtual void Save(OutSerialiser& out) const;

    /// Reads the members of a fresh object; what the file does not hold takes its default.
    /// \param in the items of this object; valid during the call.
    /// \param store where delay-loaded payloads stay.
    /// \param version the version of the class that wrote the object.
    /// \return false when the object cannot exist without what is missing; it is discarded then.
    virtual bool Load(const InSerialiser& in, FileStore& store, unsigned short version);

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
    bool Equals(const SharedSerialisable& other) const;
    /// The same for references that may be null; two nulls are equal.
    static bool Equals(const SharedSerialisable* a, const SharedSerialisable* b);

protected:
    SharedSerialisable() noexcept = default;
    /// A copy is a new value under construction and not consolidated.
    SharedSerialisable(const SharedSerialisable& other) noexcept : Countable(other) {}
    SharedSerialisable& operator=(const SharedSerialisable&) = delete;

private:
    // The table of the canonical instances runs through the objects themselves; its lock guards
    // what follows.
    const SharedClassProperties* m_record = nullptr; // set while the object is canonical
    std::uint64_t m_hash = 0;
    mutable const SharedSerialisable* m_next = nullptr; // of those that share a place in the table
    // The count is a virtual base, and the way to it from an object that another thread is
    // destroying would read what the destructor changes.
    const Countable* m_count = nullptr;
};

} // namespace Kernel
