#include <renderer/core/blend/BlendTableBody.h>

template class Renderer::RenderTargetBlender<Raster::PixelCMYKA8>;
