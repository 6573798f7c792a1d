// Buffers of PixelRenderTarget: which one is drawn into, and what goes with it.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>

#include <kernel/Tiles.h>
#include <renderer/core/CallScope.h>
#include <renderer/core/DevicePixels.h>
#include <renderer/core/PixelRenderTarget.h>

namespace Renderer {

using Kernel::Counted;
using Kernel::RectT;
using Raster::DynamicBuffer;

bool PixelRenderTarget::CreateBuffer(unsigned width, unsigned height)
{
    const Counted<DynamicBuffer> buffer = DynamicBuffer::Create(GetColourFormat(), width, height);
    return buffer && AttachBuffer(buffer, {0, 0, int(width), int(height)});
}

bool PixelRenderTarget::AttachBuffer(Counted<DynamicBuffer> buffer, RectT<int> rect)
{
    if (!buffer || buffer->GetFormat() != GetColourFormat() || rect.right < rect.left ||
        rect.bottom < rect.top)
        return false;
    const RectT<int> whole{0, 0, int(buffer->GetWidth()), int(buffer->GetHeight())};
    const bool inPlace = whole.Contains(rect);
    if (!inPlace && (std::int64_t{rect.right} - rect.left > whole.right ||
                     std::int64_t{rect.bottom} - rect.top > whole.bottom))
        return false;
    EndNesting();
    m_buffer = std::move(buffer);
    m_bufferRect = rect;
    m_bufferOrigin = inPlace ? Kernel::PointT<int>{} : Kernel::PointT<int>{rect.left, rect.top};
    ShowBuffer(m_buffer, m_bufferOrigin);
    SetDeviceClip(rect);
    // From now on the pixels are these; a host's copy of them ends.
    m_buffer->SyncHostCache();
    m_buffer->InvalidateHardwareCache(whole);
    return true;
}

void PixelRenderTarget::ShowBuffer(const Counted<DynamicBuffer>& buffer, Kernel::PointT<int> origin)
{
    m_current = buffer;
    m_currentOrigin = origin;
    if (buffer)
        m_rasterizer.Create(buffer->GetData(), buffer->GetWidth(), buffer->GetHeight(),
                            int(buffer->GetStride()), m_pixelSize, origin);
    else
        m_rasterizer.Create(nullptr, 0, 0, 0, m_pixelSize);
}

void PixelRenderTarget::EndNesting()
{
    SettleAllColours();
    m_alphaOnly = {};
    m_groups.clear();
    m_masks.clear();
    m_clipPaths.Clear();
    m_deviceClips.clear();
    m_touched = {};
}

void PixelRenderTarget::DetachBuffer()
{
    EndNesting();
    m_buffer.Reset();
    m_spareBuffers.Clear();
    m_bufferRect = {};
    m_bufferOrigin = {};
    ShowBuffer({}, {});
    SetDeviceClip({});
}

Counted<DynamicBuffer> PixelRenderTarget::GetBuffer() const
{
    SettleAllColours();
    return m_buffer;
}

Counted<DynamicBuffer> PixelRenderTarget::GetCurrentBuffer() const
{
    // The caller may write anywhere.
    Touch(m_rasterizer.GetDestinationRect());
    SettleColours();
    return m_current;
}

void PixelRenderTarget::Clear()
{
    const RectT<int> part = GetVisibleRect();
    if (!m_current || part.IsEmpty() || IsAborting())
        return;
    const WriteScope write(*this, part);
    PrepareColours(part);
    Kernel::ForEachTile(part, [&](const RectT<int>& tile) {
        const auto width = unsigned(tile.Width());
        for (int y = tile.top; y < tile.bottom && !IsAborting(); ++y) {
            if (IsAlphaOnly())
                ClearAlpha(GetPixels(tile.left, y), width);
            else
                std::memset(GetPixels(tile.left, y), 0, std::size_t{width} * m_pixelSize);
        }
    });
}

// ---- states ----

namespace {

/// The part of the page that a buffer shows, as far as coordinates go.
RectT<int> GetShownRect(const DynamicBuffer& buffer, Kernel::PointT<int> origin)
{
    const auto end = [](int begin, unsigned length) {
        constexpr std::int64_t last = std::numeric_limits<int>::max();
        return int(std::min(last, std::int64_t{begin} + length));
    };
    return {origin.x, origin.y, end(origin.x, buffer.GetWidth()),
            end(origin.y, buffer.GetHeight())};
}

} // namespace

/// What is open over a destination: clips, masks and groups. Groups share their buffers with the
/// target that the state was taken from, which may go on to draw into them: all of their pixels
/// count as touched.
class PixelRenderTarget::Nesting : public Kernel::Countable
{
public:
    explicit Nesting(const PixelRenderTarget& target)
        : m_destination(target.m_buffer),
          m_rect(target.m_bufferRect),
          m_current(target.m_current),
          m_currentOrigin(target.m_currentOrigin),
          m_deviceClips(target.m_deviceClips),
          m_clipPaths(target.m_clipPaths.Save()),
          m_masks(target.m_masks),
          m_groups(target.m_groups),
          m_alphaOnly(target.m_alphaOnly)
    {
        for (CompositeGroup& group : m_groups)
            if (group.parent)
                group.parentTouched = GetShownRect(*group.parent, group.parentOrigin);
    }

