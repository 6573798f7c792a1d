#pragma once

#include <cstdint>
#include <memory>

#include <kernel/Counted.h>
#include <raster/Export.h>
#include <raster/Format.h>
#include <raster/ICCProfile.h>
#include <raster/Pixel.h>

namespace Raster {

/// A ready colour transform between two profiles: made once, shared by threads, never changed.
/// Works on unpremultiplied pixels; alpha is copied.
class RASTER_EXPORT ICCTransform : public Kernel::Countable
{
public:
    ~ICCTransform() override;
    /// Transforms \p count pixels of the formats that the transform was made for. \p source and
    /// \p destination may be the same memory only when the pixels have the same size.
    virtual void Apply(const void* source, void* destination, std::size_t count) const = 0;
};

/// Colour management: profiles, profile sets and cached transforms. Safe from many threads.
/// Intents: relative colorimetric with black point compensation.
class RASTER_EXPORT ICCManager
{
public:
    /// One profile per colour space; all empty when default-made. Compares by the profiles'
    /// identities.
    class RASTER_EXPORT ICCProfileSet
    {
    public:
        const Kernel::Counted<const ICCProfile>& GetRGB() const noexcept { return m_rgb; }
        /// The RGB profile of Format::RGBAUF.
        const Kernel::Counted<const ICCProfile>& GetAlternativeRGB() const noexcept { return m_alternativeRGB; }
        const Kernel::Counted<const ICCProfile>& GetGrey() const noexcept { return m_grey; }
        const Kernel::Counted<const ICCProfile>& GetCMYK() const noexcept { return m_cmyk; }
        const Kernel::Counted<const ICCProfile>& GetLAB() const noexcept { return m_lab; }

        /// \name Each takes a profile of its own space, or none; others are ignored.
        /// @{
        void SetRGB(Kernel::Counted<const ICCProfile> profile);
        void SetAlternativeRGB(Kernel::Counted<const ICCProfile> profile);
        void SetGrey(Kernel::Counted<const ICCProfile> profile);
        void SetCMYK(Kernel::Counted<const ICCProfile> profile);
        void SetLAB(Kernel::Counted<const ICCProfile> profile);
        /// @}

        /// The profile that a format is in: alternative RGB for RGBAUF; none for masks and None.
        Kernel::Counted<const ICCProfile> GetProfile(Format format) const;
        /// Puts a profile into the slot of a format.
        void SetProfile(Format format, Kernel::Counted<const ICCProfile> profile);

        friend RASTER_EXPORT bool operator==(const ICCProfileSet& a, const ICCProfileSet& b) noexcept;
        std::uint64_t GetHash() const noexcept;

    private:
        Kernel::Counted<const ICCProfile> m_rgb;
        Kernel::Counted<const ICCProfile> m_alternativeRGB;
        Kernel::Counted<const ICCProfile> m_grey;
        Kernel::Counted<const ICCProfile> m_cmyk;
        Kernel::Counted<const ICCProfile> m_lab;
    };

    static ICCManager& GetInstance();

    /// The transform from pixels of \p from (profiles of \p fromSet) to pixels of \p to (profiles of
    /// \p toSet), from the cache or new. Formats here name the layout and depth: any format that has
    /// a colour space. For a pair of spaces with at least one profile set, an empty RGB slot counts
    /// as GetDefaultProfileForFormat.
    ///
    /// Between bytes of different spaces the result comes from a table, up to some steps off in dark
    /// inks; every other pair is exact. RGB profiles of curves and a matrix are unbounded: odd below
    /// 0, beyond 1 by the curve's own formula (a sampled curve as the power of its last slope).
    ///
    /// \return null when a space other than RGB lacks its profile (the caller then uses the fixed
    ///         formulas), and when both sides are the same profile, depth and format.
    Kernel::Counted<const ICCTransform> GetTransform(Format from, const ICCProfileSet& fromSet,
                                                     Format to, const ICCProfileSet& toSet);

    /// The float forms of the same, exact and cheap to make, between unpremultiplied float pixels:
    /// RGBA, CMYKA or intensity and alpha in 0…1; Lab as L*/100, (a* + 128)/255, (b* + 128)/255.
    Kernel::Counted<const ICCTransform> GetFloatTransform(ColourSpace from, const ICCProfileSet& fromSet,
                                                          ColourSpace to, const ICCProfileSet& toSet);

    /// Looks the transform up and applies it to \p count unpremultiplied pixels.
    /// \return false, with nothing written, when there is no transform.
    bool DoTransform(Format from, const ICCProfileSet& fromSet, const void* source, Format to,
                     const ICCProfileSet& toSet, void* destination, std::size_t count);

    /// The profile assumed for a format without one: sRGB for RGB formats, grey with the sRGB curve
    /// for grey formats, Lab D50 (version 4) for Lab; none for CMYK and masks.
    Kernel::Counted<const ICCProfile> GetDefaultProfileForFormat(Format format);

    /// sRGB's primaries and white without its tone curve: values are proportional to light.
    Kernel::Counted<const ICCProfile> GetLinearRGBProfile();

    /// The exponent of the profile's tone curve, estimated; 2.2 for an empty profile or one without
    /// curves.
    double GetGammaForProfile(const Kernel::Counted<const ICCProfile>& profile);

    /// Lab D50 to sRGB-encoded float RGB by the CIE formulas, without profiles; alpha copied. Not
    /// clamped.
    static void DoLABA16ToRGBAFTransform(const PixelLABA16& lab, PixelRGBAF& rgb) noexcept;
    /// Its inverse: sRGB-encoded float RGB to Lab D50, clamped to the encoding.
    static void DoRGBAFToLABA16Transform(const PixelRGBAF& rgb, PixelLABA16& lab) noexcept;

    ICCManager(const ICCManager&) = delete;
    ICCManager& operator=(const ICCManager&) = delete;

private:
    ICCManager();
    ~ICCManager();

    struct Cache;
    std::unique_ptr<Cache> m_cache;
};

} // namespace Raster
