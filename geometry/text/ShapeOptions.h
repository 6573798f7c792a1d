#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Geometry {

/// How text is turned into glyphs.
struct ShapeOptions
{
    /// Tags of languages are cut after so many characters (BCP 47, 4.4.1, has them fit into that).
    static constexpr std::size_t MaxLanguageLength = 35;
    /// Features beyond so many are left out.
    static constexpr std::size_t MaxFeatures = 64;

    /// The language as a tag of BCP 47, such as `tr`; empty for none. Some fonts draw some letters
    /// of some languages their own way.
    std::string language;
    /// Ligatures that are a matter of style; those that a script demands are made in any case.
    bool ligatures = true;
    bool kerning = true;
    /// OpenType features over the whole text, such as `smcp`, `-calt`, `aalt=2`.
    std::vector<std::string> features;

    friend bool operator==(const ShapeOptions&, const ShapeOptions&) = default;
};

} // namespace Geometry
