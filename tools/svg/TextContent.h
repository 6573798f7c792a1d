#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Context.h"

namespace Svg {

/// A character of a text element, with what positions it.
struct TextCharacter
{
    std::size_t span = 0;   ///< the innermost that holds it
    std::size_t offset = 0; ///< in the text, in bytes
    char32_t code = 0;
    bool collapses = false;  ///< a blank that goes together with those beside it
    bool isControl = false;  ///< of the order of directions; the document doesn't know it
    bool isSmall = false;    ///< a small capital made of a large one
    std::optional<double> x; ///< absolute, in user units
    std::optional<double> y;
    double dx = 0.0;
    double dy = 0.0;
    double rotate = 0.0; ///< radians
};

/// The text of an element: the text element itself, or one in it.
struct TextSpan
{
    const Element* element = nullptr;
    std::shared_ptr<const Style> style;
    std::size_t parent = 0;        ///< that of the first is itself
    std::size_t first = 0;         ///< characters, those of the spans in it included
    std::size_t last = 0;          ///< exclusive
    const Element* path = nullptr; ///< the text path that it is on
    double opacity = 1.0;          ///< of all elements in the text element together
};

/// A text element taken apart: its characters, white space done with, and the elements in it.
class TextContent
{
public:
    /// Longer texts are cut.
    static constexpr std::size_t MaxCharacters = 200'000;

    /// \param style of the text element.
    TextContent(Context& context, const Element& text, const Style& style,
                const LengthContext& lengths);
    TextContent(const TextContent&) = delete;
    TextContent& operator=(const TextContent&) = delete;

    /// All characters in UTF-8.
    const std::string& GetText() const noexcept { return m_text; }
    const std::vector<TextCharacter>& GetCharacters() const noexcept { return m_characters; }
    /// The text element first, then those in it in the order of the document.
    const std::vector<TextSpan>& GetSpans() const noexcept { return m_spans; }
    const TextSpan& GetSpan(const TextCharacter& character) const noexcept
    {
        return m_spans[character.span];
    }
    /// Lengths as the element of a span understands them.
    LengthContext GetLengths(const TextSpan& span) const noexcept;

private:
    void AddElement(const Element& element, std::shared_ptr<const Style> style, std::size_t parent);
    void AddChild(const Element& child, std::size_t span);
    void AddText(std::string_view text, std::size_t span, bool preserve);
    bool HasRoom();
    void AddCharacter(char32_t code, std::size_t span, bool collapses);
    void AddControl(char32_t code, std::size_t span);
    void RemoveLastBlank();
    void Position(const TextSpan& span);

    Context& m_context;
    LengthContext m_lengths;
    std::string m_text;
    std::vector<TextCharacter> m_characters;
    std::optional<std::size_t> m_lastShown; ///< of the characters, controls not counted
    std::vector<TextSpan> m_spans;
};

} // namespace Svg
