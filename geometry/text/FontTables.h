#pragma once

#include <span>

namespace Geometry {

/// Checks that a file is a TrueType or OpenType font, or a collection of such, that a face is in
/// it, and that the face's tables lie within the file. \param index as FontFace::Load. \throws
/// Kernel::FormatException when not.
void CheckFontTables(std::span<const unsigned char> bytes, unsigned index);

} // namespace Geometry
