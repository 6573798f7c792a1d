#pragma once

#include <optional>

#include <kernel/Rect.h>

#include "Document.h"
#include "Length.h"
#include "ReferenceChain.h"
#include "TransformList.h"

namespace Svg {

/// A pattern as it lies on one shape.
struct PatternTile
{
    const Element* owner = nullptr; ///< whose children are drawn; null for none
    Kernel::RectT<double> rect;     ///< one tile in the pattern's coordinates; never empty
    Transform toUser;               ///< from the pattern's coordinates to those of the shape
    Transform content;              ///< from the coordinates of the children to the pattern's
    LengthContext lengths;          ///< what lengths of the children refer to
};

/// A pattern element together with those that it refers to for what it leaves out.
class PatternSource
{
public:
    PatternSource(const Element& pattern, const Document& document, Notices& notices);

    /// Whether lengths or the content are fractions of the painted shape's box.
    bool UsesBoundingBox() const;

    /// Places the pattern (SVG 2, 14.3).
    /// \param box the shape's box; not empty where it is used.
    /// \param context the viewport and the font size of the pattern element.
    /// \return nothing for patterns that paint nothing: no extent, an empty view box, no children.
    std::optional<PatternTile> Place(const Kernel::RectT<double>& box,
                                     const LengthContext& context) const;

private:
    bool HasBoxUnits(std::string_view attribute, bool byDefault) const;
    Kernel::RectT<double> FindRect(const Kernel::RectT<double>& box,
                                   const LengthContext& context) const;

    ReferenceChain m_chain;
};

} // namespace Svg
