#pragma once

#include <array>

#include <raster/ICCManager.h>
#include <renderer/paint/ColourVisitor.h>
#include <renderer/paint/ReplacedBitmaps.h>

namespace Renderer {

/// Expresses colours anew so that they look as before when the colour format or the profiles of
/// their document change. They stay in their models and keep their attributes; each is brought from
/// the old into the new profile of its model. Colours that differ by no more than 1e-6 per channel
/// afterwards are given back as they are.
///
/// RGB and HSL are in the RGB profile, which is the alternative one for RGBAUF documents; none
/// means the default. CMYK and grey without a profile on one side go through RGB by the fixed
/// formulas there; without any, they stay: the formulas make the same RGB numbers of them in either
/// document, which look alike as far as the RGB profiles do. Lab that lacks a profile on a side
/// stays too, since its numbers are measured colours; documents without a Lab profile show them by
/// a formula for sRGB, so that they look alike where the RGB profiles do. Of named colours the base
/// is converted: their sRGB equivalent is in sRGB in every document. Registration colours stay.
///
/// Bitmaps without a profile are in the document's: they get the old one for their own, and their
/// pixels stay. (With ink amounts that never had a profile there is none to get.)
class RENDERER_EXPORT ConvertColourOrProfileVisitor : public ColourVisitor
{
public:
    using ICCProfileSet = Raster::ICCManager::ICCProfileSet;
    using Profile = Kernel::Counted<const Raster::ICCProfile>;

    /// \param changed set to true when something is answered that differs from what was visited,
    /// and
    ///        left alone otherwise; may be null.
    ConvertColourOrProfileVisitor(Raster::Format oldFormat, const ICCProfileSet& oldProfiles,
                                  Raster::Format newFormat, const ICCProfileSet& newProfiles,
                                  bool* changed);
    ~ConvertColourOrProfileVisitor() override;

    /// \name The profiles that RGB colours are brought from and into; never empty.
    /// @{
    const Profile& GetOldRgbProfile() const noexcept { return m_oldColours.GetRGB(); }
    const Profile& GetNewRgbProfile() const noexcept { return m_newColours.GetRGB(); }
    /// @}

    using ColourVisitor::Visit;
    Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourHSL>& colour) override;
    Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourRGB>& colour) override;
    Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourCMYK>& colour) override;
    Kernel::Counted<const Colour>
    Visit(const Kernel::Counted<const ColourGrayscale>& colour) override;
    Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourLAB>& colour) override;
    Kernel::Counted<const Colour> Visit(const Kernel::Counted<const ColourNamed>& colour) override;
    Kernel::Counted<const FillBitmap> Visit(const Kernel::Counted<const FillBitmap>& fill) override;

private:
    using Channels = std::array<float, 5>;

    /// Brings channels of a model into the new profile. \return false when there is nothing to do.
    bool Convert(Raster::ColourSpace space, Channels& channels) const;
    bool ConvertHSL(Channels& channels) const;
    bool ConvertThroughRGB(Raster::ColourSpace space, Channels& channels) const;
    /// The same between the profiles of one space. \return false when they are the same.
    bool Transform(Raster::ColourSpace space, Channels& channels) const;

    template<class Model>
    Kernel::Counted<const Colour> Replace(const Kernel::Counted<const Model>& colour);
    void NoteChange() noexcept;

    ICCProfileSet m_oldProfiles;
    ICCProfileSet m_newProfiles;
    ICCProfileSet m_oldColours; ///< the same with the RGB profile of the document's format
    ICCProfileSet m_newColours;
    bool* m_changed;
    ReplacedBitmaps m_bitmaps;
};

} // namespace Renderer
