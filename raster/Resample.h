#pragma once

#include <kernel/Counted.h>
#include <raster/AffineTransform.h>
#include <raster/ColumnTable.h>
#include <raster/DynamicBuffer.h>
#include <raster/Export.h>
#include <raster/Format.h>
#include <raster/MappedPicture.h>
#include <raster/Pixel.h>

namespace Raster {

/// The next cheaper resampler; of the cheapest, itself.
constexpr ResamplerType GetCheaper(ResamplerType type) noexcept
{
    return static_cast<int>(type) > 0 ? static_cast<ResamplerType>(static_cast<int>(type) - 1)
                                      : ResamplerType::NearestNeighbour;
}

/// Pixels.
struct PictureSize
{
    unsigned width;
    unsigned height;

    friend bool operator==(const PictureSize&, const PictureSize&) noexcept = default;
};

/// The size to which ReduceByArea brings a picture of \p size before it is read through a map that
/// minifies it: a device pixel then covers at most one pixel per axis. Elsewhere the size as it is.
/// \param deviceToUnit takes device coordinates to the unit square that the picture occupies.
RASTER_EXPORT PictureSize GetReducedSize(PictureSize size,
                                         const AffineTransform::Params& deviceToUnit) noexcept;

/// Averages \p source down (never up) to \p width × \p height pixels: every result pixel is the
/// exact area-weighted mean of the premultiplied pixels that it covers. Both sides stay at least 1
/// and at most the source's. \return null when the memory cannot be had.
RASTER_EXPORT Kernel::Counted<const DynamicBuffer>
ReduceByArea(const Kernel::Counted<const DynamicBuffer>& source, unsigned width, unsigned height);

/// Which of the loops of a SpanSampler is used. Results are the same.
enum class SamplerCode
{
    Best,     ///< the fastest that this processor runs
    Baseline, ///< what every processor of the architecture runs
    General,  ///< no shorter way for maps along the rows of the source; shifts by parts of pixels
              ///< may differ by a step where the result lies midway between two
};

/// Reads a buffer through an affine map, span by span. Holds everything that is the same for all
/// pixels, and remembers what is the same for a column; serves one thread unless IsConcurrent.
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
    /// \param code for tests, which compare the loops.
    SpanSampler(Kernel::Counted<const DynamicBuffer> source,
                const AffineTransform::Params& deviceToUnit, ResamplerType up, ResamplerType down,
                ExtendType extend, SamplerCode code = SamplerCode::Best);

    /// Writes \p length premultiplied pixels from device pixel (x, y) on.
    void Sample(int x, int y, unsigned length, P* out)
    {
        m_sample(m_picture, &m_columns, x, y, length, out);
    }

    /// Whether the map only moves by whole pixels and reads each source pixel as it is.
    bool IsWholePixelTranslation() const noexcept { return m_isCopy; }
    /// Whether several threads may call Sample at once: it remembers nothing then.
    bool IsConcurrent() const noexcept { return m_isConcurrent; }
    /// Whether all pixels have full alpha if the source's have.
    bool KeepsOpacity() const noexcept { return m_keepsOpacity; }

private:
    void ChooseLoop(ResamplerType up, SamplerCode code) noexcept;

    Kernel::Counted<const DynamicBuffer> m_source; // reduced where the map minifies
    Resampling::MappedPicture m_picture;
    Resampling::SpanFunction m_sample;
    Resampling::ColumnTable<Resampling::RealOf<P>> m_columns;
    bool m_isCopy = false;
    bool m_keepsOpacity = false;
    bool m_isConcurrent = true;
};

} // namespace Raster
