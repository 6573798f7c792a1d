#pragma once

#include <renderer/core/RenderTargetFactory.h>
#include <renderer/core/TypedBitmapRenderTarget.h>
#include <renderer/paint/FillDescriptorConst.h>
#include <renderer/paint/LineStyleDescriptorConst.h>

namespace Renderer {

extern template class TypedBitmapRenderTarget<Raster::Red8, Raster::Green8, Raster::Blue8,
                                              Raster::Alpha8, Raster::X5, PixProcessor_RGBA,
                                              PixProcessor_RGBA_Alpha, RenderTargetBlenderRGBA>;

/// An RGBA8 bitmap target that draws every shape as a black outline of weight 1 and ignores paint,
/// opacity, clip paths, masks and groups. Bitmaps and buffers are shown by their rectangles.
///
/// Whole pixels are cleared, matted and interpolated as on every bitmap target; a flood, which is a
/// polygon, is an outline as well.
class WireframeRenderTarget final : public TargetOf<Raster::PixelRGBA8>
{
public:
    /// Without a buffer, and without effects.
    explicit WireframeRenderTarget(Raster::ICCManager::ICCProfileSet profiles);
    ~WireframeRenderTarget() override;

    void DrawPolyCurve(Kernel::Counted<const Geometry::PolyCurveDbl> curve, float opacity,
                       FillBlendMode::BlendMode mode, const BlendOptions& options,
                       const FillDescriptorConst& fill, const FillDescriptorConst& transparency,
                       const FillDescriptorConst& lineFill,
                       const LineStyleDescriptorConst& lineStyle,
                       Geometry::WindingOrderMode winding, bool antialias,
                       bool antialiasUnderClip) override;
    void DrawPolyPolygon(Kernel::Counted<const PolyPolygon> polygons, float opacity,
                         FillBlendMode::BlendMode mode, const BlendOptions& options,
                         const FillDescriptorConst& fill, const FillDescriptorConst& transparency,
                         Geometry::WindingOrderMode winding, bool antialias,
                         bool antialiasUnderClip) override;
    void DrawBitmap(const Kernel::RectT<double>& dest,
                    Kernel::Counted<const Raster::DynamicBitmap> bitmap, float opacity,
                    FillBlendMode::BlendMode mode, const BlendOptions& options,
                    bool antialiasUnderClip) override;
    void DrawBuffer(const Kernel::RectT<double>& dest,
                    Kernel::Counted<const Raster::DynamicBuffer> buffer, float opacity,
                    FillBlendMode::BlendMode mode, const BlendOptions& options,
                    bool antialiasUnderClip) override;

    /// \name They do nothing
    /// @{
    void PushClipPath(Kernel::Counted<const PolyPolygon> polygons,
                      Geometry::WindingOrderMode winding) override;
    void PushClipCurvesPath(Kernel::Counted<const Geometry::PolyCurveDbl> curve,
                            Geometry::WindingOrderMode winding) override;
    void PushClipPolyCurvesPath(Kernel::Counted<const ConstPolyPolyCurve> curves,
                                Geometry::WindingOrderMode winding) override;
    void PopClipPath() override;
    void PushClipPathGroup() override;
    void PopClipPathGroup() override;
    void PushClippingMask(const Kernel::RectT<double>& bounds,
                          Kernel::Counted<const Raster::DynamicBuffer> mask) override;
    void PopClippingMask() override;
    void PushComposite(CompositeInit init, FillBlendMode::BlendMode mode,
                       const BlendOptions& options, float opacity) override;
    void PopCompositeAsTransparency(const FillDescriptorConst& fill,
                                    const FillDescriptorConst& transparency) override;
    void PopCompositeAsFill(const FillDescriptorConst& fill,
                            const FillDescriptorConst& transparency) override;
    void PopCompositeAsFillAndInterpolate(const FillDescriptorConst& fill) override;
    void PopCompositeAsTransparencyAndInterpolate(const FillDescriptorConst& fill) override;
    /// @}

private:
    using Base = TargetOf<Raster::PixelRGBA8>;

    void DrawOutline(const PolyPolygon& polygons);

    FillDescriptorConst m_ink;
    LineStyleDescriptorConst m_pen;
};

} // namespace Renderer
