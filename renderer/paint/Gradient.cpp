#include <renderer/paint/Gradient.h>

#include <algorithm>
#include <cmath>

#include <renderer/paint/ColourVisitor.h>

namespace Renderer {

namespace {

/// Clamps to 0…1; not-a-number becomes \p fallback.
double ToUnit(double value, double fallback)
{
    return std::isnan(value) ? fallback : std::clamp(value, 0.0, 1.0);
}

bool IsSameStop(const Gradient::ColourPosition& a, const Gradient::ColourPosition& b)
{
    constexpr double Tolerance = 1e-6;
    return a.colour == b.colour && std::abs(a.position - b.position) <= Tolerance &&
           std::abs(a.midpoint - b.midpoint) <= Tolerance &&
           std::abs(a.smoothness - b.smoothness) <= Tolerance;
}

} // namespace

Gradient::Gradient(std::vector<ColourPosition> stops) : m_stops(std::move(stops))
{
    std::erase_if(m_stops, [](const ColourPosition& stop) { return !stop.colour; });
    double previous = 0.0;
    for (ColourPosition& stop : m_stops) {
        stop.position = std::max(ToUnit(stop.position, 0.0), previous);
        stop.midpoint = ToUnit(stop.midpoint, 0.5);
        stop.smoothness = ToUnit(stop.smoothness, 0.0);
        previous = stop.position;
    }
}

Gradient::~Gradient() = default;

Kernel::Consolidated<Gradient> Gradient::Create(std::vector<ColourPosition> stops)
{
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(
        Kernel::MakeCounted<Gradient>(std::move(stops)));
}

const Kernel::SharedClassProperties& Gradient::GetTypeSharedClassProperties()
{
    static const auto& record = *new Kernel::SharedClassProperties;
    return record;
}

const Kernel::SharedClassProperties& Gradient::GetObjectSharedClassProperties() const
{
    return GetTypeSharedClassProperties();
}

void Gradient::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(m_stops.size());
    for (const ColourPosition& stop : m_stops) {
        hash.AddAddress(stop.colour.Get());
        hash.Add(stop.position);
        hash.Add(stop.midpoint);
        hash.Add(stop.smoothness);
    }
}

bool Gradient::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return std::ranges::equal(m_stops, static_cast<const Gradient&>(other).m_stops, IsSameStop);
}

Kernel::Counted<Gradient> Gradient::Clone() const
{
    return Kernel::MakeCounted<Gradient>(*this);
}

bool Gradient::HasNonLinearMapping() const noexcept
{
    return std::ranges::any_of(
        m_stops, [](const ColourPosition& stop) { return !stop.GetMapping().IsLinear(); });
}

double Gradient::GetMeanAlpha() const
{
    if (m_stops.empty())
        return 0.0;
    const ColourPosition& last = m_stops.back();
    double sum = m_stops.front().colour->GetAlphaF() * m_stops.front().position +
                 last.colour->GetAlphaF() * (1.0 - last.position);
    for (std::size_t i = 0; i + 1 < m_stops.size(); ++i) {
        const double from = m_stops[i].colour->GetAlphaF();
        const double to = m_stops[i + 1].colour->GetAlphaF();
        const double width = m_stops[i + 1].position - m_stops[i].position;
        sum += width * (from + (to - from) * m_stops[i].GetMapping().MeanMix());
    }
    return sum;
}

Kernel::Consolidated<Gradient> Gradient::Accept(ColourVisitor& visitor) const
{
    std::vector<ColourPosition> stops = m_stops;
    for (ColourPosition& stop : stops) {
        if (const auto answer = stop.colour->Accept(visitor))
            stop.colour = Colour::Consolidate(answer);
    }
    return Create(std::move(stops));
}

} // namespace Renderer
