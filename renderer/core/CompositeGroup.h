#pragma once

#include <cstddef>
#include <vector>

#include <kernel/Counted.h>
#include <kernel/Point.h>
#include <kernel/Rect.h>
#include <raster/DynamicBuffer.h>
#include <renderer/paint/BlendOptions.h>
#include <renderer/paint/FillBlendMode.h>

namespace Renderer {

/// How a buffer is drawn into.
struct AlphaOnlyState
{
    /// How many pushes are in force that leave only alpha to be drawn.
    unsigned depth = 0;
    /// Pixels of the page whose colour is not premultiplied at present.
    Kernel::RectT<int> plain{};
};

/// An open composite group of a bitmap target.
struct CompositeGroup
{
    FillBlendMode::BlendMode mode;
    BlendOptions options;
    float opacity;
    /// The group's pixels, empty when nothing of it can be seen; page pixel rect.left, rect.top is
    /// its first.
    Kernel::Counted<Raster::DynamicBuffer> buffer;
    Kernel::RectT<int> rect{};
    /// What drawing went to before.
    Kernel::Counted<Raster::DynamicBuffer> parent;
    Kernel::PointT<int> parentOrigin{};
    /// What of the parent was touched before the group was opened.
    Kernel::RectT<int> parentTouched{};
    /// How many device clips lie below the group's own; pops inside the group end there.
    std::size_t deviceClips = 0;
    /// How many clipping masks lie below the group, out of force inside.
    std::size_t masks = 0;
    /// All pixels of the group outside are as it began with them; set when the group is closed.
    Kernel::RectT<int> touched{};
    /// The same for the whole buffer, which may be larger.
    Kernel::RectT<int> touchedOfBuffer{};
    /// Of the parent: inside a group drawing begins with all channels. Changes with the pixels.
    mutable AlphaOnlyState parentAlphaOnly{};
};

/// Buffers of closed groups, kept for the next ones. They are transparent, so that a group clears
/// only what it drew. Groups leave no more than were open at once, and none are kept beyond
/// MostBuffers.
class SpareBuffers
{
public:
    static constexpr std::size_t MostBuffers = 32;

    /// A transparent buffer of at least the given size; empty when none can be had.
    Kernel::Counted<Raster::DynamicBuffer> Take(Raster::Format format, unsigned width,
                                                unsigned height);
    /// Takes a buffer that nobody else holds. \param used the part of it that may be other than
    /// transparent. \return false when the buffer is not kept.
    bool Give(Kernel::Counted<Raster::DynamicBuffer> buffer, const Kernel::RectT<int>& used);
    void Clear() { m_buffers.clear(); }

private:
    std::vector<Kernel::Counted<Raster::DynamicBuffer>> m_buffers;
};

} // namespace Renderer
