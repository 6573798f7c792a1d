#include <renderer/core/ClippingMask.h>

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <vector>

#include <kernel/Tiles.h>
#include <raster/Pixel.h>
#include <raster/Resample.h>
#include <renderer/core/coverage/MultiplyCovers.h>
#include <renderer/core/DevicePixels.h>

namespace Renderer {

using Kernel::Counted;
using Kernel::RectT;
using Raster::AffineTransform;
using Raster::DynamicBuffer;

namespace {

/// Beyond this, no device pixel is drawn.
constexpr double LargestDevice = 1 << 30;

unsigned char ToByte(unsigned char value)
{
    return value;
}

unsigned char ToByte(std::uint16_t value)
{
    return static_cast<unsigned char>((value + 128U) / 257U);
}

unsigned char ToByte(float value)
{
    // What is not a number counts as 0.
    return static_cast<unsigned char>(std::min(std::max(0.0F, value), 1.0F) * 255.0F + 0.5F);
}

/// What a premultiplied pixel lets through: the one channel of masks and greys, else alpha.
template<class P>
unsigned char GetMaskByte(const P& pixel)
{
    return ToByte(P::ColourCount <= 1 ? pixel[0] : pixel.Alpha());
}

/// The bytes of a mask of any format within \p needed, in its own pixels; 0 elsewhere. \return null
/// when the memory cannot be had.
Counted<const DynamicBuffer> ToBytes(const Counted<const DynamicBuffer>& mask,
                                     const RectT<int>& needed)
{
    if (mask->GetFormat() == Raster::Format::M8)
        return mask;
    const auto bytes =
        DynamicBuffer::Create(Raster::Format::M8, mask->GetWidth(), mask->GetHeight());
    if (!bytes)
        return {};
    Raster::WithPixelOfFormat(mask->GetFormat(), false, [&]<class P>(P) {
        Kernel::ForEachTile(needed, [&](const RectT<int>& tile) {
            for (int y = tile.top; y < tile.bottom; ++y) {
                const P* const row = reinterpret_cast<const P*>(mask->GetRow(unsigned(y)));
                std::transform(row + tile.left, row + tile.right,
                               bytes->GetRow(unsigned(y)) + tile.left, GetMaskByte<P>);
            }
        });
        return true;
    });
    return bytes;
}

/// The pixels of a mask that those of the device in \p rect are made of, with room for any filter.
RectT<int> GetMaskPixels(const DynamicBuffer& mask, const AffineTransform::Params& deviceToUnit,
                         const RectT<int>& rect)
{
    constexpr int reach = 4; // of filters, in pixels of the coarser side
    const RectT<double> unit = AffineTransform::MapRect(
        deviceToUnit, {double(rect.left) - reach, double(rect.top) - reach,
                       double(rect.right) + reach, double(rect.bottom) + reach});
    const double width = mask.GetWidth(), height = mask.GetHeight();
    return GrowToPixels({unit.left * width - reach, unit.top * height - reach,
                         unit.right * width + reach, unit.bottom * height + reach})
        .Intersect({0, 0, int(mask.GetWidth()), int(mask.GetHeight())});
}

/// Whether a buffer that fills \p device, the image of its rectangle, needs no resampling.
bool FitsPixels(const DynamicBuffer& buffer, const AffineTransform::Params& frame,
                const RectT<double>& device)
{
    // The frame is that of the unit square: its elements are pixels.
    return std::abs(frame.m01) <= WholePixelTolerance &&
           std::abs(frame.m10) <= WholePixelTolerance && frame.m00 > 0.0 && frame.m11 > 0.0 &&
           IsOnWholePixels(device) && std::abs(device.left) < LargestDevice &&
           std::abs(device.top) < LargestDevice &&
           std::round(device.right) - std::round(device.left) == double(buffer.GetWidth()) &&
           std::round(device.bottom) - std::round(device.top) == double(buffer.GetHeight());
}

/// Scales a row by \p factors. \param room as many bytes.
void ScaleRow(unsigned char* row, const unsigned char* factors, unsigned char* room,
              unsigned length)
{
    std::copy_n(row, length, room);
    Coverage::MultiplyCovers(row, room, factors, length);
}

/// The mask's bytes within \p part, resampled and scaled by the coverage and the mask below.
Counted<const DynamicBuffer> MakeBytes(const Counted<const DynamicBuffer>& bytes,
                                       const AffineTransform::Params& deviceToUnit,
                                       const MaskPlacement& placement, const ClippingMask& within,
                                       const ClipState& part)
{
    const RectT<int>& rect = part.window;
    const auto result =
        DynamicBuffer::Create(Raster::Format::M8, unsigned(rect.Width()), unsigned(rect.Height()));
    if (!result)
        return {};
    // Samplers serve one thread each.
    const Raster::SpanSampler<Raster::PixelAlpha8> model(bytes, deviceToUnit, placement.up,
                                                         placement.down, Raster::ExtendType::Clamp);
    Kernel::ForEachTile(rect, [&](const RectT<int>& tile) {
        const auto width = unsigned(tile.Width());
        auto sampler = model;
        std::vector<unsigned char> covers(width), room(width);
        for (int y = tile.top; y < tile.bottom; ++y) {
            unsigned char* const row =
                result->GetRow(unsigned(y - rect.top)) + (tile.left - rect.left);
            sampler.Sample(tile.left, y, width, reinterpret_cast<Raster::PixelAlpha8*>(row));
            if (part.coverage) {
                part.coverage->ReadRow(tile.left, y, width, covers.data());
                ScaleRow(row, covers.data(), room.data(), width);
            }
            if (within.buffer)
                ScaleRow(row,
                         within.buffer->GetRow(unsigned(y - within.origin.y)) +
                             (tile.left - within.origin.x),
                         room.data(), width);
        }
    });
    return result;
}

} // namespace

ClippingMask MakeClippingMask(const Counted<const DynamicBuffer>& mask,
                              const MaskPlacement& placement, const ClippingMask& within,
                              const RectT<int>& visible, Coverage::CoverageStore& store)
{
    const ClippingMask nothing{{}, {}, {}};
    const auto frame =
        AffineTransform::Concatenate(AffineTransform::FromRect(placement.rect), placement.current);
    AffineTransform::Params deviceToUnit;
    if (!mask || placement.rect.IsEmpty() || !AffineTransform::Invert(frame, deviceToUnit))
        return nothing;
    const RectT<double> device = AffineTransform::MapRect(frame, {0.0, 0.0, 1.0, 1.0});
    const RectT<int> needed = CommonPart(visible, within.rect).Intersect(GrowToPixels(device));
    if (needed.IsEmpty())
        return nothing;
    mask->SyncHostCache();
    const Counted<const DynamicBuffer> bytes =
        ToBytes(mask, GetMaskPixels(*mask, deviceToUnit, needed));
    if (!bytes)
        return nothing;
    if (!within.buffer && FitsPixels(*bytes, frame, device)) {
        const RectT<int> whole = RoundToPixels(device);
        return {bytes, {whole.left, whole.top}, CommonPart(needed, whole)};
    }
    ClipState part{needed, {}, {}};
    Coverage::CommonArea area;
    ClipWork work{false, store, area};
    const Geometry::PolyPolygonType<double> outline(placement.rect);
    ClipPath(MapPolygons(outline, placement.current), false).Narrow(part, work);
    if (part.window.IsEmpty())
        return nothing;
    ClippingMask made{MakeBytes(bytes, deviceToUnit, placement, within, part),
                      {part.window.left, part.window.top},
                      part.window};
    return made.buffer ? made : nothing;
}

} // namespace Renderer
