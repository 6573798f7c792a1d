// AGG by the book: its rasteriser, scan lines, pixel formats, strokes and alpha masks.

#include <memory>

#include <agg_alpha_mask_u8.h>
#include <agg_conv_dash.h>
#include <agg_conv_stroke.h>
#include <agg_conv_transform.h>
#include <agg_pixfmt_gray.h>
#include <agg_rasterizer_scanline_aa.h>
#include <agg_scanline_u.h>

#include "AggPaint.h"
#include "AggPath.h"
#include "Peer.h"

namespace Benchmarks {

namespace {

using Renderer::LineStyle;

/// A page of pixels of one format.
template<class Pixels>
struct Page
{
    Page(unsigned width, unsigned height)
        : bytes(std::size_t(width) * height * Pixels::pix_width),
          rows(bytes.data(), width, height, int(width * Pixels::pix_width)),
          pixels(rows),
          renderer(pixels)
    {}

    std::vector<unsigned char> bytes;
    agg::rendering_buffer rows;
    Pixels pixels;
    agg::renderer_base<Pixels> renderer;
};

using ColourPage = Page<AggPixels>;
using MaskPage = Page<agg::pixfmt_gray8>;
using Mask = agg::alpha_mask_gray8;

struct PreparedCommand
{
    AggPaint fill;
    AggPaint lineFill;
};

agg::line_cap_e MapCap(LineStyle::LineCap cap)
{
    switch (cap) {
    case LineStyle::RoundCap:
        return agg::round_cap;
    case LineStyle::SquareCap:
        return agg::square_cap;
    case LineStyle::ButtCap:
        break;
    }
    return agg::butt_cap;
}

agg::line_join_e MapJoin(LineStyle::LineJoin join)
{
    switch (join) {
    case LineStyle::RoundJoin:
        return agg::round_join;
    case LineStyle::BevelJoin:
        return agg::bevel_join;
    default:
        return agg::miter_join_revert;
    }
}

class AggPeer final : public Peer
{
public:
    explicit AggPeer(const Scene& scene)
        : m_scene(scene), m_matrix(MakeAggMatrix(scene.logicalToDevice))
    {
        PushPage();
        m_rasterizer.clip_box(0, 0, scene.width, scene.height);
        for (const Command& command : scene.commands)
            m_prepared.push_back(Prepare(command));
    }

    void Draw() override
    {
        for (std::size_t i = 0; i < m_scene.commands.size(); ++i)
            Play(m_scene.commands[i], m_prepared[i]);
    }

    Picture GetPicture() const override
    {
        Picture picture;
        const auto& bytes = m_pages.front()->bytes;
        for (std::size_t i = 0; i < bytes.size(); i += 4)
            picture.push_back({bytes[i], bytes[i + 1], bytes[i + 2], bytes[i + 3]});
        return picture;
    }

private:
    static PreparedCommand Prepare(const Command& command)
    {
        if (const auto* path = std::get_if<DrawPath>(&command)) {
            const double opacity = path->IsGroup() ? 1.0 : double(path->opacity);
            return {{path->fill, opacity}, {path->lineFill, opacity}};
        }
        if (const auto* draw = std::get_if<DrawBitmap>(&command)) {
            const bool nearest = draw->resampler == Raster::ResamplerType::NearestNeighbour;
            return {{*draw->bitmap, Raster::AffineTransform::FromRect(draw->dest), nearest,
                     draw->opacity},
                    {}};
        }
        return {};
    }

    void Play(const Command& command, const PreparedCommand& prepared)
    {
        std::visit(Overloaded{
                       [&](const DrawPath& draw) { Paint(draw, prepared); },
                       [&](const DrawBitmap& draw) {
                           m_polygons.Clear();
                           m_polygons.AddRect(draw.dest);
                           Fill(prepared.fill, Geometry::WindingOrderMode::NonZero);
                       },
                       [&](const PushTransform& push) {
                           m_matrices.push_back(m_matrix);
                           m_matrix = MakeAggMatrix(push.transform) * m_matrix;
                       },
                       [&](const PopTransform&) {
                           m_matrix = m_matrices.back();
                           m_matrices.pop_back();
                       },
                       [&](const PushClip& push) { PushMask(push); },
                       [&](const PopClip&) { m_masks.pop_back(); },
                       [&](const PushGroup& push) {
                           m_opacities.push_back(push.opacity);
                           PushPage();
                       },
                       [&](const PopGroup&) {
                           PopPage(m_opacities.back());
                           m_opacities.pop_back();
                       },
                   },
                   command);
    }

    // ---- pages ----

    void PushPage()
    {
        m_pages.push_back(std::make_unique<ColourPage>(m_scene.width, m_scene.height));
    }

    void PopPage(float opacity)
    {
        const std::unique_ptr<ColourPage> page = std::move(m_pages.back());
        m_pages.pop_back();
        m_pages.back()->renderer.blend_from(page->pixels, nullptr, 0, 0,
                                            agg::cover_type(std::lround(opacity * 255.0F)));
    }

