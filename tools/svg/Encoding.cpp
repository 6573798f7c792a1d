#include "Encoding.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

#include <iconv.h>

#include <kernel/FormatException.h>

#include "Scanner.h"

namespace Svg {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view ReplacementCharacter = "\xEF\xBF\xBD";

struct Mark
{
    std::string_view bytes;
    std::string_view encoding;
    bool dropped; ///< a byte order mark goes, the first characters of the text stay
};

// UTF-32 comes first: its little-endian mark begins with that of UTF-16.
constexpr std::array<Mark, 9> Marks{{
    {"\xFF\xFE\0\0"sv, "UTF-32LE", true},
    {"\0\0\xFE\xFF"sv, "UTF-32BE", true},
    {"<\0\0\0"sv, "UTF-32LE", false},
    {"\0\0\0<"sv, "UTF-32BE", false},
    {"\xEF\xBB\xBF"sv, "UTF-8", true},
    {"\xFF\xFE"sv, "UTF-16LE", true},
    {"\xFE\xFF"sv, "UTF-16BE", true},
    {"<\0"sv, "UTF-16LE", false},
    {"\0<"sv, "UTF-16BE", false},
}};

/// The value of `encoding="…"` in the XML declaration; empty where there is none.
std::string_view FindDeclaredEncoding(std::string_view bytes)
{
    if (!bytes.starts_with("<?xml"))
        return {};
    const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
    const std::size_t keyword = declaration.find("encoding");
    if (keyword == std::string_view::npos)
        return {};
    Scanner scanner(declaration.substr(keyword + "encoding"sv.size()));
    scanner.SkipSpace();
    scanner.Accept('=');
    scanner.SkipSpace();
    const char quote = scanner.Next();
    return quote == '"' || quote == '\'' ? Trim(scanner.Until(quote)) : std::string_view();
}

/// The name under which the converter knows a declared encoding; empty when it isn't one of those
/// that drawings use. Latin-1 is read as its superset Windows-1252, as files are written.
std::string FindConverter(std::string_view declared)
{
    std::string name(declared);
    std::ranges::transform(name, name.begin(), ToLower);
    if (name.empty() || name == "utf-8" || name == "utf8" || name == "us-ascii" || name == "ascii")
        return "UTF-8";
    // A 16-bit file that could be read up to its declaration is none any more.
    if (name.starts_with("utf-16") || name.starts_with("utf-32") || name == "unicode")
        return "UTF-8";
    if (name == "iso-8859-1" || name == "iso8859-1" || name == "iso_8859-1" || name == "latin1")
        return "WINDOWS-1252";
    constexpr std::array prefixes{"iso-8859-"sv, "windows-125"sv, "cp125"sv,    "koi8-"sv,
                                  "shift_jis"sv, "euc-jp"sv,      "euc-kr"sv,   "gb2312"sv,
                                  "gbk"sv,       "big5"sv,        "macintosh"sv};
    const auto isPrefix = [&](std::string_view prefix) { return name.starts_with(prefix); };
    return std::ranges::any_of(prefixes, isPrefix) ? name : std::string();
}

/// Closes a converter.
struct CloseConverter
{
    void operator()(void* converter) const noexcept { iconv_close(converter); }
};

std::string Convert(std::string_view bytes, const std::string& encoding)
{
    const iconv_t opened = iconv_open("UTF-8", encoding.c_str());
    if (opened == reinterpret_cast<iconv_t>(-1))
        throw Kernel::FormatException("the encoding " + encoding + " is not known");
    const std::unique_ptr<void, CloseConverter> converter(opened);
    std::string result;
    std::array<char, 16384> chunk;
    char* in = const_cast<char*>(bytes.data()); // the interface of iconv; it is not written to
    std::size_t left = bytes.size();
    while (left > 0) {
        char* out = chunk.data();
        std::size_t space = chunk.size();
        const std::size_t converted = iconv(converter.get(), &in, &left, &out, &space);
        const int error = errno;
        result.append(chunk.data(), chunk.size() - space);
        if (converted != static_cast<std::size_t>(-1) || error == E2BIG)
            continue;
        result += ReplacementCharacter;
        ++in;
        --left;
    }
    return result;
}

} // namespace

std::string ConvertToUtf8(std::string_view bytes)
{
    const auto found = std::ranges::find_if(
        Marks, [&](const Mark& mark) { return bytes.starts_with(mark.bytes); });
    std::string encoding;
    if (found != Marks.end()) {
        encoding = found->encoding;
        if (found->dropped)
            bytes.remove_prefix(found->bytes.size());
    } else {
        const std::string_view declared = FindDeclaredEncoding(bytes);
        encoding = FindConverter(declared);
        if (encoding.empty())
            throw Kernel::FormatException("the encoding " + std::string(declared.substr(0, 40)) +
                                          " is not known");
    }
    return encoding == "UTF-8" ? std::string(bytes) : Convert(bytes, encoding);
}

} // namespace Svg
