#include <geometry/text/BidiRuns.h>

#include <algorithm>
#include <numeric>

#include <fribidi.h>

#include <geometry/text/Utf8.h>

namespace Geometry {

namespace {

FriBidiParType MapDirection(TextDirection direction) noexcept
{
    switch (direction) {
    case TextDirection::LeftToRight:
        return FRIBIDI_PAR_LTR;
    case TextDirection::RightToLeft:
        return FRIBIDI_PAR_RTL;
    case TextDirection::Auto:
        break;
    }
    return FRIBIDI_PAR_ON;
}

/// Embeddings, overrides, isolates and their ends.
bool IsControl(char32_t c) noexcept
{
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

/// What a character counts as where a line is one paragraph, whatever is in it.
/// \param controls how many there are up to here. Levels are found in time by the square of their
///        number; those beyond the limit count as nothing.
FriBidiChar Simplify(char32_t c, std::size_t& controls) noexcept
{
    constexpr std::size_t maxControls = 2000;
    constexpr FriBidiChar nothing = 0x200B;
    if (IsControl(c))
        return ++controls > maxControls ? nothing : FriBidiChar{c};
    const bool separates =
        c == '\n' || c == '\r' || c == 0x85 || c == 0x2029 || (c >= 0x1C && c <= 0x1E);
    return separates ? FriBidiChar{' '} : FriBidiChar{c};
}

/// The level of each character; empty when there is no memory for them.
std::vector<FriBidiLevel> FindLevels(const std::vector<FriBidiChar>& characters,
                                     TextDirection direction)
{
    const auto count = FriBidiStrIndex(characters.size());
    std::vector<FriBidiCharType> types(characters.size());
    std::vector<FriBidiBracketType> brackets(characters.size());
    std::vector<FriBidiLevel> levels(characters.size());
    fribidi_get_bidi_types(characters.data(), count, types.data());
    fribidi_get_bracket_types(characters.data(), count, types.data(), brackets.data());
    FriBidiParType paragraph = MapDirection(direction);
    const FriBidiLevel maximum = fribidi_get_par_embedding_levels_ex(
        types.data(), brackets.data(), count, &paragraph, levels.data());
    if (maximum == 0)
        levels.clear();
    return levels;
}

} // namespace

std::vector<BidiRun> FindBidiRuns(std::string_view text, TextDirection direction)
{
    std::vector<FriBidiChar> characters;
    std::vector<std::size_t> offsets;
    std::size_t controls = 0;
    characters.reserve(text.size());
    offsets.reserve(text.size());
    for (std::size_t offset = 0; offset < text.size();) {
        offsets.push_back(offset);
        characters.push_back(Simplify(NextCharacter(text, offset), controls));
    }
    std::vector<BidiRun> runs;
    const std::vector<FriBidiLevel> levels = FindLevels(characters, direction);
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const auto level = levels.empty() ? std::uint8_t{0} : std::uint8_t(levels[i]);
        if (runs.empty() || runs.back().level != level)
            runs.push_back({offsets[i], offsets[i], level});
        runs.back().end = i + 1 < offsets.size() ? offsets[i + 1] : text.size();
    }
    return runs;
}

std::vector<std::size_t> FindVisualOrder(const std::vector<std::uint8_t>& levels)
{
    std::vector<std::size_t> order(levels.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    if (levels.empty())
        return order;
    // From the highest level to the lowest odd one, whatever is at least as high is turned round.
    for (int level = *std::ranges::max_element(levels); level > 0; --level) {
        for (auto first = order.begin(); first != order.end();) {
            const auto isBelow = [&](std::size_t i) { return levels[i] < level; };
            first = std::find_if_not(first, order.end(), isBelow);
            const auto last = std::find_if(first, order.end(), isBelow);
            std::reverse(first, last);
            first = last;
        }
    }
    return order;
}

} // namespace Geometry
