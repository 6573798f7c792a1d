// Strokes of raster brushes.
//
// The pieces of a stroke (stamps, or slices of a bent tip) are painted into a buffer of the size of
// what can be seen of it, by the exact areas of their polygons; the buffer is then the paint, or
// what lets the line's fill through, of the pixels that it touches. What a pixel gets depends on
// the path alone, so that tiles of a page agree with the page. Large strokes are painted in strips.

#include <algorithm>

#include <kernel/Tiles.h>
#include <renderer/core/DevicePixels.h>
#include <renderer/core/PixelRenderTarget.h>
#include <renderer/core/texture/BrushPen.h>
#include <renderer/core/texture/TextureCanvas.h>

namespace Renderer {

using Kernel::Counted;
using Kernel::RectT;
using Raster::AffineTransform;
using Texture::BrushPen;

namespace {

/// Bytes of the buffer of a strip, more or less.
constexpr std::int64_t StripBytes = std::int64_t{64} << 20;

/// The runs of a path, mapped by \p map.
template<class Map>
std::vector<Texture::BrushPath> MakeRuns(const Geometry::PolyCurveDbl& path,
                                         const Geometry::StrokeParameters& pen, const Map& map)
{
    std::vector<Texture::BrushPath> runs;
    for (Geometry::CurveDbl curve : path.GetCurves()) {
        curve.Transform(map);
        Texture::BrushPath run;
        if (run.SetRun(curve, pen.tolerance, 0.5 * pen.width))
            runs.push_back(std::move(run));
    }
    return runs;
}

/// The same of polylines, which are open.
template<class Map>
std::vector<Texture::BrushPath> MakeRuns(const PolyPolygon& polylines,
                                         const Geometry::StrokeParameters&, const Map& map)
{
    std::vector<Texture::BrushPath> runs;
    std::vector<Geometry::Point> points;
    for (std::size_t i = 0; i < polylines.GetPolygonCount(); ++i) {
        const auto line = polylines.GetPolygon(i).points;
        points.resize(line.size());
        std::ranges::transform(line, points.begin(), map);
        Texture::BrushPath run;
        if (run.SetRun(points, false))
            runs.push_back(std::move(run));
    }
    return runs;
}

double GetTotalLength(const std::vector<Texture::BrushPath>& runs)
{
    double total = 0.0;
    for (const auto& run : runs)
        total += run.GetLength();
    return total;
}

/// The format that a brush's texture is read in.
Raster::Format GetTextureFormat(const Raster::BrushSettings& settings, Raster::Format target)
{
    switch (settings.tipUse) {
    case Raster::BrushSettings::TipUse::Alpha:
        return Raster::Format::M16;
    case Raster::BrushSettings::TipUse::Intensity:
        return Raster::Format::IA16;
    case Raster::BrushSettings::TipUse::OwnColours:
        break;
    }
    return target;
}

} // namespace

template<class Path>
void PixelRenderTarget::DrawBrushStroke(const Path& path, const StrokeFrame& frame,
                                        const Composition& composition,
                                        const FillDescriptorConst& lineFill,
                                        const FillDescriptorConst& transparency,
                                        const LineStyleDescriptorConst& lineStyle,
                                        const PathRule& rule)
{
    const auto box = path.GetBoundingBox();
    const RectT<int> visible = GetUnmaskedRect();
    if (!box.IsValid() || visible.IsEmpty())
        return;
    const RectT<double> reach = AffineTransform::MapRect(
        frame.current, lineStyle.InflateBaseRect(box.GetRect(), frame.current, GetScalarTransform(),
                                                 GetLogToDevTransform()));
    const RectT<int> area = GrowToPixels(reach).Intersect(visible);
    const Geometry::StrokeParameters ends = LineStyleStrokeHelper::ResolveEnds(lineStyle, frame);
    if (area.IsEmpty() || !(ends.width > 0.0))
        return;
    const LineStyle& style = *lineStyle.GetLineStyle();
    const Transform toDevice = LineStyleStrokeHelper::GetShapeTransform(lineStyle, frame);
    const Transform toRuns = style.GetResIndependent() ? frame.current : Transform{};
    const auto runs = MakeRuns(path, ends, [&](Geometry::Point p) { return toRuns.Map(p); });
    const Texture::BrushLine line{*style.GetBrush(),
                                  ends.width,
                                  ends.join,
                                  ends.mitreLimit,
                                  m_strokeHelper.PostProcessForPressure(lineStyle),
                                  toDevice,
                                  area,
                                  GetAbortingPointer()};
    Texture::TexturedPolygons stroke;
    BrushPen pen(line, GetTotalLength(runs), stroke.polygons);
    for (const auto& run : runs)
        pen.Draw(run);
    if (PrepareTextures(*style.GetBrush(), stroke))
        PaintBrushStroke(stroke, area, composition,
                         style.HasImplicitFill() ? FillDescriptorConst() : lineFill, transparency,
                         rule);
}

template void PixelRenderTarget::DrawBrushStroke(const Geometry::PolyCurveDbl&, const StrokeFrame&,
                                                 const Composition&, const FillDescriptorConst&,
                                                 const FillDescriptorConst&,
                                                 const LineStyleDescriptorConst&, const PathRule&);
template void PixelRenderTarget::DrawBrushStroke(const PolyPolygon&, const StrokeFrame&,
                                                 const Composition&, const FillDescriptorConst&,
                                                 const FillDescriptorConst&,
                                                 const LineStyleDescriptorConst&, const PathRule&);

bool PixelRenderTarget::PrepareTextures(const Raster::RasterBrush& brush,
                                        Texture::TexturedPolygons& stroke)
{
    const Raster::BrushSettings& settings = brush.GetSettings();
    stroke.isIntensity = settings.tipUse == Raster::BrushSettings::TipUse::Intensity;
    stroke.areJoined = settings.mode != Raster::BrushSettings::Mode::Stamped;
    stroke.wraps = settings.mode == Raster::BrushSettings::Mode::Repeated;
    stroke.overlap = settings.overlap;
    const auto& tip = brush.GetTip();
    const Raster::Format format = GetTextureFormat(settings, GetColourFormat());
    std::vector<std::uint32_t> levels; // whose textures are there
    for (Texture::TexturedPolygon& piece : stroke.polygons) {
        const std::uint32_t level = piece.level;
        const auto known = std::ranges::find(levels, level);
        piece.level = static_cast<std::uint32_t>(known - levels.begin());
        if (known != levels.end())
            continue;
        levels.push_back(level);
        const Transform toUnit =
            AffineTransform::Scaling(1.0 / BrushPen::GetSide(tip->GetWidth(), level & 0xff),
                                     1.0 / BrushPen::GetSide(tip->GetHeight(), level >> 8));
        stroke.textures.push_back(m_bitmaps.GetReduced(tip, format, GetProfiles(), false, toUnit));
        if (!stroke.textures.back() || stroke.textures.back()->GetFormat() != format)
            return false;
    }
    return !stroke.polygons.empty();
}

void PixelRenderTarget::PaintBrushStroke(const Texture::TexturedPolygons& stroke,
                                         const RectT<int>& area, const Composition& composition,
                                         const FillDescriptorConst& lineFill,
                                         const FillDescriptorConst& transparency,
                                         const PathRule& rule)
{
    const std::int64_t rowBytes = std::int64_t{area.Width()} * m_pixelSize;
    const int rows =
        std::max<int>(Kernel::TileGrid::Side,
                      int(StripBytes / rowBytes) / Kernel::TileGrid::Side * Kernel::TileGrid::Side);
    for (int top = area.top; top < area.bottom && !IsAborting();) {
        const int bottom =
            area.bottom - top > rows ? (top + rows) & -Kernel::TileGrid::Side : area.bottom;
        const RectT<int> strip{area.left, top, area.right, bottom};
        Counted<Raster::DynamicBuffer> texture;
        m_polygons.Clear();
        if (CreateTextureLineStyleSpanPopAndPolyPolygon(stroke, strip, texture, m_polygons)) {
            DrawTexture(texture, {strip.left, strip.top}, m_polygons, composition, lineFill,
                        transparency, rule);
            m_spareBuffers.Give(std::move(texture), {0, 0, strip.Width(), strip.Height()});
        }
        top = bottom;
    }
}

bool PixelRenderTarget::CreateTextureLineStyleSpanPopAndPolyPolygon(
    const Texture::TexturedPolygons& stroke, const RectT<int>& strip,
    Counted<Raster::DynamicBuffer>& texture, PolyPolygon& polygons)
{
    texture =
        m_spareBuffers.Take(GetColourFormat(), unsigned(strip.Width()), unsigned(strip.Height()));
    if (!texture)
        return false;
    Texture::TouchedBlocks touched(strip);
    Texture::PaintTexturedPolygons(stroke, strip, *texture, GetAbortingPointer(), touched);
    touched.ForEachRect([&](const RectT<int>& block) {
        polygons.AddRect(
            {double(block.left), double(block.top), double(block.right), double(block.bottom)});
    });
    return true;
}

} // namespace Renderer
