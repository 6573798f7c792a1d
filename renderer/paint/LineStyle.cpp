#include <renderer/paint/LineStyle.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>

#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>
#include <kernel/SavedItems.h>

namespace Renderer {

namespace {

/// Weights up to this draw nothing.
constexpr double Tolerance = Kernel::SavedItems::Tolerance;

bool AreEqual(const Kernel::Counted<const Raster::RasterBrush>& a,
              const Kernel::Counted<const Raster::RasterBrush>& b)
{
    return a == b || (a && b && *a == *b);
}

/// Takes over the byte of an enum's value; one beyond the last value leaves the default.
template<class Enum>
void SetFromByte(Enum& value, std::uint8_t byte, Enum last)
{
    if (byte <= static_cast<std::uint8_t>(last))
        value = static_cast<Enum>(byte);
}

} // namespace

LineStyle::LineStyle(double weight, bool resIndependent)
    : m_type(Solid), m_weight(weight), m_resIndependent(resIndependent)
{}

LineStyle::~LineStyle() = default;

Kernel::Consolidated<LineStyle> LineStyle::Consolidate(const LineStyle& style)
{
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(style.Clone());
}

const Kernel::SharedClassProperties& LineStyle::GetTypeSharedClassProperties()
{
    static const auto& record = *new Kernel::SharedClassProperties(
        "LSty", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "LineStyle");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = LineStyle::GetTypeSharedClassProperties();

} // namespace

void LineStyle::Save(Kernel::OutSerialiser& out) const
{
    out.SavePropStructI("Data", m_miterLimit, static_cast<std::uint8_t>(m_cap),
                        static_cast<std::uint8_t>(m_join), static_cast<std::uint8_t>(m_type),
                        m_resIndependent);
    out.SaveTypeI("Wght", m_weight);
    // A brush without a tip paints nothing, and loads as an error.
    out.SaveObject("Brus", m_brush && m_brush->GetTip() ? m_brush : decltype(m_brush)());
    if (!Kernel::SavedItems::AreClose(m_dashPhase, 0.0))
        out.SaveTypeI("Phse", m_dashPhase);
    if (!m_dashPattern.empty())
        out.SaveTypeArrayI("Patn", m_dashPattern);
}

bool LineStyle::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    std::uint8_t cap = 0, join = 0, type = 0;
    if (in.LoadPropStructI("Data", m_miterLimit, cap, join, type, m_resIndependent)) {
        SetFromByte(m_cap, cap, RoundCap);
        SetFromByte(m_join, join, BevelJoin);
        SetFromByte(m_type, type, RasterBrush);
    }
    in.LoadTypeI("Wght", m_weight);
    in.LoadTypeI("Phse", m_dashPhase);
    in.LoadTypeArrayI("Patn", m_dashPattern);
    Kernel::Counted<Raster::RasterBrush> brush;
    if (in.LoadObjectI("Brus", brush))
        m_brush = std::move(brush);
    return true;
}

void LineStyle::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(m_cap);
    hash.Add(m_join);
    hash.Add(m_type);
    hash.Add(m_weight);
    hash.Add(m_miterLimit);
    hash.Add(m_dashPhase);
    hash.Add(m_dashPattern.size());
    for (const double length : m_dashPattern)
        hash.Add(length);
    hash.Add(m_resIndependent);
    if (m_brush)
        m_brush->AccumulateHash(hash);
}

bool LineStyle::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    const auto& style = static_cast<const LineStyle&>(other);
    return m_cap == style.m_cap && m_join == style.m_join && m_type == style.m_type &&
           Kernel::SavedItems::AreClose(m_weight, style.m_weight) &&
           Kernel::SavedItems::AreClose(m_miterLimit, style.m_miterLimit) &&
           Kernel::SavedItems::AreClose(m_dashPhase, style.m_dashPhase) &&
           m_resIndependent == style.m_resIndependent && AreEqual(m_brush, style.m_brush) &&
           std::ranges::equal(m_dashPattern, style.m_dashPattern, Kernel::SavedItems::AreClose);
}

Kernel::Counted<LineStyle> LineStyle::Clone() const
{
    return Kernel::MakeCounted<LineStyle>(*this);
}

void LineStyle::SetDashPattern(std::vector<double> pattern)
{
    m_dashPattern = std::move(pattern);
    if (!m_dashPattern.empty() && m_type == Solid)
        m_type = Dashed;
}

bool LineStyle::IsVisible() const noexcept
{
    return m_type != None && std::abs(m_weight) > Tolerance;
}

bool LineStyle::GetPostScriptCap(LineCap cap, int& number) noexcept
{
    switch (cap) {
    case ButtCap:
        number = 0;
        return true;
    case SquareCap:
        number = 2;
        return true;
    case RoundCap:
        number = 1;
        return true;
    }
    return false;
}

bool LineStyle::GetPostScriptJoin(LineJoin join, int& number) noexcept
{
    switch (join) {
    case MitreJoin:
        number = 0;
        return true;
    case RoundJoin:
        number = 1;
        return true;
    case BevelJoin:
        number = 2;
        return true;
    case NoJoin:
        break;
    }
    return false;
}

double LineStyle::GetReachPerWeight() const noexcept
{
    const double cap = m_cap == SquareCap ? std::numbers::sqrt2 : 1.0;
    const double join = m_join == MitreJoin ? m_miterLimit : 1.0;
    const double brush = PaintsWithBrush() ? m_brush->GetReach() : 0.0;
    return std::max(0.5 * std::max(cap, join), brush);
}

double LineStyle::GetLineInflationPixels96() const noexcept
{
    return IsVisible() ? std::abs(m_weight) * GetReachPerWeight() : 0.0;
}

} // namespace Renderer
