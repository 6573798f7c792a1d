#pragma once

#include <kernel/Countable.h>
#include <renderer/Export.h>

namespace Renderer {

/// One effect on a rendered layer. The root of the effect classes.
class RENDERER_EXPORT FilterEffect : public virtual Kernel::Countable
{
public:
    ~FilterEffect() override;
};

} // namespace Renderer
