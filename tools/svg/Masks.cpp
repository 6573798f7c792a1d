#include "Masks.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Scanner.h"
#include "Scopes.h"
#include "Shapes.h"

namespace Svg {

using Kernel::RectT;
using Raster::AffineTransform;
using Raster::DynamicBuffer;

namespace {

// The weights of the luminance that masks are defined by (SVG 1.1, 14.4 and 15.10).
constexpr double RedWeight = 0.2125;
constexpr double GreenWeight = 0.7154;
constexpr double BlueWeight = 0.0721;

/// What a pixel of a mask costs, in pixels that are merely drawn: it is cleared, drawn on, weighed
/// and used.
constexpr double PassesPerPixel = 4.0;

/// The light that each 8-bit value of sRGB stands for (IEC 61966-2-1), from 0 to 255.
std::array<double, 256> MakeLinearLight()
{
    std::array<double, 256> light{};
    for (std::size_t i = 0; i < light.size(); ++i) {
        const double value = double(i) / 255.0;
        light[i] =
            255.0 * (value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4));
    }
    return light;
}

unsigned char ToByte(double value)
{
    return static_cast<unsigned char>(std::clamp(std::lround(value), 0L, 255L));
}

/// Luminance times alpha of a premultiplied RGBA8 pixel.
unsigned char GetLuminance(const unsigned char* pixel, bool linear)
{
    if (!linear)
        return ToByte(RedWeight * pixel[0] + GreenWeight * pixel[1] + BlueWeight * pixel[2]);
    static const std::array<double, 256> light = MakeLinearLight();
    const unsigned alpha = pixel[3];
    if (alpha == 0)
        return 0;
    const auto plain = [&](int i) { return light[ToByte(pixel[i] * 255.0 / alpha)]; };
    return ToByte((RedWeight * plain(0) + GreenWeight * plain(1) + BlueWeight * plain(2)) * alpha /
                  255.0);
}

/// The mask's value of each pixel of an RGBA8 buffer. \return null when there is no memory for it.
Kernel::Counted<const DynamicBuffer> MakeMask(const DynamicBuffer& drawn, const Style& style)
{
    const auto mask =
        DynamicBuffer::Create(Raster::Format::M8, drawn.GetWidth(), drawn.GetHeight());
    for (unsigned y = 0; mask && y < drawn.GetHeight(); ++y) {
        const unsigned char* pixel = drawn.GetRow(y);
        unsigned char* const values = mask->GetRow(y);
        for (unsigned x = 0; x < drawn.GetWidth(); ++x, pixel += 4)
            values[x] = style.alphaMask ? pixel[3] : GetLuminance(pixel, style.linearLuminance);
    }
    return mask;
}

bool HasBoxUnits(const Element& mask, std::string_view attribute, bool byDefault)
{
    const std::string_view units = Trim(mask.Get(attribute));
    return units == "objectBoundingBox" || (byDefault && units != "userSpaceOnUse");
}

/// The part of the masked element's coordinates that the mask lets through at all.
RectT<double> FindRegion(const Element& mask, const RectT<double>& box, LengthContext lengths)
{
    const bool fractions = HasBoxUnits(mask, "maskUnits", true);
    if (fractions)
        lengths.viewportWidth = lengths.viewportHeight = 1.0;
    const auto length = [&](std::string_view name, LengthAxis axis, double part) {
        const double whole =
            axis == LengthAxis::Horizontal ? lengths.viewportWidth : lengths.viewportHeight;
        return ResolveAttribute(mask, name, lengths, axis, part * whole);
    };
    const double x = length("x", LengthAxis::Horizontal, -0.1);
    const double y = length("y", LengthAxis::Vertical, -0.1);
    const RectT<double> rect{x, y, x + length("width", LengthAxis::Horizontal, 1.2),
                             y + length("height", LengthAxis::Vertical, 1.2)};
    return fractions && !rect.IsEmpty()
               ? AffineTransform::MapRect(AffineTransform::FromRect(box), rect)
               : rect;
}

} // namespace

Masks::Result Masks::Make(std::string_view reference, const LengthContext& lengths,
                          const Measure& measure)
{
    const Element* mask = m_context.GetDocument().FindByReference(reference);
    if (!mask || mask->tag != Tag::Mask)
        return {};
    if (m_context.IsActive(*mask)) {
        m_context.GetNotices().Add("a mask that masks itself is left out");
        return {};
    }
    if (m_context.GetOffscreenDepth() >= Offscreen::MaxDepth) {
        m_context.GetNotices().Add(
            "patterns and masks are nested too deep; the inner are left out");
        return {};
    }
    const ActiveReference active(m_context.GetActive(), *mask);
    const CountedDepth depth(m_context.GetOffscreenDepth(), Offscreen::MaxDepth);
    return Draw(*mask, lengths, measure);
}

Masks::Result Masks::Draw(const Element& mask, const LengthContext& lengths, const Measure& measure)
{
    const Style& style = m_context.GetStyles().ResolveInPlace(mask);
    LengthContext units = lengths;
    units.fontSize = style.fontSize;
    RectT<double> box{};
    const bool contentInBox = HasBoxUnits(mask, "maskContentUnits", false);
    if (contentInBox || HasBoxUnits(mask, "maskUnits", true)) {
        const auto bounds = measure();
        if (!bounds.IsValid() || bounds.GetRect().IsEmpty())
            return {{}, {}, true};
        box = bounds.GetRect();
    }
    const RectT<double> region = FindRegion(mask, box, units);
    const RectT<int> pixels =
        region.IsEmpty() ? RectT<int>{} : Offscreen::FindPixels(m_target, region);
    if (!m_context.SpendPixels(PassesPerPixel * pixels.Width() * pixels.Height()))
        return {{}, {}, true};
    // Luminance is that of sRGB, whatever the target's own colours are.
    const auto layer = Offscreen::MakeTarget(m_target, pixels, Raster::Format::RGBA8, {});
    if (!layer)
        return {{}, {}, true};
    layer->SetLogToDevTransform(m_target.GetCurrentTransform());
    {
        Masks inner(m_context, *layer, m_draw);
        const Result outer =
            style.mask.empty() ? Result{} : inner.Make(style.mask, lengths, measure);
        if (outer.hidesAll)
            return outer;
        layer->PushClipRectanglePath(region);
        const ClipScope clip(*layer, 1);
        const MaskScope outerMask(*layer, outer);
        const GroupScope group(*layer, {.isolates = outer.pixels != nullptr});
        const TransformScope content(*layer,
                                     contentInBox ? AffineTransform::FromRect(box) : Transform{});
        if (contentInBox)
            units.viewportWidth = units.viewportHeight = 1.0;
        m_draw(*layer, mask, units);
    }
    const auto made = MakeMask(*layer->GetBuffer(), style);
    return {made, pixels, !made};
}

} // namespace Svg
