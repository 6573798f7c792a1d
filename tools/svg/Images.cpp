#include "Images.h"

#include <array>
#include <cstdint>
#include <span>

#include <kernel/FormatException.h>
#include <raster/Codecs.h>

#include "Drawing.h"
#include "Percents.h"
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

Kernel::RectT<double> Images::Image::GetRect() const
{
    if (drawing)
        return {0.0, 0.0, drawing->GetWidth(), drawing->GetHeight()};
    return {0.0, 0.0, static_cast<double>(bitmap->GetWidth()),
            static_cast<double>(bitmap->GetHeight())};
}

const Images::Image& Images::Find(const Element& image)
{
    const std::string_view address = image.GetReference();
    const auto [entry, added] = m_images.try_emplace(address);
    if (added)
        entry->second = Read(address);
    return entry->second;
}

namespace {

/// Whether bytes are those of a drawing: XML, or compressed.
bool IsDrawing(std::span<const unsigned char> bytes)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::size_t begin = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    return text.starts_with("\x1F\x8B") || (begin != text.npos && text[begin] == '<');
}

} // namespace

Images::Image Images::Read(std::string_view address)
{
    if (Trim(address).empty())
        return {};
    const bool isEmbedded = EqualsIgnoringCase(Trim(address).substr(0, 5), "data:");
    if (!isEmbedded && !m_neighbours.Allows(address)) {
        m_notices.Add("images outside the drawing's folder are not read");
        return {};
    }
    const auto bytes =
        isEmbedded ? std::optional(DecodeDataAddress(address)) : m_neighbours.Read(address);
    if (!bytes) {
        m_notices.Add("an image in another file is missing or cannot be read");
        return {};
    }
    try {
        if (IsDrawing(*bytes))
            return {{}, std::make_shared<Drawing>(std::string(bytes->begin(), bytes->end()))};
        return {Raster::ReadImage(*bytes), {}};
    } catch (const Kernel::FormatException& error) {
        m_notices.Add((isEmbedded ? "an embedded image cannot be read: "
                                  : "an image in another file cannot be read: ") +
                      std::string(error.what()));
        return {};
    }
}

} // namespace Svg
