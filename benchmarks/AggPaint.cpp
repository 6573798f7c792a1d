#include "AggPaint.h"

#include <algorithm>

#include <renderer/paint/FillBitmap.h>

namespace Benchmarks {

namespace {

AggColour GetColour(const Renderer::Colour& colour, double opacity)
{
    Raster::PixelRGBA8 pixel;
    colour.GetColour(pixel, true, {});
    const auto alpha = std::uint8_t(std::lround(pixel.Alpha() * opacity));
    return AggColour(pixel[0], pixel[1], pixel[2], alpha);
}

/// The colour at \p t, 0…1, not premultiplied.
AggColour FindColour(const Renderer::Gradient& gradient, double t, double opacity)
{
    const auto& stops = gradient.GetColours();
    const auto next = std::find_if(stops.begin(), stops.end(),
                                   [&](const auto& stop) { return stop.position > t; });
    if (next == stops.begin())
        return GetColour(*stops.front().colour, opacity);
    const auto& before = *(next - 1);
    const AggColour from = GetColour(*before.colour, opacity);
    if (next == stops.end())
        return from;
    return from.gradient(GetColour(*next->colour, opacity),
                         (t - before.position) / (next->position - before.position));
}

} // namespace

agg::trans_affine MakeAggMatrix(const Transform& t)
{
    return {t.m00, t.m10, t.m01, t.m11, t.m02, t.m12};
}

AggPaint::AggPaint(const Renderer::FillDescriptorConst& descriptor, double opacity)
    : m_opacity(opacity)
{
    if (descriptor.IsFillNone())
        return;
    const auto& fill = descriptor.GetFill();
    const Transform& frame = descriptor.GetTransform();
    switch (fill->GetKind()) {
    case Renderer::Fill::Kind::Solid:
        m_colour = GetColour(*fill->GetColour(), opacity).premultiply();
        break;
    case Renderer::Fill::Kind::Gradient:
        m_gradient = static_cast<const Renderer::FillGradient*>(&*fill);
        m_frame = agg::trans_affine_scaling(1.0 / GradientLength) * MakeAggMatrix(frame);
        for (unsigned i = 0; i < Ramp::size(); ++i) {
            const double t = (i + 0.5) / Ramp::size();
            m_ramp[i] = FindColour(*m_gradient->GetGradient(), t, opacity).premultiply();
        }
        break;
    case Renderer::Fill::Kind::Bitmap: {
        const auto& bitmap = static_cast<const Renderer::FillBitmap&>(*fill);
        *this = AggPaint(*bitmap.GetBitmap(), frame,
                         bitmap.GetUpSampler() == Raster::ResamplerType::NearestNeighbour, opacity);
        m_wraps = bitmap.GetExtendType() == Raster::ExtendType::Wrap;
        break;
    }
    default:
        break;
    }
}

AggPaint::AggPaint(const Raster::DynamicBitmap& bitmap, const Transform& frame, bool nearest,
                   double opacity)
    : m_bitmap(&bitmap),
      m_nearest(nearest),
      m_opacity(opacity),
      m_frame(agg::trans_affine_scaling(1.0 / bitmap.GetWidth(), 1.0 / bitmap.GetHeight()) *
              MakeAggMatrix(frame))
{}

} // namespace Benchmarks
