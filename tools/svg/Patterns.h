#pragma once

#include <optional>

#include <geometry/PolyCurve.h>
#include <renderer/core/RenderTarget.h>
#include <renderer/paint/FillDescriptorConst.h>

#include "Context.h"
#include "Offscreen.h"
#include "PatternSource.h"

namespace Svg {

/// Turns patterns into fills for a target: bitmaps in the resolution of its device.
///
/// A tile that is the only one on a shape is drawn where it lies, so that nothing is resampled. So
/// are the few tiles of one that is too large for a bitmap of its own. Otherwise one tile is drawn,
/// its edges on the edges of pixels so that no seam shows: as it is where all tiles lie on whole
/// pixels of the device, else in four times the resolution, from which each device pixel averages
/// 4 × 4 samples. When a pattern is on so many shapes that they add up to the whole device, the
/// device is covered once for all of them.
class Patterns
{
public:
    /// \pre both outlive the object.
    Patterns(Context& context, Renderer::RenderTarget& target, ContentDrawer draw)
        : m_context(context), m_target(target), m_draw(std::move(draw))
    {}

    /// The paint of a shape under the target's current transform; one that paints nothing where the
    /// pattern does so, or would draw itself.
    /// \param opacity scales the pattern.
    /// \param reach how far beyond the shape the paint is needed: for strokes.
    /// \return nothing when the pattern refers to the shape's box and there is none.
    std::optional<Renderer::FillDescriptorConst> MakeFill(const Element& pattern, double opacity,
                                                          const Geometry::PolyCurveDbl& shape,
                                                          double reach,
                                                          const LengthContext& lengths);

private:
    /// The tiles that an area needs, by their numbers along both axes; whole numbers.
    struct Range
    {
        double left = 0.0;
        double top = 0.0;
        double right = 0.0; ///< exclusive, as bottom
        double bottom = 0.0;

        double GetCount() const noexcept { return (right - left) * (bottom - top); }
    };
    /// A pattern under way to pixels.
    struct Job
    {
        PatternTile tile;
        Transform toDevice;          ///< from the pattern's coordinates
        Kernel::RectT<int> pixels{}; ///< of the device, that are painted
        Range range;
        double opacity = 1.0;
        double extentX = 0.0; ///< a tile's extent in device pixels along its own axes
        double extentY = 0.0;
    };

    static Range FindRange(const Job& job, const Transform& deviceToPattern,
                           const Kernel::RectT<double>& area);
    static bool LiesOnWholePixels(const Job& job);
    std::optional<Job> MakeJob(const PatternTile& tile, const Kernel::RectT<double>& area,
                               double opacity);
    Renderer::FillDescriptorConst Paint(const Job& job);
    Kernel::Counted<Renderer::BitmapRenderTarget> MakeLayer(const Job& job, double samples);
    Renderer::FillDescriptorConst DrawInPlace(const Job& job);
    Renderer::FillDescriptorConst DrawSampled(const Job& job, double scale);
    TileKey MakeKey(const Job& job, double scaleX, double scaleY) const;
    Kernel::Counted<const Raster::DynamicBitmap> FindTile(const Job& job, const TileKey& key);
    Kernel::Counted<const Raster::DynamicBitmap> Cover(const Job& job, const TileKey& key);
    bool IsCoverWorthwhile(const Job& job, const CoverKey& key);

    Context& m_context;
    Renderer::RenderTarget& m_target;
    ContentDrawer m_draw;
};

} // namespace Svg
