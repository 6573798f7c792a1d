#pragma once

#include <string_view>
#include <vector>

#include <geometry/GlyphMetrics.h>
#include <geometry/GlyphPosition.h>
#include <geometry/PolyCurve.h>
#include <geometry/Polygon.h>
#include <geometry/PolyPolyCurve.h>
#include <geometry/WindingOrderMode.h>
#include <kernel/Consolidated.h>
#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/Font.h>
#include <kernel/NonCounted.h>
#include <kernel/Point.h>
#include <kernel/Rect.h>
#include <raster/AffineTransform.h>
#include <raster/ColourTransform.h>
#include <raster/DynamicBitmap.h>
#include <raster/DynamicBuffer.h>
#include <raster/Format.h>
#include <raster/ICCManager.h>
#include <renderer/core/RenderingFilter.h>
#include <renderer/effects/FilterEffectsContext.h>
#include <renderer/Export.h>
#include <renderer/paint/BlendOptions.h>
#include <renderer/paint/Colour.h>
#include <renderer/paint/FillBlendMode.h>
#include <renderer/paint/FillDescriptorConst.h>
#include <renderer/paint/LineStyleDescriptorConst.h>

namespace Renderer {

class FileExportOptions;
using Raster::ColourTransform;

/// A set of poly-curves, each with its own transform.
using ConstPolyPolyCurve = Geometry::ConstPolyPolyCurveDblT<Raster::AffineTransform>;
using PolyPolygon = Geometry::PolyPolygonType<double>;

/// The abstract drawing surface: everything draws through it, and each target turns the same calls
/// into another product.
///
/// Geometry arrives in logical coordinates. The current transform, which maps them to device
/// coordinates (pixels, y downwards), is the world transform followed by the log-to-device
/// transform. A second stack holds the scalar transform, which scales stroke weights and other
/// sizes that have no direction.
///
/// A target is driven by one thread at a time; only the abort flag may be written by others.
/// Drawing calls fail silently: what cannot be drawn is left out. Pushes nest and are popped in
/// reverse order; unbalanced pops are a caller's error.
///
/// In all drawing calls \p opacity runs from 0 to 1 (not above 0 or NaN: nothing is drawn), \p
/// fill, \p transparency and \p lineFill may be empty, and the transparency scales what is drawn by
/// its own alpha. The two trailing flags of the curve and polygon calls switch anti-aliasing on for
/// drawing without and with clip paths respectively.
class RENDERER_EXPORT RenderTarget : public Kernel::Countable
{
public:
    /// How a pushed transform affects the scalar transform.
    enum class TransformScalarMode
    {
        Concatenate = 0, ///< it also applies to the scalar transform
        Inherit = 1,     ///< the scalar transform stays as it was
        Reset = 2,       ///< the scalar transform becomes the identity
    };

    /// How the buffer of a composite group starts.
    enum class CompositeInit
    {
        Clear = 0,
        ClearOnTouch = 1, ///< as Clear, but cleared tile by tile when first drawn on
        CopyBackdrop = 2, ///< with the pixels below the group
        /// Transparent, with the colour of the pixels below: where alpha alone is drawn, that
        /// colour shows.
        CopyBackdropColour = 3,
    };

    /// A tag for a run of calls that belong together for an exporter.
    enum class LogicalGroup
    {
        Layer = 0,
        Group = 1,
        Object = 2,
        Other = 3,
    };

    using ColourTransforms = std::vector<Kernel::Counted<const ColourTransform>>;

    ~RenderTarget() override;

    /// Sets or clears the abort flag, through the abort pointer. Any thread may call it.
    virtual void SetAbort(bool abort);

    /// The device expansion tolerance in logical units: divided by the scale
    /// sqrt(((m00+m01)² + (m10+m11)²)/2) of the current transform, or by 1 where that is not above
    /// 1e-128.
    virtual double GetLogicalExpansionTolerance() const;

    /// \name Drawing
    /// @{

