#pragma once

#include <memory>
#include <string>

#include <geometry/Export.h>
#include <geometry/text/FontFace.h>
#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/Font.h>
#include <kernel/String.h>

namespace Geometry {

/// The faces that text of a font is drawn with: the one that comes nearest to what was asked for,
/// and others for characters that it lacks. Shared; any thread may use it.
class GEOMETRY_EXPORT FontSelection : public Kernel::Countable
{
public:
    /// The installed faces for a font, kept for the next time. Files that are damaged are passed
    /// over.
    /// \param language a tag of BCP 47, which decides among faces of other scripts; may be empty.
    static Kernel::Counted<const FontSelection> Find(const Kernel::Font& font,
                                                     const std::string& language = {});
    /// A face alone, whatever it lacks.
    explicit FontSelection(Kernel::Counted<const FontFace> face);
    ~FontSelection() override;

    /// The face that comes nearest; null when no font is installed.
    const Kernel::Counted<const FontFace>& GetFace() const noexcept;

    /// The first face that has a glyph for a character, or the nearest one where none does.
    const Kernel::Counted<const FontFace>& FindFace(char32_t character) const;

    /// The family that was asked for first, where it is missing and GetFace() stands in for it;
    /// else empty. Generic families are never missing.
    const Kernel::String& GetMissingFamily() const noexcept;

private:
    struct Contents;

    explicit FontSelection(std::unique_ptr<Contents> contents);

    std::unique_ptr<Contents> m_contents;
};

} // namespace Geometry
