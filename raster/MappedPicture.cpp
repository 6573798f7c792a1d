#include <raster/MappedPicture.h>

#include <algorithm>
#include <cmath>

#include <raster/Resample.h>
#include <raster/ResampleFilters.h>

namespace Raster {

namespace Resampling {

namespace {

/// Maps and translations this near to whole pixels count as that.
constexpr double WholePixelTolerance = 1e-6;
/// Elements this near to 0 and 1 are that but for the rounding of inversions. Over 100,000 pixels
/// it moves what is drawn by a ten-millionth of a pixel.
constexpr double Noise = 1e-12;
/// Beyond these, products with device coordinates could leave the range of double or int64.
constexpr double MaxElement = 1e290;
constexpr double MaxWholeOffset = 1e15;

bool IsUsable(const AffineTransform::Params& map) noexcept
{
    AffineTransform::Params inverse;
    const auto isSmall = [](double element) { return std::abs(element) < MaxElement; };
    return isSmall(map.m00) && isSmall(map.m01) && isSmall(map.m02) && isSmall(map.m10) &&
           isSmall(map.m11) && isSmall(map.m12) && AffineTransform::Invert(map, inverse);
}

AffineTransform::Params ScaleResult(const AffineTransform::Params& map, double x, double y) noexcept
{
    return {map.m00 * x, map.m01 * x, map.m02 * x, map.m10 * y, map.m11 * y, map.m12 * y};
}

void RemoveNoise(double& element) noexcept
{
    for (const double simple : {-1.0, 0.0, 1.0})
        if (std::abs(element - simple) <= Noise)
            element = simple;
}

bool IsWholePixelTranslation(MappedPicture& picture) noexcept
{
    const double x = std::round(picture.map.m02);
    const double y = std::round(picture.map.m12);
    if (!(std::abs(x) < MaxWholeOffset && std::abs(y) < MaxWholeOffset) ||
        !AffineTransform::IsEqual(picture.map, AffineTransform::Translation(x, y),
                                  WholePixelTolerance))
        return false;
    picture.offsetX = std::int64_t(x);
    picture.offsetY = std::int64_t(y);
    return true;
}

/// The size at which a device pixel that covers \p footprint source pixels covers at most one.
/// Whole ratios come out whole in spite of rounding.
unsigned GetReducedSide(unsigned size, double footprint) noexcept
{
    if (!(footprint > 1 + WholePixelTolerance))
        return size;
    return unsigned(std::max(1.0, std::floor(size / footprint + WholePixelTolerance)));
}

} // namespace

bool SetMap(MappedPicture& picture, const AffineTransform::Params& deviceToUnit) noexcept
{
    auto& map = picture.map;
    map = ScaleResult(deviceToUnit, picture.width, picture.height);
    if (!IsUsable(map))
        return false;
    for (double* element : {&map.m00, &map.m01, &map.m10, &map.m11})
        RemoveNoise(*element);
    return true;
}

MapKind ClassifyMap(MappedPicture& picture, bool nearest) noexcept
{
    if (IsWholePixelTranslation(picture))
        return MapKind::WholePixels;
    const auto& map = picture.map;
    if (map.m10 != 0)
        return MapKind::Any;
    if (map.m00 == 1 && map.m01 == 0 && std::abs(map.m02) < MaxWholeOffset) {
        const double shift = nearest ? map.m02 + 0.5 + NearestBias : map.m02;
        const double column = std::floor(shift);
        picture.offsetX = std::int64_t(column);
        picture.fractionX = shift - column;
        return MapKind::UnitSteps;
    }
    // Tables of columns are for picture columns that are wider than the device's, or nearly.
    return nearest || std::abs(map.m00) < 1 + WholePixelTolerance ? MapKind::Rows : MapKind::Any;
}

} // namespace Resampling

PictureSize GetReducedSize(PictureSize size, const AffineTransform::Params& deviceToUnit) noexcept
{
    using namespace Resampling;
    const auto map = ScaleResult(deviceToUnit, size.width, size.height);
    if (!IsUsable(map))
        return size;
    // The rows of the map are the gradients of the source coordinates over the device: their
    // lengths say how far a step of one device pixel leads at most.
    return {GetReducedSide(size.width, std::hypot(map.m00, map.m01)),
            GetReducedSide(size.height, std::hypot(map.m10, map.m11))};
}

} // namespace Raster
