#pragma once

#include <algorithm>
#include <cmath>

#include <raster/AffineTransform.h>

namespace Renderer {

/// How a stroke is drawn that may be too thin for the rasteriser.
struct Hairline
{
    /// The width of the pen in weights. Caps reach no further beyond the ends of lines than those
    /// of the weight: 1/penScale of half that width.
    double penScale;
    float opacity;
};

/// The least width in device pixels that strokes are drawn with. Edges are rounded to 1/256 of a
/// pixel and coverages to 1/255, which takes or gives a quarter pixel 1.5 % of its width at most,
/// but a hundredth of a pixel half of it.
inline constexpr double LeastPenWidth = 0.25;

/// How wide a stroke is on the device where it is widest: a pen that follows the map is as long
/// there as the map's largest singular value says, which for skews is more than the weight.
/// \param weight the effective weight
inline double GetLargestWidth(double weight, bool isResIndependent,
                              const Raster::AffineTransform::Params& current)
{
    using Raster::AffineTransform;
    const double scale = AffineTransform::GetScale(current);
    if (isResIndependent || !(scale > 0.0) || !(weight < LeastPenWidth))
        return weight;
    return weight * (AffineTransform::GetLargestSingularValue(current) / scale);
}

/// Lines that are thinner are drawn that wide, and fainter, as much as they are wider: whatever the
/// pen covers is then stretched across the path alone, and the area times the opacity stays that of
/// the true line, along its sides, in dashes of any length, and in caps and dots, which are squares
/// or discs stretched across. Left out are mitres and places where the path comes closer to itself
/// than the wider pen, which differ by less than the square of its width each (times the mitre
/// limit). What one pixel gets is still rounded to the steps of coverages.
///
/// As an opacity counts in steps of 1/255, rounded down, the width makes up for the rest.
/// \param width in device pixels, positive
inline Hairline KeepVisualWeight(double width, float opacity)
{
    const double steps = std::floor(std::min(opacity, 1.0F) * 255.0F);
    if (!(width < LeastPenWidth) || !(steps >= 1.0))
        return {1.0, opacity};
    const double fainter = std::max(1.0, std::ceil(steps * width / LeastPenWidth));
    return {steps / fainter, static_cast<float>((fainter + 0.5) / 255.0)};
}

} // namespace Renderer
