#pragma once

#include <map>
#include <utility>
#include <vector>

#include <kernel/Rect.h>
#include <renderer/paint/FillDescriptorConst.h>
#include <renderer/paint/Gradient.h>

#include "Document.h"
#include "Length.h"
#include "ReferenceChain.h"
#include "StyleResolver.h"
#include "TransformList.h"

namespace Svg {

/// The stops of gradient elements as the library takes them, each list made once per opacity.
class GradientStops
{
public:
    explicit GradientStops(const StyleResolver& styles) : m_styles(styles) {}

    /// The stops that are children of \p owner, their alpha multiplied by \p opacity.
    Kernel::Consolidated<Renderer::Gradient> Find(const Element& owner, double opacity);

private:
    const StyleResolver& m_styles;
    std::map<std::pair<const Element*, double>, Kernel::Consolidated<Renderer::Gradient>> m_known;
};

/// A gradient element together with those that it refers to for what it leaves out.
class GradientSource
{
public:
    GradientSource(const Element& gradient, const Document& document, Notices& notices);

    /// Whether lengths are fractions of the painted shape's box.
    bool UsesBoundingBox() const;

    /// The fill; empty where nothing is painted (no stops, a negative radius, a singular
    /// transform). \param opacity multiplies the alpha of all stops. \param box what bounding-box
    /// units refer to; not empty where they are used. \param context the viewport, which
    /// percentages refer to otherwise, and the font size of the
    ///        gradient element.
    Renderer::FillDescriptorConst MakeFill(GradientStops& stops, double opacity,
                                           const Kernel::RectT<double>& box,
                                           const LengthContext& context) const;

private:
    double GetLength(std::string_view attribute, const LengthContext& context, LengthAxis axis,
                     std::string_view fallback) const;

    Renderer::FillDescriptorConst
    MakeLinear(const Kernel::Consolidated<Renderer::Gradient>& gradient, const Transform& frame,
               const LengthContext& context) const;
    Renderer::FillDescriptorConst
    MakeRadial(const Kernel::Consolidated<Renderer::Gradient>& gradient, const Transform& frame,
               const LengthContext& context) const;

    ReferenceChain m_chain;
};

} // namespace Svg
