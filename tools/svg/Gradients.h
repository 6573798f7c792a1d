#pragma once

#include <optional>
#include <vector>

#include <kernel/Rect.h>
#include <renderer/paint/FillDescriptorConst.h>

#include "Document.h"
#include "Length.h"
#include "StyleResolver.h"
#include "TransformList.h"

namespace Svg {

/// A gradient element together with those that it refers to for what it leaves out.
class GradientSource
{
public:
    /// \throws Kernel::FormatException when the references go in a circle.
    GradientSource(const Element& gradient, const Document& document, const StyleResolver& styles);

    /// Whether lengths are fractions of the painted shape's box.
    bool UsesBoundingBox() const;

    /// The fill; empty where nothing is painted (no stops, a negative radius, a singular
    /// transform). \param box what bounding-box units refer to; not empty where they are used.
    /// \param context the viewport, which percentages refer to otherwise.
    Renderer::FillDescriptorConst MakeFill(double opacity, const Kernel::RectT<double>& box,
                                           const LengthContext& context) const;

private:
    /// The nearest element of the chain that has an attribute; of the same kind only, where asked.
    const Element* Find(std::string_view attribute, bool sameKind) const;
    std::string_view Get(std::string_view attribute) const;
    double GetLength(std::string_view attribute, const LengthContext& context, LengthAxis axis,
                     std::string_view fallback) const;

    std::vector<const Element*> FindStops() const;
    Renderer::FillDescriptorConst MakeLinear(double opacity, const Transform& frame,
                                             const LengthContext& context) const;
    Renderer::FillDescriptorConst MakeRadial(double opacity, const Transform& frame,
                                             const LengthContext& context) const;
    Renderer::FillDescriptorConst MakeLastColour(double opacity) const;

    std::vector<const Element*> m_chain;
    const StyleResolver& m_styles;
};

} // namespace Svg
