#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Properties.h"
#include "Selector.h"

namespace Svg {

/// The rules of a drawing's style sheets.
class StyleSheet
{
public:
    /// Adds the rules of one more sheet, which are weaker than earlier ones only by specificity.
    /// At-rules and rules that are not understood are skipped.
    void Add(std::string_view text);

    /// The declarations that the sheets hold for an element, the weakest first; important ones come
    /// last among equals but are to be sorted out by the caller. Valid as long as the sheet.
    /// \throws Kernel::FormatException when matching the whole drawing takes absurdly long.
    std::vector<const Declaration*> Match(const Element& element) const;

private:
    struct Rule
    {
        Selector selector;
        unsigned specificity;
        std::size_t block; ///< the index of its declarations
        std::size_t order; ///< among all rules
    };

    void AddRule(std::string_view selectors, std::string_view block);
    void MatchBucket(const std::string& key, const Element& element,
                     std::vector<const Rule*>& matching) const;

    std::vector<Rule> m_rules;
    std::vector<std::vector<Declaration>> m_blocks;
    /// The rules by what their subject asks for first: `#id`, `.class`, the type or `*`.
    std::unordered_map<std::string, std::vector<std::size_t>> m_buckets;
    /// Compounds that may still be looked at: far more than drawings need.
    mutable long m_budget = 20'000'000;
};

} // namespace Svg
