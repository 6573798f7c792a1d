#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Geometry {

/// Takes the character at \p offset of a text in UTF-8 and moves the offset behind it. A byte that
/// belongs to no character counts as U+FFFD.
/// \pre the offset lies within the text.
inline char32_t NextCharacter(std::string_view text, std::size_t& offset) noexcept
{
    constexpr char32_t replacement = 0xFFFD;
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(offset++);
    if (first < 0x80)
        return first;
    const std::size_t more = first >= 0xF0 && first < 0xF5   ? 3
                             : first >= 0xE0 && first < 0xF0 ? 2
                             : first >= 0xC2 && first < 0xE0 ? 1
                                                             : 0;
    char32_t character = first & (0x3FU >> more);
    for (std::size_t i = 0; i < more; ++i) {
        const unsigned next = byte(offset + i);
        if ((next & 0xC0) != 0x80)
            return replacement;
        character = character << 6 | (next & 0x3F);
    }
    constexpr char32_t smallest[] = {replacement, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character < 0xE000;
    if (more == 0 || character < smallest[more] || character > 0x10FFFF || isSurrogate)
        return replacement;
    offset += more;
    return character;
}

/// Appends a character to a text in UTF-8. \pre it is no surrogate and not above U+10FFFF.
inline void AppendCharacter(std::string& text, char32_t character)
{
    const auto add = [&](char32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) {
        add(character);
        return;
    }
    if (character < 0x800) {
        add(0xC0 | character >> 6);
    } else {
        if (character < 0x10000) {
            add(0xE0 | character >> 12);
        } else {
            add(0xF0 | character >> 18);
            add(0x80 | (character >> 12 & 0x3F));
        }
        add(0x80 | (character >> 6 & 0x3F));
    }
    add(0x80 | (character & 0x3F));
}

} // namespace Geometry
