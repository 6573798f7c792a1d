#pragma once

#include <random>
#include <type_traits>

#include <raster/Buffer.h>

/// The pixel types that buffers store, for loops over all of them.
template<class Function>
void ForEachPixelType(const Function& function)
{
    using namespace Raster;
    for (const auto format :
         {Format::RGBA8, Format::RGBA16, Format::IA8, Format::IA16, Format::CMYKA8, Format::LABA16,
          Format::M8, Format::M16, Format::RGBAUF, Format::MF}) {
        SCOPED_TRACE("format " + std::to_string(int(format)));
        WithPixelOfFormat(format, false, [&](auto pixel) {
            function(pixel);
            return true;
        });
    }
}

/// A picture of random premultiplied pixels, a quarter each of them opaque and transparent.
template<class P>
Kernel::Counted<Raster::DynamicBuffer> MakePicture(unsigned width, unsigned height)
{
    const auto buffer = Raster::DynamicBuffer::Create(Raster::FormatOfPixel<P>, width, height);
    std::mt19937 random(width * 31 + height);
    std::uniform_real_distribution<double> unit(0, 1);
    for (unsigned y = 0; y < height; ++y) {
        P* row = reinterpret_cast<P*>(buffer->GetRow(y));
        for (unsigned x = 0; x < width; ++x) {
            const double kind = unit(random);
            const double alpha = kind < 0.25 ? 0 : kind < 0.5 ? 1 : unit(random);
            for (std::size_t c = 0; c < P::ChannelCount; ++c) {
                const double value = c == P::AlphaIndex ? alpha : alpha * unit(random);
                row[x][c] = static_cast<typename P::ChannelType>(value * P::Max);
            }
        }
    }
    return buffer;
}

template<class P>
const P& GetPixel(const Raster::DynamicBuffer& buffer, unsigned x, unsigned y)
{
    return reinterpret_cast<const P*>(buffer.GetRow(y))[x];
}
