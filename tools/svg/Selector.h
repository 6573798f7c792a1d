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
    /// The place among the siblings is offset + n·step for some n from 0 on.
    struct PlaceTest
    {
        bool fromEnd = false;
        bool ofType = false; ///< among those of the same name
        int step = 0;
        int offset = 1;
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
    std::vector<PlaceTest> places;
    bool isRoot = false;
    std::vector<CompoundSelector> excluded; ///< :not
    Combinator combinator = Combinator::None;

    /// \param budget is lowered by what had to be looked at.
    bool Matches(const Element& element, long& budget) const;
    unsigned GetSpecificity() const noexcept;
};

/// A selector of CSS: compounds of type, universal, class, id and attribute selectors, and of
/// :first-child and all others that ask for places among siblings, :root and :not, joined by
/// combinators.
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
