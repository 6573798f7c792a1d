#include <raster/SpanSamplerImpl.h>

template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelRGBAUF>;
template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelAlphaF>;
