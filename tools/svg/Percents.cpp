#include "Percents.h"

#include "Scanner.h"

namespace Svg {

namespace {

int HexDigit(char c) noexcept
{
    const char lower = ToLower(c);
    return IsDigit(c) ? c - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

std::string DecodePercents(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escaped = text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 &&
                             HexDigit(text[i + 2]) >= 0;
        if (escaped) {
            result += static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2]));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

} // namespace Svg
