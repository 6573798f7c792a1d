#pragma once

#include <vector>

#include <renderer/core/RenderTarget.h>

namespace Renderer {

/// A target that draws nothing and keeps what callers ask about: transforms, the device clip, how
/// many clip paths are in force, and the colour transforms. A drawing pass runs on it to learn what
/// it would touch; whoever wants to know derives from it and overrides the calls of interest.
///
/// A set of paths is still split into its paths, a flood into a polygon, glyphs and bitmaps into
/// paths, as on every target that does not know better.
class RENDERER_EXPORT NullRenderTarget : public RenderTarget
{
public:
    /// The device clip to begin with reaches this far from the origin on both axes: 2³⁰ − 1.
    static constexpr int ClipExtent = 1073741823;

    /// \param isFinalPass whether the pass stands for a final one; see IsFinalPass.
    explicit NullRenderTarget(bool isFinalPass = true);
    ~NullRenderTarget() override;

    // The conveniences of the same names stay in sight.
    using RenderTarget::DrawPolyCurve;
    using RenderTarget::DrawPolyPolygon;
    using RenderTarget::DrawPolyPolyline;

    /// \name They do nothing
    /// @{
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
    void DrawPolyPolyline(Kernel::Counted<const PolyPolygon> polylines, float opacity,
                          FillBlendMode::BlendMode mode, const BlendOptions& options,
                          const FillDescriptorConst& fill, const FillDescriptorConst& transparency,
                          const LineStyleDescriptorConst& lineStyle) override;
    void Interpolate(float opacity, FillBlendMode::BlendMode mode, const BlendOptions& options,
                     const FillDescriptorConst& fill,
                     const FillDescriptorConst& transparency) override;
    void Clear() override;
    void PushAlphaChannelOnly() override;
    void PopAlphaChannelOnly() override;
    void PopFilterEffects() override;
    void PushFilterEffectsSupport(bool needsContent, bool needsShape, bool needsBackdrop,
                                  bool knocksOut, bool clipsToShape, FillBlendMode::BlendMode mode,
                                  const BlendOptions& options, double opacity) override;
    void PopFilterEffectsSupport() override;
    void PushComposite(CompositeInit init, FillBlendMode::BlendMode mode,
                       const BlendOptions& options, float opacity) override;
    void PopCompositeAsTransparency(const FillDescriptorConst& fill,
                                    const FillDescriptorConst& transparency) override;
    void PopCompositeAsFill(const FillDescriptorConst& fill,
                            const FillDescriptorConst& transparency) override;
    void PopCompositeAsFillAndInterpolate(const FillDescriptorConst& fill) override;
    void PopCompositeAsTransparencyAndInterpolate(const FillDescriptorConst& fill) override;
    void PushClipPathGroup() override;
    void PopClipPathGroup() override;
    /// @}

    /// Appends the list unchanged.
    void
    SplitFilterEffects(Kernel::Counted<const FilterEffectsContext> effects,
                       Kernel::RectT<double> bounds,
                       std::vector<Kernel::Counted<const FilterEffectsContext>>& parts) override;
    /// \return false: the caller draws the layer plainly.
    bool PushFilterEffects(Kernel::Counted<const FilterEffectsContext> effects,
                           Kernel::RectT<double> bounds) override;

    /// \name Clips
    /// Paths are counted, those within a group one by one.
    /// @{
    void PushClipPath(Kernel::Counted<const PolyPolygon> polygons,
                      Geometry::WindingOrderMode winding) override;
    void PushClipCurvesPath(Kernel::Counted<const Geometry::PolyCurveDbl> curve,
                            Geometry::WindingOrderMode winding) override;
    void PushClipPolyCurvesPath(Kernel::Counted<const ConstPolyPolyCurve> curves,
                                Geometry::WindingOrderMode winding) override;
    void PopClipPath() override;
    bool HasClipPaths() const override;
    /// Also pushes the rectangle as a clip path. The box of its image, truncated to whole pixels,
    /// narrows the device clip; one that is inside out or not a number leaves an empty clip.
    void PushLogicalDeviceClip(Kernel::RectT<double> rect) override;
    void PopDeviceClip() override;
    /// @}

    void PushColourTransform(Kernel::Counted<ColourTransform> transform) override;
    void PopColourTransform() override;
    void SetColourTransforms(const ColourTransforms& transforms) override;
    ColourTransforms GetColourTransforms() const override;

private:
    ColourTransforms m_colourTransforms;
    std::vector<Kernel::RectT<int>> m_deviceClips; // what each push replaced
    int m_clipPathDepth = 0;
};

} // namespace Renderer
