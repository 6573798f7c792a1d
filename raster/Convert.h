#pragma once

#include <kernel/Counted.h>
#include <raster/DynamicBitmap.h>
#include <raster/DynamicBuffer.h>
#include <raster/Export.h>
#include <raster/ICCManager.h>

namespace Raster {

/// Turns premultiplied channels into plain ones and back, rounding to nearest; in place.
/// Colour of fully transparent pixels becomes 0.
RASTER_EXPORT void Unpremultiply(Format format, void* pixels, std::size_t count);
RASTER_EXPORT void Premultiply(Format format, void* pixels, std::size_t count);

/// Brings a premultiplied buffer into another format and profile. Uses the ICC transform where the
/// profiles give one and the fixed formulas otherwise; masks become grey with full alpha and
/// colours become masks by their alpha. Returns the buffer itself when nothing changes. \param
/// profile the profile of \p source; none means the slot of \p targetProfiles for its format.
/// \return null when the memory cannot be had or a format stores no pixels.
RASTER_EXPORT Kernel::Counted<const DynamicBuffer>
ConvertBuffer(const Kernel::Counted<const DynamicBuffer>& source,
              const Kernel::Counted<const ICCProfile>& profile, Format target,
              const ICCManager::ICCProfileSet& targetProfiles);

/// The fixed conversion between two unpremultiplied float pixels without profiles: RGB, CMYK, grey
/// and Lab by the formulas of the colour classes; HSL too. Channels are in 0…1 and alpha, which is
/// copied, follows them; Lab is L*/100, (a* + 128)/255, (b* + 128)/255. RGB is clamped on its way
/// to CMYK and HSL, otherwise nothing is. \p source and \p destination must not overlap.
RASTER_EXPORT void ConvertFloatPixel(ColourSpace from, const float* source, ColourSpace to,
                                     float* destination);

} // namespace Raster
