#include <renderer/paint/BlendOptions.h>

#include <algorithm>
#include <cmath>

namespace Renderer {

const BlendOptions& BlendOptions::Identity()
{
    static const auto& identity = *new BlendOptions;
    return identity;
}

const BlendOptions::Curve& BlendOptions::GetMasterCurve(Side side) const noexcept
{
    return m_curves[Index(side, 0)];
}

void BlendOptions::SetMasterCurve(Side side, Curve curve)
{
    m_curves[Index(side, 0)] = std::move(curve);
}

const BlendOptions::Curve& BlendOptions::GetChannelCurve(Side side, int channel) const noexcept
{
    return m_curves[Index(side, 1 + channel)];
}

void BlendOptions::SetChannelCurve(Side side, int channel, Curve curve)
{
    m_curves[Index(side, 1 + channel)] = std::move(curve);
}

void BlendOptions::SetAntialiasingGamma(Kernel::Counted<const Geometry::CurveDbl> curve)
{
    m_antialiasingGamma = std::move(curve);
}

bool BlendOptions::IsIdentity() const
{
    return IsIdentityCurves() && IsIdentityBlendGamma() && IsIdentityAntialiasingGamma();
}

bool BlendOptions::IsIdentityCurves() const
{
    return std::ranges::all_of(m_curves, IsIdentitySpline);
}

bool BlendOptions::IsIdentityBlendGamma() const noexcept
{
    return std::abs(m_blendGamma - DefaultBlendGamma) <= 1e-6;
}

bool BlendOptions::IsIdentitySpline(const Curve& curve)
{
    return !curve || curve->IsConstant(1.0);
}

} // namespace Renderer
