// Cairo on an image surface, as a program would use it.

#include <utility>

#include "CairoPaint.h"
#include "Peer.h"

namespace Benchmarks {

namespace {

using Renderer::LineStyle;

/// What is made once per command.
struct PreparedCommand
{
    CairoPattern fill;
    CairoPattern lineFill;
};

cairo_fill_rule_t MapWinding(Geometry::WindingOrderMode winding)
{
    return winding == Geometry::WindingOrderMode::EvenOdd ? CAIRO_FILL_RULE_EVEN_ODD
                                                          : CAIRO_FILL_RULE_WINDING;
}

cairo_line_cap_t MapCap(LineStyle::LineCap cap)
{
    switch (cap) {
    case LineStyle::RoundCap:
        return CAIRO_LINE_CAP_ROUND;
    case LineStyle::SquareCap:
        return CAIRO_LINE_CAP_SQUARE;
    case LineStyle::ButtCap:
        break;
    }
    return CAIRO_LINE_CAP_BUTT;
}

cairo_line_join_t MapJoin(LineStyle::LineJoin join)
{
    switch (join) {
    case LineStyle::RoundJoin:
        return CAIRO_LINE_JOIN_ROUND;
    case LineStyle::BevelJoin:
        return CAIRO_LINE_JOIN_BEVEL;
    default:
        return CAIRO_LINE_JOIN_MITER;
    }
}

class CairoPeer final : public Peer
{
public:
    explicit CairoPeer(const Scene& scene)
        : m_scene(scene),
          m_surface(
              cairo_image_surface_create(CAIRO_FORMAT_ARGB32, int(scene.width), int(scene.height))),
          m_cairo(cairo_create(m_surface))
    {
        cairo_set_tolerance(m_cairo, Tolerance);
        const cairo_matrix_t matrix = MakeCairoMatrix(scene.logicalToDevice);
        cairo_set_matrix(m_cairo, &matrix);
        for (const Command& command : scene.commands)
            m_prepared.push_back(Prepare(command));
    }

    ~CairoPeer() override
    {
        cairo_destroy(m_cairo);
        cairo_surface_destroy(m_surface);
    }

    CairoPeer(const CairoPeer&) = delete;
    CairoPeer& operator=(const CairoPeer&) = delete;

    void Draw() override
    {
        for (std::size_t i = 0; i < m_scene.commands.size(); ++i)
            Play(m_scene.commands[i], m_prepared[i]);
    }

    Picture GetPicture() const override
    {
        Picture picture;
        for (unsigned y = 0; y < m_scene.height; ++y) {
            const unsigned char* row = cairo_image_surface_get_data(m_surface) +
                                       y * unsigned(cairo_image_surface_get_stride(m_surface));
            for (unsigned x = 0; x < m_scene.width; ++x, row += 4)
                picture.push_back({row[2], row[1], row[0], row[3]});
        }
        return picture;
    }

private:
    static PreparedCommand Prepare(const Command& command)
    {
        if (const auto* path = std::get_if<DrawPath>(&command)) {
            const double opacity = path->IsGroup() ? 1.0 : double(path->opacity);
            return {MakeCairoPattern(path->fill, opacity),
                    MakeCairoPattern(path->lineFill, opacity)};
        }
        if (const auto* draw = std::get_if<DrawBitmap>(&command)) {
            // GOOD averages over the footprint when the bitmap shrinks and is bilinear otherwise.
            const bool nearest = draw->resampler == Raster::ResamplerType::NearestNeighbour;
            return {MakeCairoBitmap(*draw->bitmap, Raster::AffineTransform::FromRect(draw->dest),
                                    nearest ? CAIRO_FILTER_NEAREST : CAIRO_FILTER_GOOD),
                    {}};
        }
        return {};
    }

