#include <raster/ICCToneCurve.h>

#include <algorithm>
#include <span>

#include <raster/ICCLcms.h>

namespace Raster {

namespace {

/// How far a curve may miss (0, 0) and (1, 1): the rounding of an s15Fixed16 or a 16-bit entry, and
/// of profile makers' own arithmetic.
constexpr double EndTolerance = 1e-4;

bool IsParametric(const cmsToneCurve& curve)
{
    return cmsGetToneCurveParametricType(&curve) != 0;
}

std::span<const cmsUInt16Number> GetSamples(const cmsToneCurve& curve)
{
    return {cmsGetToneCurveEstimatedTable(&curve), cmsGetToneCurveEstimatedTableEntries(&curve)};
}

/// A curve of equally spaced 16-bit samples over 0…1, in double precision; Little CMS would round
/// its input and output to 16 bits.
class SampledCurve
{
public:
    explicit SampledCurve(std::span<const cmsUInt16Number> samples) : m_samples(samples)
    {
        // The slope at 1 over the last 64th part, so that the rounding of one entry matters little.
        const std::size_t last = samples.size() - 1;
        const std::size_t before = last - std::max<std::size_t>(1, last / 64);
        const double rise = (samples[last] - samples[before]) / 65535.0;
        m_exponent = rise * double(last) / double(last - before);
    }

    /// Monotone, from 0 to 1, and rising at the end.
    bool IsUsable() const
    {
        return m_samples.front() == 0 && m_samples.back() == 65535 && m_exponent > 0.1 &&
               std::ranges::is_sorted(m_samples);
    }

    double Forward(double x) const
    {
        if (x >= 1)
            return std::pow(x, m_exponent);
        const double position = x * double(m_samples.size() - 1);
        const auto index = static_cast<std::size_t>(position);
        const double low = m_samples[index], high = m_samples[index + 1];
        return (low + (position - double(index)) * (high - low)) / 65535;
    }

    double Inverse(double y) const
    {
        if (y >= 1)
            return std::pow(y, 1 / m_exponent);
        const double value = y * 65535;
        const auto above = std::ranges::upper_bound(m_samples, value);
        const double low = above[-1], high = above[0];
        const double index = double(above - m_samples.begin() - 1);
        return (index + (value - low) / (high - low)) / double(m_samples.size() - 1);
    }

private:
    std::span<const cmsUInt16Number> m_samples;
    double m_exponent = 1;
};

double EvaluateParametric(const cmsToneCurve* curve, double x)
{
    return cmsEvalToneCurveFloat(curve, static_cast<cmsFloat32Number>(x));
}

/// Whether a parametric curve has its ends at 0 and 1, and \p inverse really inverts it.
bool IsUsable(const cmsToneCurve* curve, const cmsToneCurve* inverse)
{
    if (!inverse || !IsParametric(*inverse))
        return false;
    constexpr int steps = 64;
    for (int i = 0; i <= 2 * steps; ++i) {
        const double x = double(i) / steps;
        const double y = EvaluateParametric(curve, x);
        if (!(std::abs(EvaluateParametric(inverse, y) - x) <= EndTolerance))
            return false;
    }
    return std::abs(EvaluateParametric(curve, 0)) <= EndTolerance &&
           std::abs(EvaluateParametric(curve, 1) - 1) <= EndTolerance;
}

} // namespace

template<class Function>
std::shared_ptr<const ICCToneCurve> ICCToneCurve::Sample(const Function& function)
{
    std::shared_ptr<ICCToneCurve> result(new ICCToneCurve);
    result->m_table.reserve(Octaves * StepsPerOctave + 1);
    for (std::uint32_t i = 0; i <= Octaves * StepsPerOctave; ++i) {
        const auto x = std::bit_cast<float>(LowestBits + (i << FractionBits));
        result->m_table.push_back(static_cast<float>(function(double(x))));
    }
    const auto& table = result->m_table;
    const bool isFinite =
        std::ranges::all_of(table, [](float value) { return std::isfinite(value) && value >= 0; });
    if (!isFinite || !std::ranges::is_sorted(table) || table.back() <= 1)
        return nullptr;
    result->m_lowSlope = table.front() / Lowest;
    result->m_highExponent = std::log2(table.back() / table[table.size() - 1 - StepsPerOctave]);
    return result;
}

std::shared_ptr<const ICCToneCurve> ICCToneCurve::Make(const cmsToneCurve& curve, bool inverse)
{
    if (IsParametric(curve)) {
        const LcmsToneCurve reversed(cmsReverseToneCurve(&curve));
        if (!IsUsable(&curve, reversed.get()))
            return nullptr;
        const cmsToneCurve* chosen = inverse ? reversed.get() : &curve;
        return Sample([chosen](double x) { return EvaluateParametric(chosen, x); });
    }
    const auto samples = GetSamples(curve);
    if (samples.size() < 2 || cmsIsToneCurveMultisegment(&curve))
        return nullptr;
    const SampledCurve sampled(samples);
    if (!sampled.IsUsable())
        return nullptr;
    if (inverse)
        return Sample([&](double y) { return sampled.Inverse(y); });
    return Sample([&](double x) { return sampled.Forward(x); });
}

bool AreCurvesEqual(const cmsToneCurve& a, const cmsToneCurve& b)
{
    const int type = cmsGetToneCurveParametricType(&a);
    if (type != cmsGetToneCurveParametricType(&b))
        return false;
    if (type == 0)
        return std::ranges::equal(GetSamples(a), GetSamples(b));
    constexpr int maxParameters = 10;
    return std::equal(cmsGetToneCurveParams(&a), cmsGetToneCurveParams(&a) + maxParameters,
                      cmsGetToneCurveParams(&b));
}

} // namespace Raster
