#pragma once

#include <geometry/PolyCurve.h>
#include <renderer/core/RenderTarget.h>

#include "Context.h"
#include "Markers.h"
#include "Offscreen.h"
#include "Patterns.h"

namespace Svg {

/// How a single object is laid over what is below it.
struct Composition
{
    double opacity = 1.0;
    Renderer::FillBlendMode::BlendMode mode = Renderer::FillBlendMode::Normal;
};

/// Draws single elements on a target, in the coordinates that are in force there: shapes with their
/// paints and markers, and images.
class Painter
{
public:
    /// \pre both outlive the object.
    Painter(Context& context, Renderer::RenderTarget& target, const ContentDrawer& draw)
        : m_context(context),
          m_target(target),
          m_patterns(context, target, draw),
          m_markers(context, target, draw)
    {}

    /// \param composition of the fill and the stroke as one object; markers are objects of their
    ///        own, so that a shape with markers needs a group for anything but the default.
    void DrawShape(const Element& element, const Style& style, const LengthContext& lengths,
                   const Composition& composition);
    /// Draws the pieces of a text element one over the other. Gradients and patterns that refer to a
    /// box refer to that of the whole element.
    void DrawText(const Element& element, const Style& style, const LengthContext& lengths);
    void DrawImage(const Element& element, const Style& style, const LengthContext& lengths,
                   const Composition& composition);

private:
    /// A shape with what it is painted with.
    struct Outline
    {
        Kernel::Counted<const Geometry::PolyCurveDbl> shape;
        Renderer::FillDescriptorConst fill;
        Renderer::FillDescriptorConst lineFill;
        Renderer::LineStyleDescriptorConst line = Renderer::LineStyleDescriptorConst::CreateNone();
    };

    Outline MakeOutline(const Kernel::Counted<const Geometry::PolyCurveDbl>& shape,
                        const Geometry::PolyCurveDbl& extent, double overhang, double pathLength,
                        const Style& style, const LengthContext& lengths);
    Renderer::FillDescriptorConst MakePaint(const Paint& paint, double opacity, const Style& style,
                                            const Geometry::PolyCurveDbl& shape, double reach,
                                            const LengthContext& lengths);
    Renderer::FillDescriptorConst MakeContextPaint(Paint::Context context, double opacity) const;
    void DrawOutline(const Outline& outline, const Style& style, const Composition& composition);
    void DrawNonScaling(const Outline& outline, const Style& style, const Composition& composition);
    void DrawNested(Drawing& drawing, const Transform& place, const Composition& composition);
    void DrawPath(const Outline& outline, const Style& style, const Composition& composition);
    void DrawLayers(const Element& element, const Outline& outline, const Style& style,
                    const LengthContext& lengths);

    Context& m_context;
    Renderer::RenderTarget& m_target;
    Patterns m_patterns;
    Markers m_markers;
};

} // namespace Svg
