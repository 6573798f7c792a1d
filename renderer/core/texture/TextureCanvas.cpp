#include <renderer/core/texture/TextureCanvas.h>

#include <algorithm>
#include <cmath>

#include <kernel/Dispatch.h>
#include <kernel/Tiles.h>
#include <raster/Pixel.h>
#include <renderer/core/AbortFlag.h>
#include <renderer/core/formats/PixProcessor.h>
#include <renderer/core/texture/CPolygon.h>
#include <renderer/core/texture/StampCanvas.h>
#include <renderer/core/texture/TextureBlend.h>
#include <renderer/core/texture/TextureSampler.h>

namespace Renderer::Texture {

using Kernel::RectT;
using Overlap = Raster::BrushSettings::Overlap;

TouchedBlocks::TouchedBlocks(const RectT<int>& rect)
    : m_rect(rect),
      m_left(rect.left >> Shift),
      m_top(rect.top >> Shift),
      m_columns(((rect.right - 1) >> Shift) - m_left + 1),
      m_rows(((rect.bottom - 1) >> Shift) - m_top + 1),
      m_blocks(std::size_t(m_columns) * std::size_t(m_rows))
{}

RectT<int> TouchedBlocks::GetRect(int firstColumn, int endColumn, int row) const noexcept
{
    return RectT<int>{(m_left + firstColumn) * Side, (m_top + row) * Side,
                      (m_left + endColumn) * Side, (m_top + row + 1) * Side}
        .Intersect(m_rect);
}

namespace {

template<std::size_t N>
void Combine(Overlap overlap, Channels<N>& below, const Channels<N>& above) noexcept
{
    if (overlap == Overlap::MaxOpacity)
        BlendMaxOpacity(below, above);
    else
        BlendSrcOver(below, above);
}

/// What a piece gives to a pixel.
template<std::size_t N>
struct Share
{
    Channels<N> texel;
    float area; ///< of the pixel, 0 … 1
    float opacity;
    float distance; ///< from the middle of the stroke, in device pixels
};

/// A pixel of a stroke of pieces that meet: the sum of the pieces at the present place of the
/// stroke, over what the stroke left there when it came by before.
///
/// At the inside of bends and corners pieces lie over each other. The ones in whose middle the
/// pixel lies more nearly are seen, the others fill what these leave of the pixel's area.
template<std::size_t N>
class JoinedPixel
{
public:
    void Add(const Share<N>& share, const TexturedPolygon& piece, Overlap overlap) noexcept
    {
        if (m_near.area > 0.0F && !IsNear(piece)) {
            Combine(overlap, m_settled, GetSum());
            m_near = m_far = {};
        }
        m_lastBegin = piece.begin;
        m_lastEnd = piece.end;
        if (m_near.area > 0.0F && share.distance > m_distance + SameDistance) {
            m_far.Add(share.texel, share.area, share.opacity);
            return;
        }
        if (m_near.area > 0.0F && share.distance < m_distance - SameDistance) {
            m_far.Add(m_near);
            m_near = {};
        }
        m_distance = m_near.area > 0.0F ? std::min(m_distance, share.distance) : share.distance;
        m_near.Add(share.texel, share.area, share.opacity);
    }
    Channels<N> Get(Overlap overlap) const noexcept
    {
        Channels<N> result = m_settled;
        Combine(overlap, result, GetSum());
        return result;
    }

private:
    /// Pieces whose distances differ by no more, in pixels, are mixed where they overlap.
    static constexpr float SameDistance = 0.75F;

    Channels<N> GetSum() const noexcept
    {
        Channels<N> sum = m_near.Get();
        const float rest = std::min(1.0F - m_near.area, m_far.area);
        if (rest > 0.0F)
            for (std::size_t i = 0; i < N; ++i)
                sum[i] += m_far.channels[i] * (rest / m_far.area);
        return sum;
    }
    bool IsNear(const TexturedPolygon& piece) const noexcept
    {
        return piece.begin - m_lastEnd <= JoinReach ||
               (piece.loop > 0.0F && m_lastBegin >= piece.runStart &&
                piece.loop - (piece.end - m_lastBegin) <= JoinReach);
    }

