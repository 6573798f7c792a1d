// Clips and shapes combined by their common area rather than by the product of their coverages.

#include <algorithm>
#include <cmath>
#include <random>

#include "TargetFixture.h"

namespace Renderer {
namespace {

using Geometry::WindingOrderMode;
using Kernel::MakeCounted;
using Point = Kernel::PointT<double>;
using Points = std::vector<Point>;

/// Paths that are united, and the rule that each is filled by.
struct Enclosed
{
    std::vector<std::vector<Points>> paths;
    WindingOrderMode winding = WindingOrderMode::NonZero;
};

Kernel::Counted<const PolyPolygon> MakePath(const std::vector<Points>& contours)
{
    auto path = MakeCounted<PolyPolygon>();
    for (const Points& points : contours) {
        path->BeginPolygon();
        path->AddPoints(points);
    }
    return path;
}

class PerfectClippingTest : public TargetTest
{
protected:
    PerfectClippingTest() { target->SetPerfectClipping(true); }

    void PushClip(const Enclosed& area, BitmapRenderTarget& to) const
    {
        if (area.paths.size() > 1)
            to.PushClipPathGroup();
        for (const auto& path : area.paths)
            to.PushClipPath(MakePath(path), area.winding);
        if (area.paths.size() > 1)
            to.PopClipPathGroup();
    }

    /// Draws the last area under the others as clips.
    void Draw(const std::vector<Enclosed>& areas, BitmapRenderTarget& to) const
    {
        for (std::size_t i = 0; i + 1 < areas.size(); ++i)
            PushClip(areas[i], to);
        to.DrawPolyPolygon(MakePath(areas.back().paths.front()), 1.0F, FillBlendMode::Normal,
                           BlendOptions::Identity(), Solid(Red), {}, areas.back().winding, true,
                           true);
        for (std::size_t i = 0; i + 1 < areas.size(); ++i)
            to.PopClipPath();
    }

    int AlphaAt(int x, int y) const { return At(x, y).Alpha(); }
};

/// A convex polygon with corners on a circle.
Points MakeConvex(std::mt19937& random)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const Point centre{8 + 24 * unit(random), 6 + 18 * unit(random)};
    const double radius = 4 + 12 * unit(random);
    std::vector<double> angles(3 + random() % 4);
    for (double& angle : angles)
        angle = 6.283185307179586 * unit(random);
    std::sort(angles.begin(), angles.end());
    if (random() % 2)
        std::reverse(angles.begin(), angles.end());
    Points points;
    for (const double angle : angles)
        points.push_back(
            {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)});
    return points;
}

bool IsInside(const std::vector<Points>& path, WindingOrderMode rule, Point p)
{
    int winding = 0;
    for (const Points& points : path)
        for (std::size_t i = 0; i < points.size(); ++i) {
            const Point a = points[i], b = points[(i + 1) % points.size()];
            if ((a.y <= p.y) == (b.y <= p.y))
                continue;
            if (a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y) <= p.x)
                winding += a.y < b.y ? 1 : -1;
        }
    return rule == WindingOrderMode::EvenOdd ? (winding & 1) != 0 : winding != 0;
}

/// The share of a pixel that all areas have in common, by many samples.
double GetCommonShare(const std::vector<Enclosed>& areas, int x, int y)
{
    constexpr int Samples = 40;
    int count = 0;
    for (int j = 0; j < Samples; ++j)
        for (int i = 0; i < Samples; ++i) {
            const Point p{x + (i + 0.5) / Samples, y + (j + 0.5) / Samples};
            count += std::all_of(areas.begin(), areas.end(), [&](const Enclosed& area) {
                return std::any_of(area.paths.begin(), area.paths.end(), [&](const auto& path) {
                    return IsInside(path, area.winding, p);
                });
            });
        }
    return double(count) / (Samples * Samples);
}

TEST_F(PerfectClippingTest, IsTheAreaThatShapesAndClipsHaveInCommon)
{
    std::mt19937 random(4711);
    for (int scene = 0; scene < 24; ++scene) {
        std::vector<Enclosed> areas(2 + random() % 3);
        for (Enclosed& area : areas) {
            area.paths.push_back({MakeConvex(random)});
            if (random() % 3 == 0)
                area.paths.push_back({MakeConvex(random)});
        }
        areas.back().paths.resize(1);
        if (scene % 4 == 0) { // a frame around a copy of the first clip: edges that coincide
            areas.back().winding = WindingOrderMode::EvenOdd;
            areas.back().paths = {{areas[0].paths[0][0], {{-9, -9}, {99, -9}, {99, 99}, {-9, 99}}}};
        }
        target = Make();
        target->SetPerfectClipping(true);
        Draw(areas, *target);
        double worst = 0;
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x)
                worst =
                    std::max(worst, std::abs(GetCommonShare(areas, x, y) - AlphaAt(x, y) / 255.0));
        // Samples miss up to a few hundredths along an edge themselves.
        EXPECT_LE(worst, 0.03) << "scene " << scene;
    }
}

