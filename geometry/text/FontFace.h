#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include <geometry/Export.h>
#include <geometry/GlyphMetrics.h>
#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/String.h>

namespace Geometry {

class FaceShaper;

/// What a face is altered by where its family lacks a slanted or a bold one.
struct FontSynthesis
{
    double slant = 0.0; ///< how far outlines lean to the right for each unit upwards
    bool bold = false;  ///< outlines grow by 1/24 of the em in all; advances stay

    friend bool operator==(const FontSynthesis&, const FontSynthesis&) = default;
};

/// Distances of a face from its baseline in units of the em, y downwards.
struct FontMetrics
{
    double ascent = 0.0;  ///< how far a line of text reaches above the baseline; not negative
    double descent = 0.0; ///< and below it
    double xHeight = 0.0;
    double capHeight = 0.0;
    double underlineTop = 0.0;
    double underlineThickness = 0.0;
    double strikeoutTop = 0.0; ///< negative: above the baseline
    double strikeoutThickness = 0.0;
    double subscriptShift = 0.0;
    double superscriptShift = 0.0;
    /// Further baselines, from the font's own table or by custom (CSS Inline Layout 3, appendix A).
    double hangingBaseline = 0.0;
    double ideographicBaseline = 0.0;
    double mathematicalBaseline = 0.0;
    double centralBaseline = 0.0;
};

/// One face of a TrueType or OpenType font file: outlines of glyphs by FreeType, unhinted, and all
/// that shaping needs. Immutable and shared; any thread may use it.
class GEOMETRY_EXPORT FontFace : public Kernel::Countable
{
public:
    /// Opens a face of a file, which must stay as it is for as long as the face lives.
    /// \param index of the face in a collection; its upper 16 bits, where not 0, are the number
    /// from
    ///        1 of a named instance of a variable font, which else has its default shape.
    /// \throws Kernel::FormatException when the file cannot be read, is no such font, or is
    /// damaged.
    static Kernel::Counted<const FontFace> Load(const std::filesystem::path& path,
                                                unsigned index = 0,
                                                const FontSynthesis& synthesis = {});
    ~FontFace() override;

    const Kernel::String& GetFamily() const noexcept;
    const FontMetrics& GetMetrics() const noexcept;

    /// The number of the glyph for a character; 0, the glyph of what is missing, for none.
    std::uint32_t FindGlyph(char32_t character) const noexcept;

    /// A glyph with its outline, kept for the next time. An outline that would not fit into any
    /// sane drawing counts as damage.
    /// \throws Kernel::FormatException when it is damaged or there is no such glyph.
    Kernel::Counted<const GlyphMetrics> GetGlyph(std::uint32_t index) const;

    /// For the shaping of text alone.
    const FaceShaper& GetShaper() const noexcept;

private:
    struct Contents;

    explicit FontFace(std::unique_ptr<Contents> contents);

    std::unique_ptr<Contents> m_contents;
};

} // namespace Geometry
