#include "TextCases.h"

#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <cairo.h>

#include <renderer/core/BitmapRenderTarget.h>

#include "Peer.h"

namespace Benchmarks {

namespace {

constexpr int Side = 1000;
constexpr double LineHeight = 1.2;
constexpr const char* Family = "DejaVu Sans";
constexpr const char* Line = "The quick brown fox jumps over the lazy dog, 0123456789 and AVATAR";
constexpr int Glyphs = 66; // of the line

/// Calls \p draw(x, y) for the start of each line of a page, none of them at the same part of a
/// pixel.
template<class Draw>
void DrawPage(double size, const Draw& draw)
{
    int line = 0;
    for (double y = size * LineHeight; y < Side; y += size * LineHeight)
        draw(3.3 * (line++ % 7), y);
}

void CountGlyphs(benchmark::State& state, double size)
{
    int lines = 0;
    DrawPage(size, [&](double, double) { ++lines; });
    state.counters["glyphs"] =
        benchmark::Counter(double(lines) * Glyphs, benchmark::Counter::kIsIterationInvariantRate);
}

void MeasureRenderer(benchmark::State& state, double size)
{
    const Kernel::Counted<Renderer::BitmapRenderTarget> target(
        Renderer::BitmapRenderTarget::Create(Raster::Format::RGBA8, {}));
    target->CreateBuffer(Side, Side);
    target->SetDeviceExpansionTolerance(Tolerance);
    const Kernel::Font font(Family);
    const auto ink = Renderer::FillDescriptorConst::CreateSolid({{20, 30, 80, 255}});
    for (auto _ : state) {
        DrawPage(size, [&](double x, double y) {
            target->DrawText({x, y}, Line, font, size, 1.0F, ink);
        });
    }
    CountGlyphs(state, size);
}

struct CairoCloser
{
    void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
    void operator()(cairo_font_options_t* options) const noexcept
    {
        cairo_font_options_destroy(options);
    }
};

/// \param asPaths whether each line is filled as a path, not put together from a cache of glyphs
///        whose places are rounded to a quarter of a pixel.
void MeasureCairo(benchmark::State& state, double size, bool asPaths)
{
    const std::unique_ptr<cairo_surface_t, CairoCloser> surface(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, Side, Side));
    const std::unique_ptr<cairo_t, CairoCloser> context(cairo_create(surface.get()));
    const std::unique_ptr<cairo_font_options_t, CairoCloser> options(cairo_font_options_create());
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(context.get(), options.get());
    cairo_select_font_face(context.get(), Family, CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context.get(), size);
    cairo_set_tolerance(context.get(), Tolerance);
    cairo_set_source_rgb(context.get(), 20 / 255.0, 30 / 255.0, 80 / 255.0);
    for (auto _ : state) {
        DrawPage(size, [&](double x, double y) {
            cairo_move_to(context.get(), x, y);
            if (!asPaths)
                return cairo_show_text(context.get(), Line);
            cairo_text_path(context.get(), Line);
            cairo_fill(context.get());
        });
    }
    CountGlyphs(state, size);
}

} // namespace

void RegisterText()
{
    for (const int size : {10, 14, 24, 48}) {
        const std::string name = "Text/" + std::to_string(size);
        const auto add = [&](const char* peer, auto measure) {
            benchmark::RegisterBenchmark((name + '/' + peer).c_str(), measure)
                ->Unit(benchmark::kMicrosecond);
        };
        add("renderer", [size](benchmark::State& state) { MeasureRenderer(state, size); });
        add("cairo", [size](benchmark::State& state) { MeasureCairo(state, size, true); });
        add("cairo-cache", [size](benchmark::State& state) { MeasureCairo(state, size, false); });
    }
}

} // namespace Benchmarks
