#include "CountingTarget.h"

#include <cmath>
#include <cstdio>
#include <iterator>

namespace Command {

using Raster::AffineTransform;

namespace {

/// The rasteriser rounds corners to these parts of a pixel.
constexpr double SubPixels = 256.0;

constexpr const char* KindNames[] = {
    "paths",  "filled paths", "stroked paths", "polygon sets", "bitmaps",
    "floods", "groups",       "clip paths",    "clip groups",  "masks",
};

Kernel::RectT<double> GetDeviceBox(const Renderer::PolyPolygon& polygons,
                                   const AffineTransform::Params& transform)
{
    Geometry::BoundingBoxT<double> box;
    for (const Geometry::Point point : polygons.GetPoints()) {
        const Geometry::Point device = transform.Map(point);
        box.Add({std::round(device.x * SubPixels) / SubPixels,
                 std::round(device.y * SubPixels) / SubPixels});
    }
    return box.GetRect();
}

} // namespace

CountingTarget::CountingTarget(unsigned width, unsigned height)
    : m_page{0.0, 0.0, double(width), double(height)}
{
    static_assert(std::size(KindNames) == KindCount);
    // Also what keeps pictures that are drawn beside the target to the size of the page.
    SetDeviceClip({0, 0, int(width), int(height)});
}

std::string CountingTarget::Report() const
{
    char line[160];
    std::snprintf(line, sizeof(line), "page: %.0f x %.0f pixels\n", m_page.right, m_page.bottom);
    std::string report = line;
    if (m_touched.IsValid()) {
        const Rect& box = m_touched.GetRect();
        std::snprintf(line, sizeof(line), "touched: x %.0f to %.0f, y %.0f to %.0f\n",
                      std::floor(box.left), std::ceil(box.right), std::floor(box.top),
                      std::ceil(box.bottom));
        report += line;
    } else {
        report += "touched: nothing\n";
    }
    for (std::size_t kind = 0; kind < KindCount; ++kind) {
        if (m_counts[kind] == 0)
            continue;
        std::snprintf(line, sizeof(line), "%s: %llu\n", KindNames[kind], m_counts[kind]);
        report += line;
    }
    return report;
}

void CountingTarget::Touch(const Rect& device)
{
    const Rect visible = device.Intersect(GetClipBox());
    if (visible.IsEmpty())
        return;
    m_touched.Add({visible.left, visible.top});
    m_touched.Add({visible.right, visible.bottom});
}

CountingTarget::Rect CountingTarget::GetPathBox(const Geometry::PolyCurveDbl& path,
                                                const Params& transform) const
{
    const double stretch = AffineTransform::GetLargestSingularValue(transform);
    Renderer::PolyPolygon polygons;
    path.ExpandAdaptive(GetDeviceExpansionTolerance() / (stretch > 0.0 ? stretch : 1.0), polygons);
    return GetDeviceBox(polygons, transform);
}

CountingTarget::Rect CountingTarget::InflateByStroke(const Rect& device,
                                                     const Line& lineStyle) const
{
    return lineStyle.InflateSpreadRect(device, GetCurrentTransform(), GetScalarTransform(),
                                       GetLogToDevTransform());
}

// ---- drawing ----

void CountingTarget::DrawPolyCurve(Path curve, float opacity, Mode, const Options&,
                                   const Fill& fill, const Fill&, const Fill& lineFill,
                                   const Line& lineStyle, Winding, bool, bool)
{
    Count(Paths);
    if (!curve || curve->IsEmpty() || !(opacity > 0.0F))
        return;
    const Rect box = GetPathBox(*curve, GetCurrentTransform());
    if (!fill.IsFillNone()) {
        Count(Fills);
        Touch(box);
    }
    if (lineStyle.IsLineStyleVisible(lineFill)) {
        Count(Strokes);
        Touch(InflateByStroke(box, lineStyle));
    }
}

void CountingTarget::DrawPolyPolygon(Polygons polygons, float opacity, Mode, const Options&,
                                     const Fill& fill, const Fill&, Winding, bool, bool)
{
    Count(Polygonal);
    if (polygons && opacity > 0.0F && !fill.IsFillNone())
        Touch(GetDeviceBox(*polygons, GetCurrentTransform()));
}

void CountingTarget::DrawPolyPolyline(Polygons polylines, float opacity, Mode, const Options&,
                                      const Fill& fill, const Fill&, const Line& lineStyle)
{
    Count(Polygonal);
    if (polylines && opacity > 0.0F && lineStyle.IsLineStyleVisible(fill))
        Touch(InflateByStroke(GetDeviceBox(*polylines, GetCurrentTransform()), lineStyle));
}

void CountingTarget::DrawBitmap(const Rect& dest, Kernel::Counted<const Raster::DynamicBitmap>,
                                float opacity, Mode, const Options&, bool)
{
    Count(Bitmaps);
    if (opacity > 0.0F)
        Touch(AffineTransform::MapRect(GetCurrentTransform(), dest));
}

void CountingTarget::DrawBuffer(const Rect& dest, Kernel::Counted<const Raster::DynamicBuffer>,
                                float opacity, Mode, const Options&, bool)
{
    Count(Bitmaps);
    if (opacity > 0.0F)
        Touch(AffineTransform::MapRect(GetCurrentTransform(), dest));
}

void CountingTarget::Blend(float opacity, Mode, const Options&, const Fill& fill, const Fill&)
{
    Count(Floods);
    if (opacity > 0.0F && !fill.IsFillNone())
        Touch(m_page);
}

void CountingTarget::PushComposite(CompositeInit, Mode, const Options&, float)
{
    Count(Groups);
}

// ---- clips ----

CountingTarget::Rect CountingTarget::GetClipBox() const
{
    const std::size_t count = m_clipGroups.empty() ? m_clipBoxes.size() : m_clipGroups.back();
    return count == 0 ? m_page : m_clipBoxes[count - 1];
}

void CountingTarget::PushClipBox(const Rect& device)
{
    m_clipBoxes.push_back(device.Intersect(GetClipBox()));
}

void CountingTarget::PopClipBox()
{
    if (!m_clipBoxes.empty())
        m_clipBoxes.pop_back();
}

void CountingTarget::PushClippingMask(const Rect& bounds,
                                      Kernel::Counted<const Raster::DynamicBuffer>)
{
    Count(Masks);
    PushClipBox(AffineTransform::MapRect(GetCurrentTransform(), bounds));
}

void CountingTarget::PopClippingMask()
{
    PopClipBox();
}

void CountingTarget::PushClipPath(Polygons polygons, Winding winding)
{
    Count(ClipPaths);
    PushClipBox(polygons ? GetDeviceBox(*polygons, GetCurrentTransform()) : Rect{});
    NullRenderTarget::PushClipPath(std::move(polygons), winding);
}

void CountingTarget::PushClipCurvesPath(Path curve, Winding winding)
{
    Count(ClipPaths);
    PushClipBox(curve ? GetPathBox(*curve, GetCurrentTransform()) : Rect{});
    NullRenderTarget::PushClipCurvesPath(std::move(curve), winding);
}

void CountingTarget::PushClipPolyCurvesPath(
    Kernel::Counted<const Renderer::ConstPolyPolyCurve> curves, Winding winding)
{
    Count(ClipPaths);
    Geometry::BoundingBoxT<double> box;
    if (curves) {
        for (const auto& entry : curves->GetEntries()) {
            if (!entry.curve || entry.curve->IsEmpty())
                continue;
            const Rect part = GetPathBox(
                *entry.curve, AffineTransform::Concatenate(entry.transform, GetCurrentTransform()));
            box.Add({part.left, part.top});
            box.Add({part.right, part.bottom});
        }
    }
    PushClipBox(box.GetRect());
    NullRenderTarget::PushClipPolyCurvesPath(std::move(curves), winding);
}

bool CountingTarget::HasClipPaths() const
{
    return !m_clipBoxes.empty();
}

void CountingTarget::PopClipPath()
{
    PopClipBox();
    NullRenderTarget::PopClipPath();
}

void CountingTarget::PushClipPathGroup()
{
    Count(ClipGroups);
    m_clipGroups.push_back(m_clipBoxes.size());
}

void CountingTarget::PopClipPathGroup()
{
    if (m_clipGroups.empty())
        return;
    Rect all = Geometry::BoundingBoxT<double>().GetRect();
    for (std::size_t i = m_clipGroups.back(); i < m_clipBoxes.size(); ++i)
        all = all.Union(m_clipBoxes[i]);
    m_clipBoxes.resize(m_clipGroups.back());
    m_clipGroups.pop_back();
    PushClipBox(all);
}

} // namespace Command
