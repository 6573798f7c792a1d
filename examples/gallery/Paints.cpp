#include <array>

#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillSolid.h>

#include "Subjects.h"

namespace Gallery {

namespace {

constexpr std::array<Stop, 7> Hues{{{0.0, 0xff3b30},
                                    {1.0 / 6, 0xffc21f},
                                    {2.0 / 6, 0x4cd04f},
                                    {3.0 / 6, 0x27c4c9},
                                    {4.0 / 6, 0x3157e8},
                                    {5.0 / 6, 0xc837d6},
                                    {1.0, 0xff3b30}}};

Raster::PixelRGBAF MakeChannels(unsigned rgb, double alpha)
{
    const auto channel = [rgb](int shift) {
        return static_cast<float>((rgb >> shift) & 0xFFU) / 255.0F;
    };
    return {{channel(16), channel(8), channel(0), static_cast<float>(alpha)}};
}

template<class Range>
Kernel::Consolidated<Gradient> MakeGradient(const Range& stops)
{
    std::vector<Gradient::ColourPosition> colours;
    for (const Stop& stop : stops)
        colours.push_back({Renderer::ColourRGB::Create(MakeChannels(stop.rgb, stop.alpha)),
                           stop.position, stop.midpoint, stop.smoothness});
    return Gradient::Create(std::move(colours));
}

} // namespace

Kernel::Consolidated<Gradient> Stops(std::initializer_list<Stop> stops)
{
    return MakeGradient(stops);
}

FillDescriptorConst Solid(unsigned rgb, double alpha)
{
    return Renderer::FillSolid::Create(Renderer::ColourRGB::Create(MakeChannels(rgb, alpha)));
}

Affine::Params Between(Point from, Point to)
{
    const double x = to.x - from.x, y = to.y - from.y;
    return {x, -y, from.x, y, x, from.y};
}

Affine::Params Around(Point centre, double radius)
{
    return {radius, 0, centre.x, 0, radius, centre.y};
}

FillDescriptorConst Linear(Point from, Point to, std::initializer_list<Stop> stops)
{
    return {FillGradient::Create(FillGradient::Linear, Stops(stops)), Between(from, to)};
}

FillDescriptorConst Radial(Point centre, double radius, std::initializer_list<Stop> stops)
{
    return {FillGradient::Create(FillGradient::Radial, Stops(stops)), Around(centre, radius)};
}

FillDescriptorConst Rainbow(Point centre)
{
    return {FillGradient::Create(FillGradient::Conical, MakeGradient(Hues)), Around(centre, 1.0)};
}

} // namespace Gallery
