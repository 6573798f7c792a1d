#include "CairoPaint.h"

#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillSolid.h>

namespace Benchmarks {

namespace {

using Raster::AffineTransform;
using Renderer::Fill;
using Renderer::FillGradient;

Raster::PixelRGBAF GetColour(const Renderer::Colour& colour)
{
    Raster::PixelRGBAF pixel;
    colour.GetColour(pixel, true, {});
    return pixel;
}

/// Places a pattern of the unit frame: its matrix maps user coordinates to the frame.
CairoPattern Place(cairo_pattern_t* pattern, const Transform& frame)
{
    Transform inverse;
    AffineTransform::Invert(frame, inverse);
    const cairo_matrix_t matrix = MakeCairoMatrix(inverse);
    cairo_pattern_set_matrix(pattern, &matrix);
    return CairoPattern(pattern);
}

cairo_extend_t MapSpread(FillGradient::Spread spread)
{
    switch (spread) {
    case FillGradient::Reflect:
        return CAIRO_EXTEND_REFLECT;
    case FillGradient::Repeat:
        return CAIRO_EXTEND_REPEAT;
    case FillGradient::Pad:
        break;
    }
    return CAIRO_EXTEND_PAD;
}

CairoPattern MakeGradient(const FillGradient& fill, const Transform& frame, double opacity)
{
    if (fill.GetType() == FillGradient::Conical)
        return {};
    const auto focus = fill.GetFocus();
    cairo_pattern_t* pattern =
        fill.GetType() == FillGradient::Linear
            ? cairo_pattern_create_linear(0.0, 0.0, 1.0, 0.0)
            : cairo_pattern_create_radial(focus.x, focus.y, 0.0, 0.0, 0.0, 1.0);
    for (const auto& stop : fill.GetGradient()->GetColours()) {
        const Raster::PixelRGBAF c = GetColour(*stop.colour);
        cairo_pattern_add_color_stop_rgba(pattern, stop.position, c[0], c[1], c[2],
                                          c.Alpha() * opacity);
    }
    cairo_pattern_set_extend(pattern, MapSpread(fill.GetSpread()));
    return Place(pattern, frame);
}

} // namespace

cairo_matrix_t MakeCairoMatrix(const Transform& t)
{
    return {t.m00, t.m10, t.m01, t.m11, t.m02, t.m12};
}

CairoPattern MakeCairoBitmap(const Raster::DynamicBitmap& bitmap, const Transform& frame,
                             cairo_filter_t filter)
{
    const int width = int(bitmap.GetWidth());
    const int height = int(bitmap.GetHeight());
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    for (int y = 0; y < height; ++y) {
        const unsigned char* from = bitmap.GetBuffer()->GetRow(unsigned(y));
        unsigned char* to = cairo_image_surface_get_data(surface) +
                            std::ptrdiff_t(y) * cairo_image_surface_get_stride(surface);
        for (int x = 0; x < width; ++x, from += 4, to += 4) {
            to[0] = from[2]; // words of alpha, red, green, blue; little-endian
            to[1] = from[1];
            to[2] = from[0];
            to[3] = from[3];
        }
    }
    cairo_surface_mark_dirty(surface);
    cairo_pattern_t* pattern = cairo_pattern_create_for_surface(surface);
    cairo_surface_destroy(surface);
    cairo_pattern_set_filter(pattern, filter);
    cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
    // Surfaces are placed by their pixels.
    return Place(pattern, AffineTransform::Concatenate(
                              AffineTransform::Scaling(1.0 / width, 1.0 / height), frame));
}

CairoPattern MakeCairoPattern(const Renderer::FillDescriptorConst& descriptor, double opacity)
{
    if (descriptor.IsFillNone())
        return {};
    const Fill& fill = *descriptor.GetFill();
    switch (fill.GetKind()) {
    case Fill::Kind::Solid: {
        const Raster::PixelRGBAF c = GetColour(*fill.GetColour());
        return CairoPattern(cairo_pattern_create_rgba(c[0], c[1], c[2], c.Alpha() * opacity));
    }
    case Fill::Kind::Gradient:
        return MakeGradient(static_cast<const FillGradient&>(fill), descriptor.GetTransform(),
                            opacity);
    case Fill::Kind::Bitmap: {
        const auto& bitmap = static_cast<const Renderer::FillBitmap&>(fill);
        const bool nearest = bitmap.GetUpSampler() == Raster::ResamplerType::NearestNeighbour;
        CairoPattern pattern =
            MakeCairoBitmap(*bitmap.GetBitmap(), descriptor.GetTransform(),
                            nearest ? CAIRO_FILTER_NEAREST : CAIRO_FILTER_BILINEAR);
        if (bitmap.GetExtendType() == Raster::ExtendType::Wrap)
            cairo_pattern_set_extend(pattern.Get(), CAIRO_EXTEND_REPEAT);
        return pattern;
    }
    default:
        return {};
    }
}

} // namespace Benchmarks
