#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace Svg {

/// Whether \p c is white space of XML and CSS.
constexpr bool IsSpace(char c) noexcept
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}
constexpr bool IsDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}
constexpr char ToLower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The text without white space at either end.
std::string_view Trim(std::string_view text) noexcept;
/// Whether two texts are equal but for the case of ASCII letters.
bool EqualsIgnoringCase(std::string_view a, std::string_view b) noexcept;

/// The words of a list that white space separates.
std::vector<std::string_view> SplitWords(std::string_view list);

/// Takes numbers, words and separators off the front of an attribute's text. What does not match is
/// left where it is.
class Scanner
{
public:
    explicit Scanner(std::string_view text) noexcept : m_rest(text) {}

    bool AtEnd() const noexcept { return m_rest.empty(); }
    /// The next character; 0 at the end.
    char Peek() const noexcept { return m_rest.empty() ? '\0' : m_rest.front(); }
    char Next() noexcept;
    std::string_view Rest() const noexcept { return m_rest; }

    void SkipSpace() noexcept;
    /// Skips white space with at most one comma in it. \return whether there was a comma.
    bool SkipCommaSpace() noexcept;
    /// Takes one given character.
    bool Accept(char c) noexcept;
    /// Takes a word if the text begins with it, in any case of letters.
    bool AcceptWord(std::string_view word) noexcept;

    /// A number: sign, digits with a point anywhere, exponent. What exceeds the range of a double
    /// becomes the largest one. An `e` without digits is left alone, so that `1em` gives 1.
    std::optional<double> Number() noexcept;
    /// A flag of an arc: a single 0 or 1, which need not be separated from what follows.
    std::optional<bool> Flag() noexcept;
    /// Letters, digits, `-` and `_`; may be empty.
    std::string_view Word() noexcept;
    /// Everything up to \p c, which is dropped, or to the end.
    std::string_view Until(char c) noexcept;

private:
    std::string_view m_rest;
};

} // namespace Svg