    Channels<N> m_settled{};
    Sum<N> m_near;
    Sum<N> m_far;
    float m_distance = 0.0F;  // of the near pieces
    float m_lastBegin = 0.0F; // of the piece that touched the pixel last
    float m_lastEnd = 0.0F;
};

/// The pixels of a cell of a tile while pieces that meet are painted on it.
template<class Texel>
class JoinedCanvas
{
public:
    static constexpr std::size_t N = Texel::ChannelCount;

    explicit JoinedCanvas(const TexturedPolygons& stroke) : m_stroke(stroke) {}

    /// Begins with nothing.
    void Begin(const RectT<int>& rect)
    {
        m_rect = rect;
        m_pixels.assign(std::size_t(rect.Width()) * std::size_t(rect.Height()), JoinedPixel<N>{});
    }

    void Paint(const TexturedPolygon& piece)
    {
        CPolygon polygon(piece.corners);
        const TextureSampler<Texel> sampler(*m_stroke.textures[piece.level], m_stroke.wraps);
        const RectT<int> part = piece.bounds.Intersect(m_rect);
        for (int y = part.top; y < part.bottom; ++y) {
            polygon.ComputeCoverages(y, part.left, part.right, m_coverage);
            JoinedPixel<N>* const row = &m_pixels[GetIndex(y)];
            // One loop for edges and insides: three took half as long again.
            for (int x = m_coverage.begin; x < m_coverage.end; ++x) {
                const float area = m_coverage.GetShare(x);
                if (!(area > 0.0F))
                    continue;
                const TexturePlace place = polygon.MapX(x);
                row[x - m_rect.left].Add({sampler.Sample(place.u, place.v), area, place.opacity,
                                          std::abs(place.v - 0.5F) * piece.width},
                                         piece, m_stroke.overlap);
            }
        }
    }

    /// Calls \p use(x, channels) for each pixel of a row of the page.
    template<class Use>
    void ForEachPixel(int y, const Use& use) const
    {
        const JoinedPixel<N>* pixel = &m_pixels[GetIndex(y)];
        for (int x = m_rect.left; x < m_rect.right; ++x)
            use(x, (pixel++)->Get(m_stroke.overlap));
    }

private:
    std::size_t GetIndex(int y) const
    {
        return std::size_t(y - m_rect.top) * std::size_t(m_rect.Width());
    }