    void Play(const Command& command, const PreparedCommand& prepared)
    {
        std::visit(Overloaded{
                       [&](const DrawPath& draw) { Paint(draw, prepared); },
                       [&](const DrawBitmap& draw) { Paint(draw, prepared); },
                       [&](const PushTransform& push) {
                           cairo_get_matrix(m_cairo, &m_matrices.emplace_back());
                           const cairo_matrix_t matrix = MakeCairoMatrix(push.transform);
                           cairo_transform(m_cairo, &matrix);
                       },
                       [&](const PopTransform&) {
                           cairo_set_matrix(m_cairo, &m_matrices.back());
                           m_matrices.pop_back();
                       },
                       [&](const PushClip& push) {
                           cairo_save(m_cairo);
                           AddPath(*push.path);
                           cairo_set_fill_rule(m_cairo, MapWinding(push.winding));
                           cairo_clip(m_cairo);
                       },
                       [&](const PopClip&) { cairo_restore(m_cairo); },
                       [&](const PushGroup& push) {
                           m_opacities.push_back(push.opacity);
                           cairo_push_group(m_cairo);
                       },
                       [&](const PopGroup&) {
                           PopGroupWith(m_opacities.back());
                           m_opacities.pop_back();
                       },
                   },
                   command);
    }

    void PopGroupWith(float opacity)
    {
        cairo_pop_group_to_source(m_cairo);
        cairo_paint_with_alpha(m_cairo, opacity);
    }

    void AddPath(const Geometry::PolyCurveDbl& path)
    {
        for (const Geometry::CurveDbl& curve : path.GetCurves()) {
            const auto& points = curve.GetPoints();
            if (points.empty())
                continue;
            cairo_move_to(m_cairo, points[0].x, points[0].y);
            for (std::size_t i = 0; i < curve.GetSegmentCount(); ++i) {
                const Geometry::Point* p = &points[3 * i + 1];
                if (curve.GetSegment(i) == Geometry::CurveDbl::Segment::Line)
                    cairo_line_to(m_cairo, p[2].x, p[2].y);
                else
                    cairo_curve_to(m_cairo, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
            }
            if (curve.IsClosed())
                cairo_close_path(m_cairo);
        }
    }

    void Paint(const DrawPath& draw, const PreparedCommand& prepared)
    {
        if (draw.IsGroup())
            cairo_push_group(m_cairo);
        AddPath(*draw.path);
        const bool behind = draw.lineStyle.GetBehind();
        if (behind)
            Stroke(draw, prepared);
        if (draw.HasFill()) {
            cairo_set_source(m_cairo, prepared.fill.Get());
            cairo_set_fill_rule(m_cairo, MapWinding(draw.winding));
            cairo_fill_preserve(m_cairo);
        }
        if (!behind)
            Stroke(draw, prepared);
        cairo_new_path(m_cairo);
        if (draw.IsGroup())
            PopGroupWith(draw.opacity);
    }

    void Stroke(const DrawPath& draw, const PreparedCommand& prepared)
    {
        if (!draw.HasStroke())
            return;
        const LineStyle& style = *draw.lineStyle.GetLineStyle();
        cairo_set_source(m_cairo, prepared.lineFill.Get());
        cairo_set_line_width(m_cairo, style.GetWeight());
        cairo_set_line_cap(m_cairo, MapCap(style.GetCap()));
        cairo_set_line_join(m_cairo, MapJoin(style.GetJoin()));
        cairo_set_miter_limit(m_cairo, style.GetMiterLimit());
        const auto& dashes = style.GetDashPattern();
        const bool dashed = style.GetType() == LineStyle::Dashed;
        cairo_set_dash(m_cairo, dashes.data(), dashed ? int(dashes.size()) : 0,
                       style.GetDashPhase());
        cairo_stroke_preserve(m_cairo);
    }

    void Paint(const DrawBitmap& draw, const PreparedCommand& prepared)
    {
        const auto& dest = draw.dest;
        cairo_rectangle(m_cairo, dest.left, dest.top, dest.Width(), dest.Height());
        cairo_set_source(m_cairo, prepared.fill.Get());
        if (draw.opacity >= 1.0F)
            return cairo_fill(m_cairo);
        cairo_save(m_cairo);
        cairo_clip(m_cairo);
        cairo_paint_with_alpha(m_cairo, draw.opacity);
        cairo_restore(m_cairo);
    }

    const Scene& m_scene;
    cairo_surface_t* m_surface;
    cairo_t* m_cairo;
    std::vector<PreparedCommand> m_prepared;
    std::vector<cairo_matrix_t> m_matrices;
    std::vector<float> m_opacities;
};

} // namespace

std::unique_ptr<Peer> MakeCairoPeer(const Scene& scene)
{
    return std::make_unique<CairoPeer>(scene);
}

} // namespace Benchmarks
