#include "Patterns.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <raster/Resample.h>
#include <renderer/paint/FillBitmap.h>

#include "Scopes.h"

namespace Svg {

using Kernel::Counted;
using Kernel::RectT;
using Raster::AffineTransform;
using Raster::DynamicBitmap;
using Raster::DynamicBuffer;
using Renderer::FillDescriptorConst;

namespace {

/// Samples per device pixel and axis.
constexpr int Oversampling = 4;
/// A tile has no more pixels than this; those inside other tiles have fewer.
constexpr double MaxTilePixels = 1 << 24;
/// Tiles that are drawn one by one, when a bitmap for one would be too large.
constexpr double MaxTilesInPlace = 64.0;
/// Slivers of neighbours thinner than this part of a tile don't show.
constexpr double SliverPart = 1e-4;
/// How far a tile may be off the grid of pixels, added up over all tiles.
constexpr double GridTolerance = 1e-2;
/// Devices of more pixels than this are not covered as a whole.
constexpr double MaxCoverPixels = 1 << 24;
/// Samples that are averaged at a time.
constexpr int BandSamples = 1 << 18;

bool IsWhole(double value, double tolerance)
{
    return std::abs(value - std::round(value)) <= tolerance;
}

RectT<double> ToDouble(const RectT<int>& r)
{
    return {double(r.left), double(r.top), double(r.right), double(r.bottom)};
}

RectT<double> FindPaintedArea(const Geometry::PolyCurveDbl& shape, double reach)
{
    const auto bounds = shape.GetBoundingBox();
    if (!bounds.IsValid())
        return {};
    const RectT<double> r = bounds.GetRect();
    return {r.left - reach, r.top - reach, r.right + reach, r.bottom + reach};
}

/// Paints a band of the device, in samples, with tiles.
/// \param frame the unit square on one tile, in device pixels.
void PaintBand(Renderer::BitmapRenderTarget& band, const Counted<const DynamicBitmap>& tile,
               const Transform& frame)
{
    band.SetLogToDevTransform(AffineTransform::Scaling(Oversampling, Oversampling));
    // Nearest both ways: averaging the samples is all the smoothing there is to be.
    band.SetDownResamplerType(Raster::ResamplerType::NearestNeighbour);
    band.Blend(1.0F, Renderer::FillBlendMode::Normal, Renderer::BlendOptions::Identity(),
               {Renderer::FillBitmap::Create(tile, Raster::ExtendType::Wrap,
                                             Raster::ResamplerType::NearestNeighbour),
                frame},
               {});
}

} // namespace

std::optional<FillDescriptorConst> Patterns::MakeFill(const Element& pattern, double opacity,
                                                      const Geometry::PolyCurveDbl& shape,
                                                      double reach, const LengthContext& lengths)
{
    const PatternSource source(pattern, m_context.GetDocument(), m_context.GetNotices());
    RectT<double> box{};
    if (source.UsesBoundingBox()) {
        const auto bounds = shape.GetBoundingBox();
        if (!bounds.IsValid() || bounds.GetRect().IsEmpty())
            return std::nullopt;
        box = bounds.GetRect();
    }
    LengthContext units = lengths;
    units.fontSize = m_context.GetStyles().ResolveInPlace(pattern).fontSize;
    const auto tile = source.Place(box, units);
    if (!tile)
        return FillDescriptorConst();
    if (m_context.IsActive(*tile->owner)) {
        m_context.GetNotices().Add("a pattern that is painted with itself is left out");
        return FillDescriptorConst();
    }
    if (m_context.GetOffscreenDepth() >= Offscreen::MaxDepth) {
        m_context.GetNotices().Add(
            "patterns and masks are nested too deep; the inner are left out");
        return FillDescriptorConst();
    }
    const auto job = MakeJob(*tile, FindPaintedArea(shape, reach), opacity);
    if (!job)
        return FillDescriptorConst();
    const ActiveReference active(m_context.GetActive(), *tile->owner);
    const CountedDepth depth(m_context.GetOffscreenDepth(), Offscreen::MaxDepth);
    return Paint(*job);
}

Patterns::Range Patterns::FindRange(const Job& job, const Transform& deviceToPattern,
                                    const RectT<double>& area)
{
    Transform userToPattern;
    if (!AffineTransform::Invert(job.tile.toUser, userToPattern))
        return {};
    const RectT<double> needed =
        AffineTransform::MapRect(userToPattern, area)
            .Intersect(AffineTransform::MapRect(deviceToPattern, ToDouble(job.pixels)));
    const RectT<double>& tile = job.tile.rect;
    return {std::floor((needed.left - tile.left) / tile.Width() + SliverPart),
            std::floor((needed.top - tile.top) / tile.Height() + SliverPart),
            std::ceil((needed.right - tile.left) / tile.Width() - SliverPart),
            std::ceil((needed.bottom - tile.top) / tile.Height() - SliverPart)};
}

std::optional<Patterns::Job> Patterns::MakeJob(const PatternTile& tile, const RectT<double>& area,
                                               double opacity)
{
    Job job;
    job.tile = tile;
    job.opacity = opacity;
    job.toDevice = AffineTransform::Concatenate(tile.toUser, m_target.GetCurrentTransform());
    job.pixels = Offscreen::FindPixels(m_target, area);
    Transform deviceToPattern;
    if (job.pixels.IsEmpty() || !AffineTransform::Invert(job.toDevice, deviceToPattern))
        return std::nullopt;
    const auto length = [](Kernel::PointT<double> v) { return std::hypot(v.x, v.y); };
    job.extentX = length(job.toDevice.MapVector({tile.rect.Width(), 0.0}));
    job.extentY = length(job.toDevice.MapVector({0.0, tile.rect.Height()}));
    job.range = FindRange(job, deviceToPattern, area);
    const bool usable = job.range.GetCount() > 0.0 && std::isfinite(job.range.GetCount()) &&
                        std::isfinite(job.extentX) && std::isfinite(job.extentY);
    return usable ? std::optional(job) : std::nullopt;
}

bool Patterns::LiesOnWholePixels(const Job& job)
{
    const Transform& t = job.toDevice;
    const Range& range = job.range;
    const double reach = std::max({std::abs(range.left), std::abs(range.top), std::abs(range.right),
                                   std::abs(range.bottom), 1.0});
    const double tolerance = GridTolerance / reach;
    const RectT<double>& tile = job.tile.rect;
    const auto origin = t.Map({tile.left, tile.top});
    return t.m00 > 0.0 && t.m11 > 0.0 && job.extentX >= 0.5 && job.extentY >= 0.5 &&
           std::abs(t.m01 * tile.Height()) <= tolerance &&
           std::abs(t.m10 * tile.Width()) <= tolerance && IsWhole(job.extentX, tolerance) &&
           IsWhole(job.extentY, tolerance) && IsWhole(origin.x, GridTolerance) &&
           IsWhole(origin.y, GridTolerance);
}

FillDescriptorConst Patterns::Paint(const Job& job)
{
    if (job.range.GetCount() <= 1.0)
        return DrawInPlace(job);
    const double maxPixels = std::ldexp(MaxTilePixels, 1 - m_context.GetOffscreenDepth());
    const double area = std::max(job.extentX, 1.0) * std::max(job.extentY, 1.0);
    if (area <= maxPixels && LiesOnWholePixels(job)) {
        const auto tile = FindTile(job, MakeKey(job, 1.0, 1.0));
        if (!tile)
            return {};
        return {Renderer::FillBitmap::Create(tile, Raster::ExtendType::Wrap,
                                             Raster::ResamplerType::NearestNeighbour),
                AffineTransform::Concatenate(AffineTransform::FromRect(job.tile.rect),
                                             job.tile.toUser)};
    }
    const double needed = area * Oversampling * Oversampling;
    if (needed <= maxPixels)
        return DrawSampled(job, Oversampling);
    if (job.range.GetCount() <= MaxTilesInPlace)
        return DrawInPlace(job);
    return DrawSampled(job, Oversampling * std::sqrt(maxPixels / needed));
}

/// The pixels that a pattern paints.
/// \param samples per pixel.
Counted<Renderer::BitmapRenderTarget> Patterns::MakeLayer(const Job& job, double samples)
{
    const double pixels = double(job.pixels.Width()) * job.pixels.Height();
    if (!m_context.SpendPixels(pixels * samples))
        return {};
    auto layer = Offscreen::MakeTarget(m_target, job.pixels);
    if (!layer)
        m_context.GetNotices().Add("a pattern is too large to be drawn");
    return layer;
}

FillDescriptorConst Patterns::DrawInPlace(const Job& job)
{
    const auto layer = MakeLayer(job, 1.0);
    if (!layer)
        return {};
    layer->SetLogToDevTransform(job.toDevice);
    const RectT<double>& rect = job.tile.rect;
    {
        const GroupScope group(*layer, {job.opacity});
        for (double row = job.range.top; row < job.range.bottom; ++row) {
            for (double column = job.range.left; column < job.range.right; ++column) {
                const TransformScope place(*layer, AffineTransform::Translation(
                                                       column * rect.Width(), row * rect.Height()));
                // A tile that is alone reaches beyond all that is painted.
                const int clips = job.range.GetCount() > 1.0 ? 1 : 0;
                if (clips > 0)
                    layer->PushClipRectanglePath(rect);
                const ClipScope clip(*layer, clips);
                const TransformScope content(*layer, job.tile.content);
                m_draw(*layer, *job.tile.owner, job.tile.lengths);
            }
        }
    }
    return Offscreen::MakeFill(
        m_target, job.pixels,
        Kernel::MakeCounted<DynamicBitmap>(layer->GetBuffer(), layer->GetProfile()));
}

TileKey Patterns::MakeKey(const Job& job, double scaleX, double scaleY) const
{
    TileKey key;
    key.owner = job.tile.owner;
    key.width = unsigned(std::max(1.0, std::round(job.extentX * scaleX)));
    key.height = unsigned(std::max(1.0, std::round(job.extentY * scaleY)));
    const RectT<double>& rect = job.tile.rect;
    key.content = AffineTransform::Concatenate(
        AffineTransform::Concatenate(job.tile.content,
                                     AffineTransform::Translation(-rect.left, -rect.top)),
        AffineTransform::Scaling(key.width / rect.Width(), key.height / rect.Height()));
    key.lengths = job.tile.lengths;
    key.opacity = job.opacity;
    key.format = m_target.GetColourFormat();
    key.profiles = m_target.GetProfiles();
    return key;
}

Counted<const DynamicBitmap> Patterns::FindTile(const Job& job, const TileKey& key)
{
    auto& tiles = m_context.GetTiles().tiles;
    if (auto known = tiles.Find(key))
        return known;
    if (!m_context.SpendPixels(double(key.width) * key.height))
        return {};
    const auto target = Offscreen::MakeTarget(m_target, {0, 0, int(key.width), int(key.height)});
    if (!target)
        return {};
    target->SetLogToDevTransform(key.content);
    {
        const GroupScope group(*target, {job.opacity});
        m_draw(*target, *job.tile.owner, job.tile.lengths);
    }
    const auto tile = Kernel::MakeCounted<DynamicBitmap>(target->GetBuffer(), target->GetProfile());
    tiles.Keep(key, tile);
    return tile;
}

/// Whether all shapes with a pattern have taken as many pixels as the whole device has.
bool Patterns::IsCoverWorthwhile(const Job& job, const CoverKey& key)
{
    const double whole = double(key.pixels.Width()) * key.pixels.Height();
    if (key.pixels.IsUnset() || whole > MaxCoverPixels)
        return false;
    TileCache& cache = m_context.GetTiles();
    if (cache.wanted != key) {
        cache.wanted = key;
        cache.wantedPixels = 0.0;
    }
    cache.wantedPixels += double(job.pixels.Width()) * job.pixels.Height();
    return cache.wantedPixels > whole;
}

FillDescriptorConst Patterns::DrawSampled(const Job& job, double scale)
{
    // Long thin tiles: what one axis lacks in pixels the other may not take.
    const double widest = MaxTilePixels / 4.0;
    const TileKey key =
        MakeKey(job, std::min(scale, widest / job.extentX), std::min(scale, widest / job.extentY));
    const CoverKey cover{key, job.toDevice, m_target.GetDeviceClip()};
    auto& covers = m_context.GetTiles().covers;
    if (const auto known = covers.Find(cover))
        return Offscreen::MakeFill(m_target, cover.pixels, known);
    Job wide = job;
    const bool coversAll = IsCoverWorthwhile(job, cover);
    if (coversAll)
        wide.pixels = cover.pixels;
    const auto bitmap = Cover(wide, key);
    if (!bitmap)
        return {};
    if (coversAll)
        covers.Keep(cover, bitmap);
    return Offscreen::MakeFill(m_target, wide.pixels, bitmap);
}

/// Covers the pixels of a job with its tiles.
Counted<const DynamicBitmap> Patterns::Cover(const Job& job, const TileKey& key)
{
    const RectT<int>& r = job.pixels;
    const auto tile = FindTile(job, key);
    const auto layer = MakeLayer(job, Oversampling * Oversampling);
    if (!tile || !layer)
        return {};
    const Transform frame =
        AffineTransform::Concatenate(AffineTransform::FromRect(job.tile.rect), job.toDevice);
    const auto buffer = layer->GetBuffer();
    const unsigned width = unsigned(r.Width());
    const int bandHeight = std::max(1, BandSamples / (Oversampling * Oversampling) / r.Width());
    for (int top = r.top; top < r.bottom && !m_target.IsAborting(); top += bandHeight) {
        const int bottom = std::min(top + bandHeight, r.bottom);
        const auto band = Offscreen::MakeTarget(*layer,
                                                {Oversampling * r.left, Oversampling * top,
                                                 Oversampling * r.right, Oversampling * bottom},
                                                buffer->GetFormat(), layer->GetProfiles());
        if (!band)
            return {};
        PaintBand(*band, tile, frame);
        const auto rows = Raster::ReduceByArea(band->GetBuffer(), width, unsigned(bottom - top));
        if (!rows)
            return {};
        for (int y = top; y < bottom; ++y)
            std::memcpy(buffer->GetRow(unsigned(y - r.top)), rows->GetRow(unsigned(y - top)),
                        std::size_t(width) * buffer->GetPixelSize());
    }
    return Kernel::MakeCounted<DynamicBitmap>(buffer, layer->GetProfile());
}

} // namespace Svg
