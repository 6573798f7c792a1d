#pragma once

#include <optional>
#include <string>

#include "PaletteOptions.h"

namespace Command {

/// What `renderer draw` draws on.
enum class Target
{
    Bitmap,
    Wireframe, ///< black outlines
    Null,      ///< nothing: what would be touched is printed
};

/// What `renderer draw` is told to do.
struct DrawOptions
{
    std::string input;
    std::string output;             ///< may be empty for Target::Null, which writes no file
    std::optional<long long> width; ///< pixels; the height follows
    std::optional<double> scale;    ///< pixels per pixel of the drawing
    std::string format = "rgba8";   ///< a name that `renderer draw --help` lists
    std::string profile;            ///< a file with the picture's profile; empty: sRGB
    std::string background;         ///< a CSS colour; empty: transparent
    Target target = Target::Bitmap;
    bool dither = false;          ///< gradients and deep images in formats of 8 bits
    bool perfectClipping = false; ///< by common areas instead of products of coverages
    PaletteOptions palette;       ///< for files that hold palettes
};

} // namespace Command
