#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Properties.h"
#include "Selector.h"

namespace Svg {

/// Finds the text of a style sheet by its address; nothing when it may not or cannot be read.
using ReadSheet = std::function<std::optional<std::string>(const std::string& address)>;

/// Whether a list of media queries means pictures on a screen. Queries with conditions don't.
bool IsForScreen(std::string_view media);

/// The rules of a drawing's style sheets.
class StyleSheet
{
public:
    /// Adds the rules of one more sheet, which are weaker than earlier ones only by specificity.
    /// At-rules other than `@media` and `@import`, and rules that are not understood, are skipped.
    /// \param read finds the text of a sheet beside the drawing; empty: none are read.
    /// \param address of the sheet itself, which addresses in it refer to; empty for those within
    ///        the drawing.
    void Add(std::string_view text, const ReadSheet& read = {}, std::string_view address = {});
    /// Adds the sheet at an address, and what it imports.
    void AddFile(std::string_view address, const ReadSheet& read);

    /// The declarations that the sheets hold for an element, the weakest first; important ones come
    /// last among equals but are to be sorted out by the caller. Valid as long as the sheet.
    /// \throws Kernel::FormatException when matching the whole drawing takes absurdly long.
    std::vector<const Declaration*> Match(const Element& element) const;

private:
    /// How many sheets may be read, and how deep they may import each other.
    static constexpr int MaxFiles = 100;
    static constexpr int MaxImports = 16;

    struct Rule
    {
        Selector selector;
        unsigned specificity;
        std::size_t block; ///< the index of its declarations
        std::size_t order; ///< among all rules
    };

    void AddRules(std::string_view text, const ReadSheet& read, std::string_view address);
    void AddImport(std::string_view rule, const ReadSheet& read, std::string_view address);
    void AddRule(std::string_view selectors, std::string_view block);
    void MatchBucket(const std::string& key, const Element& element,
                     std::vector<const Rule*>& matching) const;

    std::vector<Rule> m_rules;
    std::vector<std::vector<Declaration>> m_blocks;
    /// The rules by what their subject asks for first: `#id`, `.class`, the type or `*`.
    std::unordered_map<std::string, std::vector<std::size_t>> m_buckets;
    /// Compounds that may still be looked at: far more than drawings need.
    int m_files = 0;
    int m_imports = 0;
    mutable long m_budget = 20'000'000;
};

} // namespace Svg
