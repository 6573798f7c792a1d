#include "Chapters.h"
#include "Subjects.h"

namespace Gallery {

namespace {

void ClipToPath(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    target.PushClipCurvesPath(Flower({64, 48}, 46, 6), WindingOrderMode::NonZero);
    DrawLandscape(target);
    target.PopClipPath();
}

void ClipEvenOdd(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    target.PushClipCurvesPath(Flower({64, 48}, 46, 9), WindingOrderMode::EvenOdd);
    DrawLandscape(target);
    target.PopClipPath();
}

void ClipWithinClip(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    target.PushClipCurvesPath(Disc({48, 48}, 40), WindingOrderMode::EvenOdd);
    Paint(target, Sheet(), Solid(0xe0d3b8));
    target.PushClipCurvesPath(Disc({80, 48}, 40), WindingOrderMode::EvenOdd);
    DrawLandscape(target);
    target.PopClipPath();
    target.PopClipPath();
}

void ClipToUnion(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    target.PushClipPathGroup();
    target.PushClipCurvesPath(Disc({46, 48}, 34), WindingOrderMode::EvenOdd);
    target.PushClipCurvesPath(Star({82, 48}, 44, 26, 8), WindingOrderMode::EvenOdd);
    target.PopClipPathGroup();
    DrawLandscape(target);
    target.PopClipPath();
}

void ClipToManyPaths(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    const auto stars = Kernel::MakeCounted<Renderer::ConstPolyPolyCurve>();
    for (int i = 0; i < 12; ++i)
        stars->Add(Star({0, 0}, 15, 7, 5),
                   Affine::Translation(19 + 30 * (i % 4), 17 + 31 * (i / 4)));
    target.PushClipPolyCurvesPath(stars, WindingOrderMode::NonZero);
    DrawLandscape(target);
    target.PopClipPath();
}

void ClipDevice(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    for (int i = 0; i < 4; ++i) {
        target.PushLogicalDeviceClip({4.0 + 31 * i, 10.0 + 6 * i, 31.0 + 31 * i, 68.0 + 6 * i});
        DrawLandscape(target);
        target.PopDeviceClip();
    }
}

void ClipToMask(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf6efe2));
    const auto mask = Raster::DynamicBuffer::Create(Raster::Format::M8, 128, 96);
    for (unsigned y = 0; y < 96; ++y)
        for (unsigned x = 0; x < 128; ++x)
            mask->GetRow(y)[x] = static_cast<unsigned char>((x % 16) * (y % 16) * 255 / 225);
    target.PushClippingMask({0, 0, 128, 96}, mask);
    DrawLandscape(target);
    target.PopClippingMask();
}

} // namespace

void ShowClips(Page& page)
{
    page.Chapter("Clips", "By paths, within each other or united, and by rectangles:");
    page.Sample("clip-path", "ClipToPath", ClipToPath);
    page.Sample("clip-even-odd", "ClipEvenOdd", ClipEvenOdd);
    page.Sample("clip-nested", "ClipWithinClip", ClipWithinClip);
    page.Sample("clip-group", "ClipToUnion", ClipToUnion);
    page.Sample("clip-set", "ClipToManyPaths", ClipToManyPaths);
    page.Sample("clip-device", "ClipDevice", ClipDevice);
    page.Text("By a mask, whose pixels scale what is drawn:");
    page.Sample("clip-mask", "ClipToMask", ClipToMask);
}

} // namespace Gallery
