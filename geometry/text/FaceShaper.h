#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include <geometry/text/FontFace.h>
#include <geometry/text/ShapeOptions.h>

namespace Geometry {

/// A piece of text of one face, direction and script, within the text that it is shaped in.
struct ShapeItem
{
    std::string_view text; ///< UTF-8, all of it: letters join across the ends of items
    std::size_t begin = 0; ///< in bytes
    std::size_t end = 0;
    std::uint32_t script = 0; ///< its tag of ISO 15924
    bool rightToLeft = false;
};

/// A glyph as shaping gives it, in units of the em, y downwards.
struct FaceGlyph
{
    std::uint32_t index = 0;
    std::uint32_t cluster = 0; ///< the byte of the text where its characters begin
    double advance = 0.0;
    double offsetX = 0.0; ///< from the pen
    double offsetY = 0.0;
};

/// A face as HarfBuzz sees it: the bytes of its file, characters to glyphs, and shaping. Immutable;
/// any thread may use it.
class FaceShaper
{
public:
    /// Opens a file. \throws Kernel::FormatException when it cannot be read.
    explicit FaceShaper(const std::filesystem::path& path);
    ~FaceShaper();
    FaceShaper(const FaceShaper&) = delete;
    FaceShaper& operator=(const FaceShaper&) = delete;

    std::span<const unsigned char> GetBytes() const noexcept;

    /// Goes on to a face of the file that is known to be sound. \param index as FontFace::Load.
    void SelectFace(unsigned index, double slant);

    unsigned GetUnitsPerEm() const noexcept;
    FontMetrics MakeMetrics() const;
    std::uint32_t FindGlyph(char32_t character) const noexcept;
    double GetAdvance(std::uint32_t glyph) const noexcept;

    /// The glyphs of an item from left to right.
    std::vector<FaceGlyph> Shape(const ShapeItem& item, const ShapeOptions& options) const;

private:
    struct Contents;

    std::unique_ptr<Contents> m_contents;
};

/// The script of a character (its tag of ISO 15924), or 0 for those that go with any.
std::uint32_t FindScript(char32_t character) noexcept;

/// Whether a character is a mark, or else goes with the one before it.
bool ExtendsCluster(char32_t character) noexcept;

} // namespace Geometry
