#pragma once

#include <functional>
#include <string_view>

#include <geometry/BoundingBox.h>
#include <renderer/core/RenderTarget.h>

#include "Context.h"
#include "Offscreen.h"
#include "Scopes.h"

namespace Svg {

/// Draws masks for a target, in the resolution of its device: the luminance times the alpha, or the
/// alpha alone, of what the mask holds.
class Masks
{
public:
    using Result = MaskPixels;
    /// Measures the element that is masked, in its own coordinates; called only where needed.
    using Measure = std::function<Geometry::BoundingBoxT<double>()>;

    /// \pre both outlive the object.
    Masks(Context& context, Renderer::RenderTarget& target, ContentDrawer draw)
        : m_context(context), m_target(target), m_draw(std::move(draw))
    {}

    /// Draws what a `mask` refers to. A reference to nothing masks nothing, and neither does a mask
    /// within itself.
    Result Make(std::string_view reference, const LengthContext& lengths, const Measure& measure);

private:
    Result Draw(const Element& mask, const LengthContext& lengths, const Measure& measure);

    Context& m_context;
    Renderer::RenderTarget& m_target;
    ContentDrawer m_draw;
};

} // namespace Svg
