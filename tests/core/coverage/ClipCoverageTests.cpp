#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include <renderer/core/coverage/AddPolygons.h>
#include <renderer/core/coverage/ClipCoverage.h>
#include <renderer/core/coverage/MultiplyCovers.h>

namespace Renderer::Coverage {
namespace {

using Kernel::RectT;

Kernel::Counted<const ClipCoverage> MakeClip(const Geometry::PolyPolygonType<double>& polygons,
                                             const RectT<int>& rect,
                                             const ClipCoverage* within = nullptr)
{
    CoverageStore store;
    store.Reset(rect);
    AddPolygons(store, polygons, {});
    return ClipCoverage::FromStore(store, {false, nullptr}, within);
}

std::vector<unsigned char> ReadRow(const ClipCoverage& clip, int y, int x = 0, unsigned length = 60)
{
    std::vector<unsigned char> row(length, 77);
    clip.ReadRow(x, y, length, row.data());
    return row;
}

/// Quadrilaterals in any position, upright ones on quarters of pixels, and ones with a hole.
Geometry::PolyPolygonType<double> MakeShape(std::mt19937& random)
{
    std::uniform_real_distribution<double> place(-5, 65);
    const auto quarter = [&] { return std::floor(place(random) * 4) / 4; };
    const auto kind = random() % 3;
    Geometry::PolyPolygonType<double> shape;
    if (kind == 0) {
        shape.BeginPolygon();
        for (int i = 0; i < 4; ++i)
            shape.AddPoint({place(random), place(random)});
        return shape;
    }
    for (unsigned i = 0; i < kind; ++i) {
        const double x = quarter(), y = quarter(), right = quarter(), bottom = quarter();
        shape.BeginPolygon();
        for (const Kernel::PointT<double> point :
             {Kernel::PointT<double>{x, y}, {x, bottom}, {right, bottom}, {right, y}})
            shape.AddPoint(point);
    }
    return shape;
}

TEST(ClipCoverage, CombinesByProductAndUnion)
{
    std::mt19937 random(7);
    for (int n = 0; n < 200; ++n) {
        const auto shapeA = MakeShape(random), shapeB = MakeShape(random);
        const auto a = MakeClip(shapeA, {0, 0, 60, 50}), b = MakeClip(shapeB, {10, 5, 70, 60});
        const auto product = ClipCoverage::Multiply(*a, *b), united = ClipCoverage::Unite(*a, *b);
        // A path can be multiplied as it is swept; products and unions can be factors themselves.
        const auto swept = MakeClip(shapeB, {10, 5, 70, 60}, a.Get());
        const auto square = ClipCoverage::Multiply(*united, *product);
        for (int y = 0; y < 60; ++y) {
            const auto rowA = ReadRow(*a, y), rowB = ReadRow(*b, y);
            const auto rowProduct = ReadRow(*product, y), rowUnited = ReadRow(*united, y);
            const auto rowSquare = ReadRow(*square, y);
            ASSERT_EQ(ReadRow(*swept, y), rowProduct) << y;
            for (int x = 0; x < 60; ++x) {
                const auto i = std::size_t(x);
                ASSERT_EQ(rowProduct[i], (rowA[i] * rowB[i] + 127) / 255) << x << ", " << y;
                ASSERT_EQ(rowUnited[i], 255 - ((255 - rowA[i]) * (255 - rowB[i]) + 127) / 255);
                ASSERT_EQ(rowSquare[i], (rowProduct[i] * rowUnited[i] + 127) / 255);
            }
        }
    }
}

TEST(ClipCoverage, RowsComeFromLeftToRightWithoutOverlap)
{
    std::mt19937 random(11);
    for (int n = 0; n < 50; ++n) {
        const auto clip = ClipCoverage::Unite(*MakeClip(MakeShape(random), {0, 0, 60, 50}),
                                              *MakeClip(MakeShape(random), {10, 5, 70, 60}));
        for (int y = clip->GetRect().top; y < clip->GetRect().bottom; ++y) {
            int x = clip->GetRect().left;
            for (const auto* run = clip->BeginRow(y); run != clip->EndRow(y); ++run) {
                ASSERT_GE(run->x, x);
                ASSERT_GT(run->length, 0U);
                ASSERT_TRUE(run->bytes != ClipCoverage::Solid || run->cover != 0);
                x = run->x + int(run->length);
            }
            ASSERT_LE(x, clip->GetRect().right);
        }
    }
}

TEST(ClipCoverage, KnowsRectanglesAndEmptiness)
{
    const auto clip = ClipCoverage::FromRect({5, 2, 20, 4});
    EXPECT_EQ(ReadRow(*clip, 1, 0, 20), std::vector<unsigned char>(20, 0));
    EXPECT_EQ(ReadRow(*clip, 3, 4, 3), (std::vector<unsigned char>{0, 255, 255}));
    EXPECT_EQ(ReadRow(*clip, 3, 18, 4), (std::vector<unsigned char>{255, 255, 0, 0}));
    EXPECT_EQ(ReadRow(*ClipCoverage::FromRect({}), 4, 0, 8), std::vector<unsigned char>(8, 0));
    EXPECT_TRUE(clip->IsFull());
    EXPECT_FALSE(ClipCoverage::FromRect({})->IsFull());
    // What lies outside the window does not make a rectangle less full, what lies inside does.
    const auto makeRect = [](double left, double bottom) {
        return MakeClip(Geometry::PolyPolygonType<double>(RectT<double>{left, -3, 99.5, bottom}),
                        {0, 0, 60, 50});
    };
    EXPECT_TRUE(makeRect(-0.5, 50.25)->IsFull());
    EXPECT_FALSE(makeRect(0.5, 50.25)->IsFull());
    EXPECT_FALSE(makeRect(-0.5, 49.25)->IsFull());
}

TEST(ClipCoverage, VectorsMultiplyLikeBytes)
{
    std::vector<unsigned char> a(65536), b(65536), out(65536 + 1, 9);
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = static_cast<unsigned char>(i % 256);
        b[i] = static_cast<unsigned char>(i / 256);
    }
    MultiplyCovers(out.data(), a.data(), b.data(), 65536);
    for (std::size_t i = 0; i < a.size(); ++i)
        ASSERT_EQ(out[i], (a[i] * b[i] + 127) / 255);
    for (unsigned length = 0; length < 30; ++length) {
        std::fill(out.begin(), out.end(), static_cast<unsigned char>(9));
        MultiplyCovers(out.data(), a.data() + 200, static_cast<unsigned char>(77), length);
        for (unsigned i = 0; i < length; ++i)
            ASSERT_EQ(out[i], (a[200 + i] * 77 + 127) / 255) << length;
        ASSERT_EQ(out[length], 9);
    }
}

} // namespace
} // namespace Renderer::Coverage
