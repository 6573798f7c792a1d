#include <renderer/core/RenderTargetRasterizer.h>

#include <atomic>
#include <cmath>

#include <renderer/core/coverage/AddPolygons.h>
#include <renderer/core/SpanWriter.h>

namespace Renderer {

using Kernel::RectT;

namespace {

bool IsSet(const bool* abort)
{
    return abort &&
           std::atomic_ref<bool>(*const_cast<bool*>(abort)).load(std::memory_order_relaxed);
}

unsigned char ToCoverage(double value)
{
    return static_cast<unsigned char>(std::floor(std::clamp(value, 0.0, 1.0) * 255.0 + 0.5));
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

RectT<int> RenderTargetRasterizer::GetDestinationRect() const
{
    return {m_origin.x, m_origin.y, m_origin.x + int(m_engine->destination.width()),
            m_origin.y + int(m_engine->destination.height())};
}

// ---- the state of a call ----

void RenderTargetRasterizer::ResetRasterizer()
{
    m_rule.evenOdd = true;
    m_maskData = nullptr;
    SetClipBox(GetDestinationRect());
    m_referenceGamma = m_callGamma = 2.2;
}

void RenderTargetRasterizer::ResetSpanPopulators()
{
    m_colourPopulators.clear();
    m_transparencyPopulators.clear();
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
    return unsigned(m_colourPopulators.size() + m_transparencyPopulators.size());
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
    m_blend = (*m_table)[index < m_table->size() ? index : 0];
    m_callGamma = gamma;
    m_maskData = mask ? mask->GetData() : nullptr;
    m_maskRect = RectT<int>::MakeUnset();
    if (mask) {
        // AGG's accessor reads through a pointer to mutable bytes; nothing is written.
        m_engine->mask.attach(const_cast<unsigned char*>(mask->GetData()), mask->GetWidth(),
                              mask->GetHeight(), int(mask->GetStride()));
        m_maskRect = {maskOrigin.x, maskOrigin.y, maskOrigin.x + int(mask->GetWidth()),
                      maskOrigin.y + int(mask->GetHeight())};
    }
}

// ---- coverage gamma ----

void RenderTargetRasterizer::SetGamma(double gamma)
{
    m_gammaCurve.Reset();
    const bool identity = std::abs(gamma - 1.0) <= 1e-6;
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
    m_clipBox = clip.Intersect(GetDestinationRect());
    if (m_maskData)
        m_clipBox = m_clipBox.Intersect(m_maskRect);
    m_store.Reset(m_clipBox);
}

void RenderTargetRasterizer::AddPolygons(const Geometry::PolyPolygonType<double>& polygons,
                                         const Raster::AffineTransform::Params& transform)
{
    Coverage::AddPolygons(m_store, polygons, transform);
}

// ---- drawing ----

void RenderTargetRasterizer::ClipX(int& x, int& length, const unsigned char*& covers,
                                   const RectT<int>& clip)
{
    if (x < clip.left) {
        const int cut = clip.left - x;
        length -= cut;
        x = clip.left;
        if (length <= 0) {
            length = 0;
            return;
        }
        if (covers)
            covers += cut;
    }
    if (x + length > clip.right)
        length = std::max(0, clip.right - x);
}

template<class Writer>
void RenderTargetRasterizer::RenderCoverage(Writer& writer, const bool* abort)
{
    m_store.Sweep(
        m_rule,
        [&](int y) {
            if (IsSet(abort))
                return false;
            writer.BeginRow(y);
            return true;
        },
        writer);
}

template<class Writer>
void RenderTargetRasterizer::RenderAliased(Writer& writer, const bool* abort)
{
    // Edges are cut at the clip box, so that the cell store holds no more than what is seen. Edges
    // to its left end on its left side, where they carry cover and no area, as they must.
    auto& cells = m_engine->cells;
    cells.reset();
    AGG::rasterizer_sl_clip<AGG::ras_conv_dbl> clipper;
    clipper.clip_box(m_clipBox.left, m_clipBox.top, m_clipBox.right, m_clipBox.bottom);
    const auto toDouble = [](int v) { return double(v) / Coverage::SubPixelScale; };
    for (const Coverage::Edge& edge : m_store.GetEdges()) {
        // The cell store draws edges wider than its limit twice; shorter ones are exact.
        const std::int64_t dx = std::int64_t{edge.x2} - edge.x1;
        const std::int64_t dy = std::int64_t{edge.y2} - edge.y1;
        const std::int64_t pieces = std::abs(dx) / (Coverage::WidthLimit / 2) + 1;
        clipper.move_to(toDouble(edge.x1), toDouble(edge.y1));
        for (std::int64_t i = 1; i <= pieces; ++i)
            clipper.line_to(cells, toDouble(int(edge.x1 + dx * i / pieces)),
                            toDouble(int(edge.y1 + dy * i / pieces)));
    }
    cells.sort_cells();
    if (cells.total_cells() == 0)
        return;
    const int lastRow = std::min(cells.max_y(), m_clipBox.bottom - 1);
    for (int y = std::max(cells.min_y(), m_clipBox.top); y <= lastRow; ++y) {
        if (IsSet(abort))
            return;
        writer.BeginRow(y);
        int spanX = 0, spanEnd = 0; // adjacent runs grow into one span
        const auto flush = [&] {
            int x = spanX, length = spanEnd - spanX;
            const unsigned char* none = nullptr;
            ClipX(x, length, none, m_clipBox);
            if (length > 0)
                writer.Run(x, unsigned(length), 255);
        };
        const auto add = [&](int begin, int end) {
            if (begin != spanEnd) {
                flush();
                spanX = begin;
            }
            spanEnd = end;
        };
        int cover = 0;
        const AGG::cell_aa* const* cell = cells.scanline_cells(unsigned(y));
        const AGG::cell_aa* const* const end = cell + cells.scanline_num_cells(unsigned(y));
        while (cell != end) {
            const int x = (*cell)->x;
            int area = 0;
            for (; cell != end && (*cell)->x == x; ++cell) {
                area += (*cell)->area;
                cover += (*cell)->cover;
            }
            if (area != 0)
                add(x, x + 1);
            const int runStart = area != 0 ? x + 1 : x;
            // Edges to the right of the clip box were never added: cover that is left over lasts to
            // its right side.
            const int runEnd = cell != end ? (*cell)->x : m_clipBox.right;
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
    SpanWriter writer(*this, unsigned(antialias ? bounds.Width() : m_clipBox.Width()));
    const auto render = [&](auto& target) {
        if (antialias)
            RenderCoverage(target, abort);
        else
            RenderAliased(target, abort);
    };
    if (clip) {
        ClippedSpanWriter clipped(writer, *clip, m_covers);
        render(clipped);
    } else {
        render(writer);
    }
}

void RenderTargetRasterizer::RenderRect(const RectT<int>& rect, const Coverage::ClipCoverage* clip,
                                        const bool* abort)
{
    const RectT<int> part = rect.Intersect(m_clipBox);
    if (part.IsEmpty() || !m_blend.run)
        return;
    SpanWriter writer(*this, unsigned(part.Width()));
    const auto render = [&](auto& target) {
        for (int y = part.top; y < part.bottom && !IsSet(abort); ++y) {
            target.BeginRow(y);
            target.Run(part.left, unsigned(part.Width()), 255);
        }
    };
    if (clip) {
        ClippedSpanWriter clipped(writer, *clip, m_covers);
        render(clipped);
    } else {
        render(writer);
    }
}

} // namespace Renderer