    void PushMask(const PushClip& push)
    {
        auto page = std::make_unique<MaskPage>(m_scene.width, m_scene.height);
        Flatten(*push.path);
        AddFill(push.winding);
        WithScanline([&](auto& scanline) {
            agg::render_scanlines_aa_solid(m_rasterizer, scanline, page->renderer, agg::gray8(255));
        });
        m_masks.push_back(std::move(page));
    }

    /// Calls \p render with the scan line that the present clip asks for.
    template<class Render>
    void WithScanline(Render&& render)
    {
        if (m_masks.empty()) {
            render(m_scanline);
        } else {
            Mask mask(m_masks.back()->rows);
            agg::scanline_u8_am<Mask> scanline(mask);
            render(scanline);
        }
    }

    // ---- paths ----

    double GetStretch() const
    {
        return Raster::AffineTransform::GetLargestSingularValue(
            {m_matrix.sx, m_matrix.shx, m_matrix.tx, m_matrix.shy, m_matrix.sy, m_matrix.ty});
    }

    void Flatten(const Geometry::PolyCurveDbl& path)
    {
        m_polygons.Clear();
        path.ExpandAdaptive(Tolerance / GetStretch(), m_polygons);
    }

    void AddFill(Geometry::WindingOrderMode winding)
    {
        AggPath path(m_polygons);
        agg::conv_transform<AggPath> placed(path, m_matrix);
        m_rasterizer.reset();
        m_rasterizer.filling_rule(winding == Geometry::WindingOrderMode::EvenOdd
                                      ? agg::fill_even_odd
                                      : agg::fill_non_zero);
        m_rasterizer.add_path(placed);
    }

    template<class Source>
    void AddStroke(Source& source, const LineStyle& style)
    {
        agg::conv_stroke<Source> stroke(source);
        stroke.width(style.GetWeight());
        stroke.line_cap(MapCap(style.GetCap()));
        stroke.line_join(MapJoin(style.GetJoin()));
        stroke.miter_limit(style.GetMiterLimit());
        // Scale 1 keeps within 1/8 of a unit.
        stroke.approximation_scale(GetStretch() * 0.125 / Tolerance);
        agg::conv_transform<agg::conv_stroke<Source>> placed(stroke, m_matrix);
        m_rasterizer.reset();
        m_rasterizer.filling_rule(agg::fill_non_zero);
        m_rasterizer.add_path(placed);
    }

    // ---- drawing ----

    void Render(const AggPaint& paint)
    {
        WithScanline([&](auto& scanline) {
            paint.Render(m_rasterizer, scanline, m_pages.back()->renderer, m_matrix);
        });
    }

    void Fill(const AggPaint& paint, Geometry::WindingOrderMode winding)
    {
        AddFill(winding);
        Render(paint);
    }

    void Stroke(const DrawPath& draw, const AggPaint& paint)
    {
        if (!draw.HasStroke())
            return;
        const LineStyle& style = *draw.lineStyle.GetLineStyle();
        AggPath path(m_polygons);
        if (style.GetType() == LineStyle::Dashed) {
            agg::conv_dash<AggPath> dashed(path);
            const auto& dashes = style.GetDashPattern();
            const std::size_t count = dashes.size() % 2 == 0 ? dashes.size() : 2 * dashes.size();
            for (std::size_t i = 0; i < count; i += 2)
                dashed.add_dash(dashes[i % dashes.size()], dashes[(i + 1) % dashes.size()]);
            dashed.dash_start(style.GetDashPhase());
            AddStroke(dashed, style);
        } else {
            AddStroke(path, style);
        }
        Render(paint);
    }

    void Paint(const DrawPath& draw, const PreparedCommand& prepared)
    {
        if (draw.IsGroup())
            PushPage();
        Flatten(*draw.path);
        const bool behind = draw.lineStyle.GetBehind();
        if (behind)
            Stroke(draw, prepared.lineFill);
        if (draw.HasFill())
            Fill(prepared.fill, draw.winding);
        if (!behind)
            Stroke(draw, prepared.lineFill);
        if (draw.IsGroup())
            PopPage(draw.opacity);
    }

    const Scene& m_scene;
    agg::trans_affine m_matrix;
    std::vector<agg::trans_affine> m_matrices;
    std::vector<float> m_opacities;
    std::vector<std::unique_ptr<ColourPage>> m_pages;
    std::vector<std::unique_ptr<MaskPage>> m_masks;
    std::vector<PreparedCommand> m_prepared;
    Geometry::PolyPolygonType<double> m_polygons;
    agg::rasterizer_scanline_aa<> m_rasterizer;
    agg::scanline_u8 m_scanline;
};

} // namespace

std::unique_ptr<Peer> MakeAggPeer(const Scene& scene)
{
    return std::make_unique<AggPeer>(scene);
}

} // namespace Benchmarks
