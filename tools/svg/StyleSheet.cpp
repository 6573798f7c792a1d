#include "StyleSheet.h"

#include <algorithm>

#include <kernel/FormatException.h>

#include "Scanner.h"

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

} // namespace

void StyleSheet::Add(std::string_view text)
{
    const std::string clean = RemoveComments(text);
    std::string_view rest = clean;
    while (!(rest = Trim(rest)).empty()) {
        if (rest.starts_with("<!--") || rest.starts_with("-->")) {
            rest.remove_prefix(rest.front() == '<' ? 4 : 3);
            continue;
        }
        char end = '\0';
        if (rest.starts_with('@')) {
            TakeUntil(rest, ";{", end);
            if (end == '{')
                TakeBlock(rest);
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
        rules.push_back({std::move(*selector), specificity, m_blocks.size()});
    }
    m_blocks.push_back(std::move(declarations));
    std::ranges::move(rules, std::back_inserter(m_rules));
}

std::vector<const Declaration*> StyleSheet::Match(const Element& element) const
{
    std::vector<const Rule*> matching;
    for (const Rule& rule : m_rules) {
        if (rule.selector.Matches(element, m_budget))
            matching.push_back(&rule);
        if (m_budget < 0)
            throw Kernel::FormatException("the style sheets take too long to match");
    }
    std::ranges::stable_sort(matching, {}, &Rule::specificity);
    std::vector<const Declaration*> declarations;
    for (const Rule* rule : matching) {
        for (const Declaration& declaration : m_blocks[rule->block])
            declarations.push_back(&declaration);
    }
    return declarations;
}

} // namespace Svg
