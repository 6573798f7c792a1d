#pragma once

#include <raster/ICCManager.h>
#include <renderer/paint/ColourVisitor.h>
#include <renderer/paint/ReplacedBitmaps.h>

namespace Renderer {

/// Brings every colour into one model, in which it looks as before as far as the model goes, for
/// instance for output in greys or inks alone. Alpha and attributes are kept.
///
/// Of named colours the base is converted, so that spots keep their names; an sRGB equivalent only
/// stays beside an RGB base. Registration colours, which are all inks there are, stay. Bitmaps are
/// converted into the format of the model that is nearest to theirs (RGB for HSL); masks stay.
class RENDERER_EXPORT ForceColourVisitor : public ColourVisitor
{
public:
    using ICCProfileSet = Raster::ICCManager::ICCProfileSet;

    /// \param space the model of the answers.
    /// \param profiles those of the document: both what the colours are in and what they get into.
    ForceColourVisitor(Raster::ColourSpace space, const ICCProfileSet& profiles);
    ~ForceColourVisitor() override;

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
    template<class Model>
    Kernel::Counted<const Colour> Force(const Kernel::Counted<const Model>& colour) const;

    Raster::ColourSpace m_space;
    ICCProfileSet m_profiles;
    ReplacedBitmaps m_bitmaps;
};

} // namespace Renderer
