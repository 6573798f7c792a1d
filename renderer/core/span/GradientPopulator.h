#pragma once

#include <algorithm>
#include <type_traits>

#include <renderer/core/span/GradientRamp.h>
#include <renderer/core/span/GradientSpread.h>
#include <renderer/core/span/GradientTable.h>
#include <renderer/core/span/NoiseField.h>

namespace Renderer {

/// Paints a gradient: parameters of a block of pixels, folded, then looked up. A parameter is
/// computed from the pixel's own centre, so that a pixel's colour does not depend on the span that
/// holds it.
///
/// \tparam PositionsT the geometry of a kind of gradient: `Compute(x, y, count, double* t)`.
/// \tparam HasNoise adds the grain of the stops' noise amounts.
template<class ProcessorT, class PositionsT, bool HasNoise>
class GradientPopulator
{
public:
    using Processor = ProcessorT;
    using Pixel = typename Processor::Pixel;
    using Ramp = GradientRamp<Processor>;

    /// \pre \p gradient has stops. What the populator refers to lives in \p store.
    GradientPopulator(const PositionsT& positions, const Gradient& gradient,
                      FillGradient::Spread spread, const typename Processor::Profiles& profiles,
                      PopulatorStore& store)
        : m_positions(positions),
          m_spread(spread),
          m_ramp(store.Emplace<Ramp>(gradient, profiles, store)),
          m_colours(MakeColours(m_ramp, store))
    {}

    void Populate(int x, int y, unsigned length, Pixel* out) noexcept
    {
        while (length > 0) {
            double t[Processor::BlockLength];
            const unsigned count = std::min(length, Processor::BlockLength);
            m_positions.Compute(x, y, count, t);
            GradientSpread::Fold(m_spread, t, count);
            m_colours.Evaluate(t, count, out);
            if constexpr (HasNoise)
                AddNoise(x, y, count, t, out);
            out += count;
            x += static_cast<int>(count);
            length -= count;
        }
    }

private:
    /// The table where the format gains by one, else the ramp itself.
    using Colours =
        std::conditional_t<Processor::UsesTables, GradientTable<Processor>&, const Ramp&>;

    static Colours MakeColours(const Ramp& ramp, [[maybe_unused]] PopulatorStore& store)
    {
        if constexpr (Processor::UsesTables)
            return store.Emplace<GradientTable<Processor>>(ramp, store);
        else
            return ramp;
    }

    void AddNoise(int x, int y, unsigned count, const double* t, Pixel* out) const noexcept
    {
        float amounts[Processor::BlockLength];
        m_ramp.EvaluateNoise(t, count, amounts);
        for (unsigned i = 0; i < count; ++i)
            NoiseShader<Processor>(amounts[i]).Apply(x + static_cast<int>(i), y, 1, out + i);
    }

    PositionsT m_positions;
    FillGradient::Spread m_spread;
    const Ramp& m_ramp;
    Colours m_colours;
};

} // namespace Renderer
