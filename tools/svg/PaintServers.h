#pragma once

#include <geometry/PolyCurve.h>
#include <renderer/paint/FillDescriptorConst.h>
#include <renderer/paint/LineStyleDescriptorConst.h>

#include "Document.h"
#include "Gradients.h"
#include "Length.h"
#include "Notices.h"
#include "Style.h"
#include "StyleResolver.h"

namespace Svg {

/// Turns paints of styles into fills: colours, and linear and radial gradients.
class PaintServers
{
public:
    /// \pre all three outlive the object.
    PaintServers(const Document& document, const StyleResolver& styles, Notices& notices)
        : m_document(document), m_styles(styles), m_stops(styles), m_notices(notices)
    {}

    /// The fill of a paint, or an empty one where nothing is painted.
    /// \param opacity multiplies the alpha of all colours.
    /// \param current what currentColor means.
    /// \param shape what is painted; its exact box, without the stroke, is what bounding-box units
    ///        refer to.
    Renderer::FillDescriptorConst MakeFill(const Paint& paint, double opacity,
                                           const ColourValue& current,
                                           const Geometry::PolyCurveDbl& shape,
                                           const LengthContext& context) const;

    /// What is painted where the server of a paint is of no use.
    Renderer::FillDescriptorConst MakeFallback(const Paint& paint, double opacity,
                                               const ColourValue& current) const;

private:
    Renderer::FillDescriptorConst MakeServerFill(const Paint& paint, double opacity,
                                                 const ColourValue& current,
                                                 const Geometry::PolyCurveDbl& shape,
                                                 const LengthContext& context) const;

    const Document& m_document;
    const StyleResolver& m_styles;
    mutable GradientStops m_stops;
    Notices& m_notices;
};

/// A colour as the library takes it, its alpha multiplied by \p opacity.
Kernel::Consolidated<Renderer::Colour> MakeColour(const ColourValue& colour, double opacity);
Renderer::FillDescriptorConst MakeSolidFill(const ColourValue& colour, double opacity);

/// The stroke that a style describes; without a line when it has no width.
/// \param shape what is stroked: absurdly many dashes on it become a solid line.
/// \param pathLength how long the author says that it is, which dashes are measured by; negative:
///        its true length.
Renderer::LineStyleDescriptorConst MakeLineStyle(const Style& style, const LengthContext& context,
                                                 const Geometry::PolyCurveDbl& shape,
                                                 double pathLength, Notices& notices);

} // namespace Svg
