#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include <geometry/PolyCurve.h>
#include <geometry/text/FontFace.h>

namespace Geometry {

/// The outlines of a face as FreeType reads them. One thread at a time.
class FaceOutlines
{
public:
    /// \param bytes of the font file; they outlive the object.
    /// \param index as FontFace::Load.
    /// \throws Kernel::FormatException when the bytes are no font with outlines, or damaged.
    FaceOutlines(std::span<const unsigned char> bytes, unsigned index,
                 const FontSynthesis& synthesis);
    ~FaceOutlines();
    FaceOutlines(const FaceOutlines&) = delete;
    FaceOutlines& operator=(const FaceOutlines&) = delete;

    std::string GetFamily() const;
    unsigned GetUnitsPerEm() const noexcept;

    /// The outline of a glyph in units of the em, y downwards; null for blanks.
    /// \throws Kernel::FormatException when it is damaged or there is no such glyph.
    Kernel::Counted<const PolyCurveDbl> Load(std::uint32_t glyph);

private:
    struct Contents;

    std::unique_ptr<Contents> m_contents;
};

} // namespace Geometry
