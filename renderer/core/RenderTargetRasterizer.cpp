#include <renderer/core/RenderTargetRasterizer.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <renderer/core/coverage/AddPolygons.h>
#include <renderer/core/GammaSpanWriter.h>
#include <renderer/core/RenderTargetRasterizerImpl.h>

namespace Renderer {

using Kernel::RectT;

namespace {

/// \param value what is not a number counts as 0.
unsigned char ToCoverage(double value)
{
    return static_cast<unsigned char>(
        std::floor(std::min(std::max(0.0, value), 1.0) * 255.0 + 0.5));
}

/// The part of the page that \p width × \p height pixels from \p origin on show, as far as
/// coordinates go.
RectT<int> GetShownRect(Kernel::PointT<int> origin, unsigned width, unsigned height)
{
    const auto end = [](int begin, unsigned length) {
        return int(
            std::min<std::int64_t>(std::int64_t{begin} + length, std::numeric_limits<int>::max()));
    };
    return {origin.x, origin.y, end(origin.x, width), end(origin.y, height)};
}

} // namespace

RenderTargetRasterizer::RenderTargetRasterizer() : m_engine(std::make_unique<AggEngine>())
{
    SetGamma(1.0);
}

RenderTargetRasterizer::~RenderTargetRasterizer() = default;

// ---- destination ----

void RenderTargetRasterizer::Create(unsigned char* buffer, unsigned width, unsigned height,
                                    int stride, unsigned pixelSize, Kernel::PointT<int> origin)
{
    m_pixelSize = pixelSize;
    SwapBuffer(buffer, width, height, stride, origin);
    ResetAll();
}

void RenderTargetRasterizer::SwapBuffer(unsigned char* buffer, unsigned width, unsigned height,
                                        int stride, Kernel::PointT<int> origin)
{
    m_engine->destination.attach(buffer, width, height, stride);
    m_origin = origin;
}

unsigned char* RenderTargetRasterizer::GetRow(int y) const
{
    return m_engine->destination.row_ptr(y - m_origin.y);
}

int RenderTargetRasterizer::GetStride() const
{
    return m_engine->destination.stride();
}

RectT<int> RenderTargetRasterizer::GetDestinationRect() const
{
    return GetShownRect(m_origin, m_engine->destination.width(), m_engine->destination.height());
}

// ---- the state of a call ----

void RenderTargetRasterizer::ResetRasterizer()
{
    m_rule.evenOdd = true;
    m_maskData = nullptr;
    m_interpolation = nullptr;
    SetClipBox(GetDestinationRect());
    m_referenceGamma = m_callGamma = 2.2;
}

void RenderTargetRasterizer::ResetSpanPopulators()
{
    m_colourPopulators.clear();
    m_transparencyPopulators.clear();
    m_scaler = {};
}

void RenderTargetRasterizer::ResetAll()
{
    ResetRasterizer();
    ResetSpanPopulators();
}

void RenderTargetRasterizer::AddColourSpanPopulator(const SpanPopulator& populator)
{
    m_colourPopulators.push_back(populator);
}

void RenderTargetRasterizer::AddTransparencySpanPopulator(const SpanPopulator& populator)
{
    m_transparencyPopulators.push_back(populator);
}

unsigned RenderTargetRasterizer::GetSpanPopulatorCount() const
{
    const std::size_t count = m_colourPopulators.size() + m_transparencyPopulators.size();
    return unsigned(count) + (m_scaler.function ? 1 : 0);
}

void RenderTargetRasterizer::SelectBlend(FillBlendMode::BlendMode mode, double gamma,
                                         const Raster::DynamicBuffer* mask,
                                         Kernel::PointT<int> maskOrigin)
{
    const bool known = mode > FillBlendMode::Normal && mode < FillBlendMode::SpanModeCount;
    SelectCompositeBlend(known ? mode : FillBlendMode::Normal, gamma, mask, maskOrigin);
}

void RenderTargetRasterizer::SelectCompositeBlend(FillBlendMode::BlendMode mode, double gamma,
                                                  const Raster::DynamicBuffer* mask,
                                                  Kernel::PointT<int> maskOrigin)
{
    const auto index = static_cast<std::size_t>(mode);
    m_blend = m_blends->modes[index < m_blends->modes.size() ? index : 0];
    m_callGamma = gamma;
    m_maskData = mask ? mask->GetData() : nullptr;
    m_maskRect = RectT<int>::MakeUnset();
    if (mask) {
        // AGG's accessor reads through a pointer to mutable bytes; nothing is written.
        m_engine->mask.attach(const_cast<unsigned char*>(mask->GetData()), mask->GetWidth(),
                              mask->GetHeight(), int(mask->GetStride()));
        m_maskRect = GetShownRect(maskOrigin, mask->GetWidth(), mask->GetHeight());
    }
}

// ---- coverage gamma ----

void RenderTargetRasterizer::SetGamma(double gamma)
{
    m_gammaCurve.Reset();
    const bool identity = !(std::abs(gamma - 1.0) > 1e-6); // so is what is not a number
    for (std::size_t i = 0; i < m_gammaTable.size(); ++i)
        m_gammaTable[i] = identity ? static_cast<unsigned char>(i)
                                   : ToCoverage(std::pow(double(i) / 255.0, gamma));
    // Whatever the exponent, nothing stays nothing and full stays full.
    m_gammaTable.front() = 0;
    m_gammaTable.back() = 255;
    m_rule.gamma = identity ? nullptr : m_gammaTable.data();
}

void RenderTargetRasterizer::SetGammaCurve(Kernel::Counted<const Geometry::CurveDbl> curve)
{
    if (!curve && !m_gammaCurve)
        return;
    if (curve && m_gammaCurve && curve->IsEqual(*m_gammaCurve, 0.001))
        return;
    if (!curve) {
        SetGamma(1.0);
        return;
    }
    Geometry::PolyPolygonType<double> flat;
    curve->ExpandAdaptive(0.25 / 255.0, flat);
    const auto& points = flat.GetPoints();
    if (points.size() < 2)
        return;
    std::size_t next = 1;
    for (std::size_t i = 1; i < 255; ++i) {
        const double x = double(i) / 255.0;
        while (next + 1 < points.size() && points[next].x < x)
            ++next;
        const auto& a = points[next - 1];
        const auto& b = points[next];
        const double t = b.x > a.x ? std::clamp((x - a.x) / (b.x - a.x), 0.0, 1.0) : 1.0;
        m_gammaTable[i] = ToCoverage(a.y + t * (b.y - a.y));
    }
    m_gammaTable.front() = 0;
    m_gammaTable.back() = 255;
    m_rule.gamma = m_gammaTable.data();
    m_gammaCurve = std::move(curve);
}

// ---- path ----

void RenderTargetRasterizer::SetClipBox(const RectT<int>& clip)
{
    m_clipBox = clip.Intersect(GetDestinationRect()).Intersect(Coverage::GuardRect);
    if (m_maskData)
        m_clipBox = m_clipBox.Intersect(m_maskRect);
    if (m_clipBox.IsEmpty())
        m_clipBox = {};
    m_store.Reset(m_clipBox);
}

void RenderTargetRasterizer::AddPolygons(const Geometry::PolyPolygonType<double>& polygons,
                                         const Raster::AffineTransform::Params& transform)
{
    Coverage::AddPolygons(m_store, polygons, transform);
}

RectT<int> RenderTargetRasterizer::GetBounds(bool antialias) const
{
    RectT<int> bounds = m_store.GetBounds();
    if (!antialias && !bounds.IsEmpty()) // cover that is left over lasts to the right side
        bounds.right = m_clipBox.right;
    return bounds;
}

// ---- drawing ----

bool RenderTargetRasterizer::HasUniformPaint() const
{
    const auto isUniform = [](const SpanPopulator& populator) { return populator.isUniform; };
    return !m_scaler.function && std::ranges::all_of(m_colourPopulators, isUniform) &&
           std::ranges::all_of(m_transparencyPopulators, isUniform);
}

bool RenderTargetRasterizer::HasReplacingPaint() const
{
    return m_blend.opaqueReplaces && !m_maskData && !m_scaler.function &&
           m_colourPopulators.size() == 1 && m_colourPopulators.front().isOpaque &&
           m_transparencyPopulators.empty();
}

void RenderTargetRasterizer::Populate(unsigned char* paint, unsigned char* scaled, int x, int y,
                                      unsigned length) const
{
    for (const SpanPopulator& populator : m_colourPopulators)
        populator.function(populator.context, paint, x, y, length);
    if (m_scaler.function)
        m_scaler.function(m_scaler.context, paint, scaled, x, y, length);
    for (const SpanPopulator& populator : m_transparencyPopulators)
        populator.function(populator.context, scaled, x, y, length);
}

void RenderTargetRasterizer::ClipX(int& x, int& length, const unsigned char*& covers,
                                   const RectT<int>& clip)
{
    // In 64 bits: spans of callers may end where coordinates end.
    const std::int64_t begin = std::max(x, clip.left);
    const std::int64_t end = std::min(std::int64_t{x} + length, std::int64_t{clip.right});
    if (begin >= end) {
        x = int(begin);
        length = 0;
        return;
    }
    if (covers)
        covers += begin - x;
    x = int(begin);
    length = int(end - begin);
}

template<class Writer>
void RenderTargetRasterizer::RenderCoverage(Writer& writer, const Coverage::CoverageRule& rule,
                                            const bool* abort)
{
    m_store.Sweep(
        rule,
        [&](int y) {
            if (IsAbortSet(abort))
                return false;
            writer.BeginRow(y);
            return true;
        },
        writer);
}

template<class Writer>
void RenderTargetRasterizer::RenderAliased(Writer& writer, const bool* abort)
{
    m_cells.Collect(m_store);
    int spanX = 0, spanEnd = 0; // adjacent runs grow into one span
    const auto flush = [&] {
        if (spanEnd > spanX)
            writer.Run(spanX, unsigned(spanEnd - spanX), 255);
        spanX = spanEnd = 0;
    };
    const auto add = [&](int begin, int end) {
        if (begin != spanEnd) {
            flush();
            spanX = begin;
        }
        spanEnd = end;
    };
    const Coverage::Cell* cell = m_cells.Begin();
    const Coverage::Cell* const end = m_cells.End();
    while (cell != end) {
        const int y = cell->y;
        if (IsAbortSet(abort))
            return;
        writer.BeginRow(y);
        int cover = 0;
        while (cell != end && cell->y == y) {
            const int x = cell->x;
            int area = 0;
            for (; cell != end && cell->y == y && cell->x == x; ++cell) {
                area += cell->area;
                cover += cell->cover;
            }
            if (area != 0)
                add(x, x + 1);
            // Cells to the right of the clip box are not collected: cover that is left over lasts
            // to its right side.
            const int runStart = area != 0 ? x + 1 : x;
            const int runEnd = cell != end && cell->y == y ? cell->x : m_clipBox.right;
            if (cover != 0 && runEnd > runStart)
                add(runStart, runEnd);
        }
        flush();
    }
}

void RenderTargetRasterizer::Render(bool antialias, const Coverage::ClipCoverage* clip,
                                    const bool* abort)
{
    const RectT<int> bounds = m_store.GetBounds();
    if (bounds.IsEmpty() || !m_blend.run)
        return;
    // Aliased spans may end a pixel later than the path.
    const auto widest = unsigned(antialias ? bounds.Width() : m_clipBox.Width());
    WithWriter(MakeRoom(widest), widest, clip, [&](auto& writer) {
        if (antialias)
            RenderCoverage(writer, m_rule, abort);
        else
            RenderAliased(writer, abort);
    });
}

void RenderTargetRasterizer::RenderCommonArea(const Coverage::ClipCoverage& clip,
                                              Coverage::CommonArea& area, const bool* abort)
{
    const RectT<int> bounds = m_store.GetBounds();
    if (bounds.IsEmpty() || !m_blend.run)
        return;
    const auto widest = unsigned(bounds.Width());
    const SpanRoom room = MakeRoom(widest);
    WithPlainWriter(room, widest, [&](auto& writer) {
        GammaSpanWriter changed(writer, m_rule.gamma);
        ClippedSpanWriter common(changed, clip, room.covers, AreaOfCovers(area));
        RenderCoverage(common, {m_rule.evenOdd, nullptr}, abort);
    });
}

SpanRoom RenderTargetRasterizer::MakeRoom(unsigned widest)
{
    const std::size_t bytes = std::size_t{widest} * m_pixelSize;
    if (m_scratch.size() < bytes)
        m_scratch.resize(bytes);
    if (m_covers.size() < widest)
        m_covers.resize(widest);
    return {m_scratch.data(), m_covers.data()};
}

} // namespace Renderer
