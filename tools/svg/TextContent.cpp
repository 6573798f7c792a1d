#include "TextContent.h"

#include <algorithm>
#include <numbers>

#include <geometry/text/Utf8.h>

#include "LetterCase.h"
#include "Scanner.h"
#include "Scopes.h"

namespace Svg {

namespace {

/// Whether white space is kept as it is where an element's own text stands.
bool PreservesSpace(const Element& element, const Style& style)
{
    if (style.text.whiteSpace != WhiteSpace::FromXml)
        return style.text.whiteSpace == WhiteSpace::Preserve;
    for (const Element* e = &element; e; e = e->parent) {
        if (e->Has("xml:space"))
            return e->Get("xml:space") == "preserve";
    }
    return false;
}

/// The marks of Unicode around a piece of text whose direction differs (UAX #9).
struct BidiMarks
{
    char32_t open = 0; ///< 0: none
    char32_t close = 0;
    char32_t open2 = 0; ///< within the first; 0: none
    char32_t close2 = 0;
};

BidiMarks FindMarks(const Style& style)
{
    constexpr char32_t endEmbedding = 0x202C, endIsolate = 0x2069;
    const bool rtl = style.text.rightToLeft;
    switch (style.inlineText.bidi) {
    case UnicodeBidi::Embed:
        return {rtl ? U'\u202B' : U'\u202A', endEmbedding};
    case UnicodeBidi::Override:
        return {rtl ? U'\u202E' : U'\u202D', endEmbedding};
    case UnicodeBidi::Isolate:
        return {rtl ? U'\u2067' : U'\u2066', endIsolate};
    case UnicodeBidi::IsolateOverride:
        return {U'\u2068', endIsolate, rtl ? U'\u202E' : U'\u202D', endEmbedding};
    case UnicodeBidi::Plaintext:
        return {U'\u2068', endIsolate};
    case UnicodeBidi::Normal:
        break;
    }
    return {};
}

/// A list of lengths, as x, y, dx and dy have them, in user units.
std::vector<double> ParseLengths(const Element& element, std::string_view attribute,
                                 const LengthContext& context, LengthAxis axis)
{
    std::vector<double> lengths;
    Scanner scanner(Trim(element.Get(attribute)));
    while (!scanner.AtEnd()) {
        const auto length = ScanLength(scanner);
        if (!length)
            break;
        lengths.push_back(length->Resolve(context, axis));
        scanner.SkipCommaSpace();
    }
    return lengths;
}

/// The angles of `rotate`, in radians.
std::vector<double> ParseAngles(const Element& element)
{
    std::vector<double> angles;
    Scanner scanner(Trim(element.Get("rotate")));
    while (!scanner.AtEnd()) {
        const auto angle = scanner.Number();
        if (!angle)
            break;
        angles.push_back(*angle * std::numbers::pi / 180.0);
        scanner.SkipCommaSpace();
    }
    return angles;
}

bool HasUpperCase(char32_t code)
{
    return ToUpperCase(code) != code;
}

} // namespace

TextContent::TextContent(Context& context, const Element& text, const Style& style,
                         const LengthContext& lengths)
    : m_context(context), m_lengths(lengths)
{
    AddElement(text, std::make_shared<const Style>(style), 0);
    RemoveLastBlank();
    // The lists of elements within come later and replace those of the elements around them.
    for (const TextSpan& span : m_spans)
        Position(span);
}

LengthContext TextContent::GetLengths(const TextSpan& span) const noexcept
{
    return {m_lengths.viewportWidth, m_lengths.viewportHeight, span.style->fontSize};
}

void TextContent::AddElement(const Element& element, std::shared_ptr<const Style> own,
                             std::size_t parent)
{
    const Style& style = *own;
    const std::size_t index = m_spans.size();
    const bool isRoot = index == 0;
    TextSpan span{&element, std::move(own), parent, m_characters.size()};
    if (!isRoot) {
        span.path = m_spans[parent].path;
        span.opacity = m_spans[parent].opacity * style.opacity;
    }
    if (element.tag == Tag::TextPath && m_spans[parent].element->tag == Tag::Text)
        span.path = &element;
    m_spans.push_back(std::move(span));
    const BidiMarks marks = FindMarks(style);
    AddControl(marks.open, index);
    AddControl(marks.open2, index);
    const bool preserve = PreservesSpace(element, style);
    auto piece = element.texts.begin();
    const auto addTexts = [&](const Element* after) {
        for (; piece != element.texts.end() && piece->after == after; ++piece)
            AddText(piece->text, index, preserve);
    };
    addTexts(nullptr);
    for (const Element* child = element.firstChild; child; child = child->nextSibling) {
        AddChild(*child, index);
        addTexts(child);
    }
    AddControl(marks.close2, index);
    AddControl(marks.close, index);
    m_spans[index].last = m_characters.size();
}

void TextContent::AddChild(const Element& child, std::size_t span)
{
    if (child.tag == Tag::Tref)
        m_context.GetNotices().Add("tref elements are not drawn");
    if (child.tag != Tag::Tspan && child.tag != Tag::TextPath && child.tag != Tag::A)
        return;
    if (!PassesConditions(child))
        return;
    const CountedDepth depth(m_context.GetDepth(), Document::MaxDepth);
    m_context.CountUsedElement();
    auto style =
        std::make_shared<const Style>(m_context.GetStyles().Resolve(child, *m_spans[span].style));
    if (style->displayed)
        AddElement(child, std::move(style), span);
}

void TextContent::AddControl(char32_t code, std::size_t span)
{
    if (code == 0 || !HasRoom())
        return;
    AddCharacter(code, span, false);
    m_characters.back().isControl = true;
}

/// Whether there may be one more character; if not, that is noted.
bool TextContent::HasRoom()
{
    if (m_characters.size() < MaxCharacters)
        return true;
    m_context.GetNotices().Add("text of more than 200,000 characters is cut");
    return false;
}

void TextContent::AddCharacter(char32_t code, std::size_t span, bool collapses)
{
    TextCharacter character;
    character.span = span;
    character.offset = m_text.size();
    character.code = code;
    character.collapses = collapses;
    m_characters.push_back(character);
    Geometry::AppendCharacter(m_text, code);
}

/// Line ends and tabs count as blanks; those that collapse are left out at the beginning and behind
/// others that do.
void TextContent::AddText(std::string_view text, std::size_t span, bool preserve)
{
    const TextStyle& style = m_spans[span].style->text;
    for (std::size_t offset = 0; offset < text.size();) {
        if (!HasRoom())
            return;
        char32_t code = Geometry::NextCharacter(text, offset);
        if (code < 0x20)
            code = ' ';
        const TextCharacter* const shown = m_lastShown ? &m_characters[*m_lastShown] : nullptr;
        const bool isBlank = code == ' ' && !preserve;
        const bool follows = !shown || shown->collapses;
        if (isBlank && follows)
            continue;
        const bool beginsWord = !shown || !IsLetter(shown->code);
        const bool toUpper = style.letterCase == TextCase::Upper ||
                             (style.letterCase == TextCase::Capitalised && beginsWord);
        if (toUpper)
            code = ToUpperCase(code);
        else if (style.letterCase == TextCase::Lower)
            code = ToLowerCase(code);
        const bool isSmall = style.smallCaps && HasUpperCase(code);
        AddCharacter(isSmall ? ToUpperCase(code) : code, span, isBlank);
        m_characters.back().isSmall = isSmall;
        m_lastShown = m_characters.size() - 1;
    }
}

/// Takes a blank off the end, where it would collapse with the end of the line.
void TextContent::RemoveLastBlank()
{
    std::size_t last = m_characters.size();
    while (last > 0 && m_characters[last - 1].isControl)
        --last;
    if (last == 0 || !m_characters[last - 1].collapses)
        return;
    const auto place = m_characters.begin() + std::ptrdiff_t(last - 1);
    m_text.erase(place->offset, 1);
    for (auto next = m_characters.erase(place); next != m_characters.end(); ++next)
        --next->offset;
    for (TextSpan& span : m_spans) {
        span.first -= span.first >= last ? 1 : 0;
        span.last -= span.last >= last ? 1 : 0;
    }
}

/// Gives the lists of positions of an element to its characters.
void TextContent::Position(const TextSpan& span)
{
    const LengthContext lengths = GetLengths(span);
    const auto list = [&](std::string_view attribute, LengthAxis axis) {
        return ParseLengths(*span.element, attribute, lengths, axis);
    };
    const auto x = list("x", LengthAxis::Horizontal), y = list("y", LengthAxis::Vertical);
    const auto dx = list("dx", LengthAxis::Horizontal), dy = list("dy", LengthAxis::Vertical);
    const auto rotate = ParseAngles(*span.element);
    // Text paths have no positions of their own.
    if (span.element->tag == Tag::TextPath)
        return;
    const std::size_t longest = std::max({x.size(), y.size(), dx.size(), dy.size()});
    std::size_t index = 0;
    for (std::size_t i = span.first; i < span.last; ++i) {
        if (index >= longest && rotate.empty())
            return;
        TextCharacter& character = m_characters[i];
        if (character.isControl)
            continue;
        if (index < x.size())
            character.x = x[index];
        if (index < y.size())
            character.y = y[index];
        if (index < dx.size())
            character.dx = dx[index];
        if (index < dy.size())
            character.dy = dy[index];
        if (!rotate.empty())
            character.rotate = rotate[std::min(index, rotate.size() - 1)];
        ++index;
    }
}

} // namespace Svg
