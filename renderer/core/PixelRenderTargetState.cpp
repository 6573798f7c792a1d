// Clips, colour transforms and buffers of PixelRenderTarget.

#include <algorithm>
#include <cmath>
#include <cstring>

#include <kernel/Tiles.h>
#include <renderer/core/DevicePixels.h>
#include <renderer/core/MakeRoom.h>
#include <renderer/core/PixelRenderTarget.h>

namespace Renderer {

using Geometry::WindingOrderMode;
using Kernel::Counted;
using Kernel::MakeCounted;
using Kernel::RectT;
using Raster::AffineTransform;

PixelRenderTarget::PixelRenderTarget(Raster::Format format, const SpanBlendTable& table,
                                     Raster::ICCManager::ICCProfileSet profiles)
    : m_pixelSize(unsigned(Raster::GetPixelSize(format)))
{
    m_rasterizer.SetBlendTable(table);
    RenderTarget::SetColourFormatAndProfiles(format, std::move(profiles));
}

PixelRenderTarget::~PixelRenderTarget() = default;

void PixelRenderTarget::SetColourFormatAndProfiles(Raster::Format,
                                                   Raster::ICCManager::ICCProfileSet profiles)
{
    RenderTarget::SetColourFormatAndProfiles(GetColourFormat(), std::move(profiles));
}

// ---- clip paths ----

void PixelRenderTarget::PushClip(const PolyPolygon& logical, const Transform& transform,
                                 WindingOrderMode winding)
{
    m_clipPaths.Push(
        ClipPath(MapPolygons(logical, transform), winding == WindingOrderMode::EvenOdd));
}

void PixelRenderTarget::PushClipPath(Counted<const PolyPolygon> polygons, WindingOrderMode winding)
{
    PushClip(polygons ? *polygons : PolyPolygon(), GetCurrentTransform(), winding);
}

void PixelRenderTarget::PushClipCurvesPath(Counted<const Geometry::PolyCurveDbl> curve,
                                           WindingOrderMode winding)
{
    m_polygons.Clear();
    if (curve)
        curve->ExpandAdaptive(GetFlatteningTolerance(), m_polygons);
    PushClip(m_polygons, GetCurrentTransform(), winding);
}

void PixelRenderTarget::PushClipPolyCurvesPath(Counted<const ConstPolyPolyCurve> curves,
                                               WindingOrderMode winding)
{
    auto device = MakeCounted<PolyPolygon>();
    if (curves) {
        for (const auto& entry : curves->GetEntries()) {
            if (!entry.curve)
                continue;
            // The tolerance is that of the curve's own frame.
            PushTransform(entry.transform, TransformScalarMode::Inherit);
            PolyPolygon flat;
            entry.curve->ExpandAdaptive(GetFlatteningTolerance(), flat);
            AppendMapped(flat, GetCurrentTransform(), *device);
            PopTransform();
        }
    }
    m_clipPaths.Push(ClipPath(device, winding == WindingOrderMode::EvenOdd));
}

void PixelRenderTarget::PopClipPath()
{
    m_clipPaths.Pop();
}

void PixelRenderTarget::PushClipPathGroup()
{
    m_clipPaths.BeginGroup();
}

void PixelRenderTarget::PopClipPathGroup()
{
    m_clipPaths.EndGroup();
}

bool PixelRenderTarget::HasClipPaths() const
{
    return !m_clipPaths.IsEmpty();
}

// ---- device clips ----

void PixelRenderTarget::PushDeviceClip(const RectT<int>& rect, bool withClipPath)
{
    m_deviceClips.push_back({GetDeviceClip(), withClipPath});
    SetDeviceClip(rect);
}

void PixelRenderTarget::PushAbsoluteDeviceClip(const RectT<int>& rect)
{
    NarrowDeviceClip(rect, false);
}

void PixelRenderTarget::NarrowDeviceClip(const RectT<int>& rect, bool withClipPath)
{
    PushDeviceClip(GetDeviceClip().IsUnset() ? rect : CommonPart(GetDeviceClip(), rect),
                   withClipPath);
}

RectT<int> PixelRenderTarget::GetVisibleRect() const
{
    const RectT<int> destination = m_rasterizer.GetDestinationRect();
    return GetDeviceClip().IsUnset() ? destination : CommonPart(GetDeviceClip(), destination);
}

void PixelRenderTarget::PushLogicalDeviceClip(RectT<double> rect)
{
    if (rect.IsUnset()) { // it bounds nothing
        PushDeviceClip(GetDeviceClip(), false);
        return;
    }
    const Transform current = GetCurrentTransform();
    const RectT<double> device = AffineTransform::MapRect(current, rect);
    const RectT<int> grown = GrowToPixels(device);
    const bool upright =
        (current.m01 == 0.0 && current.m10 == 0.0) || (current.m00 == 0.0 && current.m11 == 0.0);
    const bool exact = upright && IsOnWholePixels(device);
    MakeRoomForOne(m_deviceClips);
    if (!exact)
        PushClip(PolyPolygon(rect), current, WindingOrderMode::NonZero);
    NarrowDeviceClip(exact ? RoundToPixels(device) : grown, !exact);
}

void PixelRenderTarget::PopDeviceClip()
{
    if (m_deviceClips.size() == (m_groups.empty() ? 0 : m_groups.back().deviceClips + 1))
        return;
    const DeviceClip replaced = m_deviceClips.back();
    m_deviceClips.pop_back();
    SetDeviceClip(replaced.rect);
    if (replaced.withClipPath)
        m_clipPaths.Pop();
}

// ---- colour transforms ----

void PixelRenderTarget::PushColourTransform(Counted<ColourTransform> transform)
{
    m_colourTransforms.push_back(transform);
}

void PixelRenderTarget::PopColourTransform()
{
    if (!m_colourTransforms.empty())
        m_colourTransforms.pop_back();
}

void PixelRenderTarget::SetColourTransforms(const ColourTransforms& transforms)
{
    m_colourTransforms = transforms;
}

RenderTarget::ColourTransforms PixelRenderTarget::GetColourTransforms() const
{
    return m_colourTransforms;
}

// ---- buffers ----

bool PixelRenderTarget::CreateBuffer(unsigned width, unsigned height)
{
    const Counted<Raster::DynamicBuffer> buffer =
        Raster::DynamicBuffer::Create(GetColourFormat(), width, height);
    return buffer && AttachBuffer(buffer, {0, 0, int(width), int(height)});
}

bool PixelRenderTarget::AttachBuffer(Counted<Raster::DynamicBuffer> buffer, RectT<int> rect)
{
    if (!buffer || buffer->GetFormat() != GetColourFormat() || rect.right < rect.left ||
        rect.bottom < rect.top)
        return false;
    const RectT<int> whole{0, 0, int(buffer->GetWidth()), int(buffer->GetHeight())};
    const bool inPlace = whole.Contains(rect);
    if (!inPlace && (std::int64_t{rect.right} - rect.left > whole.right ||
                     std::int64_t{rect.bottom} - rect.top > whole.bottom))
        return false;
    DetachBuffer();
    m_buffer = std::move(buffer);
    m_bufferRect = rect;
    m_bufferOrigin = inPlace ? Kernel::PointT<int>{} : Kernel::PointT<int>{rect.left, rect.top};
    ShowBuffer(m_buffer, m_bufferOrigin);
    SetDeviceClip(rect);
    return true;
}

void PixelRenderTarget::ShowBuffer(const Counted<Raster::DynamicBuffer>& buffer,
                                   Kernel::PointT<int> origin)
{
    m_current = buffer;
    m_currentOrigin = origin;
    if (buffer)
        m_rasterizer.Create(buffer->GetData(), buffer->GetWidth(), buffer->GetHeight(),
                            int(buffer->GetStride()), m_pixelSize, origin);
    else
        m_rasterizer.Create(nullptr, 0, 0, 0, m_pixelSize);
}

void PixelRenderTarget::DetachBuffer()
{
    m_groups.clear();
    m_clipPaths.Clear();
    m_deviceClips.clear();
    m_buffer.Reset();
    m_spareBuffers.Clear();
    m_bufferRect = {};
    m_bufferOrigin = {};
    m_touched = {};
    ShowBuffer({}, {});
    SetDeviceClip({});
}

Counted<Raster::DynamicBuffer> PixelRenderTarget::GetBuffer() const
{
    return m_buffer;
}

Counted<Raster::DynamicBuffer> PixelRenderTarget::GetCurrentBuffer() const
{
    // The caller may write anywhere.
    Touch(m_rasterizer.GetDestinationRect());
    return m_current;
}

Counted<Raster::DynamicBuffer> PixelRenderTarget::GetCurrentMaskBuffer() const
{
    return {};
}

BufferState PixelRenderTarget::GetBufferState() const
{
    return {m_buffer, m_bufferRect, GetDeviceClip()};
}

bool PixelRenderTarget::SetBufferState(BufferState state)
{
    if (!state.buffer) {
        DetachBuffer();
        return true;
    }
    if (!AttachBuffer(state.buffer, state.rect))
        return false;
    if (!state.deviceClip.IsUnset())
        SetDeviceClip(CommonPart(state.deviceClip, state.rect));
    return true;
}

void PixelRenderTarget::Clear()
{
    if (!m_current || IsAborting())
        return;
    const RectT<int> part = GetVisibleRect();
    if (part.IsEmpty())
        return;
    m_current->SyncHostCache();
    Kernel::ForEachTile(part, [&](const RectT<int>& tile) {
        for (int y = tile.top; y < tile.bottom && !IsAborting(); ++y)
            std::memset(m_rasterizer.GetRow(y) +
                            std::size_t(tile.left - m_currentOrigin.x) * m_pixelSize,
                        0, std::size_t(tile.Width()) * m_pixelSize);
    });
    m_current->InvalidateHardwareCache(part);
}

void PixelRenderTarget::SetGamma(double gamma)
{
    m_gamma = gamma;
    m_rasterizer.SetGamma(gamma);
}

} // namespace Renderer
