#include <string>
#include <utility>

#include <renderer/paint/ColourRGB.h>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

constexpr auto Clear = RenderTarget::CompositeInit::Clear;

void DrawRings(RenderTarget& target)
{
    Paint(target, Disc({48, 40}, 27), Solid(0xff5a4e));
    Paint(target, Disc({80, 40}, 27), Solid(0xffc93c));
    Paint(target, Disc({64, 62}, 27), Solid(0x2fa4e7));
}

void MultiplyInGroup(RenderTarget& target, RenderTarget::CompositeInit init)
{
    DrawLandscape(target);
    target.PushComposite(init, FillBlendMode::Normal, BlendOptions::Identity(), 1.0F);
    for (const auto& [centre, colour] :
         {std::pair{Point{48, 40}, 0xff8a80U}, {{80, 40}, 0xffe082U}, {{64, 62}, 0x81d4faU}})
        target.DrawPolyCurve(Disc(centre, 27), 1.0F, FillBlendMode::Multiply,
                             BlendOptions::Identity(), Solid(colour), {}, {}, {},
                             WindingOrderMode::NonZero, true, true);
    target.PopCompositeAsFill({}, {});
}

void FadeShapes(RenderTarget& target)
{
    DrawCheckerboard(target);
    for (const auto& [centre, colour] :
         {std::pair{Point{48, 40}, 0xff5a4eU}, {{80, 40}, 0xffc93cU}, {{64, 62}, 0x2fa4e7U}})
        Paint(target, Disc(centre, 27), Solid(colour), 0.6F);
}

void FadeGroup(RenderTarget& target)
{
    DrawCheckerboard(target);
    target.PushComposite(Clear, FillBlendMode::Normal, BlendOptions::Identity(), 0.6F);
    DrawRings(target);
    target.PopCompositeAsFill({}, {});
}

void PaintOverGroup(RenderTarget& target)
{
    DrawCheckerboard(target);
    target.PushComposite(Clear, FillBlendMode::Normal, BlendOptions::Identity(), 1.0F);
    DrawRings(target);
    target.PopCompositeAsFill(Linear({0, 20}, {0, 90}, {{0, 0x1b2357, 0}, {1, 0x1b2357}}), {});
}

void ScaleGroup(RenderTarget& target)
{
    DrawCheckerboard(target);
    target.PushComposite(Clear, FillBlendMode::Normal, BlendOptions::Identity(), 1.0F);
    DrawRings(target);
    target.PopCompositeAsFill({}, Linear({24, 0}, {104, 0}, {{0, 0}, {1, 0, 0}}));
}

void MaskWithGroup(RenderTarget& target)
{
    DrawCheckerboard(target);
    target.PushComposite(Clear, FillBlendMode::Normal, BlendOptions::Identity(), 1.0F);
    Paint(target, Flower({64, 48}, 44, 8), Radial({64, 48}, 44, {{0, 0}, {0.6, 0}, {1, 0, 0.2}}));
    target.PopCompositeAsTransparency(Rainbow({64, 48}), {});
}

void DrawAlphaOfPattern(RenderTarget& target)
{
    DrawLandscape(target);
    const auto night = FillDescriptorConst::CreateBitmap(MakeStamp(), Raster::ExtendType::Mirror,
                                                         Raster::ResamplerType::Bicubic);
    target.PushComposite(Clear, FillBlendMode::Screen, BlendOptions::Identity(), 0.9F);
    Paint(target, Star({64, 48}, 46, 20, 5), Solid(0));
    target.PopCompositeAsTransparency({night, Affine::FromRect({50, 36, 78, 57})}, {});
}

void MoveTowardsPaint(RenderTarget& target)
{
    DrawLandscape(target);
    target.Interpolate(1.0F, FillBlendMode::Normal, BlendOptions::Identity(), Solid(0xfff3d6),
                       Radial({64, 48}, 80, {{0, 0, 0}, {1, 0, 0.95}}));
}

void MoveTowardsGroup(RenderTarget& target)
{
    DrawCheckerboard(target);
    target.PushComposite(Clear, FillBlendMode::Normal, BlendOptions::Identity(), 1.0F);
    DrawLandscape(target);
    target.PushComposite(Clear, FillBlendMode::Normal, BlendOptions::Identity(), 0.7F);
    Paint(target, Flower({64, 48}, 42, 7), Rainbow({64, 48}));
    target.PopCompositeAsFillAndInterpolate({}); // where the group is clear, so becomes the picture
    target.PopCompositeAsFill({}, {});
}

