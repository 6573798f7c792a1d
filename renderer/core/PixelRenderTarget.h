#pragma once

#include <limits>
#include <vector>

#include <renderer/core/BitmapRenderTarget.h>
#include <renderer/core/ClipPathStack.h>
#include <renderer/core/ClippingMask.h>
#include <renderer/core/CompositeGroup.h>
#include <renderer/core/RenderTargetRasterizer.h>
#include <renderer/core/span/BitmapCache.h>
#include <renderer/core/span/PopulatorFactory.h>
#include <renderer/core/span/PopulatorStore.h>
#include <renderer/paint/LineStyleStrokeHelper.h>

namespace Raster {
class RasterBrush;
} // namespace Raster

namespace Renderer {

namespace Texture {
struct TexturedPolygons;
} // namespace Texture

/// Everything of the bitmap targets that does not depend on the pixel format: how a drawing call
/// becomes populators, coverage and blended spans; clips, groups and buffers. The format comes in
/// through a few hooks that are called once per drawing call, never per pixel.
class PixelRenderTarget : public BitmapRenderTarget
{
public:
    using Transform = Raster::AffineTransform::Params;

    ~PixelRenderTarget() override;

    // Drawing
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
    void DrawBitmap(const Kernel::RectT<double>& dest,
                    Kernel::Counted<const Raster::DynamicBitmap> bitmap, float opacity,
                    FillBlendMode::BlendMode mode, const BlendOptions& options,
                    bool antialiasUnderClip) override;
    void DrawBuffer(const Kernel::RectT<double>& dest,
                    Kernel::Counted<const Raster::DynamicBuffer> buffer, float opacity,
                    FillBlendMode::BlendMode mode, const BlendOptions& options,
                    bool antialiasUnderClip) override;
    void Interpolate(float opacity, FillBlendMode::BlendMode mode, const BlendOptions& options,
                     const FillDescriptorConst& fill,
                     const FillDescriptorConst& transparency) override;
    void Clear() override;
    /// Puts the colour below the pixels of the device clip, whatever the clip paths.
    void Matte(Kernel::Consolidated<Colour> colour) override;

    // Groups and effects
    void PushAlphaChannelOnly() override;
    void PopAlphaChannelOnly() override;
    void
    SplitFilterEffects(Kernel::Counted<const FilterEffectsContext> effects,
                       Kernel::RectT<double> bounds,
                       std::vector<Kernel::Counted<const FilterEffectsContext>>& parts) override;
    bool PushFilterEffects(Kernel::Counted<const FilterEffectsContext> effects,
                           Kernel::RectT<double> bounds) override;
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
    void PushClippingMask(const Kernel::RectT<double>& bounds,
                          Kernel::Counted<const Raster::DynamicBuffer> mask) override;
    void PopClippingMask() override;

    // State
    /// The format is fixed; only the profiles are taken.
    void SetColourFormatAndProfiles(Raster::Format format,
                                    Raster::ICCManager::ICCProfileSet profiles) override;

    // Clips
    void PushClipPath(Kernel::Counted<const PolyPolygon> polygons,
                      Geometry::WindingOrderMode winding) override;
    void PushClipCurvesPath(Kernel::Counted<const Geometry::PolyCurveDbl> curve,
                            Geometry::WindingOrderMode winding) override;
    void PushClipPolyCurvesPath(Kernel::Counted<const ConstPolyPolyCurve> curves,
                                Geometry::WindingOrderMode winding) override;
    void PopClipPath() override;
    void PushClipPathGroup() override;
    void PopClipPathGroup() override;
    bool HasClipPaths() const override;
    void PushLogicalDeviceClip(Kernel::RectT<double> rect) override;
    void PopDeviceClip() override;
    /// Narrows the device clip to a rectangle of the page's pixels.
    void PushAbsoluteDeviceClip(const Kernel::RectT<int>& rect);

    // Colour transforms
    void PushColourTransform(Kernel::Counted<ColourTransform> transform) override;
    void PopColourTransform() override;
    void SetColourTransforms(const ColourTransforms& transforms) override;
    ColourTransforms GetColourTransforms() const override;

