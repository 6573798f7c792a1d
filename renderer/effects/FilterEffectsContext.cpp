#include <renderer/effects/FilterEffectsContext.h>

namespace Renderer {

FilterEffect::~FilterEffect() = default;

FilterEffectsContext::~FilterEffectsContext() = default;

} // namespace Renderer