    /// Draws a path: its fill, and its stroke when \p lineStyle is visible.
    virtual void
    DrawPolyCurve(Kernel::Counted<const Geometry::PolyCurveDbl> curve, float opacity,
                  FillBlendMode::BlendMode mode, const BlendOptions& options,
                  const FillDescriptorConst& fill, const FillDescriptorConst& transparency,
                  const FillDescriptorConst& lineFill, const LineStyleDescriptorConst& lineStyle,
                  Geometry::WindingOrderMode winding, bool antialias, bool antialiasUnderClip) = 0;

    /// Draws each path of the set in turn until aborted. Its own transform places the path; the
    /// paint and the pen are those of the whole set and stay where they are.
    virtual void DrawPolyPolyCurve(Kernel::Counted<const ConstPolyPolyCurve> curves, float opacity,
                                   FillBlendMode::BlendMode mode, const BlendOptions& options,
                                   const FillDescriptorConst& fill,
                                   const FillDescriptorConst& transparency,
                                   const FillDescriptorConst& lineFill,
                                   const LineStyleDescriptorConst& lineStyle,
                                   Geometry::WindingOrderMode winding, bool antialias,
                                   bool antialiasUnderClip);

    /// Fills polygons.
    virtual void DrawPolyPolygon(Kernel::Counted<const PolyPolygon> polygons, float opacity,
                                 FillBlendMode::BlendMode mode, const BlendOptions& options,
                                 const FillDescriptorConst& fill,
                                 const FillDescriptorConst& transparency,
                                 Geometry::WindingOrderMode winding, bool antialias,
                                 bool antialiasUnderClip) = 0;

    /// Strokes open polylines with \p fill as the paint.
    virtual void DrawPolyPolyline(Kernel::Counted<const PolyPolygon> polylines, float opacity,
                                  FillBlendMode::BlendMode mode, const BlendOptions& options,
                                  const FillDescriptorConst& fill,
                                  const FillDescriptorConst& transparency,
                                  const LineStyleDescriptorConst& lineStyle) = 0;

    /// Draws glyphs at \p origin plus their positions; those outside the clip are skipped.
    /// \param positions one per glyph, in logical units; null lays the glyphs out by their
    /// advances. \param antialias as the first flag of the curve calls.
    virtual void
    DrawGlyphMetrics(Kernel::PointT<double> origin,
                     const std::vector<Kernel::Counted<const Geometry::GlyphMetrics>>& glyphs,
                     const Kernel::Font& font, double size,
                     const Geometry::GlyphPosition* positions, float opacity,
                     FillBlendMode::BlendMode mode, const BlendOptions& options,
                     const FillDescriptorConst& fill, const FillDescriptorConst& transparency,
                     const FillDescriptorConst& lineFill, const LineStyleDescriptorConst& lineStyle,
                     bool antialias);

    /// Draws a bitmap into a rectangle, magnified by the target's up resampler.
    /// \param antialiasUnderClip whether the edges are anti-aliased under clip paths.
    virtual void DrawBitmap(const Kernel::RectT<double>& dest,
                            Kernel::Counted<const Raster::DynamicBitmap> bitmap, float opacity,
                            FillBlendMode::BlendMode mode, const BlendOptions& options,
                            bool antialiasUnderClip = false);

    /// Draws a buffer into a rectangle; targets without pixels ignore it.
    virtual void DrawBuffer(const Kernel::RectT<double>& dest,
                            Kernel::Counted<const Raster::DynamicBuffer> buffer, float opacity,
                            FillBlendMode::BlendMode mode, const BlendOptions& options,
                            bool antialiasUnderClip = false);

    /// Moves every pixel of the clip towards the paint, alpha included, by opacity times the
    /// transparency's alpha, and times the weight of the blend ranges where there are any. \p mode
    /// has no meaning here.
    virtual void Interpolate(float opacity, FillBlendMode::BlendMode mode,
                             const BlendOptions& options, const FillDescriptorConst& fill,
                             const FillDescriptorConst& transparency) = 0;

