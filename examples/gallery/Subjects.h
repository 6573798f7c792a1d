#pragma once

#include <initializer_list>

#include <renderer/core/RenderTarget.h>
#include <renderer/paint/FillGradient.h>

#include "Page.h"

namespace Gallery {

using Geometry::WindingOrderMode;
using Renderer::BlendOptions;
using Renderer::FillBlendMode;
using Renderer::FillDescriptorConst;
using Renderer::FillGradient;
using Renderer::Gradient;
using Renderer::LineStyle;
using Renderer::LineStyleDescriptorConst;
using Renderer::RenderTarget;
using Path = Kernel::Counted<const Geometry::PolyCurveDbl>;
using Bitmap = Kernel::Counted<const Raster::DynamicBitmap>;
using Point = Kernel::PointT<double>;
using Affine = Raster::AffineTransform;

/// \name Paint
/// @{

/// A stop of a gradient; \p rgb is 0xRRGGBB.
struct Stop
{
    double position;
    unsigned rgb;
    double alpha = 1.0;
    double midpoint = 0.5;
    double smoothness = 0.0;
};

Kernel::Consolidated<Gradient> Stops(std::initializer_list<Stop> stops);
FillDescriptorConst Solid(unsigned rgb, double alpha = 1.0);
/// The frame whose x axis runs between two points, with a y axis as long and at a right angle.
Affine::Params Between(Point from, Point to);
/// The frame of a circle.
Affine::Params Around(Point centre, double radius);
FillDescriptorConst Linear(Point from, Point to, std::initializer_list<Stop> stops);
FillDescriptorConst Radial(Point centre, double radius, std::initializer_list<Stop> stops);
/// The hues once around a point.
FillDescriptorConst Rainbow(Point centre);
/// @}

/// \name Shapes
/// @{
Path Disc(Point centre, double radius);
Path Star(Point centre, double outer, double inner, int points, double turn = 0.0);
/// Petals around a point, which overlap.
Path Flower(Point centre, double radius, int petals);
/// The whole picture.
Path Sheet();
/// @}

/// \name Pictures
/// @{

/// Fills a path with everything else left at its default.
void Paint(RenderTarget& target, const Path& path, const FillDescriptorConst& fill,
           float opacity = 1.0F);
/// Light and dark squares, to see transparency before.
void DrawCheckerboard(RenderTarget& target);
/// Evening over a lake.
void DrawLandscape(RenderTarget& target);
/// The same as a bitmap of another size.
Bitmap MakeLandscape(unsigned width, unsigned height);
/// Black and white wedges around the middle, which show every fault of a resampler.
Bitmap MakeWedges(unsigned width, unsigned height);
/// A bird before grass and sky, 48 × 36 pixels.
Bitmap MakeStamp();
/// @}

} // namespace Gallery
