#include <renderer/paint/FillNone.h>

namespace Renderer {

const Kernel::Consolidated<FillNone>& FillNone::Create()
{
    static const auto& instance =
        *new Kernel::Consolidated<FillNone>(Share(Kernel::MakeCounted<FillNone>()));
    return instance;
}

const Kernel::SharedClassProperties& FillNone::GetTypeSharedClassProperties()
{
    static const auto& record = *new Kernel::SharedClassProperties;
    return record;
}

void FillNone::AccumulateHash(Kernel::HashAccumulator&) const {}

bool FillNone::CompareMembers(const Kernel::SharedSerialisable&) const
{
    return true;
}

Kernel::Counted<const Fill> FillNone::Accept(ColourVisitor&) const
{
    return Kernel::Counted<const Fill>(this);
}

} // namespace Renderer