    /// Floods the device clip with the paint; without a device clip, the whole plane. A current
    /// transform that cannot be inverted draws nothing.
    virtual void Blend(float opacity, FillBlendMode::BlendMode mode, const BlendOptions& options,
                       const FillDescriptorConst& fill, const FillDescriptorConst& transparency);

    /// Makes the device clip transparent.
    virtual void Clear() = 0;
    /// @}

    /// \name Groups and effects
    /// @{

    /// Between the two, which nest, only alpha is drawn: colour stays, and alpha changes as it
    /// would otherwise, by Interpolate and Clear too. Where a pixel becomes transparent its colour
    /// stays until something else is drawn or a buffer of the target is asked for. A group opened
    /// in between is drawn in full; closing it draws its alpha. Until the last pop, or until the
    /// target is asked for its buffer, a destination that the caller holds may be other than
    /// premultiplied.
    virtual void PushAlphaChannelOnly() = 0;
    virtual void PopAlphaChannelOnly() = 0;

    /// Splits a list of effects into lists that the target can run one after another within
    /// \p bounds (logical) and appends them to \p parts.
    virtual void
    SplitFilterEffects(Kernel::Counted<const FilterEffectsContext> effects,
                       Kernel::RectT<double> bounds,
                       std::vector<Kernel::Counted<const FilterEffectsContext>>& parts) = 0;
    /// Opens a layer that the effects are applied to when it is popped.
    /// \return false when the target cannot run them; the caller then draws directly and pops
    ///         nothing.
    virtual bool PushFilterEffects(Kernel::Counted<const FilterEffectsContext> effects,
                                   Kernel::RectT<double> bounds) = 0;
    virtual void PopFilterEffects() = 0;
    /// Says which parts of a layer its effects will need.
    virtual void PushFilterEffectsSupport(bool needsContent, bool needsShape, bool needsBackdrop,
                                          bool knocksOut, bool clipsToShape,
                                          FillBlendMode::BlendMode mode,
                                          const BlendOptions& options, double opacity) = 0;
    virtual void PopFilterEffectsSupport() = 0;

    /// Opens a group that is drawn into a buffer of its own and composited as one object when it is
    /// popped. Clip paths that are in force apply to the group as a whole.
    virtual void PushComposite(CompositeInit init, FillBlendMode::BlendMode mode,
                               const BlendOptions& options, float opacity) = 0;
    /// Closes the group: its alpha scales \p fill, which is painted.
    virtual void PopCompositeAsTransparency(const FillDescriptorConst& fill,
                                            const FillDescriptorConst& transparency) = 0;
    /// Closes the group and paints it; a fill that is not empty is painted over it within its alpha
    /// first, and \p transparency scales it.
    virtual void PopCompositeAsFill(const FillDescriptorConst& fill,
                                    const FillDescriptorConst& transparency) = 0;
    /// Closes the group and interpolates towards it by its opacity, at every pixel of it; a fill
    /// that is not empty is painted over it within its alpha first.
    virtual void PopCompositeAsFillAndInterpolate(const FillDescriptorConst& fill) = 0;
    /// Closes the group and interpolates towards \p fill by the group's alpha and opacity.
    virtual void PopCompositeAsTransparencyAndInterpolate(const FillDescriptorConst& fill) = 0;

    /// Between the two, what is drawn is scaled by a mask that fills \p bounds (logical); outside
    /// nothing is drawn. Masks nest as clip paths do and apply to a group as a whole.
    ///
    /// Masks of one channel are taken as they are; of grey formats the intensity times the alpha
    /// counts, of colour formats the alpha. A null mask, empty bounds and a map that is singular or
    /// not finite let nothing through. Targets without pixels ignore masks.
    /// \param mask resampled like a bitmap; it must not change until it is popped.
    virtual void PushClippingMask(const Kernel::RectT<double>& bounds,
                                  Kernel::Counted<const Raster::DynamicBuffer> mask);
    virtual void PopClippingMask();

