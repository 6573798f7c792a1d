#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <kernel/Processor.h>
#include <kernel/Rect.h>
#include <renderer/core/texture/CPolygon.h>
#include <renderer/core/texture/TexelRow.h>
#include <renderer/core/texture/TextureBlend.h>
#include <renderer/core/texture/TextureCanvas.h>
#include <renderer/core/texture/TextureSampler.h>

namespace Renderer::Texture {

/// The pixels of a cell of a tile while stamps are painted on it, in planes: a row of the first
/// channel, one of the second, and so on, then the next row. A row is painted step by step for all
/// of its pixels, in loops that become vector code.
template<class Texel>
class StampCanvas
{
public:
    static constexpr std::size_t N = Texel::ChannelCount;

    explicit StampCanvas(const TexturedPolygons& stroke) : m_stroke(stroke) {}

    /// Begins with nothing. \pre rect is no wider than CellSide.
    void Begin(const Kernel::RectT<int>& rect)
    {
        m_rect = rect;
        m_stride = std::size_t(rect.Width()) + Lanes; // the last block may reach beyond
        m_planes.assign(N * m_stride * std::size_t(rect.Height()), 0.0F);
    }

    void Paint(const TexturedPolygon& piece)
    {
        static const auto paintRow = Kernel::HasWideCode()
                                         ? &Kernel::WideCode::Call<RowPainter, RowJob&>
                                         : &Kernel::BaselineCode::Call<RowPainter, RowJob&>;
        CPolygon polygon(piece.corners);
        const TextureSampler<Texel> sampler(*m_stroke.textures[piece.level], false);
        const Kernel::RectT<int> part = piece.bounds.Intersect(m_rect);
        RowJob job{*this, polygon, sampler, piece, 0};
        for (job.y = part.top; job.y < part.bottom; ++job.y) {
            polygon.ComputeCoverages(job.y, part.left, part.right, m_coverage);
            if (!m_coverage.IsEmpty())
                paintRow(job);
        }
    }

    /// Calls \p use(x, channels) for each pixel of a row of the page.
    template<class Use>
    void ForEachPixel(int y, const Use& use) const
    {
        const float* const planes = &m_planes[GetPlane(y)];
        for (int x = m_rect.left; x < m_rect.right; ++x) {
            Channels<N> channels;
            for (std::size_t c = 0; c < N; ++c)
                channels[c] = planes[c * m_stride + std::size_t(x - m_rect.left)];
            use(x, channels);
        }
    }

private:
    /// Pixels of rows count by this, so that vectors have no rest.
    static constexpr std::size_t Lanes = 8;
    /// Rows as short are painted pixel by pixel.
    static constexpr std::size_t ShortRow = 4;
    static constexpr std::size_t RoomSize = std::size_t(CellSide) + Lanes;
    using Plane = std::array<float, RoomSize>;

    /// What is painted in a row: the pixels of m_coverage.
    struct RowJob
    {
        StampCanvas& canvas;
        const CPolygon& polygon;
        const TextureSampler<Texel>& sampler;
        const TexturedPolygon& piece;
        int y;
    };
    struct RowPainter
    {
        static void Apply(const RowJob& job) { job.canvas.PaintRow(job); }
    };

    void PaintRow(const RowJob& job)
    {
        const std::size_t count = std::size_t(m_coverage.end - m_coverage.begin);
        float* const out = &m_planes[GetPlane(job.y)] + (m_coverage.begin - m_rect.left);
        if (count <= ShortRow) {
            for (std::size_t i = 0; i < count; ++i)
                PaintPixel(job, m_coverage.begin + int(i), out + i);
            return;
        }
        const std::size_t lanes = (count + Lanes - 1) & ~(Lanes - 1);
        FindWeights(count, lanes, job.piece.corners[0].opacity);
        job.polygon.MapEach(m_coverage.begin, lanes, m_u.data(), m_v.data());
        m_texels.Fetch(job.sampler, count, lanes, m_u, m_v);
        ReadStamp(lanes);
        if (m_stroke.overlap == Raster::BrushSettings::Overlap::BuildUp)
            BuildUp(lanes, job.piece.doublings, out);
        else
            KeepLargest(lanes, out);
    }

