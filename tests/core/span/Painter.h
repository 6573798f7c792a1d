#pragma once

#include <vector>

#include <renderer/core/span/PopulatorFactory.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillSolid.h>

#include "Formats.h"

namespace Renderer {

using Params = Raster::AffineTransform::Params;

/// Makes populators as a target does and runs them over spans.
template<class P>
class Painter
{
public:
    using Processor = PixProcessor<P, false>;

    bool Make(const Fill& fill, const Params& map, PopulatorRole role = PopulatorRole::Colour)
    {
        return MakePopulator<Processor>(fill, map, role, m_context, m_store, m_populator);
    }

    /// The pixels of a span; \p scratch is what it holds before.
    std::vector<P> Run(int x, int y, std::vector<P> scratch) const
    {
        m_populator.function(m_populator.context, scratch.data(), x, y,
                             static_cast<unsigned>(scratch.size()));
        return scratch;
    }

    /// Makes the populator and paints a rectangle, row by row.
    std::vector<P> Paint(const Fill& fill, const Params& map, const Kernel::RectT<int>& rect)
    {
        std::vector<P> result;
        if (!Make(fill, map))
            return result;
        for (int y = rect.top; y < rect.bottom; ++y) {
            const auto row =
                Run(rect.left, y, std::vector<P>(static_cast<std::size_t>(rect.Width())));
            result.insert(result.end(), row.begin(), row.end());
        }
        return result;
    }

    Raster::ICCManager::ICCProfileSet m_profiles;
    BitmapCache m_bitmaps;
    GradientCache m_gradients;
    PopulatorStore m_store;
    PopulatorContext m_context{m_profiles, Raster::ResamplerType::Bilinear, nullptr, {}, m_bitmaps,
                               m_gradients};
    SpanPopulator m_populator;
};

inline Kernel::Consolidated<Colour> MakeColour(float r, float g, float b, float a,
                                               double noise = 0.0)
{
    const auto colour = ColourRGB::CreateFakeTemporary(Raster::PixelRGBAF{{r, g, b, a}});
    colour->SetNoise(noise);
    return Colour::Consolidate(colour);
}

inline Kernel::Consolidated<FillSolid> MakeSolid(float r, float g, float b, float a,
                                                 double noise = 0.0)
{
    return FillSolid::Create(MakeColour(r, g, b, a, noise));
}

} // namespace Renderer
