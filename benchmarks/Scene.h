#pragma once

#include <algorithm>
#include <variant>
#include <vector>

#include <geometry/PolyCurve.h>
#include <geometry/WindingOrderMode.h>
#include <raster/AffineTransform.h>
#include <raster/DynamicBitmap.h>
#include <raster/Format.h>
#include <renderer/paint/FillDescriptorConst.h>
#include <renderer/paint/LineStyleDescriptorConst.h>

namespace Benchmarks {

using Transform = Raster::AffineTransform::Params;
using Path = Kernel::Counted<const Geometry::PolyCurveDbl>;

/// \name What a scene consists of. Pushes and pops nest.
/// @{
struct DrawPath
{
    Path path;
    float opacity = 1.0F;
    Renderer::FillDescriptorConst fill;
    Renderer::FillDescriptorConst lineFill;
    Renderer::LineStyleDescriptorConst lineStyle;
    Geometry::WindingOrderMode winding = Geometry::WindingOrderMode::NonZero;

    bool HasFill() const { return !fill.IsFillNone(); }
    bool HasStroke() const { return lineStyle.IsLineStyleVisible(lineFill); }
    /// Whether fill and stroke overlap and are to be seen through as one.
    bool IsGroup() const { return HasFill() && HasStroke() && opacity < 1.0F; }
};

struct DrawBitmap
{
    Kernel::RectT<double> dest;
    Kernel::Counted<const Raster::DynamicBitmap> bitmap;
    float opacity = 1.0F;
    Raster::ResamplerType resampler = Raster::ResamplerType::Bilinear; ///< when magnified
};

struct PushTransform
{
    Transform transform; ///< acts in local coordinates, on line widths too
};
struct PopTransform
{};

struct PushClip
{
    Path path;
    Geometry::WindingOrderMode winding;
};
struct PopClip
{};

struct PushGroup
{
    float opacity; ///< of the group as one object
};
struct PopGroup
{};
/// @}

using Command = std::variant<DrawPath, DrawBitmap, PushTransform, PopTransform, PushClip, PopClip,
                             PushGroup, PopGroup>;

/// A list of drawing calls that every peer can make, for an RGBA page of 8 bits per channel.
struct Scene
{
    unsigned width = 0;
    unsigned height = 0;
    Transform logicalToDevice;
    std::vector<Command> commands;
    unsigned leftOut = 0; ///< calls of the original that some peer can't make

    /// Whether nothing is drawn.
    bool IsEmpty() const
    {
        return std::none_of(commands.begin(), commands.end(), [](const Command& command) {
            return std::holds_alternative<DrawPath>(command) ||
                   std::holds_alternative<DrawBitmap>(command);
        });
    }
};

/// For std::visit: one lambda per command.
template<class... Functions>
struct Overloaded : Functions...
{
    using Functions::operator()...;
};

} // namespace Benchmarks
