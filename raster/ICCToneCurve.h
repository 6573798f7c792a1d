#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include <lcms2.h>

namespace Raster {

/// A monotone tone curve through (0, 0) and (1, 1), or its inverse, on the whole real line.
///
/// Below 0 it is odd: f(−x) = −f(x). Above 1 a parametric curve goes on by its own formula, and a
/// sampled one as the power of its slope at 1, so that either has an inverse everywhere.
///
/// Evaluation interpolates a table over the float's own exponent and leading mantissa bits, which
/// keeps the relative error below 3e-6 from 2⁻³⁰ to 2²⁰ for powers up to 3.
class ICCToneCurve
{
public:
    /// \return null when the curve is not of this kind; it must then be left to Little CMS.
    static std::shared_ptr<const ICCToneCurve> Make(const cmsToneCurve& curve, bool inverse);

    float Evaluate(float x) const noexcept
    {
        const float magnitude = std::abs(x);
        float y;
        if (magnitude < Lowest) [[unlikely]] {
            y = magnitude * m_lowSlope;
        } else if (magnitude < Highest) [[likely]] {
            const std::uint32_t bits = std::bit_cast<std::uint32_t>(magnitude) - LowestBits;
            const std::uint32_t index = bits >> FractionBits;
            const float fraction = static_cast<float>(bits & FractionMask) * FractionScale;
            y = m_table[index] + fraction * (m_table[index + 1] - m_table[index]);
        } else {
            y = m_table.back() * std::pow(magnitude / Highest, m_highExponent);
        }
        return std::copysign(y, x);
    }

private:
    static constexpr float Lowest = 0x1p-30f;
    static constexpr float Highest = 0x1p20f;
    static constexpr unsigned Octaves = 50;
    static constexpr unsigned StepsPerOctave = 512;
    static constexpr unsigned FractionBits = 23 - 9;
    static constexpr std::uint32_t FractionMask = (1u << FractionBits) - 1;
    static constexpr float FractionScale = 1.0f / float(1u << FractionBits);
    static constexpr std::uint32_t LowestBits = std::bit_cast<std::uint32_t>(Lowest);

    ICCToneCurve() = default;

    template<class Function>
    static std::shared_ptr<const ICCToneCurve> Sample(const Function& function);

    std::vector<float> m_table;
    float m_lowSlope = 0;
    float m_highExponent = 1;
};

/// Whether two curves are the same function, so that they can share a table.
bool AreCurvesEqual(const cmsToneCurve& a, const cmsToneCurve& b);

} // namespace Raster
