#pragma once

#include <kernel/SavedClass.h>
#include <renderer/paint/Colour.h>

namespace Renderer {

/// What every colour class does alike, written once: the conversions to the thirteen pixel types,
/// cloning, dispatch, and the factories.
/// \tparam Derived the concrete class, which is constructible from each kind of channels that its
///         factories take.
template<class Derived>
class RENDERER_EXPORT ColourOf : public Kernel::SharedSavedClass<Derived, Colour>
{
public:
    using ICCProfileSet = Colour::ICCProfileSet;

    /// The items of Colour, then the channels of classes that have some.
    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    Kernel::Counted<Colour> Clone() const override;

    using Colour::GetColour;
    void GetColour(Raster::PixelAlphaF& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelAlpha16& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelAlpha8& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelRGBAUF& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelHSLAF& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelCMYKAF& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelRGBAF& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelRGBA16& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelLABA16& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelIA16& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelIA8& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelCMYKA8& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;
    void GetColour(Raster::PixelRGBA8& pixel, bool applyTint,
                   const ICCProfileSet& profiles) const override;

    Kernel::Counted<const Colour> Accept(ColourVisitor& visitor) const override;

    /// The one record of the class.
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

protected:
    ColourOf() = default;
    ColourOf(const ColourOf& other) = default;

    /// A fresh object of the given channels and attributes.
    template<class... Channels>
    static Kernel::Counted<Derived> Make(double tint, double intensity,
                                         const Kernel::String& globalName,
                                         const Channels&... channels)
    {
        Kernel::Counted<Derived> colour = Kernel::MakeCounted<Derived>(channels...);
        colour->SetTint(tint);
        colour->SetIntensity(intensity);
        colour->SetGlobalName(globalName);
        return colour;
    }

    /// The canonical instance of a fresh object.
    static Kernel::Consolidated<Derived> Share(const Kernel::Counted<Derived>& fresh)
    {
        return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(fresh);
    }

private:
    // \p self is the concrete object, const or not.
    template<class Self, class Items>
    static void ListChannels(Self& self, Items&& items);

    template<class P>
    void Convert(P& pixel, bool applyTint, const ICCProfileSet& profiles) const;
};

} // namespace Renderer
