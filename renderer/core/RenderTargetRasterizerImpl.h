#pragma once

// Templates of RenderTargetRasterizer, for its files that draw.

#include <kernel/Tiles.h>
#include <renderer/core/AbortFlag.h>
#include <renderer/core/ClippedSpanWriter.h>
#include <renderer/core/InterpolatingSpanWriter.h>
#include <renderer/core/RenderTargetRasterizer.h>
#include <renderer/core/SolidSpanWriter.h>
#include <renderer/core/SpanRoom.h>
#include <renderer/core/SpanWriter.h>

namespace Renderer {

template<class Work>
void RenderTargetRasterizer::WithWriter(const SpanRoom& room, unsigned widest,
                                        const Coverage::ClipCoverage* clip, const Work& work) const
{
    WithPlainWriter(room, widest, [&](auto& writer) {
        if (clip) {
            ClippedSpanWriter clipped(writer, *clip, room.covers);
            work(clipped);
        } else {
            work(writer);
        }
    });
}

template<class Work>
void RenderTargetRasterizer::WithPlainWriter(const SpanRoom& room, unsigned widest,
                                             const Work& work) const
{
    if (m_interpolation) {
        InterpolatingSpanWriter writer(*this);
        work(writer);
    } else if (m_blend.solidRun && !m_maskData && GetGammaRatio() == 1.0 && HasUniformPaint()) {
        alignas(16) unsigned char pixel[SpanBlend::LargestPixel]{};
        Populate(pixel, 0, 0, 1);
        SolidSpanWriter writer(*this, m_blend, pixel, m_pixelSize);
        work(writer);
    } else {
        SpanWriter writer(*this, room, widest);
        work(writer);
    }
}

template<class Work>
void RenderTargetRasterizer::ForEachTile(const Kernel::RectT<int>& rect, const bool* abort,
                                         const Work& work)
{
    const Kernel::RectT<int> part = rect.Intersect(m_clipBox);
    if (part.IsEmpty() || !m_blend.run || IsAbortSet(abort))
        return;
    const auto threads =
        HasConcurrentPaint() ? Kernel::TileThreads::Many : Kernel::TileThreads::Caller;
    Kernel::ForEachTile(
        part,
        [&](const Kernel::RectT<int>& tile) {
            if (tile == part) { // this is the only call
                work(tile, MakeRoom(unsigned(tile.Width())));
            } else {
                TileRoom room;
                work(tile, room.Get());
            }
        },
        threads);
}

template<class Work>
void RenderTargetRasterizer::ForEachRow(const Kernel::RectT<int>& tile, const bool* abort,
                                        const Work& work)
{
    for (int y = tile.top; y < tile.bottom && !IsAbortSet(abort); ++y)
        work(y);
}

} // namespace Renderer
