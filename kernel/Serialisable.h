#pragma once

#include <kernel/Countable.h>
#include <kernel/HashAccumulator.h>

namespace Kernel {

class ClassProperties;
class FileStore;
class InSerialiser;
class OutSerialiser;

/// Root of the saved objects that one holder owns and may change in place: descriptors, effects.
/// Identity is by address. Shared values have a root of their own, SharedSerialisable.
class KERNEL_EXPORT Serialisable : public virtual Countable
{
public:
    /// Writes the members as items, those of the base class first. The default writes none.
    virtual void Save(OutSerialiser& out) const;

    /// Reads the members; what the file does not hold takes its default.
    /// \param in the items of this object; valid during the call.
    /// \param store where delay-loaded payloads stay.
    /// \param version the version of the class that wrote the object.
    /// \return false when the object cannot exist without what is missing; it is discarded then.
    virtual bool Load(const InSerialiser& in, FileStore& store, unsigned short version);

    /// Adds what makes the object's value to a look-up key. The default adds nothing.
    virtual void AccumulateHash(HashAccumulator& hash) const;

    /// The static record of the object's dynamic type.
    virtual const ClassProperties& GetObjectClassProperties() const = 0;

    ~Serialisable() override;
};

} // namespace Kernel
