#include <raster/SpanSamplerImpl.h>

template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelRGBA16>;
template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelIA16>;
template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelLABA16>;
template class RASTER_EXPORT Raster::SpanSampler<Raster::PixelAlpha16>;
