#include <string>

#include <renderer/paint/FillSolid.h>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

void PaintGradient(RenderTarget& target, FillGradient::FillGradientType type,
                   FillGradient::Spread spread, Point focus = {})
{
    const auto dusk =
        Stops({{0, 0xfff1c1}, {0.3, 0xffa45b}, {0.6, 0xd94f7c}, {0.85, 0x5b3a8e}, {1, 0x1f2a5c}});
    const auto fill = FillGradient::Create(type, dusk, true, spread, focus);
    const Affine::Params frame = type == FillGradient::Linear
                                     ? Between({36, 62}, {92, 34})
                                     : Affine::Params{40, 0, 64, 0, 30, 48};
    Paint(target, Sheet(), {fill, frame});
}

void PaintMidpoint(RenderTarget& target, double midpoint, double smoothness)
{
    const auto stops = Stops({{0, 0x0b3954, 1, midpoint, smoothness}, {1, 0xffd166}});
    const auto fill = FillGradient::Create(FillGradient::Linear, stops);
    Paint(target, Sheet(), {fill, Between({8, 0}, {120, 0})});
}

void PaintInSkewedFrame(RenderTarget& target, FillGradient::FillGradientType type, bool corrected)
{
    const auto stops =
        Stops({{0, 0xf8f4e3}, {0.25, 0x56b6a9}, {0.5, 0x21618c}, {0.75, 0xf5b041}, {1, 0x922b21}});
    const Affine::Params frame{44, 34, 64, -6, 24, 48};
    Paint(target, Sheet(), {FillGradient::Create(type, stops, corrected), frame});
}

void PaintHardEdges(RenderTarget& target)
{
    const auto stops = Stops({{0, 0xe63946},
                              {0.25, 0xe63946},
                              {0.25, 0xf1faee},
                              {0.5, 0xf1faee},
                              {0.5, 0xa8dadc},
                              {0.75, 0x457b9d},
                              {0.75, 0x1d3557},
                              {1, 0x1d3557}});
    const auto fill = FillGradient::Create(FillGradient::Radial, stops, true, FillGradient::Repeat);
    Paint(target, Sheet(), {fill, Around({40, 60}, 36)});
}

void PaintFadingOut(RenderTarget& target)
{
    DrawCheckerboard(target);
    const auto stops = Stops({{0, 0x6c3bd1, 1}, {0.5, 0xf25f9c, 0.9}, {1, 0xffc56b, 0}});
    const auto fill = FillGradient::Create(FillGradient::Elliptical, stops);
    Paint(target, Sheet(), {fill, {58, 0, 64, 0, 44, 48}});
}

void StrokeWithGradient(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0x16203a));
    target.DrawPolyCurve(Flower({64, 48}, 40, 9), 1.0F, {}, Rainbow({64, 48}),
                         LineStyleDescriptorConst(2.5));
}

void PaintNoise(RenderTarget& target, double noise)
{
    const auto stops = Stops({{0, 0xf6e7cb}, {0.7, 0xc98b5e}, {1, 0x6b3e2e}});
    const auto fill = FillGradient::Create(FillGradient::Elliptical, stops)->Clone();
    fill->SetNoise(noise);
    Paint(target, Sheet(), {Renderer::Fill::Consolidate(fill), {70, 0, 58, 0, 60, 44}});
}

struct NamedType
{
    FillGradient::FillGradientType type;
    const char* name;
};
struct NamedSpread
{
    FillGradient::Spread spread;
    const char* name;
};
constexpr NamedType Types[] = {{FillGradient::Linear, "Linear"},
                               {FillGradient::Elliptical, "Elliptical"},
                               {FillGradient::Radial, "Radial"},
                               {FillGradient::Conical, "Conical"}};
constexpr NamedSpread Spreads[] = {{FillGradient::Pad, "Pad"},
                                   {FillGradient::Reflect, "Reflect"},
                                   {FillGradient::Repeat, "Repeat"}};

void ShowKinds(Page& page)
{
    page.Chapter("Gradients",
                 "Four kinds, what lies beyond their ends, and where round ones begin.");
    page.Code("PaintGradient");
    for (const auto& [type, name] : Types)
        for (const auto& [spread, spreadName] : Spreads) {
            if (type == FillGradient::Conical && spread != FillGradient::Pad)
                continue; // it has no ends
            page.Tile(std::string("gradient-") + name + '-' + spreadName,
                      std::string("PaintGradient(target, FillGradient::") + name +
                          ", FillGradient::" + spreadName + ')',
                      [=](RenderTarget& target) { PaintGradient(target, type, spread); });
        }
    for (const char* focus : {"0.5", "0.8", "1"})
        page.Tile(std::string("gradient-focus-") + focus,
                  std::string("PaintGradient(target, FillGradient::Radial, FillGradient::Pad, {") +
                      focus + ", 0})",
                  [focus](RenderTarget& target) {
                      PaintGradient(target, FillGradient::Radial, FillGradient::Pad,
                                    {std::stod(focus), 0});
                  });
}

void ShowMappings(Page& page)
{
    page.Text(
        "A stop says where between itself and the next one the colours are half mixed, and how "
        "smooth the way is.");
    page.Code("PaintMidpoint");
    for (const auto& [midpoint, smoothness] :
         {std::pair{"0.5", "0"}, {"0.15", "0"}, {"0.85", "0"}, {"0.5", "1"}, {"0.85", "1"}})
        page.Tile(std::string("gradient-midpoint-") + midpoint + '-' + smoothness,
                  std::string("PaintMidpoint(target, ") + midpoint + ", " + smoothness + ')',
                  [=](RenderTarget& target) {
                      PaintMidpoint(target, std::stod(midpoint), std::stod(smoothness));
                  });
    page.Text(
        "A frame may be skewed. Corrected, a gradient follows it; otherwise linear bands stay at "
        "right angles to their direction, circles stay circles and rays keep their angles.");
    page.Code("PaintInSkewedFrame");
    for (const auto& [type, name] : Types)
        for (const bool corrected : {false, true}) {
            if (type == FillGradient::Elliptical)
                continue; // it follows its frame always
            const std::string flag = corrected ? "true" : "false";
            page.Tile(std::string("gradient-skewed-") + name + '-' + flag,
                      std::string("PaintInSkewedFrame(target, FillGradient::") + name + ", " +
                          flag + ')',
                      [=](RenderTarget& target) { PaintInSkewedFrame(target, type, corrected); });
        }
}

} // namespace

void ShowGradients(Page& page)
{
    ShowKinds(page);
    ShowMappings(page);
    page.Text(
        "Edges between stops at one place are hard; stops have alpha; strokes take every paint "
        "that fills take; and every colour can have noise.");
    page.Sample("gradient-hard", "PaintHardEdges", PaintHardEdges);
    page.Sample("gradient-alpha", "PaintFadingOut", PaintFadingOut);
    page.Sample("gradient-stroke", "StrokeWithGradient", StrokeWithGradient);
    page.Code("PaintNoise");
    for (const char* noise : {"0", "0.02", "0.1"})
        page.Tile(std::string("gradient-noise-") + noise,
                  std::string("PaintNoise(target, ") + noise + ')',
                  [noise](RenderTarget& target) { PaintNoise(target, std::stod(noise)); });
}

} // namespace Gallery