    /// Opens a separate target of another format for the part \p bounds (logical); empty when the
    /// target has none, and then nothing is to be popped.
    virtual Kernel::Counted<RenderTarget>
    PushSubRender(const Kernel::RectT<double>& bounds, Raster::Format format,
                  const Raster::ICCManager::ICCProfileSet& profiles);
    /// Draws the separate target back, matted with a colour.
    virtual void PopSubRender(Kernel::Consolidated<Colour> matte);
    /// @}

    /// \name Clips
    /// @{

    /// Narrows the clip to the inside of a path; nested clips multiply.
    virtual void PushClipPath(Kernel::Counted<const PolyPolygon> polygons,
                              Geometry::WindingOrderMode winding) = 0;
    virtual void PushClipCurvesPath(Kernel::Counted<const Geometry::PolyCurveDbl> curve,
                                    Geometry::WindingOrderMode winding) = 0;
    virtual void PushClipPolyCurvesPath(Kernel::Counted<const ConstPolyPolyCurve> curves,
                                        Geometry::WindingOrderMode winding) = 0;
    virtual void PopClipPath() = 0;
    /// Clip paths pushed between these two are united and count as one clip from the pop on; it is
    /// removed by PopClipPath.
    virtual void PushClipPathGroup() = 0;
    virtual void PopClipPathGroup() = 0;
    virtual bool HasClipPaths() const = 0;
    /// Narrows the device clip to a rectangle in logical coordinates.
    virtual void PushLogicalDeviceClip(Kernel::RectT<double> rect) = 0;
    virtual void PopDeviceClip() = 0;
    /// @}

    /// \name State
    /// Logical groups, export options and renderables are for targets that record or export; those
    /// that draw pixels, outlines or measurements ignore them.
    /// @{

    /// Sets what maps world coordinates to device coordinates: the zoom and the place of the page.
    /// It stays when transforms are pushed and popped.
    virtual void SetLogToDevTransform(Raster::AffineTransform::Params transform);
    /// Replaces the world transform, which maps logical coordinates to world coordinates. The
    /// scalar transform and the stack stay: PopTransform brings back what was in force at the push.
    virtual void SetWorldTransform(Raster::AffineTransform::Params transform);
    /// Puts a transform in front of the world transform: it acts in local coordinates.
    /// \param scalar what is put in front of the scalar transform.
    virtual void PushTransform(Raster::AffineTransform::Params transform,
                               Raster::AffineTransform::Params scalar);
    virtual void PushTransform(Raster::AffineTransform::Params transform, TransformScalarMode mode);
    /// Brings back the world transform and the scalar transform of before the last push.
    virtual void PopTransform();

    /// Tells what the calls up to the pop draw: groups nest.
    virtual void PushLogicalGroup(LogicalGroup group);
    virtual void PopLogicalGroup();

    /// Sets the format that colours are asked for in, and the profiles of all formats; empty ones
    /// mean the defaults. Targets with pixels keep the format that they were made for and take the
    /// profiles; what is drawn already stays as it is.
    virtual void SetColourFormatAndProfiles(Raster::Format format,
                                            Raster::ICCManager::ICCProfileSet profiles);

    /// Colour adjustments act on every colour that is drawn, in the order of the list.
    virtual void PushColourTransform(Kernel::Counted<ColourTransform> transform) = 0;
    virtual void PopColourTransform() = 0;
    virtual void SetColourTransforms(const ColourTransforms& transforms) = 0;
    virtual ColourTransforms GetColourTransforms() const = 0;

    /// How bitmaps are resampled where they are magnified, and where they are minified. Bilinear in
    /// the beginning.
    virtual void SetUpResamplerType(Raster::ResamplerType type);
    virtual void SetDownResamplerType(Raster::ResamplerType type);

    /// Options for how an exporter writes what is drawn up to the pop; they must live until then.
    virtual void PushExportOptions(Kernel::NonCounted<const FileExportOptions> options);
    virtual void PopExportOptions();

    /// Sets what decides which objects of a document are drawn (ShouldRender); null lets all pass.
    /// The target's own calls draw whatever it says: callers ask before they draw an object.
    virtual void SetRenderingFilter(Kernel::Counted<RenderingFilter> filter);
    virtual Kernel::Counted<const RenderingFilter> GetRenderingFilter() const;

