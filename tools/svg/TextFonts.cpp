#include "TextFonts.h"

namespace Svg {

TextFonts::Fonts TextFonts::Find(const TextStyle& style, const std::string& language)
{
    const Key key{style.family, style.weight, style.stretch, style.italic, language};
    if (const auto found = m_known.find(key); found != m_known.end())
        return found->second;
    if (m_known.size() >= MaxFonts) {
        m_notices.Add("the drawing has more than 500 fonts; the rest look like the others");
        return m_known.begin()->second;
    }
    const Fonts fonts = Geometry::FontSelection::Find(MakeFont(style), language);
    NoteMissing(*fonts);
    m_known.emplace(key, fonts);
    return fonts;
}

void TextFonts::NoteMissing(const Geometry::FontSelection& fonts)
{
    const std::string& missing = fonts.GetMissingFamily().GetStdString();
    if (!fonts.GetFace())
        m_notices.Add("no font is installed; text is left out");
    else if (!missing.empty())
        m_notices.AddFirst("the font family \"" + missing + "\" is missing",
                           "; \"" + fonts.GetFace()->GetFamily().GetStdString() +
                               "\" takes its place");
}

Kernel::Font MakeFont(const TextStyle& style)
{
    return Kernel::Font(style.family, style.weight, style.italic, style.stretch);
}

} // namespace Svg
