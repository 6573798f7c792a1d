#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Element.h"

namespace Svg {

/// The conditions on one element in a selector.
struct CompoundSelector
{
    enum class Combinator
    {
        None,       ///< the rightmost compound
        Descendant, ///< an ancestor of what the compound to the right matches
        Child,      ///< its parent
        Sibling,    ///< a sibling before it
        Adjacent,   ///< the sibling right before it
    };
    struct AttributeTest
    {
        std::string name;
        char kind; ///< 0: present; `=`, `~`, `|`, `^`, `$`, `*` as in CSS
        std::string value;
    };

    std::string type; ///< empty: any element
    std::string id;
    std::vector<std::string> classes;
    std::vector<AttributeTest> attributes;
    bool firstChild = false;
    Combinator combinator = Combinator::None;

    bool Matches(const Element& element) const;
};

/// A selector of CSS: compounds of type, universal, class, id and attribute selectors and
/// :first-child, joined by combinators.
class Selector
{
public:
    /// \return nothing when the text breaks the grammar or uses what is not known, such as other
    ///         pseudo-classes: CSS then drops the whole rule.
    static std::optional<Selector> Parse(std::string_view text);

    /// Whether the selector matches an element. \param budget is lowered by the number of compounds
    /// that were looked at.
    bool Matches(const Element& element, long& budget) const;

    /// (ids, classes and attributes, types), weighted so that one of the former exceeds all of the
    /// latter.
    unsigned GetSpecificity() const noexcept;

    /// The rightmost compound, which decides quickly for most elements.
    const CompoundSelector& GetSubject() const noexcept { return m_compounds.front(); }

private:
    bool MatchesFrom(std::size_t index, const Element& element, long& budget) const;

    std::vector<CompoundSelector> m_compounds; // from right to left
};

} // namespace Svg
