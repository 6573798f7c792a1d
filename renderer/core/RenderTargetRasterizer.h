#pragma once

#include <array>
#include <memory>
#include <vector>

#include <geometry/Curve.h>
#include <geometry/Polygon.h>
#include <kernel/Counted.h>
#include <kernel/Point.h>
#include <kernel/Rect.h>
#include <raster/AffineTransform.h>
#include <raster/DynamicBuffer.h>
#include <renderer/core/blend/SpanBlend.h>
#include <renderer/core/coverage/CellList.h>
#include <renderer/core/coverage/CoverageStore.h>
#include <renderer/core/span/SpanPopulator.h>
#include <renderer/paint/FillBlendMode.h>

namespace Renderer {

struct AggEngine;
struct SpanRoom;

namespace Coverage {
class ClipCoverage;
class CommonArea;
} // namespace Coverage

/// Turns the polygons of one drawing call into anti-aliased coverage, row by row, and drives the
/// span pipeline: for every run of covered pixels the colour populators write the scratch span, the
/// transparency populators scale it, and the selected blend function composites it into the
/// destination.
///
/// Coordinates are the page's device pixels; the destination shows the page from its origin on.
class RenderTargetRasterizer
{
public:
    RenderTargetRasterizer();
    ~RenderTargetRasterizer();
    RenderTargetRasterizer(const RenderTargetRasterizer&) = delete;
    RenderTargetRasterizer& operator=(const RenderTargetRasterizer&) = delete;

    /// \name Destination
    /// @{

    /// Attaches a destination and resets everything.
    /// \param stride bytes from row to row; negative for bottom-up rows, whose first one then lies
    /// at
    ///        buffer − (height − 1) · stride.
    /// \param pixelSize bytes per pixel.
    void Create(unsigned char* buffer, unsigned width, unsigned height, int stride,
                unsigned pixelSize, Kernel::PointT<int> origin = {});
    /// Points at another buffer of the same pixel size and leaves the rest.
    void SwapBuffer(unsigned char* buffer, unsigned width, unsigned height, int stride,
                    Kernel::PointT<int> origin = {});
    /// The first byte of page row \p y, at the destination's left edge.
    unsigned char* GetRow(int y) const;
    /// Bytes from row to row; negative for bottom-up rows.
    int GetStride() const;
    Kernel::PointT<int> GetOrigin() const { return m_origin; }
    /// The part of the page that the destination shows.
    Kernel::RectT<int> GetDestinationRect() const;
    /// @}

    /// \name The state of a call
    /// @{

    /// Empties the path; even-odd, the clip box of the whole destination, both gammas 2.2.
    void ResetRasterizer();
    /// Empties both lists of populators.
    void ResetSpanPopulators();
    void ResetAll();

    void AddColourSpanPopulator(const SpanPopulator& populator);
    void AddTransparencySpanPopulator(const SpanPopulator& populator);
    /// What scales the colour populators' paint before the transparency populators do.
    void SetSpanScaler(const SpanScaler& scaler) { m_scaler = scaler; }
    unsigned GetSpanPopulatorCount() const;

    /// The pixel format's blend functions; kept by reference.
    void SetBlends(const SpanBlendSet& blends) { m_blends = &blends; }
    /// Selects the blend function of a mode (1 to 29 as they are, everything else Normal), the
    /// call's gamma (2.2 is neutral) and an optional mask: one byte per pixel that scales coverage.
    /// \param maskOrigin where on the page the mask begins. Outside the mask nothing is drawn.
    void SelectBlend(FillBlendMode::BlendMode mode, double gamma,
                     const Raster::DynamicBuffer* mask = nullptr,
                     Kernel::PointT<int> maskOrigin = {});
    /// The same for composite groups, which know Erase and Mask too.
    void SelectCompositeBlend(FillBlendMode::BlendMode mode, double gamma,
                              const Raster::DynamicBuffer* mask = nullptr,
                              Kernel::PointT<int> maskOrigin = {});
    /// Interpolates between what lies below and the paint, instead of blending; the transparency
    /// populators scale the weight, not the paint. Lasts until ResetRasterizer.
    void SelectInterpolation() { m_interpolation = &m_blends->interpolation; }
    /// @}

    /// \name Coverage gamma
    /// @{

    /// Coverage c becomes c^gamma; drops a gamma curve.
    void SetGamma(double gamma);
    /// Coverage follows a curve over [0, 1]; an empty one means SetGamma(1). A curve within 0.001
    /// of the present one changes nothing.
    void SetGammaCurve(Kernel::Counted<const Geometry::CurveDbl> curve);
    const std::array<unsigned char, 256>& GetGammaTable() const { return m_gammaTable; }
    /// @}

    /// \name Path
    /// @{
    bool IsEvenOdd() const { return m_rule.evenOdd; }
    void SetEvenOdd(bool evenOdd) { m_rule.evenOdd = evenOdd; }
    /// Limits drawing to a rectangle of the page (and to the destination, the selected mask and
    /// Coverage::GuardRect) and empties the path.
    void SetClipBox(const Kernel::RectT<int>& clip);
    /// Adds polygons, each closed, their points mapped by \p transform. A set with a point that is
    /// not finite adds nothing.
    void AddPolygons(const Geometry::PolyPolygonType<double>& polygons,
                     const Raster::AffineTransform::Params& transform);
    /// The pixels that Render will touch at most.
    Kernel::RectT<int> GetBounds(bool antialias) const;
    /// The path's edges, for building clips.
    Coverage::CoverageStore& GetStore() { return m_store; }
    const Coverage::CoverageRule& GetRule() const { return m_rule; }
    AggEngine& GetRasterizer() { return *m_engine; }
    /// @}

