#include <renderer/core/blend/BlendTableBody.h>

template const Renderer::SpanBlendTable& Renderer::GetSpanBlendTable<Raster::PixelRGBA8>();