    /// The same for a pixel by itself, with less to prepare.
    void PaintPixel(const RowJob& job, int x, float* out) const
    {
        const float area = m_coverage.GetShare(x);
        if (!(area > 0.0F))
            return;
        const TexturePlace place = job.polygon.MapX(x);
        Channels<N> stamp =
            ScaleBy(job.sampler.Sample(place.u, place.v), CombineOpacities(area, place.opacity));
        Channels<N> below;
        for (std::size_t c = 0; c < N; ++c)
            below[c] = out[c * m_stride];
        if (m_stroke.overlap == Raster::BrushSettings::Overlap::BuildUp) {
            for (unsigned i = 0; i < job.piece.doublings; ++i)
                stamp = BlendOverItself(stamp);
            BlendSrcOver(below, stamp);
        } else {
            BlendMaxOpacity(below, stamp);
        }
        for (std::size_t c = 0; c < N; ++c)
            out[c * m_stride] = below[c];
    }

    /// What scales the texture: nothing behind the last pixel.
    void FindWeights(std::size_t count, std::size_t lanes, float opacity)
    {
        const std::int32_t* const areas =
            m_coverage.areas.data() + (m_coverage.begin - m_coverage.first);
        for (std::size_t i = 0; i < count; ++i)
            m_weights[i] = CombineOpacities(CCoverage::ToShare(areas[i]), opacity);
        for (std::size_t i = count; i < lanes; ++i)
            m_weights[i] = 0.0F;
    }

    /// The texture, scaled. What is not painted may have been anything, and is nothing.
    void ReadStamp(std::size_t lanes)
    {
        for (std::size_t c = 0; c < N; ++c) {
            m_texels.Mix(c, lanes, m_stamp[c]);
            for (std::size_t i = 0; i < lanes; ++i) {
                const float scaled = m_stamp[c][i] * m_weights[i];
                m_stamp[c][i] = m_weights[i] > 0.0F ? scaled : 0.0F;
            }
        }
    }

    /// BlendOverItself, as often as \p doublings says, and BlendSrcOver.
    void BuildUp(std::size_t lanes, unsigned doublings, float* __restrict out)
    {
        for (; doublings > 0; --doublings)
            for (std::size_t c = 0; c < N; ++c) // alpha last
                for (std::size_t i = 0; i < lanes; ++i)
                    m_stamp[c][i] *= 2.0F - m_stamp[N - 1][i];
        for (std::size_t c = 0; c < N; ++c, out += m_stride)
            for (std::size_t i = 0; i < lanes; ++i)
                out[i] = m_stamp[c][i] + out[i] * (1.0F - m_stamp[N - 1][i]);
    }

    /// BlendMaxOpacity.
    void KeepLargest(std::size_t lanes, float* __restrict out) const
    {
        const auto isLarger = [](float above, float below) {
            return static_cast<int>(above > 0.0F) & static_cast<int>(above >= below);
        };
        const float* const alpha = out + (N - 1) * m_stride;
        for (std::size_t c = 0; c < N; ++c, out += m_stride) // alpha last
            for (std::size_t i = 0; i < lanes; ++i)
                out[i] = isLarger(m_stamp[N - 1][i], alpha[i]) ? m_stamp[c][i] : out[i];
    }

    std::size_t GetPlane(int y) const { return std::size_t(y - m_rect.top) * N * m_stride; }

    const TexturedPolygons& m_stroke;
    Kernel::RectT<int> m_rect{};
    std::size_t m_stride = 0;
    std::vector<float> m_planes;
    CCoverage m_coverage;
    Plane m_u{}, m_v{}, m_weights{};
    TexelRow<Texel, RoomSize> m_texels;
    std::array<Plane, N> m_stamp{};
};

} // namespace Renderer::Texture
