#include "LetterCase.h"

#include <cwctype>

#include <locale.h>
#include <wctype.h>

namespace Svg {

namespace {

/// The locale whose letters are those of Unicode, whatever that of the program is.
locale_t GetUnicodeLocale() noexcept
{
    static const locale_t unicode = [] {
        const locale_t found = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
        return found ? found : newlocale(LC_CTYPE_MASK, "C", locale_t{});
    }();
    return unicode;
}

} // namespace

char32_t ToUpperCase(char32_t letter) noexcept
{
    return static_cast<char32_t>(towupper_l(static_cast<wint_t>(letter), GetUnicodeLocale()));
}

char32_t ToLowerCase(char32_t letter) noexcept
{
    return static_cast<char32_t>(towlower_l(static_cast<wint_t>(letter), GetUnicodeLocale()));
}

bool IsLetter(char32_t character) noexcept
{
    return iswalpha_l(static_cast<wint_t>(character), GetUnicodeLocale()) != 0;
}

} // namespace Svg