    bool BelongsTo(const BufferState& state) const
    {
        return m_destination == state.buffer && m_rect == state.rect;
    }

    /// What a target takes over; made before anything is changed, because it may fail.
    struct Copy
    {
        explicit Copy(const Nesting& from)
            : deviceClips(from.m_deviceClips),
              clipPaths(from.m_clipPaths),
              masks(from.m_masks),
              groups(from.m_groups)
        {}

        std::vector<DeviceClip> deviceClips;
        ClipPathStack::Saved clipPaths;
        std::vector<ClippingMask> masks;
        std::vector<CompositeGroup> groups;
    };

    /// Opens everything over the attached destination.
    void Restore(PixelRenderTarget& target, Copy copy) const
    {
        target.m_deviceClips = std::move(copy.deviceClips);
        target.m_clipPaths.Restore(std::move(copy.clipPaths));
        target.m_masks = std::move(copy.masks);
        target.m_groups = std::move(copy.groups);
        target.m_alphaOnly = m_alphaOnly;
        target.ShowBuffer(m_current, m_currentOrigin);
        target.Touch(target.m_rasterizer.GetDestinationRect());
    }

private:
    const Counted<DynamicBuffer> m_destination;
    const RectT<int> m_rect;
    const Counted<DynamicBuffer> m_current;
    const Kernel::PointT<int> m_currentOrigin;
    const std::vector<DeviceClip> m_deviceClips;
    const ClipPathStack::Saved m_clipPaths;
    const std::vector<ClippingMask> m_masks;
    std::vector<CompositeGroup> m_groups;
    const AlphaOnlyState m_alphaOnly;
};

BufferState PixelRenderTarget::GetBufferState() const
{
    BufferState state{m_buffer, m_bufferRect, GetDeviceClip(), {}};
    const bool isPlain = m_deviceClips.empty() && m_masks.empty() && m_groups.empty() &&
                         m_clipPaths.IsPlain() && !IsAlphaOnly();
    // Others may draw into the same buffers: how colour is stored in them at present must not
    // matter.
    SettleAllColours();
    if (m_buffer && !isPlain)
        state.nesting = Kernel::MakeCounted<const Nesting>(*this);
    return state;
}

bool PixelRenderTarget::SetBufferState(BufferState state)
{
    if (!state.buffer) {
        DetachBuffer();
        return true;
    }
    std::optional<Nesting::Copy> copy;
    const auto* const nesting = dynamic_cast<const Nesting*>(state.nesting.Get());
    if (nesting) {
        if (!nesting->BelongsTo(state))
            return false;
        copy.emplace(*nesting);
    }
    if (!AttachBuffer(state.buffer, state.rect))
        return false;
    if (copy)
        nesting->Restore(*this, std::move(*copy));
    if (!state.deviceClip.IsUnset())
        SetDeviceClip(CommonPart(state.deviceClip, state.rect));
    return true;
}

bool PixelRenderTarget::TransferBitmapToSpareComposites(Counted<DynamicBuffer> buffer)
{
    if (!buffer || buffer->GetFormat() != GetColourFormat())
        return false;
    const RectT<int> whole{0, 0, int(buffer->GetWidth()), int(buffer->GetHeight())};
    return m_spareBuffers.Give(std::move(buffer), whole);
}

} // namespace Renderer
