#pragma once

#include <vector>

#include <kernel/Progress.h>
#include <renderer/core/RenderTarget.h>

#include "ClipPaths.h"
#include "Context.h"
#include "Masks.h"
#include "Painter.h"
#include "Scopes.h"
#include "Viewport.h"

namespace Svg {

/// Walks the elements of a document and draws them on a target.
class Walker
{
public:
    /// How deep drawn elements may nest, references included.
    static constexpr int MaxDepth = Document::MaxDepth;

    /// \param progress may be null; a cancelled one ends the walk.
    Walker(Context& context, Renderer::RenderTarget& target, Kernel::Progress* progress);
    Walker(const Walker&) = delete;
    Walker& operator=(const Walker&) = delete;

    /// Draws the whole document into a rectangle from (0, 0) of the given extent.
    /// \throws Kernel::FormatException when elements nest or multiply beyond all measure.
    void DrawDocument(double width, double height);

    /// Draws the whole document as a part of another picture, whose counts go on.
    /// \throws Kernel::FormatException as above.
    void DrawWithin(double width, double height);

    /// Draws the children of an element that is shown by reference: a pattern, a mask, a marker.
    /// \param lengths what their lengths refer to.
    /// \throws Kernel::FormatException as above.
    void DrawReferenced(const Element& owner, const LengthContext& lengths);

private:
    ContentDrawer MakeContentDrawer();
    void DrawRoot();
    void DrawElement(const Element& element, const Style& parent, const Element* use = nullptr);
    void DrawPlaced(const Element& element, const Style& style, const Element* use);
    void DrawClipped(const Element& element, const Style& style, const Element* use);
    void DrawContent(const Element& element, const Style& style, const Element* use);
    void DrawChildren(const Element& element, const Style& style);
    void DrawTopLevel(const Element& root, const Style& style);
    void DrawSwitch(const Element& element, const Style& style);
    void DrawUse(const Element& element, const Style& style);
    void DrawViewport(const Element& element, const Style& style, const Viewport& viewport);
    void DrawContainer(const Element& element, const Style& style, const Element* use);
    bool FindGrouping(const Element& element, const Style& style, Grouping& grouping,
                      MaskPixels& mask);
    void NoteUnsupported(const Style& style);
    LengthContext MakeLengths(const Style& style) const;
    bool IsStopped() const;

    Context& m_context;
    Renderer::RenderTarget& m_target;
    Kernel::Progress* m_progress;
    ClipPaths m_clipPaths;
    Masks m_masks;
    Painter m_painter;
    LengthContext m_lengths; ///< the extent of the innermost viewport
    Kernel::RectT<double> m_rootRect{};
    std::vector<const Element*> m_used; ///< the use elements that are being followed
    bool m_isReferenced = false;
};

} // namespace Svg
