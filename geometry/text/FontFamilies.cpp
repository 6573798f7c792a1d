#include <geometry/text/FontFamilies.h>

#include <algorithm>
#include <array>

namespace Geometry {

namespace {

constexpr std::array<std::string_view, 10> GenericFamilies{
    "serif",   "sans-serif", "sans",      "monospace",     "mono",
    "cursive", "fantasy",    "system-ui", "ui-sans-serif", "ui-serif"};

/// The name as names are compared.
std::string Fold(std::string_view name)
{
    std::string folded;
    for (const char c : name) {
        if (c != ' ')
            folded += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return folded;
}

} // namespace

std::vector<std::string> SplitFamilies(std::string_view families)
{
    std::vector<std::string> names;
    while (!families.empty() && names.size() < MaxFamilies) {
        const std::size_t end = std::min(families.find(','), families.size());
        std::string_view name = families.substr(0, end);
        families.remove_prefix(std::min(end + 1, families.size()));
        const std::size_t first = name.find_first_not_of(' ');
        if (first == name.npos)
            continue;
        name = name.substr(first, name.find_last_not_of(' ') + 1 - first);
        names.emplace_back(name);
    }
    return names;
}

bool IsGenericFamily(std::string_view family)
{
    const std::string folded = Fold(family);
    return std::ranges::find(GenericFamilies, folded) != GenericFamilies.end();
}

bool IsSameFamily(std::string_view a, std::string_view b)
{
    return Fold(a) == Fold(b);
}

} // namespace Geometry
