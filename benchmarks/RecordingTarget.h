#pragma once

#include <vector>

#include <renderer/core/NullRenderTarget.h>

#include "Scene.h"

namespace Benchmarks {

/// Writes the calls that it gets into a scene, as far as every peer can make them. What is left out
/// is counted: calls with blend modes, transparencies or blend options, paint other than colours,
/// linear, radial and elliptical gradients and bitmaps, unions of clips, masks and effects.
class RecordingTarget final : public Renderer::NullRenderTarget
{
public:
    /// \param scene gets the calls.
    explicit RecordingTarget(Scene& scene) : m_scene(scene) {}

    using RenderTarget::PushTransform;
    using FillDescriptor = Renderer::FillDescriptorConst;
    using LineStyle = Renderer::LineStyleDescriptorConst;
    using Mode = Renderer::FillBlendMode::BlendMode;
    using Options = Renderer::BlendOptions;
    using Winding = Geometry::WindingOrderMode;
    using Effects = Kernel::Counted<const Renderer::FilterEffectsContext>;

    void DrawPolyCurve(Path curve, float opacity, Mode mode, const Options& options,
                       const FillDescriptor& fill, const FillDescriptor& transparency,
                       const FillDescriptor& lineFill, const LineStyle& lineStyle, Winding winding,
                       bool antialias, bool antialiasUnderClip) override;
    void DrawPolyPolygon(Kernel::Counted<const Renderer::PolyPolygon> polygons, float opacity,
                         Mode mode, const Options& options, const FillDescriptor& fill,
                         const FillDescriptor& transparency, Winding winding, bool antialias,
                         bool antialiasUnderClip) override;
    void DrawPolyPolyline(Kernel::Counted<const Renderer::PolyPolygon> polylines, float opacity,
                          Mode mode, const Options& options, const FillDescriptor& fill,
                          const FillDescriptor& transparency, const LineStyle& lineStyle) override;
    void DrawBitmap(const Kernel::RectT<double>& dest,
                    Kernel::Counted<const Raster::DynamicBitmap> bitmap, float opacity, Mode mode,
                    const Options& options, bool antialiasUnderClip) override;
    void DrawBuffer(const Kernel::RectT<double>& dest,
                    Kernel::Counted<const Raster::DynamicBuffer> buffer, float opacity, Mode mode,
                    const Options& options, bool antialiasUnderClip) override;
    void Interpolate(float opacity, Mode mode, const Options& options, const FillDescriptor& fill,
                     const FillDescriptor& transparency) override;
    void Blend(float opacity, Mode mode, const Options& options, const FillDescriptor& fill,
               const FillDescriptor& transparency) override;
    void Clear() override { LeaveOut(); }

    void PushAlphaChannelOnly() override { LeaveOut(); }
    bool PushFilterEffects(Effects effects, Kernel::RectT<double> bounds) override;

    void PushComposite(CompositeInit init, Mode mode, const Options& options,
                       float opacity) override;
    void PopCompositeAsTransparency(const FillDescriptor& fill,
                                    const FillDescriptor& transparency) override;
    void PopCompositeAsFill(const FillDescriptor& fill,
                            const FillDescriptor& transparency) override;
    void PopCompositeAsFillAndInterpolate(const FillDescriptor& fill) override;
    void PopCompositeAsTransparencyAndInterpolate(const FillDescriptor& fill) override;

    void PushClipPath(Kernel::Counted<const Renderer::PolyPolygon> polygons,
                      Winding winding) override;
    void PushClipCurvesPath(Path curve, Winding winding) override;
    void PushClipPolyCurvesPath(Kernel::Counted<const Renderer::ConstPolyPolyCurve> curves,
                                Winding winding) override;
    void PopClipPath() override;
    void PushClipPathGroup() override { ++m_clipGroups; }
    void PopClipPathGroup() override;
    bool HasClipPaths() const override { return !m_clips.empty(); }
    void PushLogicalDeviceClip(Kernel::RectT<double> rect) override;
    void PopDeviceClip() override { PopClipPath(); }

    void PushTransform(Transform transform, Transform scalar) override;
    void PushTransform(Transform transform, TransformScalarMode mode) override;
    void PopTransform() override;

    void PushColourTransform(Kernel::Counted<Renderer::ColourTransform>) override { LeaveOut(); }

private:
    bool IsPlain(Mode mode, const Options& options, const FillDescriptor& transparency) const;
    void LeaveOut() { ++m_scene.leftOut; }
    void AddClip(Path path, Winding winding);
    void PopGroup(bool expressible);

    Scene& m_scene;
    std::vector<bool> m_clips;  // whether the scene has the clip
    std::vector<bool> m_groups; // likewise
    int m_clipGroups = 0;       // open unions
};

} // namespace Benchmarks