    // Buffers
    bool CreateBuffer(unsigned width, unsigned height) override;
    bool AttachBuffer(Kernel::Counted<Raster::DynamicBuffer> buffer,
                      Kernel::RectT<int> rect) override;
    void DetachBuffer() override;
    Kernel::Counted<Raster::DynamicBuffer> GetBuffer() const override;
    Kernel::Counted<Raster::DynamicBuffer> GetCurrentBuffer() const override;
    Kernel::Counted<Raster::DynamicBuffer> GetCurrentMaskBuffer() const override;
    BufferState GetBufferState() const override;
    bool SetBufferState(BufferState state) override;
    void SetGamma(double gamma) override;
    void PushLiveFilters(Kernel::RectT<int> rect) override;
    void PopLiveFilters() override;
    bool TransferBitmapToSpareComposites(Kernel::Counted<Raster::DynamicBuffer> buffer) override;

protected:
    /// \param blends the blend functions of the format, \p alphaBlends those that change alpha
    ///        alone; kept by reference.
    PixelRenderTarget(Raster::Format format, const SpanBlendSet& blends,
                      const SpanBlendSet& alphaBlends, Raster::ICCManager::ICCProfileSet profiles);

    /// \name What a pixel format adds
    /// Populators live in GetPopulators() until the call ends.
    /// @{

    /// Makes the populator of a fill that is no stack. \return false when it cannot be drawn.
    virtual bool MakeFillPopulator(const Fill& fill, const Transform& fillToDevice,
                                   PopulatorRole role, SpanPopulator& out) = 0;
    /// Makes a transparency populator of one alpha.
    virtual SpanPopulator MakeAlphaPopulator(unsigned char alpha) = 0;
    /// \return false when the present colour transforms change nothing.
    virtual bool MakeColourTransformPopulator(SpanPopulator& out) = 0;
    /// Makes what scales paint by blend ranges. \param options must outlive it.
    /// \return empty when no channel of the format has a range.
    virtual SpanScaler MakeBlendRangeScaler(const BlendOptions& options) = 0;
    /// @}

    PopulatorStore& GetPopulators() { return m_populators; }
    const ColourTransforms& GetActiveColourTransforms() const { return m_colourTransforms; }
    /// What fills need to know about this target.
    PopulatorContext GetPopulatorContext();
    /// Whether only alpha is drawn into the present buffer.
    bool IsAlphaOnly() const { return m_alphaOnly.depth > 0; }
    /// Whether the present call asks colour populators for alpha alone.
    bool PaintsAlphaOnly() const { return m_paintsAlphaOnly; }

    /// How a path is turned into coverage.
    struct PathRule
    {
        Geometry::WindingOrderMode winding;
        bool antialias;
        bool antialiasUnderClip;
    };
    /// How what is drawn combines with what lies below.
    struct Composition
    {
        float opacity;
        FillBlendMode::BlendMode mode;
        const BlendOptions& options;
    };

    RenderTargetRasterizer& GetRasterizer() { return m_rasterizer; }

    /// Adds the colour populator of a paint. \return false when nothing can be drawn.
    /// \param bounds where it will be asked for colours, give or take a few pixels: a hint that the
    ///        present populators do without.
    bool AddFillPopulator(const FillDescriptorConst& fill, const Kernel::RectT<int>& bounds);
    void AddColourTransformPopulators();
    /// Scales the paint by the blend ranges, where there are any. \param options must live until
    /// the call ends.
    void AddBlendRangePopulator(const BlendOptions& options);
    /// Adds a populator that scales by a paint's alpha; an empty descriptor or FillNone adds
    /// nothing and succeeds. \return false when nothing can be drawn.
    bool AddTransPopulator(const FillDescriptorConst& transparency,
                           const Kernel::RectT<int>& bounds);
    /// Outlines a rectangle of the page in place, for debugging: a line of black and white dashes,
    /// one pixel wide along the inside of its edges, within the device clip, whatever clip paths
    /// and masks are in force.
    void DebugShowDeviceRectangle(Kernel::RectT<int> rect);
    /// Feeds polygons, mapped by \p transform, to the rasteriser and runs the span loop.
    void RasterizePolyPolygon(const PolyPolygon& polygons, const Transform& transform,
                              const PathRule& rule);

private:
    /// Resets populators and rasteriser at the end of a call, on every path.
    class CallScope;
    /// Keeps a host's copy of the present buffer right while the buffer is written.
    class WriteScope;
    /// What a BufferState knows beyond the destination.
    class Nesting;
    /// A group of the size of one shape.
    class ShapeGroup;

    /// A tolerance in logical units and what it follows from; drawings mostly keep to a few.
    struct Flattening
    {
        Transform transform;
        double device = std::numeric_limits<double>::quiet_NaN();
        double tolerance = 0.0;
    };

