#include "Entities.h"

#include <algorithm>
#include <map>
#include <optional>

#include <kernel/FormatException.h>

#include "Scanner.h"

namespace Svg {

namespace {

constexpr std::size_t MaxExpansion = std::size_t{16} << 20;
constexpr int MaxNesting = 32;

using EntityTable = std::map<std::string, std::string, std::less<>>;

void AppendUtf8(std::string& out, unsigned long code)
{
    const auto add = [&](unsigned long bits) { out += static_cast<char>(bits); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0 | (code >> 6));
        add(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        add(0xE0 | (code >> 12));
        add(0x80 | ((code >> 6) & 0x3F));
        add(0x80 | (code & 0x3F));
    } else {
        add(0xF0 | (code >> 18));
        add(0x80 | ((code >> 12) & 0x3F));
        add(0x80 | ((code >> 6) & 0x3F));
        add(0x80 | (code & 0x3F));
    }
}

/// The code of a character reference, given what stands between `&#` and `;`.
std::optional<unsigned long> ParseCharacterCode(std::string_view text)
{
    const int base = text.starts_with('x') ? 16 : 10;
    if (base == 16)
        text.remove_prefix(1);
    if (text.empty() || text.size() > 8 ||
        text.find_first_not_of("0123456789abcdefABCDEF") != text.npos)
        return std::nullopt;
    const unsigned long code = std::stoul(std::string(text), nullptr, base);
    return code > 0 && code <= 0x10FFFF ? std::optional(code) : std::nullopt;
}

/// The value of a declaration with its character references resolved; general entities stay.
std::string ResolveCharacters(std::string_view value)
{
    std::string result;
    while (!value.empty()) {
        const std::size_t reference = std::min(value.find("&#"), value.size());
        result += value.substr(0, reference);
        value.remove_prefix(reference);
        const std::size_t end = value.find(';');
        if (value.empty() || end == value.npos)
            break;
        if (const auto code = ParseCharacterCode(value.substr(2, end - 2)))
            AppendUtf8(result, *code);
        else
            result += value.substr(0, end + 1);
        value.remove_prefix(end + 1);
    }
    return result += value;
}

/// Reads `name "value"` after `<!ENTITY`; declarations of other kinds are skipped.
void ReadDeclaration(Scanner& scanner, EntityTable& table)
{
    scanner.SkipSpace();
    std::size_t length = 0;
    const std::string_view rest = scanner.Rest();
    while (length < rest.size() && !IsSpace(rest[length]) && rest[length] != '>')
        ++length;
    const std::string_view name = rest.substr(0, length);
    for (std::size_t i = 0; i < length; ++i)
        scanner.Next();
    scanner.SkipSpace();
    const char quote = scanner.Peek();
    if (name == "%" || (quote != '"' && quote != '\''))
        return;
    scanner.Next();
    // The first declaration of a name binds.
    table.try_emplace(std::string(name), ResolveCharacters(scanner.Until(quote)));
}

/// Skips to behind \p end, or to the end of the text.
void SkipPast(Scanner& scanner, std::string_view end)
{
    const std::size_t found = scanner.Rest().find(end);
    scanner = Scanner(found == std::string_view::npos ? std::string_view()
                                                      : scanner.Rest().substr(found + end.size()));
}

/// Reads the declarations between `[` and `]`.
EntityTable ReadSubset(Scanner& scanner)
{
    EntityTable table;
    while (!scanner.AtEnd() && !scanner.Accept(']')) {
        if (scanner.AcceptWord("<!--"))
            SkipPast(scanner, "-->");
        else if (scanner.AcceptWord("<?"))
            SkipPast(scanner, "?>");
        else if (scanner.AcceptWord("<!ENTITY"))
            ReadDeclaration(scanner, table);
        else if (const char c = scanner.Next(); c == '"' || c == '\'')
            scanner.Until(c);
    }
    return table;
}

/// Finds the document type declaration and leaves the scanner behind it.
EntityTable ReadDocumentType(Scanner& scanner)
{
    for (;;) {
        const std::size_t markup = scanner.Rest().find('<');
        if (markup == std::string_view::npos)
            return {};
        scanner = Scanner(scanner.Rest().substr(markup));
        if (scanner.AcceptWord("<!--"))
            SkipPast(scanner, "-->");
        else if (scanner.AcceptWord("<?"))
            SkipPast(scanner, "?>");
        else
            break;
    }
    if (!scanner.AcceptWord("<!DOCTYPE"))
        return {};
    EntityTable table;
    while (!scanner.AtEnd() && !scanner.Accept('>')) {
        const char c = scanner.Next();
        if (c == '[')
            table = ReadSubset(scanner);
        else if (c == '"' || c == '\'')
            scanner.Until(c);
    }
    return table;
}

/// Copies a document and replaces references on the way.
class Expander
{
public:
    explicit Expander(const EntityTable& table) : m_table(table) {}