    /// Tells which object of a document the calls up to the pop draw; it must live until then.
    virtual void PushRenderable(Kernel::NonCounted<const Renderable> renderable);
    virtual void PopRenderable();

    /// Puts a colour below everything that is drawn so far. Targets without pixels ignore it.
    virtual void Matte(Kernel::Consolidated<Colour> colour);

    /// Whether bitmaps of another format than the target's may be given without conversion.
    virtual bool IsAllowOtherFormatBitmaps() const;
    /// Has no effect: nothing here asserts.
    virtual void SetIsSuppressAsserts(bool suppress);
    /// See IsAllowDegradedBitmaps; not allowed in the beginning.
    virtual void SetIsAllowDegradedBitmaps(bool allow);

protected:
    /// The weight of a stroke in device pixels.
    virtual double GetLineWeightDevice(const LineStyleDescriptorConst& lineStyle) const;

public:
    bool IsSuppressAsserts() const { return true; }
    /// Whether bitmaps are resampled one step more cheaply: Lanczos3 by Bicubic, that by Bilinear,
    /// that by NearestNeighbour; and minified from halved copies that many sizes share.
    bool IsAllowDegradedBitmaps() const { return m_allowDegradedBitmaps; }

    double GetRasterizationScaleFactor() const { return m_rasterizationScaleFactor; }
    /// Stores the factor; round-mid-pixel becomes the lowest bit of the factor rounded to nearest.
    void SetRasterizationScaleFactor(double factor);
    /// Whether resolution-independent strokes of at most one device pixel go to pixel middles where
    /// they run along an axis of the device: their segments move across to the nearest one, and
    /// what joins them goes along.
    bool GetRoundMidPixel() const { return m_roundMidPixel; }

    /// The largest distance in device pixels by which a flattened curve may leave the true one: a
    /// third in the beginning. Pictures that are looked at closely take less, previews more.
    double GetDeviceExpansionTolerance() const { return m_deviceExpansionTolerance; }
    void SetDeviceExpansionTolerance(double tolerance) { m_deviceExpansionTolerance = tolerance; }

    /// Whether the picture is the final one and not a preview, which callers may draw with less
    /// care; true in the beginning.
    bool IsFinalPass() const { return m_finalPass; }
    void SetIsFinalPass(bool finalPass) { m_finalPass = finalPass; }
    /// A final pass with a tolerance below a quarter of a pixel.
    bool IsRetinaPass() const { return m_finalPass && m_deviceExpansionTolerance < 0.25; }

    const Raster::AffineTransform::Params& GetLogToDevTransform() const { return m_logToDev; }
    const Raster::AffineTransform::Params& GetWorldTransform() const { return m_world; }
    const Raster::AffineTransform::Params& GetScalarTransform() const
    {
        return m_scalarStack.back();
    }
    /// The world transform, then the log-to-device transform.
    Raster::AffineTransform::Params GetCurrentTransform() const { return m_worldToDev; }

    /// The device clip; all members −2147483647 while it is unset.
    const Kernel::RectT<int>& GetDeviceClip() const { return m_deviceClip; }
    /// The device clip in logical coordinates (its box); unset stays unset.
    Kernel::RectT<double> GetLogicalClip() const;
    /// Whether a logical rectangle lies wholly inside the clip's box (\p wholly) or touches it. An
    /// unset clip holds everything.
    bool IsRectInClip(const Kernel::RectT<double>& rect, bool wholly) const;

    const Raster::ICCManager::ICCProfileSet& GetProfiles() const { return m_profiles; }
    /// The set's profile for the current colour format.
    Kernel::Counted<const Raster::ICCProfile> GetProfile() const;
    Raster::Format GetColourFormat() const { return m_colourFormat; }

