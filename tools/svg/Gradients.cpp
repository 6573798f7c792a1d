#include "Gradients.h"

#include <cmath>

#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillSolid.h>

#include "PaintServers.h"
#include "Scanner.h"
#include "Shapes.h"

namespace Svg {

namespace {

using Raster::AffineTransform;
using Renderer::FillDescriptorConst;
using Renderer::FillGradient;

bool IsGradient(const Element& element) noexcept
{
    return element.tag == Tag::LinearGradient || element.tag == Tag::RadialGradient;
}

FillGradient::Spread ParseSpread(std::string_view text)
{
    text = Trim(text);
    return text == "reflect"  ? FillGradient::Reflect
           : text == "repeat" ? FillGradient::Repeat
                              : FillGradient::Pad;
}

/// The stops of a gradient that begins at a part of the way. The circles between a focal circle of
/// radius fr around f and the end circle of radius r around c are those of a gradient that begins
/// at a point, c + (f − c)·r/(r − fr), and has come to the part fr/r where the focal circle is.
/// (True to SVG 2 where the end colours pad; reflected and repeated parts begin at the point, too.)
Kernel::Consolidated<Renderer::Gradient> BeginAt(const Renderer::Gradient& gradient, double part)
{
    auto stops = gradient.GetColours();
    for (auto& stop : stops)
        stop.position = part + (1.0 - part) * stop.position;
    return Renderer::Gradient::Create(std::move(stops));
}

/// The colour that pads a gradient at its end.
FillDescriptorConst MakeLastColour(const Renderer::Gradient& gradient)
{
    return {Renderer::FillSolid::Create(gradient.GetColours().back().colour)};
}

} // namespace

Kernel::Consolidated<Renderer::Gradient> GradientStops::Find(const Element& owner, double opacity)
{
    const auto [known, added] = m_known.try_emplace({&owner, opacity});
    if (!added)
        return known->second;
    std::vector<Renderer::Gradient::ColourPosition> positions;
    for (const Element* stop = owner.firstChild; stop; stop = stop->nextSibling) {
        if (stop->tag != Tag::Stop)
            continue;
        const Style& style = m_styles.ResolveInPlace(*stop);
        positions.push_back(
            {MakeColour(style.stopColour.Resolve(style.colour), style.stopOpacity * opacity),
             ParseFraction(stop->Get("offset")).value_or(0.0)});
    }
    return known->second = Renderer::Gradient::Create(std::move(positions));
}

GradientSource::GradientSource(const Element& gradient, const Document& document, Notices& notices)
    : m_chain(gradient, document, IsGradient, notices)
{}

double GradientSource::GetLength(std::string_view attribute, const LengthContext& context,
                                 LengthAxis axis, std::string_view fallback) const
{
    const Element* source = m_chain.Find(attribute, true);
    const auto length = ParseLength(source ? source->Get(attribute) : fallback);
    return length.value_or(ParseLength(fallback).value_or(Length{})).Resolve(context, axis);
}

bool GradientSource::UsesBoundingBox() const
{
    return Trim(m_chain.Get("gradientUnits")) != "userSpaceOnUse";
}

FillDescriptorConst GradientSource::MakeFill(GradientStops& stops, double opacity,
                                             const Kernel::RectT<double>& box,
                                             const LengthContext& context) const
{
    const Element* owner =
        m_chain.FindOwner([](const Element& child) { return child.tag == Tag::Stop; });
    if (!owner)
        return {};
    const auto gradient = stops.Find(*owner, opacity);
    if (gradient->GetColours().size() == 1)
        return MakeLastColour(*gradient);
    Transform frame;
    if (const Element* source = m_chain.Find("gradientTransform"))
        frame = GetTransform(*source, "gradientTransform");
    LengthContext lengths = context;
    if (UsesBoundingBox()) {
        frame = AffineTransform::Concatenate(frame, AffineTransform::FromRect(box));
        lengths.viewportWidth = lengths.viewportHeight = 1.0;
    }
    Transform inverse;
    if (!AffineTransform::Invert(frame, inverse))
        return {};
    return m_chain.GetFirst().tag == Tag::LinearGradient ? MakeLinear(gradient, frame, lengths)
                                                         : MakeRadial(gradient, frame, lengths);
}

FillDescriptorConst
GradientSource::MakeLinear(const Kernel::Consolidated<Renderer::Gradient>& gradient,
                           const Transform& frame, const LengthContext& context) const
{
    const double x1 = GetLength("x1", context, LengthAxis::Horizontal, "0%");
    const double y1 = GetLength("y1", context, LengthAxis::Vertical, "0%");
    const double dx = GetLength("x2", context, LengthAxis::Horizontal, "100%") - x1;
    const double dy = GetLength("y2", context, LengthAxis::Vertical, "0%") - y1;
    if (dx == 0.0 && dy == 0.0)
        return MakeLastColour(*gradient);
    // The unit frame turned and scaled so that its x axis is the gradient's vector.
    const Transform vector{dx, -dy, x1, dy, dx, y1};
    const auto fill = FillGradient::Create(FillGradient::Linear, gradient, true,
                                           ParseSpread(m_chain.Get("spreadMethod")));
    return {fill, AffineTransform::Concatenate(vector, frame)};
}

FillDescriptorConst
GradientSource::MakeRadial(const Kernel::Consolidated<Renderer::Gradient>& gradient,
                           const Transform& frame, const LengthContext& context) const
{
    const double cx = GetLength("cx", context, LengthAxis::Horizontal, "50%");
    const double cy = GetLength("cy", context, LengthAxis::Vertical, "50%");
    const double r = GetLength("r", context, LengthAxis::Diagonal, "50%");
    if (r < 0.0)
        return {};
    if (r == 0.0)
        return MakeLastColour(*gradient);
    const auto focusOr = [&](std::string_view attribute, LengthAxis axis, double centre) {
        return m_chain.Find(attribute, true) ? GetLength(attribute, context, axis, "50%") : centre;
    };
    const double fx = focusOr("fx", LengthAxis::Horizontal, cx);
    const double fy = focusOr("fy", LengthAxis::Vertical, cy);
    const double fr = GetLength("fr", context, LengthAxis::Diagonal, "0%");
    const double part = fr > 0.0 && fr < r ? fr / r : 0.0;
    // Elliptical: circles follow the whole map, as those of SVG do.
    const auto fill = FillGradient::Create(
        FillGradient::Elliptical, part > 0.0 ? BeginAt(*gradient, part) : gradient, true,
        ParseSpread(m_chain.Get("spreadMethod")),
        {(fx - cx) / (r - part * r), (fy - cy) / (r - part * r)});
    return {fill, AffineTransform::Concatenate(Transform{r, 0, cx, 0, r, cy}, frame)};
}

} // namespace Svg
