#include <renderer/paint/FillDescriptor.h>

namespace Renderer {

FillDescriptor::~FillDescriptor() = default;

Kernel::Counted<FillDescriptor> FillDescriptor::Clone() const
{
    return Kernel::MakeCounted<FillDescriptor>(*this);
}

void FillDescriptor::SetFill(const Kernel::Consolidated<Fill>& fill)
{
    m_value = FillDescriptorConst(fill, GetTransform());
}

void FillDescriptor::SetTransform(const Raster::AffineTransform::Params& transform)
{
    m_value = FillDescriptorConst(m_value, transform);
}

} // namespace Renderer