void MoveWithinGroup(RenderTarget& target)
{
    DrawLandscape(target);
    target.PushComposite(Clear, FillBlendMode::Normal, BlendOptions::Identity(), 0.8F);
    Paint(target, Flower({64, 48}, 42, 7), Solid(0));
    target.PopCompositeAsTransparencyAndInterpolate(Rainbow({64, 48}));
}

void DrawAlphaAlone(RenderTarget& target)
{
    DrawLandscape(target);
    target.PushComposite(RenderTarget::CompositeInit::CopyBackdropColour, FillBlendMode::Screen,
                         BlendOptions::Identity(), 1.0F);
    target.PushAlphaChannelOnly();
    Paint(target, Flower({64, 48}, 42, 7), Solid(0));
    target.PopAlphaChannelOnly();
    target.PopCompositeAsFill({}, {}); // the picture itself in the shape of the flower
}

void DrawInGrey(RenderTarget& target)
{
    DrawLandscape(target);
    const auto grey = target.PushSubRender({20, 12, 108, 84}, Raster::Format::IA8, {});
    DrawLandscape(*grey);
    target.PopSubRender({});
}

void DrawOnMatte(RenderTarget& target)
{
    DrawLandscape(target);
    const auto part = target.PushSubRender({20, 12, 108, 84}, Raster::Format::RGBA8, {});
    Paint(*part, Flower({64, 48}, 34, 7), Rainbow({64, 48}), 0.8F);
    target.PopSubRender(Renderer::ColourRGB::Create(Raster::PixelRGBA8{{255, 250, 235, 255}}));
}

void ShowPops(Page& page)
{
    page.Text("A group becomes transparent as a whole, its shapes as one:");
    page.Sample("group-shapes-faded", "FadeShapes", FadeShapes);
    page.Sample("group-faded", "FadeGroup", FadeGroup);
    page.Text(
        "Closing a group, one may paint over it, scale it by the alpha of a paint, or use its own "
        "alpha to scale a paint:");
    page.Sample("group-painted-over", "PaintOverGroup", PaintOverGroup);
    page.Sample("group-scaled", "ScaleGroup", ScaleGroup);
    page.Sample("group-as-transparency", "MaskWithGroup", MaskWithGroup);
    page.Sample("group-transparency-mode", "DrawAlphaOfPattern", DrawAlphaOfPattern);
}

void ShowInterpolation(Page& page)
{
    page.Text(
        "Instead of painting over the picture one can move it towards a paint, alpha included:");
    page.Sample("interpolate-paint", "MoveTowardsPaint", MoveTowardsPaint);
    page.Sample("interpolate-group", "MoveTowardsGroup", MoveTowardsGroup);
    page.Sample("interpolate-transparency", "MoveWithinGroup", MoveWithinGroup);
    page.Text("Where alpha alone is drawn, colour stays:");
    page.Sample("group-alpha-only", "DrawAlphaAlone", DrawAlphaAlone);
}

} // namespace

void ShowGroups(Page& page)
{
    page.Chapter("Groups", "A group begins transparent or with the picture below it. Shapes that "
                           "multiply see the picture only where the group began with its pixels:");
    page.Code("MultiplyInGroup");
    for (const auto& [init, name] :
         {std::pair{Clear, "Clear"},
          {RenderTarget::CompositeInit::ClearOnTouch, "ClearOnTouch"},
          {RenderTarget::CompositeInit::CopyBackdrop, "CopyBackdrop"},
          {RenderTarget::CompositeInit::CopyBackdropColour, "CopyBackdropColour"}})
        page.Tile(std::string("group-init-") + name,
                  std::string("MultiplyInGroup(target, RenderTarget::CompositeInit::") + name + ')',
                  [init](RenderTarget& target) { MultiplyInGroup(target, init); });
    ShowPops(page);
    ShowInterpolation(page);
    page.Text(
        "A part of the picture can be drawn by a target of its own, in another format and on a "
        "colour:");
    page.Sample("sub-render-grey", "DrawInGrey", DrawInGrey);
    page.Sample("sub-render-matte", "DrawOnMatte", DrawOnMatte);
}

} // namespace Gallery
