#pragma once

#include <string>

#include <geometry/text/FontSelection.h>

/// The fonts of Debian's fonts-dejavu-core, which tests are pinned to.
inline std::string GetFontPath(const std::string& name)
{
    return "/usr/share/fonts/truetype/dejavu/" + name + ".ttf";
}

/// A pinned face alone.
inline Kernel::Counted<const Geometry::FontSelection> SelectFont(const std::string& name)
{
    return Kernel::MakeCounted<const Geometry::FontSelection>(
        Geometry::FontFace::Load(GetFontPath(name)));
}
