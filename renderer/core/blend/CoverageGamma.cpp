#include <renderer/core/blend/CoverageGamma.h>

#include <cmath>

namespace Renderer::Blending {

namespace {

CoverageGamma MakeCoverageGamma(double ratio)
{
    CoverageGamma gamma{ratio, {}, {}};
    for (std::size_t cover = 1; cover < 256; ++cover) {
        const double value = std::pow(static_cast<double>(cover) / 255.0, ratio);
        gamma.fractions[cover] = static_cast<float>(value);
        gamma.words[cover] = static_cast<std::uint16_t>(std::lround(value * 65535.0));
    }
    return gamma;
}

} // namespace

const CoverageGamma& GetCoverageGamma(double ratio)
{
    if (!(ratio >= 0.0) || !std::isfinite(ratio))
        ratio = 1.0;
    thread_local CoverageGamma gamma = MakeCoverageGamma(1.0);
    if (gamma.ratio != ratio)
        gamma = MakeCoverageGamma(ratio);
    return gamma;
}

} // namespace Renderer::Blending
