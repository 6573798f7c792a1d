#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <geometry/text/FontFace.h>
#include <kernel/Font.h>

namespace Geometry {

/// A face that is installed.
struct FontCandidate
{
    std::string path;
    unsigned index = 0; ///< as FontFace::Load
    FontSynthesis synthesis;
    std::vector<std::string> families;      ///< the names of its family
    std::shared_ptr<const void> characters; ///< a set as the catalogue keeps it; may be null

    /// Whether it has a glyph of its own for a character.
    bool HasCharacter(char32_t character) const;
};

/// The installed face that comes nearest to \p font; one without a path when there is none at all.
FontCandidate FindNearestFace(const Kernel::Font& font, std::string_view language);

/// The installed faces for characters that nearer ones lack, the nearest first.
std::vector<FontCandidate> ListFaces(const Kernel::Font& font, std::string_view language);

} // namespace Geometry
