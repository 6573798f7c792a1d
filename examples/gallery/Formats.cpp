#include <string>
#include <utility>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

void DrawInFormat(Renderer::BitmapRenderTarget& page, Raster::Format format)
{
    const Target target = MakeTarget(format);
    DrawLandscape(*target);
    target->DrawPolyCurve(Flower({40, 44}, 36, 7), 0.9F, FillBlendMode::Screen,
                          BlendOptions::Identity(), Rainbow({40, 44}), {}, {}, {},
                          WindingOrderMode::NonZero, true, true);
    const auto bitmap = Kernel::MakeCounted<Raster::DynamicBitmap>(target->GetBuffer());
    page.DrawBitmap({0, 0, 128, 96}, bitmap, 1.0F, FillBlendMode::Normal, BlendOptions::Identity());
}

constexpr std::pair<Raster::Format, const char*> Formats[] = {
    {Raster::Format::RGBA8, "RGBA8"},   {Raster::Format::RGBA16, "RGBA16"},
    {Raster::Format::IA8, "IA8"},       {Raster::Format::IA16, "IA16"},
    {Raster::Format::CMYKA8, "CMYKA8"}, {Raster::Format::LABA16, "LABA16"},
    {Raster::Format::RGBAUF, "RGBAUF"}};

} // namespace

void ShowFormats(Page& page)
{
    page.Chapter("Pixel formats",
                 "The same drawing in each, brought back into sRGB for this page. Blend "
                 "modes work in the format: on Lab, on the lightness alone.");
    page.Code("DrawInFormat");
    for (const auto& [format, name] : Formats) {
        const Target target = MakeTarget();
        DrawInFormat(*target, format);
        page.Tile(std::string("format-") + name,
                  std::string("DrawInFormat(page, Raster::Format::") + name + ')', target);
    }
}

} // namespace Gallery
