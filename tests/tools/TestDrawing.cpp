#include "TestDrawing.h"

#include <array>
#include <cstdio>

#include <renderer/paint/Colour.h>

std::string Describe(const Renderer::FillDescriptorConst& fill)
{
    if (fill.IsFillNone())
        return "none";
    if (fill.GetFill()->GetKind() != Renderer::Fill::Kind::Solid)
        return "not solid";
    Raster::PixelRGBA8 pixel;
    fill.GetFill()->GetColour()->GetColour(pixel, true, {});
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x%02x", pixel[0], pixel[1], pixel[2],
                  pixel[3]);
    return text.data();
}
