#pragma once

#include <array>
#include <vector>

#include <kernel/Counted.h>
#include <raster/ICCLayout.h>
#include <raster/ICCManager.h>

namespace Raster {

/// One side of a transform: the profile (not null) and how the pixels are stored.
struct ICCSide
{
    Kernel::Counted<const ICCProfile> profile;
    ICCLayout layout;
};

/// A transform that works on blocks of float channels, whatever the two sides store.
class ICCBlockTransform : public ICCTransform
{
public:
    ICCBlockTransform(ICCLayout from, ICCLayout to) noexcept : m_from(from), m_to(to) {}
    void Apply(const void* source, void* destination, std::size_t count) const final;

    /// The most pixels that Process gets at a time.
    static constexpr std::size_t BlockSize = 256;

protected:
    /// Turns \p count pixels of the source space into the destination's; channels are fractions of
    /// the range, in both with alpha, which is to be copied. \p source may be overwritten.
    virtual void Process(float* source, float* destination, std::size_t count) const noexcept = 0;

private:
    ICCLayout m_from;
    ICCLayout m_to;
};

/// \name Makers of transforms; each returns null when it cannot serve the two sides.
/// @{

/// Of one profile: changes only the depth.
Kernel::Counted<const ICCTransform> MakeICCDepthTransform(const ICCSide& from, const ICCSide& to);
/// Between two RGB profiles of three tone curves and a matrix; unbounded.
Kernel::Counted<const ICCTransform> MakeICCShaperTransform(const ICCSide& from, const ICCSide& to);
/// Any two profiles, by Little CMS.
Kernel::Counted<const ICCTransform> MakeICCLcmsTransform(const ICCSide& from, const ICCSide& to);
/// The best of them.
Kernel::Counted<const ICCTransform> MakeICCTransform(const ICCSide& from, const ICCSide& to);
/// @}

/// The profile's tone exponent by Little CMS's estimate of its grey or green curve; 2.2 without
/// one.
double EstimateICCGamma(const ICCProfile& profile);

/// The bytes of the default profile of a space: sRGB, grey with the sRGB curve, Lab D50; empty for
/// others. The same in every process.
std::vector<unsigned char> MakeDefaultICCProfile(ColourSpace space);

/// Chromaticities of the primaries and the white: x and y of red, green, blue and white.
using ICCChromaticities = std::array<double, 8>;
/// Those of sRGB (ITU-R BT.709).
inline constexpr ICCChromaticities SRGBChromaticities{0.64, 0.33, 0.30,   0.60,
                                                      0.15, 0.06, 0.3127, 0.3290};

/// The bytes of an RGB profile without tone curves; empty when the chromaticities make no space.
/// The same in every process.
std::vector<unsigned char> MakeLinearICCProfile(const ICCChromaticities& chromaticities);

} // namespace Raster
