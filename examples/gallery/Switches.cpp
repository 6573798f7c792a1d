#include <string>

#include <renderer/paint/ColourAdjustments.h>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

/// A picture of a small target, each of whose pixels becomes \p scale × \p scale.
Target Enlarge(const Target& small, double scale)
{
    const Target target = MakeTarget();
    const auto bitmap = Kernel::MakeCounted<Raster::DynamicBitmap>(small->GetBuffer());
    target->SetUpResamplerType(Raster::ResamplerType::NearestNeighbour);
    target->DrawBitmap(
        {0, 0, small->GetBuffer()->GetWidth() * scale, small->GetBuffer()->GetHeight() * scale},
        bitmap, 1.0F, FillBlendMode::Normal, BlendOptions::Identity());
    return target;
}

void DrawStar(Renderer::BitmapRenderTarget& target, bool antialias, double gamma)
{
    target.SetAntialias(antialias);
    target.SetGamma(gamma);
    Paint(target, Sheet(), Solid(0xfdf6e3));
    Paint(target, Star({16, 12}, 11, 4.6, 7, 0.02), Solid(0xb03a2e));
}

void FillStar(RenderTarget& target, WindingOrderMode winding)
{
    const auto star = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    const Geometry::CurveDbl corners = Star({64, 50}, 46, 46, 5)->GetCurves().front();
    const Path whole = Star({64, 50}, 46, 17.6, 5);
    star->AddCurve(corners);
    star->AddCurve(whole->GetCurves().front());
    Paint(target, Sheet(), Solid(0xf6efe2));
    target.DrawPolyCurve(star, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                         Solid(0x1a7a6d), {}, {}, {}, winding, true, true);
}

void DrawUnderOwnClip(RenderTarget& target, bool perfect)
{
    target.SetPerfectClipping(perfect);
    Paint(target, Sheet(), Solid(0x16203a));
    target.PushClipCurvesPath(Star({16, 12}, 11, 4.6, 7, 0.02), WindingOrderMode::NonZero);
    Paint(target, Star({16, 12}, 11, 4.6, 7, 0.02), Solid(0xffd166));
    target.PopClipPath();
}

void DrawFaintGradient(RenderTarget& target, bool dithering)
{
    target.SetDithering(dithering);
    Paint(target, Sheet(), Radial({64, 40}, 90, {{0, 0x3a4048}, {1, 0x303238}}));
}

/// A picture whose few tones between 0x30 and 0x48 are spread over all.
Target RaiseContrast(const Target& faint)
{
    const Target target = MakeTarget();
    const Renderer::LevelsRange range{.inputBlack = 0x30 / 255.0F, .inputWhite = 0x48 / 255.0F};
    target->PushColourTransform(Kernel::MakeCounted<Renderer::LevelsAdjustment>(
        Renderer::LevelsSettings{.master = range, .red = {}, .green = {}, .blue = {}}));
    target->DrawBitmap({0, 0, 128, 96},
                       Kernel::MakeCounted<Raster::DynamicBitmap>(faint->GetBuffer()), 1.0F,
                       FillBlendMode::Normal, BlendOptions::Identity());
    return target;
}

void ShowPerfectClipping(Page& page)
{
    page.Text(
        "Perfect clipping: a shape whose edge is that of its clip keeps its coverage there; four "
        "times as large:");
    page.Code("DrawUnderOwnClip");
    for (const bool perfect : {false, true}) {
        const Target small = MakeTarget(Raster::Format::RGBA8, 32, 24);
        DrawUnderOwnClip(*small, perfect);
        const std::string flag = perfect ? "true" : "false";
        page.Tile("switch-perfect-" + flag, "DrawUnderOwnClip(target, " + flag + ')',
                  Enlarge(small, 4));
    }
}

void ShowDithering(Page& page)
{
    page.Text(
        "Dithering: what 8 bits cannot hold is spread over neighbouring pixels. The contrast of "
        "these two pictures is raised tenfold:");
    page.Code("DrawFaintGradient");
    for (const bool dithering : {false, true}) {
        const Target faint = MakeTarget();
        DrawFaintGradient(*faint, dithering);
        const std::string flag = dithering ? "true" : "false";
        page.Tile("switch-dithering-" + flag, "DrawFaintGradient(target, " + flag + ')',
                  RaiseContrast(faint));
    }
}

} // namespace

void ShowSwitches(Page& page)
{
    page.Chapter("Switches of a target",
                 "Edges with and without anti-aliasing, and a gamma of their "
                 "coverage; four times as large:");
    page.Code("DrawStar");
    struct Case
    {
        bool antialias;
        double gamma;
        const char* arguments;
    };
    int number = 0;
    for (const auto& [antialias, gamma, arguments] : {Case{true, 1.0, "true, 1"},
                                                      {false, 1.0, "false, 1"},
                                                      {true, 0.5, "true, 0.5"},
                                                      {true, 2.0, "true, 2"}}) {
        const Target small = MakeTarget(Raster::Format::RGBA8, 32, 24);
        DrawStar(*small, antialias, gamma);
        page.Tile("switch-edges-" + std::to_string(++number),
                  std::string("DrawStar(target, ") + arguments + ')', Enlarge(small, 4));
    }
    page.Text("What counts as inside of a path:");
    page.Code("FillStar");
    page.Tile("switch-even-odd", "FillStar(target, WindingOrderMode::EvenOdd)",
              [](RenderTarget& target) { FillStar(target, WindingOrderMode::EvenOdd); });
    page.Tile("switch-non-zero", "FillStar(target, WindingOrderMode::NonZero)",
              [](RenderTarget& target) { FillStar(target, WindingOrderMode::NonZero); });
    ShowPerfectClipping(page);
    ShowDithering(page);
}

} // namespace Gallery
