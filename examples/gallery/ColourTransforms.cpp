#include <renderer/paint/ColourAdjustments.h>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

using namespace Renderer;

template<class Adjustment>
void DrawWith(RenderTarget& target, const Adjustment& adjustment)
{
    target.PushColourTransform(Kernel::MakeCounted<Adjustment>(adjustment));
    DrawLandscape(target);
    target.PopColourTransform();
}

void Brighten(RenderTarget& target)
{
    DrawWith(target, BrightnessContrastAdjustment({.brightness = 0.25F, .contrast = 0.3F}));
}

void BendCurves(RenderTarget& target)
{
    const ToneCurve more({{0, 0}, {0.3F, 0.45F}, {1, 1}});
    const ToneCurve less({{0, 0.1F}, {0.6F, 0.45F}, {1, 0.85F}});
    DrawWith(target, CurvesAdjustment({.master = {}, .red = more, .green = {}, .blue = less}));
}

void SetLevels(RenderTarget& target)
{
    const LevelsRange range{.inputBlack = 0.1F, .inputWhite = 0.8F, .gamma = 1.4F};
    DrawWith(target, LevelsAdjustment({.master = range, .red = {}, .green = {}, .blue = {}}));
}

void TurnHues(RenderTarget& target)
{
    DrawWith(target, HueSaturationLightnessAdjustment({.hue = 140, .saturation = 0.2F}));
}

void MixChannels(RenderTarget& target)
{
    DrawWith(target, ChannelMixerAdjustment({.red = {0.39F, 0.77F, 0.19F, 0},
                                             .green = {0.35F, 0.69F, 0.17F, 0},
                                             .blue = {0.27F, 0.53F, 0.13F, 0}}));
}

void CoolDown(RenderTarget& target)
{
    DrawWith(target, WhiteBalanceAdjustment({.temperature = 3600}));
}

void MakeGreys(RenderTarget& target)
{
    DrawWith(target, BlackAndWhiteAdjustment({.reds = 0.7F, .yellows = 1.1F, .blues = 0.05F}));
}

void MakeNegative(RenderTarget& target)
{
    DrawWith(target, InvertAdjustment());
}

void LeaveFiveLevels(RenderTarget& target)
{
    DrawWith(target, PosteriseAdjustment({.levels = 5}));
}

void LeaveTwoTones(RenderTarget& target)
{
    DrawWith(target, ThresholdAdjustment({.threshold = 0.45F}));
}

void AdjustTwice(RenderTarget& target)
{
    target.PushColourTransform(Kernel::MakeCounted<PosteriseAdjustment>(PosteriseSettings{6}));
    DrawWith(target, HueSaturationLightnessAdjustment({.hue = -60}));
    target.PopColourTransform();
}

} // namespace

void ShowColourTransforms(Page& page)
{
    page.Chapter("Colour transforms", "They act on whatever is drawn while they are in force.");
    page.Code("DrawWith");
    page.Sample("colour-none", "DrawLandscape", DrawLandscape);
    page.Sample("colour-brightness", "Brighten", Brighten);
    page.Sample("colour-curves", "BendCurves", BendCurves);
    page.Sample("colour-levels", "SetLevels", SetLevels);
    page.Sample("colour-hue", "TurnHues", TurnHues);
    page.Sample("colour-mixer", "MixChannels", MixChannels);
    page.Sample("colour-white-balance", "CoolDown", CoolDown);
    page.Sample("colour-black-and-white", "MakeGreys", MakeGreys);
    page.Sample("colour-invert", "MakeNegative", MakeNegative);
    page.Sample("colour-posterise", "LeaveFiveLevels", LeaveFiveLevels);
    page.Sample("colour-threshold", "LeaveTwoTones", LeaveTwoTones);
    page.Text("Several act in the order in which they were pushed:");
    page.Sample("colour-two", "AdjustTwice", AdjustTwice);
}

} // namespace Gallery
