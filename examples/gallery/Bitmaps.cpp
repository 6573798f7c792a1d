#include <string>
#include <utility>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

void Magnify(RenderTarget& target, Raster::ResamplerType resampler)
{
    const auto fill = FillDescriptorConst::CreateBitmap(MakeLandscape(16, 12),
                                                        Raster::ExtendType::Clamp, resampler);
    Paint(target, Sheet(), {fill, Affine::FromRect({0, 0, 128, 96})});
}

void Turn(RenderTarget& target, Raster::ResamplerType resampler)
{
    const auto fill =
        FillDescriptorConst::CreateBitmap(MakeStamp(), Raster::ExtendType::Transparent, resampler);
    Paint(target, Sheet(), Solid(0xfbf3e4));
    Paint(target, Sheet(), {fill, {90, -28, 28, 36, 70, 0}});
}

void Minify(RenderTarget& target, Raster::ResamplerType resampler)
{
    target.SetDownResamplerType(resampler);
    const auto fill = FillDescriptorConst::CreateBitmap(
        MakeWedges(500, 375), Raster::ExtendType::Clamp, Raster::ResamplerType::Bilinear);
    Paint(target, Sheet(), {fill, {126.4, -3.1, 2.2, 4.3, 94.7, -1.6}});
}

void Extend(RenderTarget& target, Raster::ExtendType extend)
{
    const auto fill =
        FillDescriptorConst::CreateBitmap(MakeStamp(), extend, Raster::ResamplerType::Bicubic);
    Paint(target, Sheet(), Solid(0xfbf3e4));
    Paint(target, Sheet(), {fill, Affine::FromRect({44, 33, 84, 63})});
    target.DrawRectangle(44.5, 33.5, 83.5, 62.5, 0.5F, {}, Solid(0xc0392b),
                         LineStyleDescriptorConst(1.0));
}

constexpr std::pair<Raster::ResamplerType, const char*> Resamplers[] = {
    {Raster::ResamplerType::NearestNeighbour, "NearestNeighbour"},
    {Raster::ResamplerType::Bilinear, "Bilinear"},
    {Raster::ResamplerType::Bicubic, "Bicubic"},
    {Raster::ResamplerType::Lanczos3, "Lanczos3"}};
constexpr std::pair<Raster::ExtendType, const char*> Extends[] = {
    {Raster::ExtendType::Clamp, "Clamp"},
    {Raster::ExtendType::Transparent, "Transparent"},
    {Raster::ExtendType::Mirror, "Mirror"},
    {Raster::ExtendType::MirrorOnce, "MirrorOnce"},
    {Raster::ExtendType::Wrap, "Wrap"}};

void ShowResampler(Page& page, const char* function,
                   void (*draw)(RenderTarget&, Raster::ResamplerType))
{
    page.Code(function);
    for (const auto& [resampler, name] : Resamplers)
        page.Tile(std::string("bitmap-") + function + '-' + name,
                  std::string(function) + "(target, Raster::ResamplerType::" + name + ')',
                  [=](RenderTarget& target) { draw(target, resampler); });
}

} // namespace

void ShowBitmaps(Page& page)
{
    page.Chapter("Bitmaps", "A picture of 16 × 12 pixels, magnified eight times:");
    ShowResampler(page, "Magnify", Magnify);
    page.Text("Turned and sheared:");
    ShowResampler(page, "Turn", Turn);
    page.Text("A picture of 500 × 375 pixels, made smaller and slightly turned. All but the "
              "nearest pixel average over what "
              "a pixel covers:");
    ShowResampler(page, "Minify", Minify);
    page.Text("What lies outside the bitmap, whose own place is framed:");
    page.Code("Extend");
    for (const auto& [extend, name] : Extends)
        page.Tile(std::string("bitmap-extend-") + name,
                  std::string("Extend(target, Raster::ExtendType::") + name + ')',
                  [extend](RenderTarget& target) { Extend(target, extend); });
}

} // namespace Gallery