    bool CanDraw(float opacity) const;
    bool IsAntialiased(const PathRule& rule) const;
    double GetFlatteningTolerance() const;
    /// The fill's populators in the given role.
    bool AddPopulator(const FillDescriptorConst& paint, PopulatorRole role);
    /// The populator of a fill that is no stack.
    bool AddFill(const Fill& fill, const Transform& fillToDevice, PopulatorRole role);
    void AddOpacityPopulator(float opacity);
    /// Draws polygons with the gamma, blend function, paint and opacity of a call.
    /// \param addPaint adds the colour populators, given the bounds. \return false when nothing can
    ///        be drawn.
    template<class AddPaint>
    void DrawPainted(const PolyPolygon& polygons, const Transform& transform,
                     const Composition& composition, const AddPaint& addPaint,
                     const FillDescriptorConst& transparency, const PathRule& rule);
    void DrawPolygons(const PolyPolygon& polygons, const Transform& transform,
                      const Composition& composition, const FillDescriptorConst& fill,
                      const FillDescriptorConst& transparency, const PathRule& rule);
    /// \tparam Path PolyCurveDbl, or PolyPolygon for open polylines.
    template<class Path>
    void DrawStroke(const Path& path, const Composition& composition,
                    const FillDescriptorConst& lineFill, const FillDescriptorConst& transparency,
                    const LineStyleDescriptorConst& lineStyle, const PathRule& rule);
    /// \name Strokes of raster brushes
    /// @{

    /// Draws a stroke of a line style that paints with its brush; \tparam Path as above. The edges
    /// of brushes are always smooth; the rule is for those of clip paths.
    template<class Path>
    void DrawBrushStroke(const Path& path, const StrokeFrame& frame, const Composition& composition,
                         const FillDescriptorConst& lineFill,
                         const FillDescriptorConst& transparency,
                         const LineStyleDescriptorConst& lineStyle, const PathRule& rule);
    /// Finds the sizes of the tip that a stroke is painted with. \return false when there is
    /// nothing to paint or no memory.
    bool PrepareTextures(const Raster::RasterBrush& brush, Texture::TexturedPolygons& stroke);
    /// Paints what of a stroke lies in \p area of the page. \param lineFill empty where the brush
    /// brings its own colours.
    void PaintBrushStroke(const Texture::TexturedPolygons& stroke, const Kernel::RectT<int>& area,
                          const Composition& composition, const FillDescriptorConst& lineFill,
                          const FillDescriptorConst& transparency, const PathRule& rule);
    /// Turns what of a textured stroke lies in \p strip of the page into what a populator reads, a
    /// buffer of the target's format whose first pixel is the strip's, and the polygons that it
    /// paints: whole pixels of the page, all that the stroke touches.
    /// \param texture a spare buffer. \return false when none can be had.
    bool CreateTextureLineStyleSpanPopAndPolyPolygon(
        const Texture::TexturedPolygons& stroke, const Kernel::RectT<int>& strip,
        Kernel::Counted<Raster::DynamicBuffer>& texture, PolyPolygon& polygons);
    /// Draws polygons of whole pixels of the page with the pixels of a buffer, or with a fill
    /// scaled by their alpha. \param origin where on the page the buffer begins.
    void DrawTexture(const Kernel::Counted<Raster::DynamicBuffer>& texture,
                     Kernel::PointT<int> origin, const PolyPolygon& polygons,
                     const Composition& composition, const FillDescriptorConst& fill,
                     const FillDescriptorConst& transparency, const PathRule& rule);
    /// @}
    void FillAndStroke(const Geometry::PolyCurveDbl& curve, const Composition& composition,
                       const FillDescriptorConst& fill, const FillDescriptorConst& transparency,
                       const FillDescriptorConst& lineFill,
                       const LineStyleDescriptorConst& lineStyle, const PathRule& rule);
    const ClipState& UpdateClipRasterizer();
    void PushClip(const PolyPolygon& logical, const Transform& transform,
                  Geometry::WindingOrderMode winding);
    void PushDeviceClip(const Kernel::RectT<int>& rect, bool withClipPath);
    void NarrowDeviceClip(const Kernel::RectT<int>& rect, bool withClipPath);
    /// The part of the present buffer that the device clip leaves; perhaps empty, never inside out.
    Kernel::RectT<int> GetVisibleRect() const;
    /// What all masks in force let through.
    const ClippingMask& GetMask() const;
    /// How many masks are out of force until the innermost group is closed.
    std::size_t GetFirstMask() const;
    /// The part of GetVisibleRect() where the masks let something through.
    Kernel::RectT<int> GetUnmaskedRect() const;

