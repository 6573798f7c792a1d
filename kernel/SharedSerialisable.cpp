#include <kernel/SharedSerialisable.h>

#include <kernel/SharedClassProperties.h>

namespace Kernel {

SharedSerialisable::~SharedSerialisable()
{
    if (m_record)
        m_record->Remove(*this, m_hash);
}

bool SharedSerialisable::IsEqual(const SharedSerialisable& other) const
{
    if (this == &other)
        return true;
    return &GetObjectSharedClassProperties() == &other.GetObjectSharedClassProperties() &&
           CompareMembers(other);
}

} // namespace Kernel
