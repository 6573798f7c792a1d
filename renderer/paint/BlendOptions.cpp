#include <renderer/paint/BlendOptions.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include <kernel/FutureVersionException.h>
#include <kernel/SavedItems.h>
#include <renderer/paint/SavedCurve.h>

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
    return Kernel::SavedItems::IsDefault(m_blendGamma, DefaultBlendGamma);
}

bool BlendOptions::IsIdentitySpline(const Curve& curve)
{
    return !curve || curve->IsConstant(1.0);
}

template<class Self, class Items>
void BlendOptions::ListItems(Self& self, Items&& items)
{
    static constexpr std::array<Kernel::IDTag, 2 * (1 + ChannelCount)> CurveTags{
        "SMSp", "DMsp", "SC1S", "DC1S", "SC2S", "DC2S",
        "SC3S", "DC3S", "SC4S", "DC4S", "SC5S", "DC5S"};
    for (std::size_t i = 0; i < CurveTags.size(); ++i)
        items.OptionalObject(CurveTags[i], self.m_curves[i]);
    items.Optional("BGam", self.m_blendGamma, DefaultBlendGamma);
}

void BlendOptions::Save(Kernel::OutSerialiser& out) const
{
    ListItems(*this, Kernel::SavedItems::Writer(out));
    SavedCurve::Save(out, "AGam", m_antialiasingGamma);
}

bool BlendOptions::Load(const Kernel::InSerialiser& in, const Kernel::ClassUID& uid,
                        unsigned short version)
{
    if (uid != GetClassUID())
        return false;
    if (version > GetSchemaVersion())
        throw Kernel::FutureVersionException(uid, "BlendOptions", version, GetSchemaVersion());
    ListItems(*this, Kernel::SavedItems::Reader(in));
    m_antialiasingGamma = SavedCurve::Load(in, "AGam");
    return true;
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
           Kernel::SavedItems::AreClose(a.m_blendGamma, b.m_blendGamma) &&
           ArePointeesEqual(
               a.m_antialiasingGamma, b.m_antialiasingGamma,
               [](const auto& left, const auto& right) { return left.IsEqual(right, Tolerance); });
}

} // namespace Renderer
