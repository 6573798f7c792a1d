#include <renderer/paint/FillGradient.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <kernel/SavedItems.h>
#include <renderer/paint/ColourVisitor.h>
#include <renderer/paint/PaintEnumSerialisers.h>

namespace Renderer {

namespace {

/// Lengths and squares of lengths up to this count as none.
constexpr double Tolerance = 1e-6;

/// The nearest point of the unit disc; the centre for points that are not finite.
Kernel::PointT<double> ToUnitDisc(Kernel::PointT<double> point)
{
    const double radius = std::hypot(point.x, point.y);
    if (!std::isfinite(radius))
        return {};
    // What was brought to the circle may lie a rounding error outside, and stays.
    return radius > 1.0 + 1e-12 ? point * (1.0 / radius) : point;
}

} // namespace

FillGradient::FillGradient() : FillGradient(Linear, nullptr) {}

FillGradient::FillGradient(FillGradientType type, const Kernel::Consolidated<Gradient>& gradient,
                           bool transformCorrected, Spread spread, Kernel::PointT<double> focus)
    : m_type(type),
      m_gradient(gradient),
      m_transformCorrected(transformCorrected),
      m_spread(spread),
      m_focus(ToUnitDisc(focus))
{
    if (!m_gradient)
        m_gradient = Gradient::Create({});
}

Kernel::Consolidated<FillGradient>
FillGradient::Create(FillGradientType type, const Kernel::Consolidated<Gradient>& gradient,
                     bool transformCorrected, Spread spread, Kernel::PointT<double> focus)
{
    return Share(
        Kernel::MakeCounted<FillGradient>(type, gradient, transformCorrected, spread, focus));
}

const Kernel::SharedClassProperties& FillGradient::GetTypeSharedClassProperties()
{
    static const auto& record =
        *new Kernel::SharedClassProperties("FilG", &CreateObject, 2, __GetDefaultSerialisation(),
                                           &Fill::GetTypeSharedClassProperties(), "FillGradient");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = FillGradient::GetTypeSharedClassProperties();

} // namespace

template<class Self, class Items>
void FillGradient::ListItems(Self& self, Items&& items)
{
    items.Enum("Type", FillGradientTypeEnumSerialiser::GetInstance(), self.m_type);
    items.OptionalEnum("Sprd", FillGradientSpreadEnumSerialiser::GetInstance(), self.m_spread, Pad);
}

void FillGradient::Save(Kernel::OutSerialiser& out) const
{
    ListItems(*this, Kernel::SavedItems::Writer(out));
    out.SaveSharedObject("Grad", m_gradient);
    // The flag is told of where it matters only; readers take true.
    if (!m_transformCorrected && (m_type == Linear || m_type == Radial || m_type == Conical))
        out.SaveType("XCor", false);
    if (std::abs(m_focus.x) > Tolerance || std::abs(m_focus.y) > Tolerance)
        out.SaveTypeArrayI("Focs", std::array{m_focus.x, m_focus.y});
}

bool FillGradient::Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
                        unsigned short version)
{
    ListItems(*this, Kernel::SavedItems::Reader(in));
    m_transformCorrected = version != 1;
    if (version != 1)
        in.LoadType("XCor", m_transformCorrected);
    std::vector<double> focus;
    if (in.LoadTypeArrayI("Focs", focus) && focus.size() == 2)
        m_focus = ToUnitDisc({focus[0], focus[1]});
    Kernel::Consolidated<Gradient> gradient;
    if (!in.LoadSharedObjectI("Grad", gradient) || !gradient)
        gradient = Gradient::CreateLegacy(in, store, version);
    if (gradient)
        m_gradient = gradient;
    return !!gradient;
}

void FillGradient::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(m_type);
    hash.AddAddress(m_gradient.Get());
    hash.Add(m_transformCorrected);
    hash.Add(m_spread);
    hash.Add(m_focus.x);
    hash.Add(m_focus.y);
}

bool FillGradient::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    const auto& fill = static_cast<const FillGradient&>(other);
    return m_type == fill.m_type && m_gradient == fill.m_gradient &&
           m_transformCorrected == fill.m_transformCorrected && m_spread == fill.m_spread &&
           std::abs(m_focus.x - fill.m_focus.x) <= Tolerance &&
           std::abs(m_focus.y - fill.m_focus.y) <= Tolerance;
}

bool FillGradient::HasNoise() const
{
    return std::ranges::any_of(m_gradient->GetColours(),
                               [](const auto& stop) { return stop.colour->GetNoise() > 0.0; });
}

bool FillGradient::HasNonFullAlpha() const
{
    return IsFillNone() || std::ranges::any_of(m_gradient->GetColours(), [](const auto& stop) {
               return stop.colour->GetAlphaF() < 1.0;
           });
}

bool FillGradient::IsFlatAlpha() const
{
    const auto& stops = m_gradient->GetColours();
    return std::ranges::all_of(stops, [&](const auto& stop) {
        return stop.colour->GetAlphaF() == stops.front().colour->GetAlphaF();
    });
}

Kernel::Consolidated<Colour> FillGradient::GetColour() const
{
    return IsFillNone() ? Kernel::Consolidated<Colour>() : m_gradient->GetColours().front().colour;
}

Kernel::Counted<const Fill> FillGradient::Accept(ColourVisitor& visitor) const
{
    const auto gradient = m_gradient->Accept(visitor);
    if (gradient == m_gradient)
        return Kernel::Counted<const Fill>(this);
    return Create(m_type, gradient, m_transformCorrected, m_spread, m_focus).GetCounted();
}

bool FillGradient::GetLinearPoints(const Raster::AffineTransform::Params& transform,
                                   Kernel::PointT<double>& p0, Kernel::PointT<double>& p1) const
{
    p0 = transform.Map({0.0, 0.0});
    p1 = transform.Map({1.0, 0.0});
    if (!IsTransformCorrected())
        return false;
    const Kernel::PointT<double> n = transform.MapVector({0.0, 1.0});
    const double square = n.x * n.x + n.y * n.y;
    if (square <= Tolerance)
        return false;
    const double t = ((p0.x - p1.x) * n.x + (p0.y - p1.y) * n.y) / square;
    if (std::abs(t) <= Tolerance)
        return false;
    p1 = p1 + t * n;
    return true;
}

void FillGradient::ChangeColours(ColourChange change, double value)
{
    m_gradient = m_gradient->ModifyColours([&](Colour& colour) { change(colour, value); });
}

} // namespace Renderer
