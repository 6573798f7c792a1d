#pragma once

#include <utility>

#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/SharedClassProperties.h>
#include <kernel/SharedSerialisable.h>
#include <kernel/String.h>
#include <raster/DynamicPixel.h>
#include <raster/Format.h>
#include <raster/ICCManager.h>
#include <raster/Pixel.h>
#include <renderer/Export.h>

namespace Renderer {

class ColourVisitor;

/// A colour as the user defined it, in its own colour model, with the attributes that a document
/// keeps beside it. An immutable shared value: the setters serve while a fresh object is built,
/// before it is consolidated; holders keep `Kernel::Consolidated<Colour>`.
///
/// Render targets never draw with a Colour but ask it for a pixel of their format. Conversions go
/// through the ICC transform of the profile set where there is one, and through fixed formulas
/// otherwise; they never fail. The channels of an RGB (or HSL) colour are in the RGB profile of the
/// document, whichever it is, so RGB to RGB is never transformed.
///
/// Objects live on the heap only (see Create and CreateFakeTemporary of the concrete classes).
class RENDERER_EXPORT Colour : public Kernel::SharedSerialisable
{
public:
    using ICCProfileSet = Raster::ICCManager::ICCProfileSet;

    /// The concrete classes; the numbers are saved in documents.
    enum Type
    {
        RGB = 0,
        CMYK = 1,
        HSL = 2,
        Grayscale = 3,
        LAB = 4,
        Named = 5,
        Registration = 6,
    };

    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

public:
    ~Colour() override;
    /// A copy that is not consolidated.
    virtual Kernel::Counted<Colour> Clone() const = 0;

    virtual Type GetType() const = 0;
    virtual Raster::ColourSpace GetColourSpace() const = 0;

    /// The text that names the colour to the user: its channels, then " A:n%" unless the alpha
    /// rounds to 100 %, then " T:n%" likewise for the tint.
    virtual Kernel::String GetDefaultName() const = 0;

    /// \name The colour as a pixel, never premultiplied.
    /// \param applyTint mixes the converted channels with paper white: c·t + W·(1 − t), where W is
    /// the
    ///        largest value for light, 0 for inks, and white for Lab. Alpha is kept.
    /// \param profiles the profiles of the pixel (and of the colour).
    ///
    /// Integer RGB pixels are clamped to [0, 1] before rounding, and so is float RGBA; unbounded
    /// float is not. All other channels and alpha become integers unclamped: v · max + ½ cut to the
    /// channel's low bits (0 for values that are not finite).
    /// @{
    virtual void GetColour(Raster::PixelAlphaF& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelAlpha16& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelAlpha8& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelRGBAUF& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelHSLAF& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelCMYKAF& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelRGBAF& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelRGBA16& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelLABA16& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelIA16& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelIA8& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelCMYKA8& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    virtual void GetColour(Raster::PixelRGBA8& pixel, bool applyTint,
                           const ICCProfileSet& profiles) const = 0;
    /// @}

    /// Hands the colour to the visitor and returns its answer.
    virtual Kernel::Counted<const Colour> Accept(ColourVisitor& visitor) const = 0;

    /// Opacity, 1 for opaque.
    virtual double GetAlphaF() const = 0;
    virtual void SetAlphaF(double alpha) = 0;

    /// Whether both are of the same class with the same channels; the attributes are not compared.
    virtual bool AreUntintedColoursEqual(const Colour& other) const = 0;

    /// The colour as a CSS colour value.
    virtual Kernel::String GetCSSAttributes() const;

    /// The colour, tinted and not premultiplied, as a pixel of a format known at run time; an empty
    /// pixel for Format::None and unknown values.
    Raster::DynamicPixel GetRasterDynamicPixel(Raster::Format format,
                                               const ICCProfileSet& profiles) const;

    /// \name Attributes
    /// @{
    bool IsOverprint() const noexcept { return m_overprint; }
    void SetOverprint(bool overprint) noexcept { m_overprint = overprint; }
    /// The amount of noise that fills add, 0 for none.
    double GetNoise() const noexcept { return m_noise; }
    void SetNoise(double noise) noexcept { m_noise = noise; }
    /// 1 is the full colour; lower values mix towards paper white.
    double GetTint() const noexcept { return m_tint; }
    void SetTint(double tint) noexcept { m_tint = tint; }
    double GetIntensity() const noexcept { return m_intensity; }
    void SetIntensity(double intensity) noexcept { m_intensity = intensity; }
    /// The document swatch that the colour is linked to; empty for none.
    const Kernel::String& GetGlobalName() const noexcept { return m_globalName; }
    void SetGlobalName(Kernel::String name) { m_globalName = std::move(name); }
    bool IsGlobal() const noexcept { return !m_globalName.IsEmpty(); }
    /// Takes over all of them from another colour, whose alpha is not one of them.
    void SetAttributes(const Colour& other);
    /// @}

    /// The canonical instance of a colour's value. The object itself is not changed.
    static Kernel::Consolidated<Colour> Consolidate(const Kernel::Counted<const Colour>& colour);

    /// The canonical instance of \p colour after \p change has been applied to a copy of it.
    template<class Function>
    static Kernel::Consolidated<Colour> Modify(const Colour& colour, Function&& change)
    {
        const Kernel::Counted<Colour> copy = colour.Clone();
        change(*copy);
        return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(copy);
    }

protected:
    Colour() = default;
    Colour(const Colour& other) = default;

    /// Adds the alpha and tint suffixes to the channels' text.
    Kernel::String GetDefaultName(const Kernel::String& base) const;

private:
    template<class Self, class Items>
    static void ListItems(Self& self, Items&& items);

    bool m_overprint = false;
    double m_noise = 0.0;
    double m_tint = 1.0;
    double m_intensity = 1.0;
    Kernel::String m_globalName;
};

} // namespace Renderer
