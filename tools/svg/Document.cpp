#include "Document.h"

#include <algorithm>
#include <array>
#include <deque>
#include <optional>
#include <unordered_map>
#include <utility>

#include <pugixml.hpp>

#include <kernel/FormatException.h>

#include "Encoding.h"
#include "Entities.h"
#include "Scanner.h"
#include "StyleSheet.h"

namespace Svg {

namespace {

constexpr std::string_view SvgNamespace = "http://www.w3.org/2000/svg";

constexpr std::array<std::pair<std::string_view, Tag>, 29> TagNames{{
    {"a", Tag::A},
    {"circle", Tag::Circle},
    {"clipPath", Tag::ClipPath},
    {"defs", Tag::Defs},
    {"ellipse", Tag::Ellipse},
    {"filter", Tag::Filter},
    {"foreignObject", Tag::ForeignObject},
    {"g", Tag::Group},
    {"image", Tag::Image},
    {"line", Tag::Line},
    {"linearGradient", Tag::LinearGradient},
    {"marker", Tag::Marker},
    {"mask", Tag::Mask},
    {"path", Tag::Path},
    {"pattern", Tag::Pattern},
    {"polygon", Tag::Polygon},
    {"polyline", Tag::Polyline},
    {"radialGradient", Tag::RadialGradient},
    {"rect", Tag::Rect},
    {"stop", Tag::Stop},
    {"style", Tag::Style},
    {"svg", Tag::Svg},
    {"switch", Tag::Switch},
    {"symbol", Tag::Symbol},
    {"text", Tag::Text},
    {"textPath", Tag::TextPath},
    {"tref", Tag::Tref},
    {"tspan", Tag::Tspan},
    {"use", Tag::Use},
}};

Tag FindTag(std::string_view name) noexcept
{
    const auto found =
        std::ranges::find(TagNames, name, [](const auto& entry) { return entry.first; });
    return found == TagNames.end() ? Tag::Unknown : found->second;
}

struct QualifiedName
{
    std::string_view prefix;
    std::string_view local;
};

QualifiedName SplitName(std::string_view name) noexcept
{
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos)
        return {{}, name};
    return {name.substr(0, colon), name.substr(colon + 1)};
}

/// Which prefixes stand for SVG at a place of the tree. Files without any declaration count as SVG
/// where they have no prefix or the customary one.
class NamespaceScope
{
public:
    /// Takes in the declarations of an element. \return how many there were.
    std::size_t Enter(pugi::xml_node node)
    {
        const std::size_t before = m_declarations.size();
        for (const pugi::xml_attribute attribute : node.attributes()) {
            const std::string_view name = attribute.name();
            if (name == "xmlns")
                m_declarations.push_back({{}, attribute.value()});
            else if (name.starts_with("xmlns:"))
                m_declarations.push_back({name.substr(6), attribute.value()});
        }
        return m_declarations.size() - before;
    }

    void Leave(std::size_t count) { m_declarations.resize(m_declarations.size() - count); }

    bool IsSvg(std::string_view prefix) const
    {
        for (auto it = m_declarations.rbegin(); it != m_declarations.rend(); ++it) {
            if (it->prefix == prefix)
                return it->uri == SvgNamespace || (prefix.empty() && it->uri.empty());
        }
        return prefix.empty() || prefix == "svg";
    }

private:
    struct Declaration
    {
        std::string_view prefix;
        std::string_view uri;
    };
    std::vector<Declaration> m_declarations;
};

bool IsCharacterData(pugi::xml_node node)
{
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

/// The texts inside a style element.
std::string CollectText(pugi::xml_node node)
{
    std::string text;
    for (const pugi::xml_node child : node.children()) {
        if (IsCharacterData(child))
            text += child.value();
    }
    return text;
}

bool IsCssForScreen(const Element& style)
{
    const std::string_view type = style.Get("type");
    return (type.empty() || EqualsIgnoringCase(Trim(type), "text/css")) &&
           IsForScreen(style.Get("media"));
}

/// The sheet that an `xml-stylesheet` instruction names (Associating Style Sheets with XML
/// documents 1.0); nothing for alternative ones and those for other media.
std::optional<StyleSource> FindSheet(pugi::xml_node instruction)
{
    // What follows the name looks like the attributes of an element.
    pugi::xml_document parsed;
    const std::string element = "<a " + std::string(instruction.value()) + "/>";
    if (!parsed.load_string(element.c_str()))
        return std::nullopt;
    const pugi::xml_node node = parsed.first_child();
    const std::string_view type = node.attribute("type").value();
    if ((!type.empty() && !EqualsIgnoringCase(type, "text/css")) ||
        std::string_view(node.attribute("alternate").value()) == "yes" ||
        !IsForScreen(node.attribute("media").value()))
        return std::nullopt;
    return StyleSource{{}, node.attribute("href").value()};
}

} // namespace

struct Document::Contents
{
    std::string text; // parsed in place: every string_view of the tree points into it
    pugi::xml_document xml;
    std::deque<Element> elements;
    std::unordered_map<std::string_view, const Element*> ids;
    std::vector<StyleSource> styleSheets;
    bool namesBlendModes = false;

