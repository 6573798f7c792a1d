#include "Context.h"

#include <algorithm>

#include <kernel/FormatException.h>

#include "Scanner.h"

namespace Svg {

Context::Context(const Document& document, std::filesystem::path folder)
    : m_document(document),
      m_styles(document),
      m_paintServers(m_document, m_styles, m_notices),
      m_images(std::move(folder), m_notices)
{}

bool Context::IsActive(const Element& element) const
{
    return std::ranges::find(m_active, &element) != m_active.end();
}

void Context::StartPicture(double pixels)
{
    m_pixels = MorePixels + PixelsPerPixel * pixels;
    m_tiles = {};
    m_usedElements = 0;
    m_markers = 0;
}

bool Context::SpendPixels(double pixels)
{
    if (!(pixels <= m_pixels)) {
        m_notices.Add("patterns and masks need too many pixels; what is painted with the rest of "
                      "them is left out");
        return false;
    }
    m_pixels -= pixels;
    return true;
}

bool Context::CountMarker()
{
    if (m_markers == MaxMarkers)
        m_notices.Add("there are more than 200,000 markers; the rest is left out");
    return m_markers++ < MaxMarkers;
}

void Context::CountUsedElement()
{
    if (++m_usedElements > MaxUsedElements)
        throw Kernel::FormatException("references show more than a million elements");
}

ActiveReference::ActiveReference(std::vector<const Element*>& active, const Element& element)
    : m_active(active)
{
    if (active.size() == MaxNesting)
        throw Kernel::FormatException("references are nested too deep");
    if (std::ranges::find(active, &element) != active.end())
        throw Kernel::FormatException(std::string(element.name) + " " + std::string(element.id) +
                                      " refers to itself");
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
