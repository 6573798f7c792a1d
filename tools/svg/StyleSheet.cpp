#include "StyleSheet.h"

#include <algorithm>
#include <utility>

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

/// The bucket that holds the rules with such a subject.
std::string FindBucket(const CompoundSelector& subject)
{
    if (!subject.id.empty())
        return "#" + subject.id;
    if (!subject.classes.empty())
        return "." + subject.classes.front();
    return subject.type.empty() ? "*" : subject.type;
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
