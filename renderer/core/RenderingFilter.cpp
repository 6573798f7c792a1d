#include <renderer/core/RenderingFilter.h>

namespace Renderer {

Renderable::~Renderable() = default;

RenderingFilter::~RenderingFilter() = default;

} // namespace Renderer
