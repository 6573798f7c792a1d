#pragma once

#include <kernel/Countable.h>
#include <kernel/NonCounted.h>
#include <kernel/String.h>
#include <renderer/Export.h>

namespace Renderer {

/// An object of the document that is being drawn, as far as targets and filters need to know it.
class RENDERER_EXPORT Renderable : public Kernel::Countable
{
public:
    ~Renderable() override;
    virtual Kernel::String GetName() const = 0;
};

/// Decides which objects of a document are drawn.
class RENDERER_EXPORT RenderingFilter : public Kernel::Countable
{
public:
    ~RenderingFilter() override;
    /// Whether an object itself is drawn.
    virtual bool ShouldRender(Kernel::NonCounted<const Renderable> renderable) const = 0;
    /// Whether the inside of an object that holds others is looked at.
    virtual bool ShouldRenderContainer(Kernel::NonCounted<const Renderable> renderable) const = 0;
};

} // namespace Renderer
