#include <random>

#include <gtest/gtest.h>

#include <renderer/core/coverage/AddPolygons.h>
#include <renderer/core/coverage/ClipCoverage.h>

namespace Renderer::Coverage {
namespace {

using Kernel::RectT;

Kernel::Counted<const ClipCoverage> MakeClip(const Geometry::PolyPolygonType<double>& polygons,
                                             const RectT<int>& rect)
{
    CoverageStore store;
    store.Reset(rect);
    AddPolygons(store, polygons, {});
    return ClipCoverage::FromStore(store, {false, nullptr});
}

std::vector<unsigned char> ReadRow(const ClipCoverage& clip, int y, int x = 0, unsigned length = 60)
{
    std::vector<unsigned char> row(length, 77);
    clip.ReadRow(x, y, length, row.data());
    return row;
}

TEST(ClipCoverage, CombinesByProductAndUnion)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(-5, 65);
    for (int n = 0; n < 40; ++n) {
        Geometry::PolyPolygonType<double> shapes[2];
        for (auto& shape : shapes) {
            shape.BeginPolygon();
            for (int i = 0; i < 4; ++i)
                shape.AddPoint({place(random), place(random)});
        }
        const RectT<int> rect{0, 0, 60, 50};
        const auto a = MakeClip(shapes[0], rect), b = MakeClip(shapes[1], {10, 5, 70, 60});
        const auto product = ClipCoverage::Multiply(*a, *b), united = ClipCoverage::Unite(*a, *b);
        for (int y = 0; y < 60; ++y) {
            const auto rowA = ReadRow(*a, y), rowB = ReadRow(*b, y);
            const auto rowProduct = ReadRow(*product, y), rowUnited = ReadRow(*united, y);
            for (int x = 0; x < 60; ++x) {
                const auto i = std::size_t(x);
                ASSERT_EQ(rowProduct[i], (rowA[i] * rowB[i] + 127) / 255) << x << ", " << y;
                ASSERT_EQ(rowUnited[i], 255 - ((255 - rowA[i]) * (255 - rowB[i]) + 127) / 255);
            }
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
}

} // namespace
} // namespace Renderer::Coverage
