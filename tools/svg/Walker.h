#pragma once

#include <functional>

#include <kernel/Progress.h>
#include <renderer/core/RenderTarget.h>

#include "ClipPaths.h"
#include "Context.h"
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

    /// Draws the whole document into a rectangle from (0, 0) of the given extent.
    /// \throws Kernel::FormatException when elements refer to themselves, or nest or multiply
    /// beyond
    ///         all measure.
    void DrawDocument(double width, double height);

private:
    void DrawElement(const Element& element, const Style& parent, const Element* use = nullptr);
    void DrawPlaced(const Element& element, const Style& style, const Element* use);
    void DrawClipped(const Element& element, const Style& style, const Element* use);
    void DrawContent(const Element& element, const Style& style, const Element* use);
    void DrawChildren(const Element& element, const Style& style);
    void DrawTopLevel(const Element& root, const Style& style);
    void DrawSwitch(const Element& element, const Style& style);
    void DrawUse(const Element& element, const Style& style);
    void DrawViewport(const Element& element, const Style& style, const Viewport& viewport);
    void DrawShape(const Element& element, const Style& style);
    void DrawImage(const Element& element, const Style& style);
    void NoteUnsupported(const Element& element, const Style& style);
    LengthContext MakeLengths(const Style& style) const;
    bool IsStopped() const;

    Context& m_context;
    Renderer::RenderTarget& m_target;
    Kernel::Progress* m_progress;
    ClipPaths m_clipPaths;
    LengthContext m_lengths; ///< the extent of the innermost viewport
    Kernel::RectT<double> m_rootRect{};
    std::vector<const Element*> m_used;
    int m_depth = 0;
};

} // namespace Svg
