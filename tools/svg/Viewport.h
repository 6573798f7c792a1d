#pragma once

#include <optional>

#include <kernel/Rect.h>

#include "Element.h"
#include "Length.h"
#include "Style.h"
#include "TransformList.h"

namespace Svg {

/// The area in which a drawing, a nested drawing or a symbol shows its content.
struct Viewport
{
    Kernel::RectT<double> rect; ///< in the coordinates outside
    Transform transform;        ///< from the content's coordinates to those outside
    double width = 0.0;         ///< extent in the content's coordinates, for percentages
    double height = 0.0;
    bool clips = true; ///< whether content outside is cut off

    /// The viewport of an svg or symbol element in a rectangle; nothing where nothing is shown.
    static std::optional<Viewport> Make(const Element& element, const Kernel::RectT<double>& rect,
                                        const Style& style);
};

/// Where a nested svg element (or a symbol, which has no place of its own) is shown.
/// \param use the element that shows it, whose extent comes first; may be null.
Kernel::RectT<double> PlaceNested(const Element& element, const Element* use,
                                  const LengthContext& context);

} // namespace Svg
