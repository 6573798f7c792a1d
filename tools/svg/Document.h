#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Element.h"

namespace Svg {

/// A style sheet of a document: in a style element, or in a file that the document names.
struct StyleSource
{
    std::string text;
    std::string address; ///< empty for the former
};

/// An SVG file as a tree of elements.
class Document
{
public:
    /// Elements nested deeper than this are refused.
    static constexpr int MaxDepth = 1000;

    /// Reads a file, which may be compressed with gzip.
    /// \throws Kernel::FormatException when it is not well-formed XML, not SVG or nested too deep.
    explicit Document(std::string bytes);
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    const Element& GetRoot() const noexcept;
    /// The first element with this id, or null.
    const Element* FindById(std::string_view id) const noexcept;
    /// The element that a reference such as `#id` means, or null: other files are not read.
    const Element* FindByReference(std::string_view reference) const noexcept;
    /// Whether blend modes are named anywhere, so that groups must keep theirs to themselves.
    bool NamesBlendModes() const noexcept;
    /// The style sheets for screens, in document order.
    std::span<const StyleSource> GetStyleSheets() const noexcept;

private:
    struct Contents;
    std::unique_ptr<Contents> m_contents;
};

} // namespace Svg
