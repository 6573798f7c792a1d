#pragma once

#include <cstdint>

#include <kernel/Counted.h>
#include <raster/AffineTransform.h>
#include <raster/DynamicBuffer.h>
#include <raster/Export.h>
#include <raster/Format.h>
#include <raster/Pixel.h>

namespace Raster {

namespace Resampling {
class ExtendedAxis;
}

/// Averages \p source down (never up) to \p width × \p height pixels: every result pixel is the
/// exact area-weighted mean of the premultiplied pixels that it covers. Both sides stay at least 1
/// and at most the source's. \return null when the memory cannot be had.
RASTER_EXPORT Kernel::Counted<const DynamicBuffer>
ReduceByArea(const Kernel::Counted<const DynamicBuffer>& source, unsigned width, unsigned height);

/// Reads a buffer through an affine map, span by span. Holds everything that is the same for all
/// pixels; may be used from many threads at once.
///
/// The map takes device pixel centres (x + ½, y + ½) into the unit square that the buffer occupies.
/// Where it minifies and \p down is not NearestNeighbour, the buffer is first reduced by area so
/// that a device pixel covers at most one source pixel per axis; then \p up interpolates.
///
/// Beyond the unit square, Clamp repeats the edge pixels, Transparent is transparent, Wrap and
/// Mirror repeat the picture, and MirrorOnce mirrors it at 0 and clamps from 1 on. Interpolation
/// reads across the edges by the same rule. Integer results keep 0 ≤ colour ≤ alpha with every
/// filter, float results 0 ≤ alpha ≤ 1. Maps that are singular or not finite give transparent
/// pixels. A pixel's result depends on its position alone, not on where spans begin.
template<class P>
class RASTER_EXPORT SpanSampler
{
public:
    /// \param source a buffer that stores P, kept alive by the sampler.
    /// \param deviceToUnit the inverse of the fill's placement on the device.
    SpanSampler(Kernel::Counted<const DynamicBuffer> source,
                const AffineTransform::Params& deviceToUnit, ResamplerType up, ResamplerType down,
                ExtendType extend);

    /// Writes \p length premultiplied pixels from device pixel (x, y) on.
    void Sample(int x, int y, unsigned length, P* out) const
    {
        (this->*m_sample)(x, y, length, out);
    }

    /// Whether the map only moves by whole pixels and reads each source pixel as it is.
    bool IsWholePixelTranslation() const noexcept { return m_wholePixels; }

private:
    using SampleFunction = void (SpanSampler::*)(int, int, unsigned, P*) const;

    void SampleTransparent(int x, int y, unsigned length, P* out) const;
    void SampleCopy(int x, int y, unsigned length, P* out) const;
    void SampleNearest(int x, int y, unsigned length, P* out) const;
    template<class Filter>
    void SampleFiltered(int x, int y, unsigned length, P* out) const;

    void GatherRow(const Resampling::ExtendedAxis& xAxis, int first, int row, P* out,
                   int count) const;

    bool SetMap(const AffineTransform::Params& deviceToUnit, bool reduce);
    bool SetWholePixels();
    const P* GetRow(int y) const noexcept
    {
        return reinterpret_cast<const P*>(m_source->GetRow(unsigned(y)));
    }

    Kernel::Counted<const DynamicBuffer> m_source; // reduced where the map minifies
    AffineTransform::Params m_deviceToSource;      // to source pixels
    ExtendType m_extend;
    SampleFunction m_sample = &SpanSampler::SampleTransparent;
    bool m_wholePixels = false;
    std::int64_t m_offsetX = 0; // of whole-pixel translations
    std::int64_t m_offsetY = 0;
};

} // namespace Raster
