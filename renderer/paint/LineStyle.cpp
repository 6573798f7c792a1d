#include <renderer/paint/LineStyle.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace Renderer {

namespace {

/// Lengths that differ by no more than this are equal; weights up to it draw nothing.
constexpr double Tolerance = 1e-6;

bool IsClose(double a, double b)
{
    return std::abs(a - b) <= Tolerance;
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
    static const auto& record = *new Kernel::SharedClassProperties;
    return record;
}

const Kernel::SharedClassProperties& LineStyle::GetObjectSharedClassProperties() const
{
    return GetTypeSharedClassProperties();
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
}

bool LineStyle::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    const auto& style = static_cast<const LineStyle&>(other);
    return m_cap == style.m_cap && m_join == style.m_join && m_type == style.m_type &&
           IsClose(m_weight, style.m_weight) && IsClose(m_miterLimit, style.m_miterLimit) &&
           IsClose(m_dashPhase, style.m_dashPhase) && m_resIndependent == style.m_resIndependent &&
           std::ranges::equal(m_dashPattern, style.m_dashPattern, IsClose);
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
    return 0.5 * std::max(cap, join);
}

double LineStyle::GetLineInflationPixels96() const noexcept
{
    return IsVisible() ? std::abs(m_weight) * GetReachPerWeight() : 0.0;
}

} // namespace Renderer
