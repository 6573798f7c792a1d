#include <raster/SpanSamplerImpl.h>

template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelRGBA8>;
template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelIA8>;
template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelCMYKA8>;
template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelAlpha8>;
