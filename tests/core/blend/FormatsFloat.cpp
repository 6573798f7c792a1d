#include "FormatsBody.h"

template BlendTests::Tables BlendTests::GetTables<Raster::PixelRGBAUF>();