    /// Whether edges are smooth, where the flags of a drawing call say so too.
    bool GetAntialias() const { return m_antialias; }
    void SetAntialias(bool antialias) { m_antialias = antialias; }
    /// Asks for clips and shapes to be combined by the area they have in common, not the product of
    /// their coverages: a shape whose edge is that of the clip keeps its coverage (to 1/256 of a
    /// pixel per edge) where it does not cross itself; where it does, the area is exact, unlike
    /// coverage. Pixels with too many edges keep the product. Coverage gamma acts on the area. A
    /// group meets the clips outside of it when it is closed, by their common area times its alpha.
    bool GetPerfectClipping() const { return m_perfectClipping; }
    void SetPerfectClipping(bool perfect) { m_perfectClipping = perfect; }
    /// Asks for ordered dithering where paint that is known to more than 8 bits (gradients, bitmaps
    /// and buffers of 16 bits or float, sub-renders of such formats) is drawn in a format of 8
    /// bits. The pattern depends on the device pixel alone; what 8 bits hold exactly stays as it
    /// is.
    bool GetDithering() const { return m_dithering; }
    void SetDithering(bool dithering) { m_dithering = dithering; }
    bool GetAllowEffects() const { return m_allowEffects; }
    void SetAllowEffects(bool allow) { m_allowEffects = allow; }
    bool GetPrefersVectorClips() const { return m_prefersVectorClips; }
    void SetPrefersVectorClips(bool prefers) { m_prefersVectorClips = prefers; }

    /// Whether the present work is to stop.
    bool IsAborting() const;
    /// The flag that is read and written; always accessed atomically (std::atomic_ref, relaxed).
    bool* GetAbortingPointer() const { return m_abort; }
    /// Shares a flag with others; null restores the target's own.
    void SetAbortPointer(bool* flag) { m_abort = flag ? flag : &m_ownAbort; }

    /// A caller's tag for the target.
    int GetIndex() const { return m_index; }
    void SetIndex(int index) { m_index = index; }

    Raster::ResamplerType GetUpResamplerType() const { return m_upResampler; }
    Raster::ResamplerType GetDownResamplerType() const { return m_downResampler; }

    /// Whether the rendering filter lets an object through; true without a filter.
    bool ShouldRender(Kernel::NonCounted<const Renderable> renderable) const;
    /// The same for an object that holds others.
    bool ShouldRenderContainer(Kernel::NonCounted<const Renderable> renderable) const;
    /// @}

