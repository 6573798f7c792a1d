#include <renderer/core/span/PopulatorFactoryImpl.h>

namespace Renderer {

template class PopulatorFactory<PixProcessor_RGBA>;
template class PopulatorFactory<PixProcessor_RGBA_Alpha>;

} // namespace Renderer
