#include "Scanner.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace Svg {

namespace {

std::size_t CountDigits(std::string_view text, std::size_t from) noexcept
{
    std::size_t end = from;
    while (end < text.size() && IsDigit(text[end]))
        ++end;
    return end - from;
}

/// The length of the exponent at \p from, or 0 where there is none.
std::size_t ExponentLength(std::string_view text, std::size_t from) noexcept
{
    if (from >= text.size() || ToLower(text[from]) != 'e')
        return 0;
    std::size_t digits = from + 1;
    if (digits < text.size() && (text[digits] == '+' || text[digits] == '-'))
        ++digits;
    const std::size_t count = CountDigits(text, digits);
    return count == 0 ? 0 : digits + count - from;
}

/// The value of an unsigned number whose form has been checked.
double Convert(std::string_view text) noexcept
{
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc::result_out_of_range)
        return value;
    // Out of range at either end: a negative exponent can only mean too small.
    return text.find('-') != std::string_view::npos ? 0.0 : std::numeric_limits<double>::max();
}

} // namespace

std::string_view Trim(std::string_view text) noexcept
{
    while (!text.empty() && IsSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) noexcept
{
    return std::ranges::equal(a, b, {}, ToLower, ToLower);
}

std::vector<std::string_view> SplitWords(std::string_view list)
{
    std::vector<std::string_view> words;
    while (!(list = Trim(list)).empty()) {
        const auto end = std::ranges::find_if(list, IsSpace);
        words.push_back(list.substr(0, static_cast<std::size_t>(end - list.begin())));
        list.remove_prefix(words.back().size());
    }
    return words;
}

char Scanner::Next() noexcept
{
    const char c = Peek();
    if (!m_rest.empty())
        m_rest.remove_prefix(1);
    return c;
}

void Scanner::SkipSpace() noexcept
{
    while (!m_rest.empty() && IsSpace(m_rest.front()))
        m_rest.remove_prefix(1);
}

bool Scanner::SkipCommaSpace() noexcept
{
    SkipSpace();
    const bool comma = Accept(',');
    if (comma)
        SkipSpace();
    return comma;
}

bool Scanner::Accept(char c) noexcept
{
    if (m_rest.empty() || m_rest.front() != c)
        return false;
    m_rest.remove_prefix(1);
    return true;
}

bool Scanner::AcceptWord(std::string_view word) noexcept
{
    if (!EqualsIgnoringCase(m_rest.substr(0, word.size()), word))
        return false;
    m_rest.remove_prefix(word.size());
    return true;
}

std::optional<double> Scanner::Number() noexcept
{
    std::size_t start = 0;
    const bool negative = Peek() == '-';
    if (negative || Peek() == '+')
        start = 1;
    const std::size_t whole = CountDigits(m_rest, start);
    std::size_t end = start + whole;
    std::size_t fraction = 0;
    if (end < m_rest.size() && m_rest[end] == '.') {
        fraction = CountDigits(m_rest, end + 1);
        if (whole + fraction > 0)
            end += 1 + fraction;
    }
    if (whole + fraction == 0)
        return std::nullopt;
    end += ExponentLength(m_rest, end);
    const double value = Convert(m_rest.substr(start, end - start));
    m_rest.remove_prefix(end);
    return negative ? -value : value;
}

std::optional<bool> Scanner::Flag() noexcept
{
    if (Accept('0'))
        return false;
    if (Accept('1'))
        return true;
    return std::nullopt;
}

std::string_view Scanner::Word() noexcept
{
    std::size_t end = 0;
    const auto isWord = [](char c) {
        return IsDigit(c) || c == '-' || c == '_' || (ToLower(c) >= 'a' && ToLower(c) <= 'z');
    };
    while (end < m_rest.size() && isWord(m_rest[end]))
        ++end;
    const std::string_view word = m_rest.substr(0, end);
    m_rest.remove_prefix(end);
    return word;
}

std::string_view Scanner::Until(char c) noexcept
{
    const std::size_t end = std::min(m_rest.find(c), m_rest.size());
    const std::string_view text = m_rest.substr(0, end);
    m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
    return text;
}

} // namespace Svg
