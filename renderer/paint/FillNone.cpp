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
    static const auto& record =
        *new Kernel::SharedClassProperties("FilN", &CreateObject, 1, __GetDefaultSerialisation(),
                                           &Fill::GetTypeSharedClassProperties(), "FillNone");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = FillNone::GetTypeSharedClassProperties();

} // namespace

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
