#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <raster/AffineTransform.h>
#include <raster/Format.h>

namespace Raster::Resampling {

/// Single precision is exact enough for 8 bits (errors of weighted sums stay below 1e-4 of a step)
/// and twice as fast.
template<class P>
using RealOf = std::conditional_t<sizeof(typename P::ChannelType) == 1, float, double>;

/// A picture and the map that it is read through, as the loops over spans see them. The map takes
/// device coordinates to source pixels.
struct MappedPicture
{
    const unsigned char* pixels = nullptr;
    std::ptrdiff_t stride = 0; ///< bytes
    int width = 0;
    int height = 0;
    ExtendType extend = ExtendType::Clamp;
    AffineTransform::Params map;
    /// What has to be added to a whole pixel's coordinates, where maps are that simple.
    std::int64_t offsetX = 0;
    std::int64_t offsetY = 0;
    /// How far behind the centre of the column at the offset a device column's centre lies, 0 ≤ f <
    /// 1, where a step on the device is a step in the picture.
    double fractionX = 0;

    template<class P>
    const P* GetRow(std::int64_t y) const noexcept
    {
        return reinterpret_cast<const P*>(pixels + stride * y);
    }
};

/// Writes \p length pixels from device pixel (x, y) on.
/// \param table a ColumnTable for the loops along rows, always the same for a picture.
/// \param out an array of the picture's pixels.
using SpanFunction = void (*)(const MappedPicture& picture, void* table, int x, int y,
                              unsigned length, void* out);

/// How a map runs through the picture, from the simplest.
enum class MapKind
{
    WholePixels, ///< by whole pixels, within a millionth
    UnitSteps,   ///< rows along rows, a pixel for a pixel
    Rows,        ///< rows along rows, magnified (or flipped)
    Any,
};

/// Puts the map from the device to the unit square into \p picture, whose size is known, without
/// the noise that inverting leaves in maps that are simple.
/// \return false when nothing can be read through the map.
bool SetMap(MappedPicture& picture, const AffineTransform::Params& deviceToUnit) noexcept;

/// The kind of the picture's map; sets the offsets and the fraction that belong to it.
MapKind ClassifyMap(MappedPicture& picture, bool nearest) noexcept;

} // namespace Raster::Resampling
