#pragma once

#include <vector>

#include <agg_rasterizer_scanline_aa.h>
#include <agg_scanline_u.h>
#include <geometry/Polygon.h>
#include <kernel/Rect.h>
#include <renderer/core/coverage/AggEngine.h>
#include <renderer/core/coverage/SubPixel.h>

namespace Renderer {

/// A picture of coverage bytes.
class CoveragePicture
{
public:
    explicit CoveragePicture(const Kernel::RectT<int>& rect)
        : m_rect(rect), m_bytes(std::size_t(rect.Width()) * std::size_t(rect.Height()))
    {}

    unsigned char& At(int x, int y)
    {
        return m_bytes[std::size_t(y - m_rect.top) * std::size_t(m_rect.Width()) +
                       std::size_t(x - m_rect.left)];
    }
    const Kernel::RectT<int>& GetRect() const { return m_rect; }
    const std::vector<unsigned char>& GetBytes() const { return m_bytes; }

private:
    Kernel::RectT<int> m_rect;
    std::vector<unsigned char> m_bytes;
};

/// Writes swept coverage into a picture.
class PictureSink
{
public:
    explicit PictureSink(CoveragePicture& picture) : m_picture(picture) {}
    void BeginRow(int y) { m_y = y; }
    void Run(int x, unsigned length, unsigned char cover)
    {
        for (unsigned i = 0; i < length; ++i)
            m_picture.At(x + int(i), m_y) = cover;
    }
    void Mask(int x, unsigned length, const unsigned char* covers)
    {
        for (unsigned i = 0; i < length; ++i)
            m_picture.At(x + int(i), m_y) = covers[i];
    }

private:
    CoveragePicture& m_picture;
    int m_y = 0;
};

/// The oracle: AGG's own scan-line rasteriser with the guard box as its clip box. Its cell store
/// draws edges of 16,384 pixels and more twice over; polygons with such edges do not belong here.
inline CoveragePicture RenderWithStockAgg(const Geometry::PolyPolygonType<double>& polygons,
                                          bool evenOdd, const Kernel::RectT<int>& window)
{
    AGG::rasterizer_scanline_aa<AGG::rasterizer_sl_clip<AGG::ras_conv_dbl>> stock(1U << 16);
    stock.filling_rule(evenOdd ? AGG::fill_even_odd : AGG::fill_non_zero);
    stock.clip_box(-Coverage::GuardBox, -Coverage::GuardBox, Coverage::GuardBox,
                   Coverage::GuardBox);
    for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
        const auto points = polygons.GetPolygon(i).points;
        for (std::size_t k = 0; k < points.size(); ++k) {
            if (k == 0)
                stock.move_to_d(points[k].x, points[k].y);
            else
                stock.line_to_d(points[k].x, points[k].y);
        }
    }
    stock.close_polygon();

    CoveragePicture picture(window);
    if (!stock.rewind_scanlines())
        return picture;
    AGG::scanline32_u8 line;
    line.reset(stock.min_x(), stock.max_x());
    while (stock.sweep_scanline(line)) {
        if (line.y() < window.top || line.y() >= window.bottom)
            continue;
        auto span = line.begin();
        for (unsigned n = line.num_spans(); n > 0; --n, ++span) {
            for (int i = 0; i < span->len; ++i) {
                if (span->x + i >= window.left && span->x + i < window.right)
                    picture.At(span->x + i, line.y()) = span->covers[i];
            }
        }
    }
    return picture;
}

} // namespace Renderer
