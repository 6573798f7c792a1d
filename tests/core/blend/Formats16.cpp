#include "FormatsBody.h"

template BlendTests::Tables BlendTests::GetTables<Raster::PixelRGBA16>();
template BlendTests::Tables BlendTests::GetTables<Raster::PixelIA16>();
template BlendTests::Tables BlendTests::GetTables<Raster::PixelLABA16>();