    const TexturedPolygons& m_stroke;
    RectT<int> m_rect{};
    std::vector<JoinedPixel<N>> m_pixels;
    CCoverage m_coverage;
};

/// Stores channels as a pixel of a target: all of them, or alpha alone.
template<class Pixel, std::size_t N>
Pixel ToPixel(const Channels<N>& channels) noexcept
{
    using Processor = PixProcessor<Pixel, N == 1>;
    if constexpr (N == 1) {
        typename Processor::FloatPixel alpha{};
        alpha[Pixel::AlphaIndex] = channels[0];
        return Processor::StorePremultiplied(alpha, 0.5F);
    } else if constexpr (Processor::IsInteger) {
        return Processor::StorePremultiplied(channels, 0.5F);
    } else {
        Pixel pixel;
        std::copy(channels.begin(), channels.end(), pixel.channels.begin());
        return pixel;
    }
}

/// A paint job: where pixels go.
struct Job
{
    const TexturedPolygons& stroke;
    const RectT<int>& rect;
    Raster::DynamicBuffer& target;
    const bool* abort;
    TouchedBlocks& touched;
};

template<class Pixel, class CanvasT>
void Store(const Job& job, const RectT<int>& cell, const CanvasT& canvas)
{
    for (int y = cell.top; y < cell.bottom; ++y) {
        auto* const row = reinterpret_cast<Pixel*>(job.target.GetRow(unsigned(y - job.rect.top)));
        canvas.ForEachPixel(y, [&](int x, const auto& channels) {
            const Pixel pixel = ToPixel<Pixel>(channels);
            if (pixel == Pixel{})
                return;
            row[x - job.rect.left] = pixel;
            job.touched.Touch(x, y);
        });
    }
}

using Pieces = std::vector<const TexturedPolygon*>;

/// Finds the pieces that reach into a rectangle. \return the part that they reach into.
template<class Range, class GetPiece>
RectT<int> FindPieces(const Range& range, const RectT<int>& rect, Pieces& pieces,
                      const GetPiece& getPiece)
{
    RectT<int> part{};
    pieces.clear();
    for (const auto& element : range) {
        const TexturedPolygon& piece = getPiece(element);
        const RectT<int> common = piece.bounds.Intersect(rect);
        if (common.IsEmpty())
            continue;
        part = pieces.empty() ? common : part.Union(common);
        pieces.push_back(&piece);
    }
    return part;
}

template<class Texel, class Canvas>
void PaintCell(const Job& job, const RectT<int>& part, const Pieces& pieces, Canvas& canvas)
{
    canvas.Begin(part);
    for (const TexturedPolygon* piece : pieces) {
        if (IsAbortSet(job.abort))
            return;
        canvas.Paint(*piece);
    }
    Raster::WithPixelOfFormat(job.target.GetFormat(), false, [&]<class Pixel>(Pixel) {
        if constexpr (Texel::ChannelCount == 1 || std::is_same_v<Pixel, typename Texel::Pixel>)
            Store<Pixel>(job, part, canvas);
        return true;
    });
}

template<class Texel, class Canvas>
void PaintTile(const Job& job, const RectT<int>& tile)
{
    if (IsAbortSet(job.abort))
        return;
    Pieces ofTile, ofCell;
    const RectT<int> area = FindPieces(
        job.stroke.polygons, tile, ofTile,
        [](const TexturedPolygon& piece) -> auto& { return piece; });
    Canvas canvas(job.stroke);
    for (int y = area.top & -CellSide; y < area.bottom; y += CellSide)
        for (int x = area.left & -CellSide; x < area.right; x += CellSide) {
            if (IsAbortSet(job.abort))
                return;
            const RectT<int> cell = RectT<int>{x, y, x + CellSide, y + CellSide}.Intersect(area);
            const RectT<int> part = FindPieces(
                ofTile, cell, ofCell, [](const TexturedPolygon* piece) -> auto& { return *piece; });
            if (!ofCell.empty())
                PaintCell<Texel>(job, part, ofCell, canvas);
        }
}

template<class Texel>
void PaintTiles(const Job& job)
{
    const Kernel::TileGrid grid(job.rect);
    Kernel::Dispatch::DispatchParallelFor(
        [&](unsigned index) {
            const RectT<int> tile = grid.GetPart(index);
            if (job.stroke.areJoined)
                PaintTile<Texel, JoinedCanvas<Texel>>(job, tile);
            else
                PaintTile<Texel, StampCanvas<Texel>>(job, tile);
        },
        grid.GetCount());
}

} // namespace

void PaintTexturedPolygons(const TexturedPolygons& stroke, const RectT<int>& rect,
                           Raster::DynamicBuffer& target, const bool* abort, TouchedBlocks& touched)
{
    if (stroke.polygons.empty())
        return;
    const Job job{stroke, rect, target, abort, touched};
    if (stroke.isIntensity) {
        PaintTiles<MaskTexel<Raster::PixelIA16, 0>>(job);
        return;
    }
    Raster::WithPixelOfFormat(stroke.textures.front()->GetFormat(), false, [&]<class Pixel>(Pixel) {
        // Masks come in one format.
        if constexpr (Pixel::ChannelCount > 1 || std::is_same_v<Pixel, Raster::PixelAlpha16>)
            PaintTiles<ColourTexel<Pixel>>(job);
        return true;
    });
}

} // namespace Renderer::Texture
