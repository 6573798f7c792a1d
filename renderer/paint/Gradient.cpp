#include <renderer/paint/Gradient.h>

#include <algorithm>
#include <cmath>

#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>
#include <renderer/paint/ColourVisitor.h>

namespace Renderer {

namespace {

/// Clamps to 0…1; not-a-number becomes \p fallback.
double ToUnit(double value, double fallback)
{
    return std::isnan(value) ? fallback : std::clamp(value, 0.0, 1.0);
}

constexpr double Tolerance = 1e-6;

/// Stops as a gradient keeps them.
std::vector<Gradient::ColourPosition> Normalise(std::vector<Gradient::ColourPosition> stops)
{
    std::erase_if(stops, [](const auto& stop) { return !stop.colour; });
    double previous = 0.0;
    for (Gradient::ColourPosition& stop : stops) {
        stop.position = std::max(ToUnit(stop.position, 0.0), previous);
        stop.midpoint = ToUnit(stop.midpoint, 0.5);
        stop.smoothness = ToUnit(stop.smoothness, 0.0);
        previous = stop.position;
    }
    return stops;
}

bool IsSameStop(const Gradient::ColourPosition& a, const Gradient::ColourPosition& b)
{
    return a.colour == b.colour && std::abs(a.position - b.position) <= Tolerance &&
           std::abs(a.midpoint - b.midpoint) <= Tolerance &&
           std::abs(a.smoothness - b.smoothness) <= Tolerance;
}

} // namespace

Gradient::Gradient(std::vector<ColourPosition> stops) : m_stops(Normalise(std::move(stops))) {}

Gradient::~Gradient() = default;

Kernel::Consolidated<Gradient> Gradient::Create(std::vector<ColourPosition> stops)
{
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(
        Kernel::MakeCounted<Gradient>(std::move(stops)));
}

const Kernel::SharedClassProperties& Gradient::GetTypeSharedClassProperties()
{
    static const auto& record = *new Kernel::SharedClassProperties(
        "Grad", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "Gradient");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = Gradient::GetTypeSharedClassProperties();

} // namespace

void Gradient::Save(Kernel::OutSerialiser& out) const
{
    if (out.IsFullSave()) {
        std::vector<double> pairs, smoothness;
        for (const ColourPosition& stop : m_stops) {
            pairs.insert(pairs.end(), {stop.position, stop.midpoint});
            smoothness.push_back(stop.smoothness);
        }
        out.SaveTypeArrayI("Posn", pairs);
        if (std::ranges::any_of(smoothness, [](double value) { return value > Tolerance; }))
            out.SaveTypeArrayI("Smth", smoothness);
    }
    out.SaveSharedObjectArrayI("Cols", m_stops, &ColourPosition::colour);
}

bool Gradient::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    std::vector<Kernel::Consolidated<Colour>> colours;
    std::vector<double> pairs, smoothness;
    in.LoadSharedObjectArrayI("Cols", colours);
    const std::size_t count = colours.size();
    const bool hasPositions = in.LoadTypeArrayI("Posn", pairs) && pairs.size() == 2 * count;
    const bool hasSmoothness = in.LoadTypeArrayI("Smth", smoothness) && smoothness.size() == count;
    std::vector<ColourPosition> stops(count);
    for (std::size_t i = 0; i < count; ++i) {
        stops[i].colour = std::move(colours[i]);
        if (hasPositions) {
            stops[i].position = pairs[2 * i];
            stops[i].midpoint = pairs[2 * i + 1];
        } else if (i != 0) {
            stops[i].position = static_cast<double>(i) / static_cast<double>(count - 1);
        }
        if (hasSmoothness)
            stops[i].smoothness = smoothness[i];
    }
    m_stops = Normalise(std::move(stops));
    return true;
}

Kernel::Consolidated<Gradient> Gradient::CreateLegacy(const Kernel::InSerialiser& in,
                                                      Kernel::FileStore& store,
                                                      unsigned short version)
{
    const auto gradient = Kernel::MakeCounted<Gradient>();
    if (!gradient->Load(in, store, version) || gradient->m_stops.empty())
        return {};
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(gradient);
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
