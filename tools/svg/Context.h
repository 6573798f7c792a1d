#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Document.h"
#include "Images.h"
#include "Notices.h"
#include "PaintServers.h"
#include "StyleResolver.h"

namespace Svg {

/// What all parts of the reader share while a document is drawn.
class Context
{
public:
    /// Elements that `use` may show in all; more is an attack, not a drawing.
    static constexpr long MaxUsedElements = 1'000'000;

    explicit Context(const Document& document);

    const Document& GetDocument() const noexcept { return m_document; }
    const StyleResolver& GetStyles() const noexcept { return m_styles; }
    const PaintServers& GetPaintServers() const noexcept { return m_paintServers; }
    Images& GetImages() noexcept { return m_images; }
    Notices& GetNotices() noexcept { return m_notices; }
    const Notices& GetNotices() const noexcept { return m_notices; }

    /// Counts an element that is shown once more. \throws Kernel::FormatException beyond the limit.
    void CountUsedElement();

private:
    const Document& m_document;
    Notices m_notices;
    StyleResolver m_styles;
    PaintServers m_paintServers;
    Images m_images;
    long m_usedElements = 0;
};

/// An element that is being shown by reference, for as long as the object lives.
class ActiveReference
{
public:
    static constexpr std::size_t MaxNesting = 200;

    /// \param active the elements that are being shown, outermost first.
    /// \throws Kernel::FormatException when \p element is among them, so that it refers to itself,
    /// or
    ///         there are too many.
    ActiveReference(std::vector<const Element*>& active, const Element& element);
    ~ActiveReference() { m_active.pop_back(); }
    ActiveReference(const ActiveReference&) = delete;
    ActiveReference& operator=(const ActiveReference&) = delete;

private:
    std::vector<const Element*>& m_active;
};

/// Whether an element's conditions let it be shown (SVG 1.1, 5.8): features of SVG 1 count as
/// there, extensions don't, and the language of the user is English.
bool PassesConditions(const Element& element);

/// The child of a switch that is shown, or null.
const Element* ChooseChild(const Element& switchElement);

} // namespace Svg
