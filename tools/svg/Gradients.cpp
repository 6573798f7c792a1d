#include "Gradients.h"

#include <algorithm>
#include <cmath>

#include <kernel/FormatException.h>
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

constexpr std::size_t MaxChain = 100;

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

GradientSource::GradientSource(const Element& gradient, const Document& document)
{
    for (const Element* next = &gradient; next && IsGradient(*next);
         next = document.FindByReference(next->GetReference())) {
        if (m_chain.size() == MaxChain || std::ranges::find(m_chain, next) != m_chain.end())
            throw Kernel::FormatException("gradient " + std::string(gradient.id) +
                                          " refers to itself or through too many others");
        m_chain.push_back(next);
    }
}

const Element* GradientSource::Find(std::string_view attribute, bool sameKind) const
{
    const auto found = std::ranges::find_if(m_chain, [&](const Element* element) {
        return (!sameKind || element->tag == m_chain.front()->tag) && element->Has(attribute);
    });
    return found == m_chain.end() ? nullptr : *found;
}

std::string_view GradientSource::Get(std::string_view attribute) const
{
    const Element* source = Find(attribute, false);
    return source ? source->Get(attribute) : std::string_view();
}

double GradientSource::GetLength(std::string_view attribute, const LengthContext& context,
                                 LengthAxis axis, std::string_view fallback) const
{
    const Element* source = Find(attribute, true);
    const auto length = ParseLength(source ? source->Get(attribute) : fallback);
    return length.value_or(ParseLength(fallback).value_or(Length{})).Resolve(context, axis);
}

bool GradientSource::UsesBoundingBox() const
{
    return Trim(Get("gradientUnits")) != "userSpaceOnUse";
}

/// The nearest element of the chain that has stops, or null.
const Element* GradientSource::FindStopOwner() const
{
    const auto found = std::ranges::find_if(m_chain, [](const Element* element) {
        const Element* child = element->firstChild;
        while (child && child->tag != Tag::Stop)
            child = child->nextSibling;
        return child != nullptr;
    });
    return found == m_chain.end() ? nullptr : *found;
}

FillDescriptorConst GradientSource::MakeFill(GradientStops& stops, double opacity,
                                             const Kernel::RectT<double>& box,
                                             const LengthContext& context) const
{
    const Element* owner = FindStopOwner();
    if (!owner)
        return {};
    const auto gradient = stops.Find(*owner, opacity);
    if (gradient->GetColours().size() == 1)
        return MakeLastColour(*gradient);
    Transform frame;
    if (const Element* source = Find("gradientTransform", false))
        frame = GetTransform(*source, "gradientTransform");
    LengthContext lengths = context;
    if (UsesBoundingBox()) {
        frame = AffineTransform::Concatenate(frame, AffineTransform::FromRect(box));
        lengths.viewportWidth = lengths.viewportHeight = 1.0;
    }
    Transform inverse;
    if (!AffineTransform::Invert(frame, inverse))
        return {};
    return m_chain.front()->tag == Tag::LinearGradient ? MakeLinear(gradient, frame, lengths)
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
                                           ParseSpread(Get("spreadMethod")));
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
        return Find(attribute, true) ? GetLength(attribute, context, axis, "50%") : centre;
    };
    const double fx = focusOr("fx", LengthAxis::Horizontal, cx);
    const double fy = focusOr("fy", LengthAxis::Vertical, cy);
    // Elliptical: circles follow the whole map, as those of SVG do.
    const auto fill =
        FillGradient::Create(FillGradient::Elliptical, gradient, true,
                             ParseSpread(Get("spreadMethod")), {(fx - cx) / r, (fy - cy) / r});
    return {fill, AffineTransform::Concatenate(Transform{r, 0, cx, 0, r, cy}, frame)};
}

} // namespace Svg