    std::string Run(std::string_view xml)
    {
        Expand(xml, 0);
        return std::move(m_result);
    }

private:
    void Expand(std::string_view text, int nesting);
    bool CopyUntouched(std::string_view& text);
    void ExpandReference(std::string_view& text, int nesting);
    void CopyCharacter(char c, int nesting);

    const EntityTable& m_table;
    std::string m_result;
    std::size_t m_added = 0;
    char m_quote = '\0';    ///< the quote that an attribute's value is in
    int m_quoteNesting = 0; ///< of the entity that the quote stands in
    bool m_inTag = false;
};

void Expander::Expand(std::string_view text, int nesting)
{
    while (!text.empty()) {
        if (!m_inTag && CopyUntouched(text))
            continue;
        if (text.front() == '&') {
            ExpandReference(text, nesting);
            continue;
        }
        const std::size_t plain = std::min(text.find_first_of("<>&\"'"), text.size());
        m_result += text.substr(0, plain);
        text.remove_prefix(plain);
        if (plain == 0) {
            CopyCharacter(text.front(), nesting);
            text.remove_prefix(1);
        }
    }
}

/// Copies a comment, a CDATA section or a processing instruction whole.
bool Expander::CopyUntouched(std::string_view& text)
{
    std::string_view end;
    if (text.starts_with("<!--"))
        end = "-->";
    else if (text.starts_with("<![CDATA["))
        end = "]]>";
    else if (text.starts_with("<?"))
        end = "?>";
    else
        return false;
    const std::size_t found = text.find(end);
    const std::size_t length = found == text.npos ? text.size() : found + end.size();
    m_result += text.substr(0, length);
    text.remove_prefix(length);
    return true;
}

void Expander::ExpandReference(std::string_view& text, int nesting)
{
    const std::size_t end = text.find_first_of("; <&\"'", 1);
    const auto entity = end != text.npos && text[end] == ';' ? m_table.find(text.substr(1, end - 1))
                                                             : m_table.end();
    if (entity == m_table.end()) {
        m_result += '&';
        text.remove_prefix(1);
        return;
    }
    text.remove_prefix(end + 1);
    if (nesting == MaxNesting)
        throw Kernel::FormatException("entity " + entity->first +
                                      " contains itself or nests too deep");
    m_added += entity->second.size() + 1;
    if (m_added > MaxExpansion)
        throw Kernel::FormatException("the entities expand to more than 16 MiB");
    Expand(entity->second, nesting + 1);
}

/// Keeps track of tags and attribute values. A quote that comes out of an entity within the value
/// does not end it (XML 1.0, 4.4.5).
void Expander::CopyCharacter(char c, int nesting)
{
    if (m_quote != '\0') {
        if (c == m_quote && nesting > m_quoteNesting) {
            m_result += c == '"' ? "&quot;" : "&apos;";
            return;
        }
        if (c == m_quote)
            m_quote = '\0';
    } else if (c == '<') {
        m_inTag = true;
    } else if (m_inTag && c == '>') {
        m_inTag = false;
    } else if (m_inTag && (c == '"' || c == '\'')) {
        m_quote = c;
        m_quoteNesting = nesting;
    }
    m_result += c;
}

} // namespace

std::string ExpandEntities(std::string xml)
{
    Scanner scanner(xml);
    const EntityTable table = ReadDocumentType(scanner);
    if (table.empty())
        return xml;
    const std::size_t head = xml.size() - scanner.Rest().size();
    return xml.substr(0, head) + Expander(table).Run(scanner.Rest());
}

} // namespace Svg
