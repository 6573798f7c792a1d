#include <kernel/SharedSerialisable.h>

#include <kernel/SharedClassProperties.h>

namespace Kernel {

SharedSerialisable::~SharedSerialisable()
{
    if (m_record)
        m_record->Remove(*this);
}

void SharedSerialisable::Save(OutSerialiser&) const {}

bool SharedSerialisable::Load(const InSerialiser&, FileStore&, unsigned short)
{
    return true;
}

bool SharedSerialisable::Equals(const SharedSerialisable& other) const
{
    if (this == &other)
        return true;
    return &GetObjectSharedClassProperties() == &other.GetObjectSharedClassProperties() &&
           CompareMembers(other);
}

bool SharedSerialisable::Equals(const SharedSerialisable* a, const SharedSerialisable* b)
{
    return a && b ? a->Equals(*b) : a == b;
}

} // namespace Kernel
