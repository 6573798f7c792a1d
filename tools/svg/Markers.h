#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include <geometry/PolyCurve.h>
#include <renderer/core/RenderTarget.h>

#include "Context.h"
#include "MarkerVertices.h"
#include "Offscreen.h"

namespace Svg {

/// Draws the markers of shapes on a target.
class Markers
{
public:
    /// \pre both outlive the object.
    Markers(Context& context, Renderer::RenderTarget& target, ContentDrawer draw)
        : m_context(context), m_target(target), m_draw(std::move(draw))
    {}

    /// Whether an element is of a kind that has markers, and its style names any.
    static bool HasMarkers(const Element& element, const Style& style);

    /// Draws the markers of a shape: one at the first vertex, one at the last, one at each other.
    void Draw(const Element& element, const Style& style, const Geometry::PolyCurveDbl& shape,
              const LengthContext& lengths);

private:
    const Element* Find(std::string_view reference) const;
    void DrawAll(const Element& marker, const std::vector<MarkerVertex>& vertices, bool isStart,
                 double strokeWidth, const LengthContext& lengths);

    Context& m_context;
    Renderer::RenderTarget& m_target;
    ContentDrawer m_draw;
};

} // namespace Svg
