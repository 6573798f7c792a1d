#include <cctype>
#include <string>

#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

void PaintInMode(RenderTarget& target, FillBlendMode::BlendMode mode)
{
    DrawLandscape(target);
    target.DrawPolyCurve(Disc({46, 48}, 36), 1.0F, mode, BlendOptions::Identity(),
                         Rainbow({46, 48}), {}, {}, {}, WindingOrderMode::NonZero, true, true);
    target.DrawPolyCurve(Disc({104, 48}, 16), 1.0F, mode, BlendOptions::Identity(),
                         Linear({104, 32}, {104, 64}, {{0, 0xffffff}, {1, 0x000000}}), {}, {}, {},
                         WindingOrderMode::NonZero, true, true);
}

void CloseInMode(RenderTarget& target, FillBlendMode::BlendMode mode)
{
    DrawCheckerboard(target);
    target.PushComposite(RenderTarget::CompositeInit::Clear, FillBlendMode::Normal,
                         BlendOptions::Identity(), 1.0F);
    DrawLandscape(target);
    target.PushComposite(RenderTarget::CompositeInit::Clear, mode, BlendOptions::Identity(), 1.0F);
    Paint(target, Flower({64, 48}, 42, 7), Radial({64, 48}, 42, {{0, 0, 0.4}, {1, 0}}));
    target.PopCompositeAsFill({}, {});
    target.PopCompositeAsFill({}, {});
}

std::string GetName(FillBlendMode::BlendMode mode)
{
    return std::string(std::string_view(FillBlendMode::ToString(mode, false)));
}

} // namespace

void ShowBlendModes(Page& page)
{
    page.Chapter(
        "Blend modes",
        "All hues, and all greys from white to black, over a picture. The modes follow W3C "
        "Compositing and Blending where it has them.");
    page.Code("PaintInMode");
    for (int i = 0; i < FillBlendMode::SpanModeCount; ++i) {
        const auto mode = static_cast<FillBlendMode::BlendMode>(i);
        page.Tile("blend-" + GetName(mode),
                  "PaintInMode(target, FillBlendMode::" + GetName(mode) + ')',
                  [mode](RenderTarget& target) { PaintInMode(target, mode); });
    }
    page.Text(
        "Two more are for groups: they change how much of the picture below remains. The flower "
        "is darkest, that is most opaque, at its tips.");
    page.Code("CloseInMode");
    for (const auto mode : {FillBlendMode::Normal, FillBlendMode::Erase, FillBlendMode::Mask})
        page.Tile("group-mode-" + GetName(mode),
                  "CloseInMode(target, FillBlendMode::" + GetName(mode) + ')',
                  [mode](RenderTarget& target) { CloseInMode(target, mode); });
}

} // namespace Gallery
