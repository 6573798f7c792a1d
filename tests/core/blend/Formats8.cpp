#include "FormatsBody.h"

template BlendTests::Tables BlendTests::GetTables<Raster::PixelRGBA8>();
template BlendTests::Tables BlendTests::GetTables<Raster::PixelIA8>();
template BlendTests::Tables BlendTests::GetTables<Raster::PixelCMYKA8>();
