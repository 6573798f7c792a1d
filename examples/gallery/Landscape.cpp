// The pictures that blend modes, groups and resamplers work on.
#include <cmath>
#include <numbers>

#include "Subjects.h"

namespace Gallery {

namespace {

void DrawSky(RenderTarget& target)
{
    Paint(
        target, Sheet(),
        Linear(
            {0, 0}, {0, 72},
            {{0, 0x1b2357}, {0.35, 0x6a3f99}, {0.62, 0xe0607e}, {0.83, 0xffac66}, {1, 0xffe3a6}}));
    for (const Point star :
         {Point{14, 9}, {31, 20}, {50, 6}, {71, 15}, {90, 5}, {113, 12}, {122, 25}})
        Paint(target, Disc(star, 0.8), Solid(0xffffff, 0.8));
    Paint(target, Disc({84, 50}, 40),
          Radial({84, 50}, 40, {{0, 0xfff0c0, 0.75}, {1, 0xffb46a, 0}}));
    Paint(target, Disc({84, 50}, 12), Radial({84, 50}, 12, {{0, 0xfffbe8}, {1, 0xffd97a}}));
}

void DrawHills(RenderTarget& target)
{
    const auto far = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    far->MoveTo({0, 54});
    for (const Point p : {Point{16, 41},
                          {25, 48},
                          {40, 31},
                          {57, 52},
                          {68, 46},
                          {82, 58},
                          {98, 45},
                          {111, 52},
                          {128, 40},
                          {128, 80},
                          {0, 80}})
        far->LineTo(p);
    far->Close();
    Paint(target, far, Linear({0, 32}, {0, 68}, {{0, 0x5b3f86}, {1, 0xc4708c}}));

    const auto near = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    near->MoveTo({0, 58});
    near->CurveTo({20, 50}, {38, 56}, {56, 66});
    near->CurveTo({78, 60}, {104, 56}, {128, 62});
    near->LineTo({128, 80});
    near->LineTo({0, 80});
    near->Close();
    Paint(target, near, Linear({0, 54}, {0, 72}, {{0, 0x2f6b62}, {1, 0x193a52}}));
}

void DrawLake(RenderTarget& target)
{
    Paint(target,
          Kernel::MakeCounted<Geometry::PolyCurveDbl>(Kernel::RectT<double>{0, 70, 128, 96}),
          Linear({0, 70}, {0, 96}, {{0, 0xf2a184}, {0.45, 0x9a5a98}, {1, 0x2c3478}}));
    for (int i = 0; i < 7; ++i) {
        const auto glint = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        glint->AddEllipse({84 + 2.5 * std::sin(2.3 * i), 72.5 + 3.4 * i}, 11 - 0.9 * i, 0.9);
        Paint(target, glint, Solid(0xffe9b4, 0.85 - 0.08 * i));
    }
}

void DrawTrees(RenderTarget& target)
{
    const auto trees = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    trees->MoveTo({-2, 96});
    for (const auto& [x, height] : {Point{5, 46}, {16, 34}, {25, 24}}) {
        const double width = height / 4.5;
        for (int tier = 0; tier < 3; ++tier) {
            const double top = 94 - height * (1 - 0.24 * tier), half = width * (0.5 + 0.25 * tier);
            trees->MoveTo({x, top});
            trees->LineTo({x + half, top + height * 0.36});
            trees->LineTo({x - half, top + height * 0.36});
            trees->Close();
        }
    }
    trees->MoveTo({-1, 97});
    trees->LineTo({-1, 86});
    trees->CurveTo({14, 84}, {30, 88}, {44, 97});
    trees->Close();
    target.DrawPolyCurve(trees, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                         Solid(0x121a33), {}, {}, {}, WindingOrderMode::NonZero, true, true);
}

Target MakeScaled(unsigned width, unsigned height)
{
    const Target target = MakeTarget(Raster::Format::RGBA8, width, height);
    target->SetLogToDevTransform(Affine::Scaling(static_cast<double>(width) / PictureWidth,
                                                 static_cast<double>(height) / PictureHeight));
    return target;
}

Bitmap Freeze(const Target& target)
{
    return Kernel::MakeCounted<Raster::DynamicBitmap>(target->GetBuffer());
}

} // namespace

void Paint(RenderTarget& target, const Path& path, const FillDescriptorConst& fill, float opacity)
{
    target.DrawPolyCurve(path, opacity, FillBlendMode::Normal, BlendOptions::Identity(), fill, {},
                         {}, {}, WindingOrderMode::NonZero, true, true);
}

void DrawCheckerboard(RenderTarget& target)
{
    Paint(target, Sheet(), Solid(0xf4f4f4));
    for (int y = 0; y < 12; ++y)
        for (int x = y % 2; x < 16; x += 2)
            target.DrawRectangle(8.0 * x, 8.0 * y, 8.0 * x + 8, 8.0 * y + 8, 1.0F, Solid(0xd4d8de),
                                 {}, {});
}

void DrawLandscape(RenderTarget& target)
{
    DrawSky(target);
    DrawHills(target);
    DrawLake(target);
    DrawTrees(target);
}

Bitmap MakeLandscape(unsigned width, unsigned height)
{
    const Target target = MakeScaled(width, height);
    DrawLandscape(*target);
    return Freeze(target);
}

Bitmap MakeWedges(unsigned width, unsigned height)
{
    const Target target = MakeScaled(width, height);
    const Point centre{64, 48};
    Paint(*target, Sheet(), Solid(0xfdfbf4));
    constexpr int Wedges = 36;
    for (int i = 0; i < Wedges; ++i) {
        const auto wedge = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        wedge->MoveTo(centre);
        for (const double side : {0.0, 0.5}) {
            const double angle = (i + side) * 2.0 * std::numbers::pi / Wedges;
            wedge->LineTo({centre.x + 90 * std::cos(angle), centre.y + 90 * std::sin(angle)});
        }
        wedge->Close();
        Paint(*target, wedge, Solid(i % 3 == 0 ? 0xc0392b : 0x1d2b53));
    }
    return Freeze(target);
}

Bitmap MakeStamp()
{
    const Target target = MakeTarget(Raster::Format::RGBA8, 48, 36);
    Paint(*target, Sheet(),
          Linear({0, 0}, {10, 36},
                 {{0, 0x9fd8ef}, {0.72, 0xfdf3d0}, {0.72, 0x8cbf6a}, {1, 0x3f7d4e}}));
    Paint(*target, Disc({8, 8}, 4), Solid(0xffb74d));
    const auto body = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    body->MoveTo({3, 20});
    body->CurveTo({10, 32}, {28, 34}, {36, 20});
    body->CurveTo({38, 16}, {42, 15}, {45, 16});
    body->CurveTo({42, 6}, {31, 5}, {28, 13});
    body->CurveTo({22, 20}, {12, 18}, {3, 20});
    body->Close();
    Paint(*target, body, Linear({4, 0}, {44, 0}, {{0, 0x1c7c8c}, {0.6, 0x35b9a7}, {1, 0xf2c14e}}));
    const auto wing = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    wing->MoveTo({10, 21});
    wing->CurveTo({16, 28}, {26, 28}, {30, 17});
    wing->CurveTo({24, 22}, {16, 21}, {10, 21});
    wing->Close();
    Paint(*target, wing, Solid(0x14505c));
    Paint(*target, Disc({35, 11.5}, 1.7), Solid(0x16202c));
    return Freeze(target);
}

} // namespace Gallery