    /// Ends all clips, masks and groups.
    void EndNesting();
    void ShowBuffer(const Kernel::Counted<Raster::DynamicBuffer>& buffer,
                    Kernel::PointT<int> origin);
    /// Notes that pixels of the present buffer may change.
    void Touch(const Kernel::RectT<int>& rect) const;
    /// Gives a closed group's buffer to the spare ones.
    void Recycle(CompositeGroup& group);
    /// Closes the innermost group and gives it back; its buffer stays alive with it.
    CompositeGroup CloseComposite();
    void CopyBackdrop(const CompositeGroup& group, bool colourOnly);
    /// Paints a closed group: with \p groupRole Colour its pixels and \p fill, which may be empty,
    /// within their alpha; with Transparency the fill scaled by its alpha.
    /// \param interpolates towards this paint, instead of blending it.
    void PaintGroup(const CompositeGroup& group, const FillDescriptorConst& fill,
                    const FillDescriptorConst& transparency, PopulatorRole groupRole,
                    bool interpolates = false);
    /// Adds the populator that reads a group's pixels in place.
    bool AddGroupPopulator(const CompositeGroup& group, PopulatorRole role);
    /// Adds the populator that reads the pixels of a buffer of the target's format in place.
    /// \param origin where on the page the buffer begins.
    bool AddBufferPopulator(const Kernel::Counted<Raster::DynamicBuffer>& buffer,
                            Kernel::PointT<int> origin, PopulatorRole role);

    /// Whether what is drawn at present keeps colour plain.
    bool HasPlainColours() const;
    /// Makes the colour of \p rect of the present buffer what the next drawing needs: plain for
    /// alpha alone, else premultiplied.
    void PrepareColours(const Kernel::RectT<int>& rect);
    /// Makes all colour of the present buffer premultiplied.
    void SettleColours() const;
    /// The same for the buffers below, too.
    void SettleAllColours() const;
    /// Makes a copied part of a row of the present buffer premultiplied.
    void SettleBackdrop(int y, int left, int right, unsigned char* pixels) const;
    /// Makes a copied part of a row of the present buffer plain colour without alpha.
    void KeepBackdropColour(int y, int left, int right, unsigned char* pixels) const;
    void ClearAlpha(unsigned char* pixels, unsigned count) const;
    /// The pixel of the present buffer that page pixel (x, y) is.
    unsigned char* GetPixels(int x, int y) const
    {
        return m_rasterizer.GetRow(y) + std::size_t(x - m_currentOrigin.x) * m_pixelSize;
    }

    struct DeviceClip
    {
        Kernel::RectT<int> rect;
        bool withClipPath;
    };

    unsigned m_pixelSize;
    const SpanBlendSet& m_blends;
    const SpanBlendSet& m_alphaBlends;
    RenderTargetRasterizer m_rasterizer;
    PopulatorStore m_populators;
    BitmapCache m_bitmaps;
    GradientCache m_gradients;
    PolyPolygon m_polygons;            // what a call flattens, kept for its memory
    PolyPolygon m_outline;             // of the call's stroke
    Coverage::Region m_shapeRegion;    // the shape, for perfect clipping
    Coverage::CommonArea m_commonArea; // of it and the clip
    LineStyleStrokeHelper m_strokeHelper;
    double m_gamma = 1.0;
    mutable Flattening m_flattening; // of the last call

    Kernel::Counted<Raster::DynamicBuffer> m_buffer;  // the destination
    Kernel::RectT<int> m_bufferRect{};                // what it shows of the page
    Kernel::PointT<int> m_bufferOrigin{};             // where on the page its first pixel lies
    Kernel::Counted<Raster::DynamicBuffer> m_current; // the destination or a group's buffer
    Kernel::PointT<int> m_currentOrigin{};
    /// All pixels of the present buffer outside are as they were when it became the present one.
    mutable Kernel::RectT<int> m_touched{};
    mutable AlphaOnlyState m_alphaOnly; // of the present buffer
    bool m_paintsAlphaOnly = false;

    std::vector<DeviceClip> m_deviceClips; // what each push replaced
    ClipPathStack m_clipPaths;
    std::vector<ClippingMask> m_masks; // each the product with those below in its group
    std::vector<CompositeGroup> m_groups;
    SpareBuffers m_spareBuffers;
    ColourTransforms m_colourTransforms;
    std::vector<Kernel::RectT<int>> m_liveFilters;                   // none overlap
    std::vector<std::vector<Kernel::RectT<int>>> m_liveFilterLevels; // what each push replaced
};

} // namespace Renderer
