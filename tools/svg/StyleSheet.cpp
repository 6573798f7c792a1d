#include "StyleSheet.h"

#include <algorithm>
#include <utility>

#include <kernel/FormatException.h>

#include "Scanner.h"
#include "StyleValues.h"

namespace Svg {

namespace {

/// Takes everything up to one of \p characters off the front, and the character itself.
std::string_view TakeUntil(std::string_view& text, std::string_view characters, char& found)
{
    const std::size_t end = FindOutsideBrackets(text, characters);
    const std::string_view taken = text.substr(0, end);
    found = end < text.size() ? text[end] : '\0';
    text.remove_prefix(std::min(end + 1, text.size()));
    return taken;
}

/// Takes a rule's block; the opening bracket is gone already.
std::string_view TakeBlock(std::string_view& text)
{
    char end = '\0';
    return TakeUntil(text, "}", end);
}

/// The bucket that holds the rules with such a subject.
std::string FindBucket(const CompoundSelector& subject)
{
    if (!subject.id.empty())
        return "#" + subject.id;
    if (!subject.classes.empty())
        return "." + subject.classes.front();
    return subject.type.empty() ? "*" : subject.type;
}

/// The address that \p reference means in the sheet at \p base.
std::string JoinAddress(std::string_view base, std::string_view reference)
{
    const std::size_t slash = base.rfind('/');
    return std::string(base.substr(0, slash == base.npos ? 0 : slash + 1)) + std::string(reference);
}

} // namespace

bool IsForScreen(std::string_view media)
{
    if (Trim(media).empty())
        return true;
    Scanner scanner(media);
    while (!scanner.AtEnd()) {
        auto words = SplitWords(scanner.Until(','));
        if (words.size() == 2 && EqualsIgnoringCase(words.front(), "only"))
            words.erase(words.begin());
        if (words.size() == 1 &&
            (EqualsIgnoringCase(words[0], "all") || EqualsIgnoringCase(words[0], "screen")))
            return true;
    }
    return false;
}

void StyleSheet::AddFile(std::string_view address, const ReadSheet& read)
{
    const std::string file(Trim(address));
    if (!read || file.empty() || m_imports == MaxImports || m_files == MaxFiles)
        return;
    ++m_files;
    if (const auto text = read(file)) {
        ++m_imports;
        Add(*text, read, file);
        --m_imports;
    }
}

/// \param rule what follows `@import`: an address and media queries.
void StyleSheet::AddImport(std::string_view rule, const ReadSheet& read, std::string_view address)
{
    rule = Trim(rule);
    std::string_view rest;
    std::string_view file = ParseUrl(rule, rest);
    if (file.empty() && !rule.empty() && (rule.front() == '"' || rule.front() == '\'')) {
        Scanner scanner(rule.substr(1));
        file = scanner.Until(rule.front());
        rest = scanner.Rest();
    }
    if (!file.empty() && IsForScreen(rest))
        AddFile(JoinAddress(address, file), read);
}

void StyleSheet::Add(std::string_view text, const ReadSheet& read, std::string_view address)
{
    AddRules(RemoveComments(text), read, address);
}

/// \param rest without comments.
void StyleSheet::AddRules(std::string_view rest, const ReadSheet& read, std::string_view address)
{
    while (!(rest = Trim(rest)).empty()) {
        if (rest.starts_with("<!--") || rest.starts_with("-->")) {
            rest.remove_prefix(rest.front() == '<' ? 4 : 3);
            continue;
        }
        char end = '\0';
        if (rest.starts_with('@')) {
            Scanner rule(TakeUntil(rest, ";{", end));
            const std::string_view block = end == '{' ? TakeBlock(rest) : std::string_view();
            if (end == '{' && rule.AcceptWord("@media") && IsForScreen(rule.Rest()))
                AddRules(block, read, address);
            else if (end != '{' && rule.AcceptWord("@import"))
                AddImport(rule.Rest(), read, address);
            continue;
        }
        const std::string_view selectors = TakeUntil(rest, "{", end);
        if (end == '{')
            AddRule(selectors, TakeBlock(rest));
    }
}

void StyleSheet::AddRule(std::string_view selectors, std::string_view block)
{
    std::vector<Declaration> declarations = ParseDeclarations(block);
    if (declarations.empty())
        return;
    std::vector<Rule> rules;
    char end = ',';
    while (end == ',') {
        auto selector = Selector::Parse(TakeUntil(selectors, ",", end));
        if (!selector)
            return; // one bad selector voids the rule
        const unsigned specificity = selector->GetSpecificity();
        rules.push_back({std::move(*selector), specificity, m_blocks.size(), 0});
    }
    m_blocks.push_back(std::move(declarations));
    for (Rule& rule : rules) {
        rule.order = m_rules.size();
        m_buckets[FindBucket(rule.selector.GetSubject())].push_back(rule.order);
        m_rules.push_back(std::move(rule));
    }
}

void StyleSheet::MatchBucket(const std::string& key, const Element& element,
                             std::vector<const Rule*>& matching) const
{
    const auto bucket = m_buckets.find(key);
    if (bucket == m_buckets.end())
        return;
    for (const std::size_t index : bucket->second) {
        if (m_rules[index].selector.Matches(element, m_budget))
            matching.push_back(&m_rules[index]);
        if (m_budget < 0)
            throw Kernel::FormatException("the style sheets take too long to match");
    }
}

std::vector<const Declaration*> StyleSheet::Match(const Element& element) const
{
    if (m_rules.empty())
        return {};
    std::vector<const Rule*> matching;
    MatchBucket("*", element, matching);
    MatchBucket(std::string(element.name), element, matching);
    MatchBucket("#" + std::string(element.id), element, matching);
    for (const std::string_view name : SplitWords(element.Get("class")))
        MatchBucket("." + std::string(name), element, matching);
    std::ranges::sort(matching, {},
                      [](const Rule* rule) { return std::pair(rule->specificity, rule->order); });
    // A class that is named twice finds its rules twice.
    const auto repeated = std::ranges::unique(matching);
    matching.erase(repeated.begin(), repeated.end());
    std::vector<const Declaration*> declarations;
    for (const Rule* rule : matching) {
        for (const Declaration& declaration : m_blocks[rule->block])
            declarations.push_back(&declaration);
    }
    return declarations;
}

} // namespace Svg