TEST_F(PerfectClippingTest, AShapeClippedByItselfStaysAsItIs)
{
    const auto circle = MakeCounted<Geometry::PolyCurveDbl>();
    circle->AddEllipse({20.3, 15.2}, 13.7, 11.1);
    const auto draw = [&](BitmapRenderTarget& to) {
        to.DrawPolyCurve(circle, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(), Solid(Red),
                         {}, {}, {}, WindingOrderMode::NonZero, true, true);
    };
    for (const double gamma : {1.0, 2.0}) {
        const auto plain = Make();
        plain->SetGamma(gamma);
        draw(*plain);
        target = Make();
        target->SetPerfectClipping(true);
        target->SetGamma(gamma);
        for (int i = 0; i < 3; ++i)
            target->PushClipCurvesPath(circle, WindingOrderMode::EvenOdd);
        draw(*target);
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x)
                EXPECT_NEAR(AlphaAt(x, y), PixelOf(plain, x, y).Alpha(), gamma > 1.0 ? 3 : 1)
                    << x << ", " << y;
    }
}

TEST_F(PerfectClippingTest, HalfPixelsStayHalves)
{
    const Kernel::RectT<double> half{2.5, 3.5, 10.5, 9.5};
    target->PushLogicalDeviceClip(half); // not on whole pixels, so a path as well
    target->PushClipRectanglePath(half);
    Fill(half, Red);
    EXPECT_EQ(AlphaAt(2, 5), 128);
    EXPECT_EQ(AlphaAt(10, 5), 128);
    EXPECT_EQ(AlphaAt(2, 3), 64);
    EXPECT_EQ(AlphaAt(5, 5), 255);
    EXPECT_EQ(AlphaAt(11, 5), 0);
    // A group is cut by the area that the clips have in common.
    target->Clear();
    target->PushComposite(RenderTarget::CompositeInit::Clear, FillBlendMode::Normal,
                          BlendOptions::Identity(), 1.0F);
    Fill({0, 0, 40, 30}, Blue);
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(At(2, 5), (PixelRGBA8{{0, 0, 128, 128}}));
    EXPECT_EQ(At(2, 3), (PixelRGBA8{{0, 0, 64, 64}}));
    // Off, coverages are multiplied.
    target->Clear();
    target->SetPerfectClipping(false);
    Fill(half, Red);
    EXPECT_NEAR(AlphaAt(2, 5), 32, 1);
}

/// A polygon whose sides all cross about half of the others.
Points MakeStar(int corners, const Point& centre, double radius)
{
    Points points;
    for (int i = 0; i < corners; ++i)
        points.push_back(
            {centre.x + radius * std::cos(i * 2.39996), centre.y + radius * std::sin(i * 2.39996)});
    return points;
}

TEST_F(PerfectClippingTest, TilesAgreeWithThePage)
{
    std::mt19937 random(815);
    for (int scene = 0; scene < 12; ++scene) {
        std::vector<Enclosed> areas(3);
        for (Enclosed& area : areas)
            area.paths.push_back({MakeConvex(random), MakeConvex(random)});
        if (scene >= 8) { // ever more crossings to a pixel, up to too many
            const int corners = 10 << (scene - 8) * 2;
            areas = {{{{MakeStar(corners, {20, 15}, 14)}}, WindingOrderMode::EvenOdd},
                     {{{MakeStar(corners, {21.3, 15.7}, 14)}}, WindingOrderMode::EvenOdd}};
        }
        target = Make();
        target->SetPerfectClipping(true);
        Draw(areas, *target);
        const auto tiled = Make();
        const auto buffer = tiled->GetBuffer();
        tiled->SetPerfectClipping(true);
        for (int top = 0; top < Height; top += 11)
            for (int left = 0; left < Width; left += 13) {
                ASSERT_TRUE(tiled->AttachBuffer(
                    buffer, {left, top, std::min(left + 13, Width), std::min(top + 11, Height)}));
                Draw(areas, *tiled);
            }
        EXPECT_EQ(BytesOf(tiled), BytesOf(target)) << "scene " << scene;
    }
}

TEST_F(PerfectClippingTest, ShapesOnBothSidesOfAClipsEdgeLeaveNoSeam)
{
    const Enclosed kite{{{{{20, 1}, {38, 9}, {27, 28}, {2, 10}}}}};
    const auto whole = Make();
    Draw({kite}, *whole);
    const auto drawSide = [&](const Points& side) {
        const auto drawn = Make();
        drawn->SetPerfectClipping(true);
        Draw({{{{side}}}, {{{side}}, WindingOrderMode::EvenOdd}, kite}, *drawn);
        return drawn;
    };
    const auto left = drawSide({{-5, -5}, {17.3, -5}, {24.9, 40}, {-5, 40}});
    const auto right = drawSide({{17.3, -5}, {50, -5}, {50, 40}, {24.9, 40}});
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x)
            EXPECT_NEAR(PixelOf(left, x, y).Alpha() + PixelOf(right, x, y).Alpha(),
                        PixelOf(whole, x, y).Alpha(), 2);
}

} // namespace
} // namespace Renderer
