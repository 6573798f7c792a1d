#include "Context.h"

#include <algorithm>
#include <optional>
#include <string>

#include <kernel/FormatException.h>

#include "Neighbours.h"
#include "Scanner.h"

namespace Svg {

namespace {

/// Reads style sheets beside a drawing.
ReadSheet MakeSheetReader(const Neighbours& neighbours, Notices& notices)
{
    return [&](const std::string& address) -> std::optional<std::string> {
        const auto bytes = neighbours.Read(address);
        if (!bytes) {
            notices.Add(neighbours.Allows(address)
                            ? "a style sheet in another file is missing or cannot be read"
                            : "style sheets outside the drawing's folder are not read");
            return std::nullopt;
        }
        constexpr std::string_view mark = "\xEF\xBB\xBF"; // of UTF-8
        std::string text(bytes->begin(), bytes->end());
        return text.starts_with(mark) ? text.substr(mark.size()) : text;
    };
}

} // namespace

Context::Context(const Document& document, const std::filesystem::path& folder)
    : m_document(document),
      m_styles(document, MakeSheetReader(Neighbours(folder), m_notices)),
      m_paintServers(m_document, m_styles, m_notices),
      m_images(folder, m_notices),
      m_fonts(m_notices)
{}

bool Context::IsActive(const Element& element) const
{
    return std::ranges::find(m_active, &element) != m_active.end();
}

void Context::StartPicture(double pixels)
{
    m_counts.pixels = MorePixels + PixelsPerPixel * pixels;
    m_tiles = {};
    m_counts.usedElements = 0;
    m_counts.markers = 0;
    m_counts.characters = 0;
    m_counts.fitted = 0.0;
    m_counts.pathSegments = 0.0;
    m_textPaths = {};
}

bool Context::SpendPixels(double pixels)
{
    if (!(pixels <= m_counts.pixels)) {
        m_notices.Add("patterns and masks need too many pixels; what is painted with the rest of "
                      "them is left out");
        return false;
    }
    m_counts.pixels -= pixels;
    return true;
}

bool Context::CountMarker()
{
    if (m_counts.markers == MaxMarkers)
        m_notices.Add("there are more than 200,000 markers; the rest is left out");
    return m_counts.markers++ < MaxMarkers;
}

bool Context::CountCharacters(std::size_t count)
{
    if (m_counts.characters >= MaxCharacters) {
        m_notices.Add("text is laid out for more than 2,000,000 characters; the rest is left out");
        return false;
    }
    m_counts.characters += static_cast<long>(count);
    return true;
}

bool Context::CountFitted(std::size_t clusters)
{
    if (m_counts.fitted + double(clusters) > MaxFitted) {
        m_notices.Add("too much text is to be fitted to lengths; the rest keeps its own");
        return false;
    }
    m_counts.fitted += double(clusters);
    return true;
}

bool Context::HasPathSegments()
{
    if (m_counts.pathSegments >= MaxPathSegments)
        m_notices.Add(
            "paths of text have more than a million segments; text on others is left out");
    return m_counts.pathSegments < MaxPathSegments;
}

const Element* Context::FindShown(const Element& use, const std::vector<const Element*>& active)
{
    const Element* shown = m_document.FindByReference(use.GetReference());
    if (!shown) {
        m_notices.Add("a use element refers to an element that is missing");
        return nullptr;
    }
    const auto isWithin = [&](const Element* element) { return shown->Holds(*element); };
    if (isWithin(&use) || std::ranges::any_of(active, isWithin)) {
        m_notices.Add("a use element that shows itself is left out");
        return nullptr;
    }
    return shown;
}

void Context::CountUsedElement()
{
    if (++m_counts.usedElements > MaxUsedElements)
        throw Kernel::FormatException("references show more than a million elements");
}

ActiveReference::ActiveReference(std::vector<const Element*>& active, const Element& element)
    : m_active(active)
{
    if (active.size() == MaxNesting)
        throw Kernel::FormatException("references are nested too deep");
    active.push_back(&element);
}

namespace {

bool NamesEnglish(std::string_view languages)
{
    Scanner scanner(languages);
    while (!scanner.AtEnd()) {
        const std::string_view language = Trim(scanner.Until(','));
        if (EqualsIgnoringCase(language.substr(0, language.find('-')), "en"))
            return true;
    }
    return false;
}

} // namespace

bool PassesConditions(const Element& element)
{
    if (element.Has("requiredExtensions"))
        return false;
    if (element.Has("requiredFeatures") && Trim(element.Get("requiredFeatures")).empty())
        return false;
    return !element.Has("systemLanguage") || NamesEnglish(element.Get("systemLanguage"));
}

const Element* ChooseChild(const Element& switchElement)
{
    for (const Element* child = switchElement.firstChild; child; child = child->nextSibling) {
        if (IsDrawable(child->tag) && PassesConditions(*child))
            return child;
    }
    return nullptr;
}

} // namespace Svg
