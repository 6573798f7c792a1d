#include <renderer/paint/FillPixels.h>

#include <raster/Pixel.h>

namespace Renderer {

namespace {

template<class P>
double SumRow(const P* pixels, unsigned width)
{
    double sum = 0.0;
    for (unsigned x = 0; x < width; ++x)
        sum += static_cast<double>(pixels[x].Alpha());
    return sum;
}

} // namespace

double GetMeanAlphaOfPixels(const Raster::DynamicBuffer& buffer)
{
    buffer.SyncHostCache();
    return Raster::WithPixelOfFormat(buffer.GetFormat(), 1.0, [&](auto pixel) {
        using P = decltype(pixel);
        double sum = 0.0;
        for (unsigned y = 0; y < buffer.GetHeight(); ++y)
            sum += SumRow(reinterpret_cast<const P*>(buffer.GetRow(y)), buffer.GetWidth());
        return sum / (static_cast<double>(buffer.GetWidth()) * buffer.GetHeight() *
                      static_cast<double>(P::Max));
    });
}

} // namespace Renderer
