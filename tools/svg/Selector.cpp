#include "Selector.h"

#include <algorithm>

#include "Scanner.h"

namespace Svg {

namespace {

using Combinator = CompoundSelector::Combinator;

constexpr std::size_t MaxCompounds = 64; // matching nests as deep

/// Whether a list separated by white space holds a word.
bool HasWord(std::string_view list, std::string_view word)
{
    const auto words = SplitWords(list);
    return std::ranges::find(words, word) != words.end();
}

bool Test(const CompoundSelector::AttributeTest& test, std::string_view value)
{
    const std::string_view wanted = test.value;
    switch (test.kind) {
    case '=':
        return value == wanted;
    case '~':
        return HasWord(value, wanted);
    case '|':
        return value == wanted ||
               (value.starts_with(wanted) && value.substr(wanted.size()).starts_with('-'));
    case '^':
        return !wanted.empty() && value.starts_with(wanted);
    case '$':
        return !wanted.empty() && value.ends_with(wanted);
    case '*':
        return !wanted.empty() && value.find(wanted) != value.npos;
    default:
        return true;
    }
}

bool IsNameCharacter(char c) noexcept
{
    const char lower = ToLower(c);
    return IsDigit(c) || c == '-' || c == '_' || (lower >= 'a' && lower <= 'z') ||
           static_cast<unsigned char>(c) >= 0x80 || c == '\\';
}

/// Takes a name; a backslash keeps the character after it.
std::string ScanName(Scanner& scanner)
{
    std::string name;
    while (IsNameCharacter(scanner.Peek())) {
        char c = scanner.Next();
        if (c == '\\')
            c = scanner.Next();
        name += c;
    }
    return name;
}

/// Reads what stands between `[` and `]`.
bool ScanAttributeTest(Scanner& scanner, CompoundSelector& compound)
{
    scanner.SkipSpace();
    CompoundSelector::AttributeTest test{ScanName(scanner), '\0', {}};
    scanner.SkipSpace();
    if (!scanner.Accept(']')) {
        test.kind = scanner.Next();
        if (std::string_view("=~|^$*").find(test.kind) == std::string_view::npos ||
            (test.kind != '=' && !scanner.Accept('=')))
            return false;
        scanner.SkipSpace();
        if (scanner.Peek() == '"' || scanner.Peek() == '\'') {
            const char quote = scanner.Next();
            test.value = scanner.Until(quote);
        } else {
            test.value = ScanName(scanner);
        }
        scanner.SkipSpace();
        if (!scanner.Accept(']'))
            return false;
    }
    const bool valid = !test.name.empty();
    compound.attributes.push_back(std::move(test));
    return valid;
}

std::optional<CompoundSelector> ScanCompound(Scanner& scanner)
{
    CompoundSelector compound;
    bool any = scanner.Accept('*');
    if (!any) {
        compound.type = ScanName(scanner);
        any = !compound.type.empty();
    }
    for (;; any = true) {
        if (scanner.Accept('.')) {
            compound.classes.push_back(ScanName(scanner));
            if (compound.classes.back().empty())
                return std::nullopt;
        } else if (scanner.Accept('#')) {
            compound.id = ScanName(scanner);
            if (compound.id.empty())
                return std::nullopt;
        } else if (scanner.Accept('[')) {
            if (!ScanAttributeTest(scanner, compound))
                return std::nullopt;
        } else if (scanner.AcceptWord(":first-child")) {
            compound.firstChild = true;
        } else {
            return any ? std::optional(compound) : std::nullopt;
        }
    }
}

Combinator ScanCombinator(Scanner& scanner)
{
    scanner.SkipSpace();
    Combinator combinator = Combinator::Descendant;
    if (scanner.Accept('>'))
        combinator = Combinator::Child;
    else if (scanner.Accept('+'))
        combinator = Combinator::Adjacent;
    else if (scanner.Accept('~'))
        combinator = Combinator::Sibling;
    scanner.SkipSpace();
    return combinator;
}

} // namespace

bool CompoundSelector::Matches(const Element& element) const
{
    if (!type.empty() && type != element.name)
        return false;
    if (!id.empty() && id != element.id)
        return false;
    if (firstChild && (!element.parent || element.previousSibling))
        return false;
    const auto hasClass = [&, list = element.Get("class")](const std::string& name) {
        return HasWord(list, name);
    };
    if (!classes.empty() && !std::ranges::all_of(classes, hasClass))
        return false;
    return std::ranges::all_of(attributes, [&](const AttributeTest& test) {
        return element.Has(test.name) && Test(test, element.Get(test.name));
    });
}

std::optional<Selector> Selector::Parse(std::string_view text)
{
    Scanner scanner(Trim(text));
    Selector selector;
    while (!scanner.AtEnd()) {
        auto compound = ScanCompound(scanner);
        if (!compound)
            return std::nullopt;
        if (selector.m_compounds.size() == MaxCompounds)
            return std::nullopt;
        selector.m_compounds.push_back(std::move(*compound));
        if (scanner.AtEnd())
            break;
        // The combinator belongs to the compound on its left.
        selector.m_compounds.back().combinator = ScanCombinator(scanner);
        if (scanner.AtEnd())
            return std::nullopt;
    }
    if (selector.m_compounds.empty())
        return std::nullopt;
    std::ranges::reverse(selector.m_compounds);
    return selector;
}

bool Selector::Matches(const Element& element, long& budget) const
{
    --budget;
    return m_compounds.front().Matches(element) && MatchesFrom(1, element, budget);
}

/// Whether the compounds from \p index on match around \p element, which the one before matched.
bool Selector::MatchesFrom(std::size_t index, const Element& element, long& budget) const
{
    if (index == m_compounds.size())
        return true;
    const CompoundSelector& compound = m_compounds[index];
    const bool upwards =
        compound.combinator == Combinator::Descendant || compound.combinator == Combinator::Child;
    const bool once =
        compound.combinator == Combinator::Child || compound.combinator == Combinator::Adjacent;
    const auto step = [upwards](const Element& from) {
        return upwards ? from.parent : from.previousSibling;
    };
    for (const Element* candidate = step(element); candidate; candidate = step(*candidate)) {
        if (--budget < 0)
            return false;
        if (compound.Matches(*candidate) && MatchesFrom(index + 1, *candidate, budget))
            return true;
        if (once)
            return false;
    }
    return false;
}

unsigned Selector::GetSpecificity() const noexcept
{
    constexpr unsigned idWeight = 1U << 20;
    constexpr unsigned classWeight = 1U << 10;
    unsigned specificity = 0;
    for (const CompoundSelector& compound : m_compounds) {
        const std::size_t classes =
            compound.classes.size() + compound.attributes.size() + (compound.firstChild ? 1 : 0);
        specificity += compound.id.empty() ? 0U : idWeight;
        specificity += classWeight * static_cast<unsigned>(classes);
        specificity += compound.type.empty() ? 0U : 1U;
    }
    return specificity;
}

} // namespace Svg
