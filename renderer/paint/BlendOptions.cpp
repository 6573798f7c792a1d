#include <renderer/paint/BlendOptions.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace Renderer {

namespace {

constexpr double Tolerance = 1e-6;

template<class T, class Equal>
bool ArePointeesEqual(const Kernel::Counted<T>& a, const Kernel::Counted<T>& b, Equal equal)
{
    return a == b || (a && b && equal(*a, *b));
}

/// Adds the points of a curve, and whether there is one.
template<class T>
void AddPoints(Kernel::HashAccumulator& hash, const Kernel::Counted<T>& curve)
{
    hash.Add(curve ? curve->GetPoints().size() : std::size_t{0});
    if (!curve)
        return;
    for (const auto& point : curve->GetPoints()) {
        hash.Add(point.x);
        hash.Add(point.y);
    }
}

} // namespace

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
    return std::abs(m_blendGamma - DefaultBlendGamma) <= Tolerance;
}

bool BlendOptions::IsIdentitySpline(const Curve& curve)
{
    return !curve || curve->IsConstant(1.0);
}

void BlendOptions::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    for (const Curve& curve : m_curves)
        AddPoints(hash, curve);
    hash.Add(m_blendGamma);
    AddPoints(hash, m_antialiasingGamma);
}

bool operator==(const BlendOptions& a, const BlendOptions& b)
{
    const auto areSame = [](const auto& left, const auto& right) {
        return ArePointeesEqual(left, right, std::equal_to<>());
    };
    return std::ranges::equal(a.m_curves, b.m_curves, areSame) &&
           std::abs(a.m_blendGamma - b.m_blendGamma) <= Tolerance &&
           ArePointeesEqual(
               a.m_antialiasingGamma, b.m_antialiasingGamma,
               [](const auto& left, const auto& right) { return left.IsEqual(right, Tolerance); });
}

} // namespace Renderer