    /// \name Conveniences
    /// They fill in blend mode Normal, default options, no transparency, the even-odd rule and the
    /// flags true, false: under clip paths their own edges are not smooth, while those of the clips
    /// are. An empty line style descriptor draws no stroke.
    /// @{
    void DrawEllipse(const Kernel::RectT<double>& bounds, float opacity,
                     const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                     const LineStyleDescriptorConst& lineStyle);
    /// \param size the whole width and height.
    void DrawEllipse(Kernel::PointT<double> centre, Kernel::PointT<double> size, float opacity,
                     const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                     const LineStyleDescriptorConst& lineStyle);
    void DrawCircle(Kernel::PointT<double> centre, double radius, float opacity,
                    const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                    const LineStyleDescriptorConst& lineStyle);
    void DrawLine(Kernel::PointT<double> from, Kernel::PointT<double> to, float opacity,
                  const FillDescriptorConst& lineFill, const LineStyleDescriptorConst& lineStyle);
    void DrawLine(double x1, double y1, double x2, double y2, float opacity,
                  const FillDescriptorConst& lineFill, const LineStyleDescriptorConst& lineStyle);
    void DrawRectangle(const Kernel::RectT<double>& rect, float opacity,
                       const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                       const LineStyleDescriptorConst& lineStyle);
    void DrawRectangle(double left, double top, double right, double bottom, float opacity,
                       const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                       const LineStyleDescriptorConst& lineStyle);
    void DrawPolyCurve(Kernel::Counted<const Geometry::PolyCurveDbl> curve, float opacity,
                       const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                       const LineStyleDescriptorConst& lineStyle);
    void DrawPolyPolyCurve(Kernel::Counted<const ConstPolyPolyCurve> curves, float opacity,
                           const FillDescriptorConst& fill, const FillDescriptorConst& lineFill,
                           const LineStyleDescriptorConst& lineStyle);
    void DrawPolygon(const Geometry::PolygonType<double>& polygon, float opacity,
                     const FillDescriptorConst& fill);
    void DrawPolyline(const Geometry::PolygonType<double>& polyline, float opacity,
                      const FillDescriptorConst& lineFill,
                      const LineStyleDescriptorConst& lineStyle);
    void DrawPolyPolygon(Kernel::Counted<const PolyPolygon> polygons, float opacity,
                         const FillDescriptorConst& fill);
    void DrawPolyPolyline(Kernel::Counted<const PolyPolygon> polylines, float opacity,
                          const FillDescriptorConst& lineFill,
                          const LineStyleDescriptorConst& lineStyle);
    /// The exact box, in logical coordinates, of the outlines that DrawGlyphMetrics would draw with
    /// the same arguments, without a stroke; all zero when there are none.
    static Kernel::RectT<double>
    MeasureGlyphMetrics(Kernel::PointT<double> origin,
                        const std::vector<Kernel::Counted<const Geometry::GlyphMetrics>>& glyphs,
                        double size, const Geometry::GlyphPosition* positions);
    /// Draws a line of text, shaped by Geometry::ShapeText, with the installed faces that come
    /// nearest to \p font. Without any, or where a font file is damaged, nothing is drawn.
    /// \param origin where the baseline begins, at the left.
    /// \param text UTF-8. \param size of the em in logical units; 0 and less draw nothing.
    void DrawText(Kernel::PointT<double> origin, std::string_view text, const Kernel::Font& font,
                  double size, float opacity, const FillDescriptorConst& fill,
                  const FillDescriptorConst& lineFill = {},
                  const LineStyleDescriptorConst& lineStyle = {});
    /// The extents of a line of text, relative to where its baseline begins.
    struct TextExtents
    {
        double advance = 0.0;           ///< how far the pen moves on
        double ascent = 0.0;            ///< how far lines of the font reach above the baseline
        double descent = 0.0;           ///< and below it
        Kernel::RectT<double> bounds{}; ///< of the outlines, exactly; all zero without any
    };
    /// Measures what DrawText would draw from (0, 0) without a stroke; all zero for nothing.
    static TextExtents MeasureText(std::string_view text, const Kernel::Font& font, double size);
    /// Narrows the clip to a logical rectangle, as a path.
    void PushClipRectanglePath(const Kernel::RectT<double>& rect);
    /// @}

protected:
    RenderTarget();
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    void SetDeviceClip(const Kernel::RectT<int>& clip) { m_deviceClip = clip; }

private:
    double m_rasterizationScaleFactor = 1.0;
    bool m_roundMidPixel = true;
    Kernel::Counted<RenderingFilter> m_renderingFilter;
    double m_deviceExpansionTolerance = 1.0 / 3.0;
    bool m_finalPass = true;
    std::vector<Raster::AffineTransform::Params> m_transformStack;
    std::vector<Raster::AffineTransform::Params> m_scalarStack;
    Kernel::RectT<int> m_deviceClip = Kernel::RectT<int>::MakeUnset();
    Raster::ICCManager::ICCProfileSet m_profiles;
    Raster::Format m_colourFormat{};
    bool m_antialias = true;
    bool m_perfectClipping = false;
    bool m_dithering = false;
    bool m_allowEffects = true;
    bool m_prefersVectorClips = false;
    bool m_allowDegradedBitmaps = false;
    Raster::AffineTransform::Params m_logToDev;
    Raster::AffineTransform::Params m_world;
    Raster::AffineTransform::Params m_worldToDev; // the one, then the other
    bool m_ownAbort = false;
    bool* m_abort = &m_ownAbort;
    int m_index = 0;
    Raster::ResamplerType m_upResampler = Raster::ResamplerType::Bilinear;
    Raster::ResamplerType m_downResampler = Raster::ResamplerType::Bilinear;
};

} // namespace Renderer
