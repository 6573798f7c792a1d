// Composite groups of PixelRenderTarget.
//
// A group is drawn into a buffer of the size of the device clip, with no clip path in force;
// closing it paints that buffer into what lies below like any other paint, under the clip paths
// that were in force when it was opened. What was touched since then is painted and cleared again;
// the rest of the buffer, transparent throughout, costs nothing.

#include <algorithm>
#include <cstring>

#include <kernel/Tiles.h>
#include <raster/Pixel.h>
#include <renderer/core/CallScope.h>
#include <renderer/core/DevicePixels.h>
#include <renderer/core/MakeRoom.h>
#include <renderer/core/PixelRenderTarget.h>
#include <renderer/paint/FillBuffer.h>
#include <renderer/paint/FillSolid.h>

namespace Renderer {

using Kernel::Counted;
using Kernel::RectT;
using Raster::AffineTransform;

void PixelRenderTarget::PushComposite(CompositeInit init, FillBlendMode::BlendMode mode,
                                      const BlendOptions& options, float opacity)
{
    CompositeGroup group{mode,
                         options,
                         opacity,
                         {},
                         UpdateClipRasterizer().window,
                         m_current,
                         m_currentOrigin,
                         m_touched,
                         m_deviceClips.size(),
                         m_masks.size(),
                         {},
                         {},
                         m_alphaOnly};
    group.rect = CommonPart(group.rect, CommonPart(GetUnmaskedRect(), Coverage::GuardRect));
    if (m_current && !group.rect.IsEmpty())
        group.buffer = m_spareBuffers.Take(GetColourFormat(), unsigned(group.rect.Width()),
                                           unsigned(group.rect.Height()));
    const bool colourOnly = init == CompositeInit::CopyBackdropColour;
    const bool copies = group.buffer && (colourOnly || init == CompositeInit::CopyBackdrop);
    if (copies)
        CopyBackdrop(group, colourOnly);
    MakeRoomForOne(m_deviceClips);
    MakeRoomForOne(m_groups);
    m_clipPaths.Seal(); // nothing fails from here on
    // Without a buffer (nothing can be seen, or no memory) the group swallows what is drawn into
    // it.
    if (!group.buffer)
        group.rect = {};
    m_touched = copies ? group.rect : RectT<int>{};
    m_alphaOnly = {0, copies && colourOnly ? group.rect : RectT<int>{}};
    PushDeviceClip(group.rect, false);
    ShowBuffer(group.buffer, {group.rect.left, group.rect.top});
    m_groups.push_back(std::move(group));
}

void PixelRenderTarget::CopyBackdrop(const CompositeGroup& group, bool colourOnly)
{
    const std::size_t pixelSize = group.buffer->GetPixelSize();
    m_current->SyncHostCache();
    Kernel::ForEachTile(group.rect, [&](const RectT<int>& tile) {
        for (int y = tile.top; y < tile.bottom && !IsAborting(); ++y) {
            unsigned char* const to = group.buffer->GetRow(unsigned(y - group.rect.top)) +
                                      std::size_t(tile.left - group.rect.left) * pixelSize;
            std::memcpy(to, GetPixels(tile.left, y), unsigned(tile.Width()) * pixelSize);
            if (colourOnly)
                KeepBackdropColour(y, tile.left, tile.right, to);
            else
                SettleBackdrop(y, tile.left, tile.right, to);
        }
    });
}

CompositeGroup PixelRenderTarget::CloseComposite()
{
    SettleColours();
    CompositeGroup group = std::move(m_groups.back());
    m_groups.pop_back();
    // What was pushed inside and not popped goes with the group.
    SetDeviceClip(m_deviceClips[group.deviceClips].rect);
    m_deviceClips.resize(group.deviceClips);
    m_masks.resize(group.masks);
    m_clipPaths.Unseal();
    ShowBuffer(group.parent, group.parentOrigin);
    group.touched = CommonPart(m_touched, group.rect);
    if (group.buffer)
        group.touchedOfBuffer =
            CommonPart(m_touched, {group.rect.left, group.rect.top,
                                   group.rect.left + int(group.buffer->GetWidth()),
                                   group.rect.top + int(group.buffer->GetHeight())});
    m_touched = group.parentTouched;
    m_alphaOnly = group.parentAlphaOnly;
    return group;
}

void PixelRenderTarget::Touch(const RectT<int>& rect) const
{
    if (!rect.IsEmpty())
        m_touched = m_touched.IsEmpty() ? rect : m_touched.Union(rect);
}

void PixelRenderTarget::Recycle(CompositeGroup& group)
{
    RectT<int> used = group.touchedOfBuffer;
    used.left -= group.rect.left;
    used.top -= group.rect.top;
    used.right -= group.rect.left;
    used.bottom -= group.rect.top;
    m_spareBuffers.Give(std::move(group.buffer), used);
}

void PixelRenderTarget::PopCompositeAsFill(const FillDescriptorConst& fill,
                                           const FillDescriptorConst& transparency)
{
    if (m_groups.empty())
        return;
    CompositeGroup group = CloseComposite();
    PaintGroup(group, fill, transparency, PopulatorRole::Colour);
    Recycle(group);
}

void PixelRenderTarget::PopCompositeAsTransparency(const FillDescriptorConst& fill,
                                                   const FillDescriptorConst& transparency)
{
    if (m_groups.empty())
        return;
    CompositeGroup group = CloseComposite();
    if (!fill.IsFillNone())
        PaintGroup(group, fill, transparency, PopulatorRole::Transparency);
    Recycle(group);
}

void PixelRenderTarget::PaintGroup(const CompositeGroup& group, const FillDescriptorConst& fill,
                                   const FillDescriptorConst& transparency, PopulatorRole groupRole,
                                   bool interpolates)
{
    // Where nothing was drawn nothing changes, but under Mask, which clears there, and where
    // pixels go towards the group's.
    const bool isSparse =
        interpolates ? groupRole == PopulatorRole::Transparency : group.mode != FillBlendMode::Mask;
    const ClippingMask& mask = GetMask();
    const RectT<int> area = CommonPart(isSparse ? group.touched : group.rect, mask.rect);
    if (!group.buffer || !(group.opacity > 0.0F) || area.IsEmpty() || IsAborting())
        return;
    CallScope scope(*this, group.options);
    m_rasterizer.SelectCompositeBlend(group.mode, group.options.GetBlendGamma(), mask.buffer.Get(),
                                      mask.origin);
    if (interpolates)
        m_rasterizer.SelectInterpolation();
    // As paint the group lies below the fill; as transparency it scales it.
    const bool painted =
        groupRole == PopulatorRole::Colour
            ? AddGroupPopulator(group, groupRole) &&
                  (fill.IsFillNone() || AddPopulator(fill, PopulatorRole::ColourAtop))
            : AddFillPopulator(fill, group.rect) && AddGroupPopulator(group, groupRole);
    if (!painted)
        return;
    // What is in the group was transformed when it was drawn.
    if (groupRole == PopulatorRole::Transparency)
        AddColourTransformPopulators();
    AddBlendRangePopulator(group.options);
    if (!AddTransPopulator(transparency, group.rect))
        return;
    AddOpacityPopulator(group.opacity);
    const Coverage::ClipCoverage* const clip =
        m_clipPaths.IsEmpty() ? nullptr : UpdateClipRasterizer().coverage.Get();
    Touch(area); // before anything can fail half-way
    m_rasterizer.SetClipBox(area);
    const WriteScope write(*this, area);
    PrepareColours(area);
    if (isSparse)
        m_rasterizer.RenderContent(area, *group.buffer, {group.rect.left, group.rect.top}, clip,
                                   GetAbortingPointer());
    else
        m_rasterizer.RenderRect(area, clip, GetAbortingPointer());
}

bool PixelRenderTarget::AddGroupPopulator(const CompositeGroup& group, PopulatorRole role)
{
    return AddBufferPopulator(group.buffer, {group.rect.left, group.rect.top}, role);
}

bool PixelRenderTarget::AddBufferPopulator(const Counted<Raster::DynamicBuffer>& buffer,
                                           Kernel::PointT<int> origin, PopulatorRole role)
{
    // Spare buffers may be larger than what is in them; the whole size gives the frame that the
    // pixels fill.
    const FillBuffer fill(buffer, Raster::ExtendType::Clamp,
                          Raster::ResamplerType::NearestNeighbour);
    const Transform frame{double(buffer->GetWidth()),
                          0.0,
                          double(origin.x),
                          0.0,
                          double(buffer->GetHeight()),
                          double(origin.y)};
    SpanPopulator populator;
    if (!MakeFillPopulator(fill, frame, role, populator))
        return false;
    if (role == PopulatorRole::Transparency)
        m_rasterizer.AddTransparencySpanPopulator(populator);
    else
        m_rasterizer.AddColourSpanPopulator(populator);
    return true;
}

void PixelRenderTarget::Matte(Kernel::Consolidated<Colour> colour)
{
    const RectT<int> area = GetVisibleRect();
    if (!m_current || !colour || area.IsEmpty() || IsAborting())
        return;
    const FillDescriptorConst fill(FillSolid::Create(std::move(colour)));
    CallScope scope(*this);
    m_rasterizer.SelectBlend(FillBlendMode::Normal, BlendOptions::Identity().GetBlendGamma());
    if (!AddFillPopulator(fill, area))
        return;
    AddColourTransformPopulators();
    Touch(area);
    m_rasterizer.SetClipBox(area);
    const WriteScope write(*this, area);
    PrepareColours(area);
    if (IsAlphaOnly()) // two alphas add up whichever lies above
        m_rasterizer.RenderRect(area, nullptr, GetAbortingPointer());
    else
        m_rasterizer.RenderBelow(area, GetAbortingPointer());
}

} // namespace Renderer
