#include <renderer/paint/LineStyleDescriptor.h>

namespace Renderer {

LineStyleDescriptor::~LineStyleDescriptor() = default;

Kernel::Counted<LineStyleDescriptor> LineStyleDescriptor::Clone() const
{
    return Kernel::MakeCounted<LineStyleDescriptor>(*this);
}

} // namespace Renderer