    /// \name Drawing
    /// @{

    /// Runs the span loop over the path.
    /// \param clip scales coverage; null lets everything through.
    /// \param abort tested once per row, or per few rows that are alike.
    void Render(bool antialias, const Coverage::ClipCoverage* clip, const bool* abort);
    /// Runs the anti-aliased span loop over what path and clip have in common; coverage gamma acts
    /// on the outcome.
    /// \param area of the path's region and those of the clip, for the clip box.
    void RenderCommonArea(const Coverage::ClipCoverage& clip, Coverage::CommonArea& area,
                          const bool* abort);

    // The following go tile by tile, on several threads where the populators serve them. The abort
    // flag is tested before each row.

    /// Runs the span loop over whole pixels: every pixel of \p rect within the clip box is covered.
    void RenderRect(const Kernel::RectT<int>& rect, const Coverage::ClipCoverage* clip,
                    const bool* abort);

    /// Runs the span loop over the pixels of \p rect where a buffer holds something: pixels of
    /// zeroes are left out, more or less. \param origin where on the page the buffer begins.
    void RenderContent(const Kernel::RectT<int>& rect, const Raster::DynamicBuffer& buffer,
                       Kernel::PointT<int> origin, const Coverage::ClipCoverage* clip,
                       const bool* abort);

    /// Puts the paint below the pixels of \p rect: what they hold is composited Normal over it.
    void RenderBelow(const Kernel::RectT<int>& rect, const bool* abort);

    /// Trims a span to [clip.left, clip.right): x and length, and covers unless null. A span
    /// outside gets length 0.
    static void ClipX(int& x, int& length, const unsigned char*& covers,
                      const Kernel::RectT<int>& clip);
    /// @}

private:
    friend class SpanWriter;
    friend class InterpolatingSpanWriter;
    friend struct SpanPlace;

    double GetGammaRatio() const { return m_referenceGamma / m_callGamma; }
    bool HasUniformPaint() const;
    /// Whether several threads may run the populators at once.
    bool HasConcurrentPaint() const;
    /// Whether spans of full coverage become the paint, whatever lies below.
    bool HasReplacingPaint() const;
    /// Runs the populators over a span: those of colour make \p paint, the others scale
    /// \p scaled, which may be the same.
    void Populate(unsigned char* paint, unsigned char* scaled, int x, int y, unsigned length) const;
    void Populate(unsigned char* scratch, int x, int y, unsigned length) const
    {
        Populate(scratch, scratch, x, y, length);
    }
    /// Room for spans of \p widest pixels; valid until the next call.
    SpanRoom MakeRoom(unsigned widest);
    /// Calls \p work with the writer that suits the present paint, blend function and clip.
    /// \param widest no span will be longer; \p room has room for it.
    template<class Work>
    void WithWriter(const SpanRoom& room, unsigned widest, const Coverage::ClipCoverage* clip,
                    const Work& work) const;
    /// The same without a clip.
    template<class Work>
    void WithPlainWriter(const SpanRoom& room, unsigned widest, const Work& work) const;
    /// Calls \p work for each tile of \p rect within the clip box, from several threads at once
    /// where the populators serve them, with the tile's part of the rectangle and room for its
    /// spans.
    template<class Work>
    void ForEachTile(const Kernel::RectT<int>& rect, const bool* abort, const Work& work);
    /// Calls \p work with each row of a tile until \p abort is set.
    template<class Work>
    static void ForEachRow(const Kernel::RectT<int>& tile, const bool* abort, const Work& work);
    /// Calls \p work for each row of each tile: with a writer that has begun it, the tile and y.
    template<class Work>
    void RenderRows(const Kernel::RectT<int>& rect, const Coverage::ClipCoverage* clip,
                    const bool* abort, const Work& work);
    template<class Writer>
    void RenderCoverage(Writer& writer, const Coverage::CoverageRule& rule, const bool* abort);
    template<class Writer>
    void RenderAliased(Writer& writer, const bool* abort);

    std::unique_ptr<AggEngine> m_engine;
    Kernel::PointT<int> m_origin{};
    unsigned m_pixelSize = 4;
    const unsigned char* m_maskData = nullptr;
    Kernel::RectT<int> m_maskRect = Kernel::RectT<int>::MakeUnset(); // of the page
    Kernel::RectT<int> m_clipBox{};
    Coverage::CoverageStore m_store;
    Coverage::CellList m_cells; // of aliased drawing
    Coverage::CoverageRule m_rule;
    std::vector<unsigned char> m_scratch;
    std::vector<unsigned char> m_covers; // coverage times clip
    std::vector<SpanPopulator> m_colourPopulators;
    std::vector<SpanPopulator> m_transparencyPopulators;
    SpanScaler m_scaler;
    const SpanBlendSet* m_blends = nullptr;
    SpanBlend m_blend;
    const SpanInterpolation* m_interpolation = nullptr; // null where spans are blended
    double m_referenceGamma = 2.2;
    double m_callGamma = 2.2;
    std::array<unsigned char, 256> m_gammaTable;
    Kernel::Counted<const Geometry::CurveDbl> m_gammaCurve;
};

} // namespace Renderer
