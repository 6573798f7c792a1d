#include "Selector.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Length.h"
#include "Properties.h"
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

/// Reads `odd`, `even`, `3`, `2n`, `-n+3` and the like.
bool ParsePlace(std::string_view text, CompoundSelector::PlaceTest& test)
{
    text = Trim(text);
    if (EqualsIgnoringCase(text, "odd") || EqualsIgnoringCase(text, "even")) {
        test.step = 2;
        test.offset = EqualsIgnoringCase(text, "odd") ? 1 : 0;
        return true;
    }
    constexpr double Most = 1e6; // keeps products of them small
    const std::size_t n = text.find_first_of("nN");
    std::string offset(text.substr(n == text.npos ? 0 : n + 1));
    std::erase_if(offset, IsSpace);
    if (n != text.npos) {
        const std::string_view step = Trim(text.substr(0, n));
        const auto number = step.empty() || step == "+" ? 1.0
                            : step == "-"               ? -1.0
                                                        : ParseNumber(step);
        if (!number || std::abs(*number) > Most)
            return false;
        test.step = static_cast<int>(*number);
    }
    const auto number = offset.empty() && n != text.npos ? 0.0 : ParseNumber(offset);
    if (!number || std::abs(*number) > Most)
        return false;
    test.offset = static_cast<int>(*number);
    return true;
}

std::optional<CompoundSelector> ScanCompound(Scanner& scanner, int depth = 0);

/// Reads what stands between the brackets of :not.
bool ParseExcluded(std::string_view text, CompoundSelector& compound, int depth)
{
    Scanner scanner(Trim(text));
    do {
        scanner.SkipSpace();
        auto excluded = depth < 4 ? ScanCompound(scanner, depth + 1) : std::nullopt;
        if (!excluded)
            return false;
        compound.excluded.push_back(std::move(*excluded));
        scanner.SkipSpace();
    } while (scanner.Accept(','));
    return scanner.AtEnd();
}

/// Takes everything up to the bracket that closes one that is open.
std::string_view ScanBrackets(Scanner& scanner)
{
    const std::string_view rest = scanner.Rest();
    const std::size_t end = FindOutsideBrackets(rest, ")");
    scanner = Scanner(rest.substr(std::min(end + 1, rest.size())));
    return rest.substr(0, end);
}

/// Reads a pseudo-class after its colon. \return false for those that are not known.
bool ScanPseudoClass(Scanner& scanner, CompoundSelector& compound, int depth)
{
    struct Name
    {
        std::string_view text;
        bool first, last, ofType;
    };
    static constexpr std::array<Name, 6> names{{{"first-child", true, false, false},
                                                {"last-child", false, true, false},
                                                {"only-child", true, true, false},
                                                {"first-of-type", true, false, true},
                                                {"last-of-type", false, true, true},
                                                {"only-of-type", true, true, true}}};
    static constexpr std::array<Name, 4> functions{{{"nth-child", true, false, false},
                                                    {"nth-last-child", false, true, false},
                                                    {"nth-of-type", true, false, true},
                                                    {"nth-last-of-type", false, true, true}}};
    const std::string name = ScanName(scanner);
    const auto isNamed = [&](const Name& n) { return EqualsIgnoringCase(n.text, name); };
    if (!scanner.Accept('(')) {
        compound.isRoot = compound.isRoot || EqualsIgnoringCase(name, "root");
        const auto known = std::ranges::find_if(names, isNamed);
        if (known == names.end())
            return EqualsIgnoringCase(name, "root");
        if (known->first)
            compound.places.push_back({false, known->ofType});
        if (known->last)
            compound.places.push_back({true, known->ofType});
        return true;
    }
    const std::string_view argument = ScanBrackets(scanner);
    if (EqualsIgnoringCase(name, "not"))
        return ParseExcluded(argument, compound, depth);
    const auto known = std::ranges::find_if(functions, isNamed);
    if (known == functions.end())
        return false;
    compound.places.push_back({known->last, known->ofType});
    return ParsePlace(argument, compound.places.back());
}

std::optional<CompoundSelector> ScanCompound(Scanner& scanner, int depth)
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
        } else if (scanner.Accept(':')) {
            if (!ScanPseudoClass(scanner, compound, depth))
                return std::nullopt;
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

/// The place of an element among its siblings, from 1.
int FindPlace(const Element& element, const CompoundSelector::PlaceTest& test, long& budget)
{
    if (!test.ofType)
        return test.fromEnd ? element.parent->childCount + 1 - element.index : element.index;
    int place = 1;
    const auto step = [&](const Element& e) -> const Element* {
        return test.fromEnd ? e.nextSibling : e.previousSibling;
    };
    for (const Element* e = step(element); e && budget >= 0; e = step(*e), --budget)
        place += e->name == element.name ? 1 : 0;
    return place;
}

bool IsAtPlace(const Element& element, const CompoundSelector::PlaceTest& test, long& budget)
{
    if (!element.parent)
        return false;
    const int beyond = FindPlace(element, test, budget) - test.offset;
    return test.step == 0 ? beyond == 0 : beyond % test.step == 0 && beyond / test.step >= 0;
}

} // namespace

bool CompoundSelector::Matches(const Element& element, long& budget) const
{
    if (!type.empty() && type != element.name)
        return false;
    if (!id.empty() && id != element.id)
        return false;
    if (isRoot && element.parent)
        return false;
    const auto hasClass = [&, list = element.Get("class")](const std::string& name) {
        return HasWord(list, name);
    };
    if (!classes.empty() && !std::ranges::all_of(classes, hasClass))
        return false;
    const auto hasAttribute = [&](const AttributeTest& test) {
        return element.Has(test.name) && Test(test, element.Get(test.name));
    };
    return std::ranges::all_of(attributes, hasAttribute) &&
           std::ranges::all_of(
               places, [&](const PlaceTest& test) { return IsAtPlace(element, test, budget); }) &&
           std::ranges::none_of(excluded, [&](const CompoundSelector& other) {
               return other.Matches(element, --budget);
           });
}

unsigned CompoundSelector::GetSpecificity() const noexcept
{
    constexpr unsigned idWeight = 1U << 20;
    constexpr unsigned classWeight = 1U << 10;
    const std::size_t conditions =
        classes.size() + attributes.size() + places.size() + (isRoot ? 1 : 0);
    unsigned strongest = 0; // of what :not excludes, which itself counts for nothing
    for (const CompoundSelector& other : excluded)
        strongest = std::max(strongest, other.GetSpecificity());
    return (id.empty() ? 0U : idWeight) + classWeight * static_cast<unsigned>(conditions) +
           (type.empty() ? 0U : 1U) + strongest;
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
    return m_compounds.front().Matches(element, budget) && MatchesFrom(1, element, budget);
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
        if (compound.Matches(*candidate, budget) && MatchesFrom(index + 1, *candidate, budget))
            return true;
        if (once)
            return false;
    }
    return false;
}

unsigned Selector::GetSpecificity() const noexcept
{
    unsigned specificity = 0;
    for (const CompoundSelector& compound : m_compounds)
        specificity += compound.GetSpecificity();
    return specificity;
}

} // namespace Svg
