#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <geometry/BoundingBox.h>
#include <renderer/core/NullRenderTarget.h>

namespace Command {

/// Learns what a drawing pass would touch: how many calls of each kind it makes, and the box of all
/// pixels that they can change. Shapes count where the boxes of the clips let them show; those
/// without paint are counted and touch nothing.
class CountingTarget final : public Renderer::NullRenderTarget
{
public:
    /// \param width,height the extent of the page in pixels; what lies outside is not touched.
    CountingTarget(unsigned width, unsigned height);

    /// One line each: the page, the box of the touched pixels, and the kinds of calls that were
    /// made, with their numbers.
    std::string Report() const;

    using Fill = Renderer::FillDescriptorConst;
    using Line = Renderer::LineStyleDescriptorConst;
    using Mode = Renderer::FillBlendMode::BlendMode;
    using Options = Renderer::BlendOptions;
    using Winding = Geometry::WindingOrderMode;
    using Rect = Kernel::RectT<double>;
    using Params = Raster::AffineTransform::Params;
    using Polygons = Kernel::Counted<const Renderer::PolyPolygon>;
    using Path = Kernel::Counted<const Geometry::PolyCurveDbl>;

    void DrawPolyCurve(Path curve, float opacity, Mode mode, const Options& options,
                       const Fill& fill, const Fill& transparency, const Fill& lineFill,
                       const Line& lineStyle, Winding winding, bool antialias,
                       bool antialiasUnderClip) override;
    void DrawPolyPolygon(Polygons polygons, float opacity, Mode mode, const Options& options,
                         const Fill& fill, const Fill& transparency, Winding winding,
                         bool antialias, bool antialiasUnderClip) override;
    void DrawPolyPolyline(Polygons polylines, float opacity, Mode mode, const Options& options,
                          const Fill& fill, const Fill& transparency,
                          const Line& lineStyle) override;
    void DrawBitmap(const Rect& dest, Kernel::Counted<const Raster::DynamicBitmap> bitmap,
                    float opacity, Mode mode, const Options& options,
                    bool antialiasUnderClip) override;
    void DrawBuffer(const Rect& dest, Kernel::Counted<const Raster::DynamicBuffer> buffer,
                    float opacity, Mode mode, const Options& options,
                    bool antialiasUnderClip) override;
    void Blend(float opacity, Mode mode, const Options& options, const Fill& fill,
               const Fill& transparency) override;
    void PushComposite(CompositeInit init, Mode mode, const Options& options,
                       float opacity) override;
    void PushClippingMask(const Rect& bounds,
                          Kernel::Counted<const Raster::DynamicBuffer> mask) override;
    void PopClippingMask() override;
    void PushClipPath(Polygons polygons, Winding winding) override;
    void PushClipCurvesPath(Path curve, Winding winding) override;
    void PushClipPolyCurvesPath(Kernel::Counted<const Renderer::ConstPolyPolyCurve> curves,
                                Winding winding) override;
    void PopClipPath() override;
    bool HasClipPaths() const override;
    void PushClipPathGroup() override;
    void PopClipPathGroup() override;

private:
    /// The kinds of calls; see the names in the source.
    enum Kind
    {
        Paths,
        Fills,
        Strokes,
        Polygonal,
        Bitmaps,
        Floods,
        Groups,
        ClipPaths,
        ClipGroups,
        Masks,
        KindCount,
    };

    void Count(Kind kind) { ++m_counts[kind]; }
    /// Notes that pixels of a box on the device change, as far as the clips let them.
    void Touch(const Rect& device);
    /// The box of a path on the device as it is drawn, from straight edges.
    Rect GetPathBox(const Geometry::PolyCurveDbl& path, const Params& transform) const;
    /// The box of a stroke on the device, given that of its path there.
    Rect InflateByStroke(const Rect& device, const Line& lineStyle) const;
    /// Narrows the clip to a box on the device.
    void PushClipBox(const Rect& device);
    void PopClipBox();
    /// What all clips let through on the device; within a clip group, those outside of it.
    Rect GetClipBox() const;

    std::array<unsigned long long, KindCount> m_counts{};
    Rect m_page;
    Geometry::BoundingBoxT<double> m_touched;
    std::vector<Rect> m_clipBoxes;         // of clip paths and masks, each within those before it
    std::vector<std::size_t> m_clipGroups; // how many boxes were there when each was opened
};

} // namespace Command
