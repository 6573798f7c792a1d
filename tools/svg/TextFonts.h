#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <tuple>

#include <geometry/text/FontSelection.h>

#include "Notices.h"
#include "TextStyle.h"

namespace Svg {

/// The fonts of a drawing, each looked up once.
class TextFonts
{
public:
    using Fonts = Kernel::Counted<const Geometry::FontSelection>;

    /// More fonts than any drawing has; looking one up takes time.
    static constexpr std::size_t MaxFonts = 500;

    /// \pre the notices outlive the object.
    explicit TextFonts(Notices& notices) : m_notices(notices) {}

    /// What a style asks for, or a font that is known already where there are too many. Families
    /// that are missing are noted. Never null.
    /// \param language a tag of BCP 47; may be empty.
    Fonts Find(const TextStyle& style, const std::string& language);

private:
    using Key = std::tuple<std::string, int, int, bool, std::string>;

    void NoteMissing(const Geometry::FontSelection& fonts);

    Notices& m_notices;
    std::map<Key, Fonts> m_known;
};

/// The font that a style asks for.
Kernel::Font MakeFont(const TextStyle& style);

} // namespace Svg
