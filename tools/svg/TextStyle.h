#pragma once

#include <memory>
#include <string>
#include <vector>

#include <kernel/Font.h>

#include "Length.h"

namespace Svg {

/// Which end of a chunk of text stands at its position.
enum class TextAnchor
{
    Start,
    Middle,
    End,
};

/// The lines that glyphs can be aligned by.
enum class Baseline
{
    Auto, ///< that of the parent
    Alphabetic,
    Ideographic,
    Hanging,
    Mathematical,
    Central,
    Middle, ///< half the height of an x
    TextTop,
    TextBottom,
};

enum class WhiteSpace
{
    FromXml, ///< as `xml:space` says
    Collapse,
    Preserve,
};

enum class TextCase
{
    Unchanged,
    Upper,
    Lower,
    Capitalised, ///< the first letter of each word
};

enum class UnicodeBidi
{
    Normal,
    Embed,
    Isolate,
    Override,
    IsolateOverride,
    Plaintext,
};

/// The inherited properties of text. Lengths keep their units; those that refer to the font size
/// are resolved where they are given.
struct TextStyle
{
    std::string family = "serif"; ///< names with commas; what comes first is what browsers have
    int weight = Kernel::Font::NormalWeight;
    int stretch = Kernel::Font::NormalStretch;
    bool italic = false;
    bool smallCaps = false;
    bool ligatures = true;
    bool kerning = true;
    std::shared_ptr<const std::vector<std::string>> features; ///< of OpenType; may be null
    Length letterSpacing;
    Length wordSpacing;
    TextAnchor anchor = TextAnchor::Start;
    Baseline dominantBaseline = Baseline::Auto;
    WhiteSpace whiteSpace = WhiteSpace::FromXml;
    TextCase letterCase = TextCase::Unchanged;
    bool rightToLeft = false;
    bool vertical = false;
};

/// A shift of the baseline: by a length, a percentage of the font size, or as the font has it.
struct BaselineShift
{
    enum class Kind
    {
        Length,
        Sub,
        Super,
    };
    Kind kind = Kind::Length;
    Length length; ///< upwards
};

struct DecorationLines
{
    bool under = false;
    bool over = false;
    bool through = false;

    bool IsNone() const noexcept { return !under && !over && !through; }
};

/// The properties of text that belong to an element alone.
struct InlineStyle
{
    Baseline alignmentBaseline = Baseline::Auto;
    BaselineShift baselineShift;
    UnicodeBidi bidi = UnicodeBidi::Normal;
    DecorationLines decoration;
};

} // namespace Svg
