// Clips and colour transforms of PixelRenderTarget.

#include <algorithm>
#include <cmath>

#include <renderer/core/DevicePixels.h>
#include <renderer/core/MakeRoom.h>
#include <renderer/core/PixelRenderTarget.h>

namespace Renderer {

using Geometry::WindingOrderMode;
using Kernel::Counted;
using Kernel::MakeCounted;
using Kernel::RectT;
using Raster::AffineTransform;

PixelRenderTarget::PixelRenderTarget(Raster::Format format, const SpanBlendSet& blends,
                                     const SpanBlendSet& alphaBlends,
                                     Raster::ICCManager::ICCProfileSet profiles)
    : m_pixelSize(unsigned(Raster::GetPixelSize(format))),
      m_blends(blends),
      m_alphaBlends(alphaBlends)
{
    RenderTarget::SetColourFormatAndProfiles(format, std::move(profiles));
}

PixelRenderTarget::~PixelRenderTarget()
{
    // Somebody may keep the destination.
    try {
        SettleAllColours();
    } catch (...) {
        // A host's cache that cannot be read has nobody to tell.
    }
}

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

namespace {

/// Puts a transform in front of a target's for a while.
class OwnFrame
{
public:
    OwnFrame(RenderTarget& target, const AffineTransform::Params& transform) : m_target(target)
    {
        target.PushTransform(transform, RenderTarget::TransformScalarMode::Inherit);
    }
    OwnFrame(const OwnFrame&) = delete;
    OwnFrame& operator=(const OwnFrame&) = delete;
    ~OwnFrame() { m_target.PopTransform(); }

private:
    RenderTarget& m_target;
};

} // namespace

void PixelRenderTarget::PushClipPolyCurvesPath(Counted<const ConstPolyPolyCurve> curves,
                                               WindingOrderMode winding)
{
    auto device = MakeCounted<PolyPolygon>();
    if (curves) {
        for (const auto& entry : curves->GetEntries()) {
            if (!entry.curve)
                continue;
            // The tolerance is that of the curve's own frame.
            const OwnFrame frame(*this, entry.transform);
            m_polygons.Clear();
            entry.curve->ExpandAdaptive(GetFlatteningTolerance(), m_polygons);
            AppendMapped(m_polygons, GetCurrentTransform(), *device);
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

void PixelRenderTarget::SetGamma(double gamma)
{
    m_gamma = gamma;
    m_rasterizer.SetGamma(gamma);
}

} // namespace Renderer
