#include <renderer/paint/Fill.h>

namespace Renderer {

Fill::~Fill() = default;

const Kernel::SharedClassProperties& Fill::GetTypeSharedClassProperties()
{
    static const auto& record =
        *new Kernel::SharedClassProperties("Fill", nullptr, 0, nullptr, nullptr, "Fill");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = Fill::GetTypeSharedClassProperties();

} // namespace

bool Fill::IsFillNone() const
{
    return false;
}

double Fill::GetAlpha() const
{
    const auto colour = GetColour();
    return colour ? colour->GetAlphaF() : 1.0;
}

void Fill::SetAlpha(double alpha)
{
    ChangeColours([](Colour& colour, double value) { colour.SetAlphaF(value); }, alpha);
}

double Fill::GetTint() const
{
    const auto colour = GetColour();
    return colour ? colour->GetTint() : 1.0;
}

void Fill::SetTint(double tint)
{
    ChangeColours([](Colour& colour, double value) { colour.SetTint(value); }, tint);
}

double Fill::GetNoise() const
{
    const auto colour = GetColour();
    return colour ? colour->GetNoise() : 0.0;
}

void Fill::SetNoise(double noise)
{
    ChangeColours([](Colour& colour, double value) { colour.SetNoise(value); }, noise);
}

bool Fill::HasNoise() const
{
    return GetNoise() > 0.0;
}

double Fill::GetIntensity() const
{
    const auto colour = GetColour();
    return colour ? colour->GetIntensity() : 1.0;
}

void Fill::SetIntensity(double intensity)
{
    ChangeColours([](Colour& colour, double value) { colour.SetIntensity(value); }, intensity);
}

Kernel::Consolidated<Colour> Fill::GetColour() const
{
    return {};
}

Kernel::String Fill::GetCSSAttributes(const Raster::AffineTransform::Params&) const
{
    return {};
}

Kernel::Consolidated<Fill> Fill::Consolidate(const Kernel::Counted<const Fill>& fill)
{
    if (!fill || fill->IsConsolidated())
        return Kernel::Consolidated<Fill>(fill);
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(fill->Clone());
}

void Fill::ChangeColours(ColourChange, double) {}

Kernel::Consolidated<Fill> Fill::WithChangedColours(const Fill& fill, ColourChange change,
                                                    double value)
{
    const Kernel::Counted<Fill> copy = fill.Clone();
    copy->ChangeColours(change, value);
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(copy);
}

} // namespace Renderer
