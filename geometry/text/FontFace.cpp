#include <geometry/text/FontFace.h>

#include <mutex>
#include <string>
#include <unordered_map>

#include <geometry/text/FaceOutlines.h>
#include <geometry/text/FaceShaper.h>
#include <geometry/text/FontTables.h>
#include <kernel/FormatException.h>

namespace Geometry {

struct FontFace::Contents
{
    /// More glyphs than drawings of large scripts use; then the table starts afresh.
    static constexpr std::size_t MaxGlyphs = 16384;

    explicit Contents(const std::filesystem::path& path) : name(path.string()), shaper(path) {}

    std::string name; ///< of the file
    FaceShaper shaper;
    std::unique_ptr<FaceOutlines> outlines; ///< reads the shaper's bytes
    Kernel::String family;
    FontMetrics metrics;

    std::mutex mutex; ///< of what follows, and of the outlines
    std::unordered_map<std::uint32_t, Kernel::Counted<const GlyphMetrics>> glyphs;
};

FontFace::FontFace(std::unique_ptr<Contents> contents) : m_contents(std::move(contents)) {}

FontFace::~FontFace() = default;

Kernel::Counted<const FontFace> FontFace::Load(const std::filesystem::path& path, unsigned index,
                                               const FontSynthesis& synthesis)
{
    auto contents = std::make_unique<Contents>(path);
    try {
        const auto bytes = contents->shaper.GetBytes();
        CheckFontTables(bytes, index);
        contents->outlines = std::make_unique<FaceOutlines>(bytes, index, synthesis);
        contents->shaper.SelectFace(index, synthesis.slant);
        if (contents->shaper.GetUnitsPerEm() != contents->outlines->GetUnitsPerEm())
            throw Kernel::FormatException("its units of the em are out of range");
    } catch (const Kernel::FormatException& error) {
        throw Kernel::FormatException("the font file " + contents->name +
                                          " cannot be used: " + error.what(),
                                      error.GetOffset());
    }
    contents->family = contents->outlines->GetFamily();
    contents->metrics = contents->shaper.MakeMetrics();
    return Kernel::Counted<const FontFace>(new FontFace(std::move(contents)));
}

const Kernel::String& FontFace::GetFamily() const noexcept
{
    return m_contents->family;
}

const FontMetrics& FontFace::GetMetrics() const noexcept
{
    return m_contents->metrics;
}

std::uint32_t FontFace::FindGlyph(char32_t character) const noexcept
{
    return m_contents->shaper.FindGlyph(character);
}

const FaceShaper& FontFace::GetShaper() const noexcept
{
    return m_contents->shaper;
}

Kernel::Counted<const GlyphMetrics> FontFace::GetGlyph(std::uint32_t index) const
{
    Contents& contents = *m_contents;
    const std::lock_guard lock(contents.mutex);
    if (const auto found = contents.glyphs.find(index); found != contents.glyphs.end())
        return found->second;
    Kernel::Counted<const PolyCurveDbl> outline;
    try {
        outline = contents.outlines->Load(index);
    } catch (const Kernel::FormatException& error) {
        throw Kernel::FormatException("the font file " + contents.name +
                                      " is damaged: " + error.what());
    }
    auto glyph = Kernel::MakeCounted<const GlyphMetrics>(index, contents.shaper.GetAdvance(index),
                                                         std::move(outline));
    if (contents.glyphs.size() >= Contents::MaxGlyphs)
        contents.glyphs.clear();
    contents.glyphs.emplace(index, glyph);
    return glyph;
}

} // namespace Geometry
