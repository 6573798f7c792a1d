#include <kernel/Serialisable.h>

namespace Kernel {

Serialisable::~Serialisable() = default;

void Serialisable::Save(OutSerialiser&) const {}

bool Serialisable::Load(const InSerialiser&, FileStore&, unsigned short)
{
    return true;
}

void Serialisable::AccumulateHash(HashAccumulator&) const {}

} // namespace Kernel
