#pragma once

#include <vector>

#include <lcms2.h>

#include <raster/ICCManager.h>

namespace RasterTest {

using Bytes = std::vector<unsigned char>;
using Profile = Kernel::Counted<const Raster::ICCProfile>;

/// \name Profiles made with Little CMS, deterministic but for their date.
/// @{
/// A wide RGB space of one pure gamma.
Bytes MakeWideRGBBytes(double gamma);
/// sRGB's primaries with its curve as 1024 samples, as in the older profiles of displays.
Bytes MakeSampledRGBBytes();
Bytes MakeGreyBytes(double gamma);
/// Inks by a 9-point table to Lab and back: paper and inks not quite ideal, black at L* 8.
Bytes MakeCMYKBytes();
/// @}

Profile MakeProfile(const Bytes& bytes);

/// All slots set: wide RGB of gamma 2.2 (and 1.0 as the alternative), grey of gamma 1.8, CMYK, Lab.
Raster::ICCManager::ICCProfileSet MakeFullSet();

} // namespace RasterTest
