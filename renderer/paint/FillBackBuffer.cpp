#include <renderer/paint/FillBackBuffer.h>

namespace Renderer {

const Kernel::Consolidated<FillBackBuffer>& FillBackBuffer::Create()
{
    static const auto& instance =
        *new Kernel::Consolidated<FillBackBuffer>(Share(Kernel::MakeCounted<FillBackBuffer>()));
    return instance;
}

const Kernel::SharedClassProperties& FillBackBuffer::GetTypeSharedClassProperties()
{
    static const auto& record =
        *new Kernel::SharedClassProperties("BacB", &CreateObject, 1, __GetDefaultSerialisation(),
                                           &Fill::GetTypeSharedClassProperties(), "FillBackBuffer");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = FillBackBuffer::GetTypeSharedClassProperties();

} // namespace

void FillBackBuffer::AccumulateHash(Kernel::HashAccumulator&) const {}

bool FillBackBuffer::CompareMembers(const Kernel::SharedSerialisable&) const
{
    return true;
}

Kernel::Counted<const Fill> FillBackBuffer::Accept(ColourVisitor&) const
{
    return Kernel::Counted<const Fill>(this);
}

} // namespace Renderer
