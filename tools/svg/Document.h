#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Element.h"

namespace Svg {

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
    /// The texts of the style sheets, in document order.
    std::span<const std::string> GetStyleSheets() const noexcept;

private:
    struct Contents;
    std::unique_ptr<Contents> m_contents;
};

} // namespace Svg