    void Parse();
    void BuildTree();
    Element* Add(pugi::xml_node node, std::string_view name, Element* parent, Element* previous);
};

void Document::Contents::Parse()
{
    // Blanks between elements matter in text alone.
    const bool hasText = text.find("text") != std::string::npos;
    const unsigned options =
        pugi::parse_default | pugi::parse_pi | (hasText ? pugi::parse_ws_pcdata : 0U);
    const pugi::xml_parse_result result =
        xml.load_buffer_inplace(text.data(), text.size(), options, pugi::encoding_utf8);
    if (!result) {
        throw Kernel::FormatException(std::string("not well-formed XML: ") + result.description(),
                                      static_cast<std::uint64_t>(result.offset));
    }
}

Element* Document::Contents::Add(pugi::xml_node node, std::string_view name, Element* parent,
                                 Element* previous)
{
    Element& element = elements.emplace_back();
    element.order = element.lastOrder = static_cast<int>(elements.size());
    element.name = name;
    element.tag = FindTag(name);
    element.parent = parent;
    element.previousSibling = previous;
    for (const pugi::xml_attribute attribute : node.attributes())
        element.attributes.push_back({attribute.name(), attribute.value()});
    element.id = element.Get("id");
    if (!element.id.empty())
        ids.try_emplace(element.id, &element);
    if (element.tag == Tag::Style && IsCssForScreen(element))
        styleSheets.push_back({CollectText(node), {}});
    if (previous) {
        previous->nextSibling = &element;
        element.index = previous->index + 1;
    } else if (parent) {
        parent->firstChild = &element;
    }
    if (parent)
        parent->childCount = element.index;
    return &element;
}

/// Walks the XML tree without recursion, since its depth is the file's choice.
void Document::Contents::BuildTree()
{
    for (const pugi::xml_node node : xml.children()) {
        if (node.type() != pugi::node_pi || std::string_view(node.name()) != "xml-stylesheet")
            continue;
        if (auto sheet = FindSheet(node); sheet && !sheet->address.empty())
            styleSheets.push_back(std::move(*sheet));
    }
    struct Level
    {
        pugi::xml_node next; ///< the node of this level that comes next
        Element* parent;
        Element* previous;
        std::size_t declarations; ///< namespace declarations of the parent
        bool isInText;            ///< the parent is a text element, or within one
    };
    NamespaceScope scope;
    std::vector<Level> levels{{xml.document_element(), nullptr, nullptr, 0, false}};
    while (!levels.empty()) {
        Level& level = levels.back();
        const pugi::xml_node node = level.next;
        if (!node) {
            if (level.parent)
                level.parent->lastOrder = elements.back().order;
            scope.Leave(level.declarations);
            levels.pop_back();
            continue;
        }
        level.next = node.next_sibling();
        if (level.isInText && IsCharacterData(node))
            level.parent->texts.push_back({node.value(), level.previous});
        if (node.type() != pugi::node_element)
            continue;
        const std::size_t declarations = scope.Enter(node);
        const QualifiedName name = SplitName(node.name());
        if (!scope.IsSvg(name.prefix)) {
            scope.Leave(declarations);
            continue;
        }
        level.previous = Add(node, name.local, level.parent, level.previous);
        if (levels.size() > MaxDepth)
            throw Kernel::FormatException("elements are nested more than 1000 deep");
        const bool isInText = level.isInText || level.previous->tag == Tag::Text;
        levels.push_back({node.first_child(), level.previous, nullptr, declarations, isInText});
    }
}

Document::Document(std::string bytes) : m_contents(std::make_unique<Contents>())
{
    m_contents->text = ExpandEntities(ConvertToUtf8(Gunzip(std::move(bytes))));
    m_contents->namesBlendModes = m_contents->text.find("mix-blend-mode") != std::string::npos;
    m_contents->Parse();
    m_contents->BuildTree();
    if (m_contents->elements.empty() || GetRoot().tag != Tag::Svg)
        throw Kernel::FormatException("not an SVG drawing: the root element is not svg");
}

Document::~Document() = default;

const Element& Document::GetRoot() const noexcept
{
    return m_contents->elements.front();
}

const Element* Document::FindById(std::string_view id) const noexcept
{
    const auto found = m_contents->ids.find(id);
    return found == m_contents->ids.end() ? nullptr : found->second;
}

const Element* Document::FindByReference(std::string_view reference) const noexcept
{
    reference = Trim(reference);
    return reference.starts_with('#') ? FindById(reference.substr(1)) : nullptr;
}

bool Document::NamesBlendModes() const noexcept
{
    return m_contents->namesBlendModes;
}

std::span<const StyleSource> Document::GetStyleSheets() const noexcept
{
    return m_contents->styleSheets;
}

} // namespace Svg
