#pragma once

#include <optional>

#include <agg_array.h>
#include <agg_color_rgba.h>
#include <agg_image_accessors.h>
#include <agg_pixfmt_rgba.h>
#include <agg_renderer_base.h>
#include <agg_renderer_scanline.h>
#include <agg_rendering_buffer.h>
#include <agg_span_allocator.h>
#include <agg_span_converter.h>
#include <agg_span_gradient.h>
#include <agg_span_image_filter_rgba.h>
#include <agg_span_interpolator_linear.h>
#include <agg_trans_affine.h>

#include <renderer/paint/FillGradient.h>

#include "AggSpans.h"
#include "Scene.h"

namespace Benchmarks {

using AggPixels = agg::pixfmt_rgba32_pre;
using AggRenderer = agg::renderer_base<AggPixels>;
using AggColour = AggPixels::color_type;

agg::trans_affine MakeAggMatrix(const Transform& transform);

/// A fill in the terms of AGG: what a program prepares once.
class AggPaint
{
public:
    AggPaint() = default;
    AggPaint(const Renderer::FillDescriptorConst& fill, double opacity);
    AggPaint(const Raster::DynamicBitmap& bitmap, const Transform& frame, bool nearest,
             double opacity);

    /// Fills the path of a rasteriser.
    /// \param matrix from the fill's logical coordinates to pixels.
    template<class Rasterizer, class Scanline>
    void Render(Rasterizer& rasterizer, Scanline& scanline, AggRenderer& renderer,
                const agg::trans_affine& matrix) const
    {
        if (m_colour)
            agg::render_scanlines_aa_solid(rasterizer, scanline, renderer, *m_colour);
        else if (m_bitmap)
            RenderBitmap(rasterizer, scanline, renderer, matrix);
        else if (m_gradient)
            RenderGradient(rasterizer, scanline, renderer, matrix);
    }

private:
    using Interpolator = agg::span_interpolator_linear<>;
    using Ramp = agg::pod_auto_array<AggColour, 256>;

    /// Gradients run from 0 to this, so that AGG's 1/16 steps are fine enough.
    static constexpr double GradientLength = 256.0;

    template<class Rasterizer, class Scanline, class Spans>
    static void RenderSpans(Rasterizer& rasterizer, Scanline& scanline, AggRenderer& renderer,
                            Spans& spans)
    {
        static agg::span_allocator<AggColour> allocator;
        agg::render_scanlines_aa(rasterizer, scanline, renderer, allocator, spans);
    }

    template<class Rasterizer, class Scanline>
    void RenderGradient(Rasterizer& rasterizer, Scanline& scanline, AggRenderer& renderer,
                        const agg::trans_affine& matrix) const
    {
        const auto render = [&](const auto& gradient) {
            using Gradient = std::decay_t<decltype(gradient)>;
            agg::trans_affine inverse = Invert(matrix);
            Interpolator interpolator(inverse);
            agg::span_gradient<AggColour, Interpolator, const Gradient, const Ramp> spans(
                interpolator, gradient, m_ramp, 0.0, GradientLength);
            RenderSpans(rasterizer, scanline, renderer, spans);
        };
        const Kernel::PointT<double> focus = m_gradient->GetFocus();
        switch (m_gradient->GetType()) {
        case Renderer::FillGradient::Linear:
            return WithSpread(agg::gradient_x(), render);
        case Renderer::FillGradient::Conical:
            return render(GradientConical());
        default:
            if (focus == Kernel::PointT<double>{})
                return WithSpread(agg::gradient_radial_d(), render);
            return WithSpread(agg::gradient_radial_focus(GradientLength, focus.x * GradientLength,
                                                         focus.y * GradientLength),
                              render);
        }
    }

    template<class Gradient, class Render>
    void WithSpread(const Gradient& gradient, Render&& render) const
    {
        switch (m_gradient->GetSpread()) {
        case Renderer::FillGradient::Reflect:
            return render(agg::gradient_reflect_adaptor<Gradient>(gradient));
        case Renderer::FillGradient::Repeat:
            return render(agg::gradient_repeat_adaptor<Gradient>(gradient));
        case Renderer::FillGradient::Pad:
            return render(gradient);
        }
    }

    template<class Rasterizer, class Scanline>
    void RenderBitmap(Rasterizer& rasterizer, Scanline& scanline, AggRenderer& renderer,
                      const agg::trans_affine& matrix) const
    {
        // AGG only reads from it.
        agg::rendering_buffer rows(const_cast<unsigned char*>(m_bitmap->GetBuffer()->GetData()),
                                   m_bitmap->GetWidth(), m_bitmap->GetHeight(),
                                   int(m_bitmap->GetBuffer()->GetStride()));
        AggPixels pixels(rows);
        using Wrap = agg::wrap_mode_repeat;
        if (m_wraps)
            RenderBitmap(rasterizer, scanline, renderer, matrix,
                         agg::image_accessor_wrap<AggPixels, Wrap, Wrap>(pixels));
        else
            RenderBitmap(rasterizer, scanline, renderer, matrix,
                         agg::image_accessor_clone<AggPixels>(pixels));
    }

    template<class Rasterizer, class Scanline, class Accessor>
    void RenderBitmap(Rasterizer& rasterizer, Scanline& scanline, AggRenderer& renderer,
                      const agg::trans_affine& matrix, Accessor accessor) const
    {
        agg::trans_affine inverse = Invert(matrix);
        Interpolator interpolator(inverse);
        const auto render = [&](auto spans) {
            if (m_opacity >= 1.0)
                return RenderSpans(rasterizer, scanline, renderer, spans);
            SpanOpacity<AggColour> opacity(m_opacity);
            agg::span_converter<decltype(spans), SpanOpacity<AggColour>> faded(spans, opacity);
            RenderSpans(rasterizer, scanline, renderer, faded);
        };
        if (m_nearest)
            render(agg::span_image_filter_rgba_nn<Accessor, Interpolator>(accessor, interpolator));
        else
            render(agg::span_image_filter_rgba_bilinear<Accessor, Interpolator>(accessor,
                                                                                interpolator));
    }

    /// From pixels to the paint's own coordinates.
    agg::trans_affine Invert(const agg::trans_affine& matrix) const
    {
        agg::trans_affine inverse = m_frame * matrix;
        return inverse.invert();
    }

    std::optional<AggColour> m_colour;
    Kernel::Counted<const Raster::DynamicBitmap> m_bitmap;
    bool m_nearest = false;
    bool m_wraps = false;
    double m_opacity = 1.0; // of the bitmap; other paint holds it in its colours
    Kernel::Counted<const Renderer::FillGradient> m_gradient;
    Ramp m_ramp;               // of the gradient
    agg::trans_affine m_frame; // from the paint's own coordinates to logical ones
};

} // namespace Benchmarks
