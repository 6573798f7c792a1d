#include <string>

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
}

} // namespace Gallery
