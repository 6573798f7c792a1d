#pragma once

#include <utility>

#include <kernel/Counted.h>
#include <raster/AffineTransform.h>
#include <raster/DynamicBuffer.h>
#include <raster/Resample.h>

namespace Renderer {

/// Paints the pixels of a bitmap or buffer that occupies the unit square of its frame.
template<class ProcessorT>
class BitmapPopulator
{
public:
    using Processor = ProcessorT;
    using Pixel = typename Processor::Pixel;

    /// \param source premultiplied pixels of the processor's format; kept alive.
    /// \param up interpolates where the bitmap is magnified, \p down averages where it is minified.
    /// \param isOpaque whether all pixels of the source are known to have full alpha.
    BitmapPopulator(Kernel::Counted<const Raster::DynamicBuffer> source,
                    const Raster::AffineTransform::Params& deviceToUnit, Raster::ResamplerType up,
                    Raster::ResamplerType down, Raster::ExtendType extend, bool isOpaque)
        : m_sampler(std::move(source), deviceToUnit, up, down, extend),
          m_isOpaque(isOpaque && m_sampler.KeepsOpacity())
    {}

    bool IsOpaque() const noexcept { return m_isOpaque; }
    bool IsConcurrent() const noexcept { return m_sampler.IsConcurrent(); }

    void Populate(int x, int y, unsigned length, Pixel* out)
    {
        m_sampler.Sample(x, y, length, out);
        if constexpr (Processor::IsAlphaOnly) {
            for (unsigned i = 0; i < length; ++i) {
                const auto alpha = out[i].Alpha();
                out[i] = {};
                out[i].Alpha() = alpha;
            }
        }
    }

private:
    Raster::SpanSampler<Pixel> m_sampler;
    bool m_isOpaque;
};

} // namespace Renderer
