// Drawing whole pixels, tile by tile.

#include <renderer/core/RenderTargetRasterizer.h>

#include <algorithm>
#include <cstring>

#include <renderer/core/ContentSpans.h>
#include <renderer/core/RenderTargetRasterizerImpl.h>

namespace Renderer {

using Kernel::RectT;

bool RenderTargetRasterizer::HasConcurrentPaint() const
{
    const auto isConcurrent = [](const SpanPopulator& populator) { return populator.isConcurrent; };
    return std::ranges::all_of(m_colourPopulators, isConcurrent) &&
           std::ranges::all_of(m_transparencyPopulators, isConcurrent);
}

template<class Work>
void RenderTargetRasterizer::RenderRows(const RectT<int>& rect, const Coverage::ClipCoverage* clip,
                                        const bool* abort, const Work& work)
{
    ForEachTile(rect, abort, [&](const RectT<int>& tile, const SpanRoom& room) {
        WithWriter(room, unsigned(tile.Width()), clip, [&](auto& writer) {
            ForEachRow(tile, abort, [&](int y) {
                writer.BeginRow(y);
                work(writer, tile, y);
            });
        });
    });
}

void RenderTargetRasterizer::RenderRect(const RectT<int>& rect, const Coverage::ClipCoverage* clip,
                                        const bool* abort)
{
    RenderRows(rect, clip, abort, [](auto& writer, const RectT<int>& tile, int) {
        writer.Run(tile.left, unsigned(tile.Width()), 255);
    });
}

void RenderTargetRasterizer::RenderContent(const RectT<int>& rect,
                                           const Raster::DynamicBuffer& buffer,
                                           Kernel::PointT<int> origin,
                                           const Coverage::ClipCoverage* clip, const bool* abort)
{
    const std::size_t pixelSize = buffer.GetPixelSize();
    RenderRows(rect, clip, abort, [&](auto& writer, const RectT<int>& tile, int y) {
        const unsigned char* const row =
            buffer.GetRow(unsigned(y - origin.y)) + std::size_t(tile.left - origin.x) * pixelSize;
        ForEachContentSpan(row, pixelSize, unsigned(tile.Width()),
                           [&](unsigned begin, unsigned end) {
                               writer.Run(tile.left + int(begin), end - begin, 255);
                           });
    });
}

void RenderTargetRasterizer::RenderBelow(const RectT<int>& rect, const bool* abort)
{
    ForEachTile(rect, abort, [&](const RectT<int>& tile, const SpanRoom& room) {
        const auto width = unsigned(tile.Width());
        ForEachRow(tile, abort, [&](int y) {
            Populate(room.pixels, tile.left, y, width);
            unsigned char* const row =
                GetRow(y) + std::size_t(tile.left - m_origin.x) * m_pixelSize;
            m_blend.run(room.pixels, nullptr, row, 255, 1.0, width);
            std::memcpy(row, room.pixels, std::size_t{width} * m_pixelSize);
        });
    });
}

} // namespace Renderer
