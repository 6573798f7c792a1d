#include "Images.h"

#include <array>
#include <cstdint>

#include <kernel/FormatException.h>
#include <raster/Codecs.h>

#include "Scanner.h"

namespace Svg {

namespace {

int Base64Digit(char c) noexcept
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (IsDigit(c))
        return c - '0' + 52;
    if (c == '+' || c == '-')
        return 62;
    return c == '/' || c == '_' ? 63 : -1;
}

int HexDigit(char c) noexcept
{
    const char lower = ToLower(c);
    return IsDigit(c) ? c - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

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

/// Decodes up to the padding; white space, which attributes are full of, counts for nothing.
std::vector<unsigned char> DecodeBase64(std::string_view text)
{
    std::vector<unsigned char> bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        if (IsSpace(c))
            continue;
        const int digit = Base64Digit(c);
        if (digit < 0)
            break;
        bits = (bits << 6) | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<unsigned char>((bits >> count) & 0xFF));
        }
    }
    return bytes;
}

} // namespace

std::vector<unsigned char> DecodeDataAddress(std::string_view address)
{
    Scanner scanner(Trim(address));
    if (!scanner.AcceptWord("data:"))
        return {};
    const std::string_view header = scanner.Until(',');
    const std::string text = DecodePercents(scanner.Rest());
    if (EqualsIgnoringCase(Trim(header.substr(header.rfind(';') + 1)), "base64"))
        return DecodeBase64(text);
    return {text.begin(), text.end()};
}

Kernel::Counted<const Raster::DynamicBitmap> Images::Find(const Element& image)
{
    const std::string_view address = image.GetReference();
    const auto [entry, added] = m_bitmaps.try_emplace(address);
    if (added)
        entry->second = Read(address);
    return entry->second;
}

Kernel::Counted<const Raster::DynamicBitmap> Images::Read(std::string_view address)
{
    if (Trim(address).empty())
        return {};
    if (!EqualsIgnoringCase(Trim(address).substr(0, 5), "data:")) {
        m_notices.Add("images in other files are not supported");
        return {};
    }
    try {
        return Raster::ReadImage(DecodeDataAddress(address));
    } catch (const Kernel::FormatException& error) {
        m_notices.Add(std::string("an embedded image cannot be read: ") + error.what());
        return {};
    }
}

} // namespace Svg
