#pragma once

#include <string_view>
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
    };

    void AddRule(std::string_view selectors, std::string_view block);

    std::vector<Rule> m_rules;
    std::vector<std::vector<Declaration>> m_blocks;
    /// Compounds that may still be looked at: far more than drawings need.
    mutable long m_budget = 300'000'000;
};

} // namespace Svg
