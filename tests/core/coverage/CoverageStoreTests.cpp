// The coverage store against AGG's own rasteriser, byte for byte.

#include <cmath>
#include <limits>
#include <new>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "StockAgg.h"
#include <renderer/core/coverage/AddPolygons.h>
#include <renderer/core/coverage/CoverageStore.h>
#include <renderer/core/RenderTargetRasterizer.h>

namespace Renderer {
namespace {

using Coverage::CoverageStore;
using Kernel::RectT;
using Polygons = Geometry::PolyPolygonType<double>;

/// Kept between calls, as a target keeps it: what a path leaves behind would show in the next.
CoverageStore& SharedStore()
{
    static CoverageStore store;
    return store;
}

template<class Sink = PictureSink>
CoveragePicture RenderWithStore(const Polygons& polygons, bool evenOdd, const RectT<int>& window)
{
    CoverageStore& store = SharedStore();
    store.Reset(window);
    Coverage::AddPolygons(store, polygons, {});
    CoveragePicture picture(window);
    Sink sink(picture);
    store.Sweep(
        {evenOdd, nullptr},
        [&](int y) {
            sink.BeginRow(y);
            return true;
        },
        sink);
    return picture;
}

void ExpectSame(const Polygons& polygons, const RectT<int>& window, const char* what, int number)
{
    for (const bool evenOdd : {true, false}) {
        const CoveragePicture ours = RenderWithStore(polygons, evenOdd, window);
        const CoveragePicture stock = RenderWithStockAgg(polygons, evenOdd, window);
        ASSERT_TRUE(ours.GetBytes() == stock.GetBytes())
            << what << " number " << number << (evenOdd ? " even-odd" : " non-zero");
    }
}

Polygons MakeStar(double cx, double cy, double radius, int points, int skip, double phase = 0.3)
{
    Polygons polygons;
    polygons.BeginPolygon();
    for (int i = 0; i < points; ++i) {
        const double angle = phase + 2.0 * std::numbers::pi * i * skip / points;
        polygons.AddPoint({cx + radius * std::cos(angle), cy + radius * std::sin(angle)});
    }
    return polygons;
}

class RandomPolygons
{
public:
    /// Several polygons with corners spread over ±\p reach about the middle of a 100 × 80 window;
    /// some corners lie on whole pixels, repeat, or share a coordinate with the one before.
    Polygons Make(double reach, int maxPoints)
    {
        Polygons polygons;
        for (int n = Pick(1, 3); n > 0; --n) {
            polygons.BeginPolygon();
            Kernel::PointT<double> last{};
            for (int k = Pick(1, maxPoints); k > 0; --k) {
                Kernel::PointT<double> p{50.0 + Spread(reach), 40.0 + Spread(reach)};
                switch (Pick(0, 9)) {
                case 0:
                    p = {std::round(p.x), std::round(p.y)};
                    break;
                case 1:
                    p.x = last.x;
                    break;
                case 2:
                    p.y = last.y;
                    break;
                case 3:
                    p = last;
                    break;
                case 4:
                    p = {last.x + Spread(1.5), last.y + Spread(1.5)};
                    break;
                default:
                    break;
                }
                polygons.AddPoint(p);
                last = p;
            }
        }
        return polygons;
    }

    int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
    double Spread(double reach)
    {
        return std::uniform_real_distribution<double>(-reach, reach)(m_random);
    }

private:
    std::mt19937 m_random{12345};
};

TEST(CoverageStore, EqualsStockAggOverRandomPolygons)
{
    RandomPolygons random;
    const RectT<int> whole{0, 0, 100, 80};
    for (int i = 0; i < 1500; ++i)
        ExpectSame(random.Make(60.0, 12), whole, "ordinary", i);
    for (int i = 0; i < 500; ++i)
        ExpectSame(random.Make(400.0, 8), whole, "partly outside", i);
    for (int i = 0; i < 60; ++i)
        ExpectSame(random.Make(7000.0, 6), whole, "far outside", i);
    for (int i = 0; i < 300; ++i)
        ExpectSame(random.Make(1.2, 10), whole, "tiny", i);
    for (int i = 0; i < 10; ++i)
        ExpectSame(random.Make(60.0, 4000), whole, "thousands of vertices", i);
}

TEST(CoverageStore, EqualsStockAggInWindowsThatCutThePath)
{
    RandomPolygons random;
    for (int i = 0; i < 500; ++i) {
        const int left = random.Pick(-20, 90), top = random.Pick(-20, 70);
        ExpectSame(random.Make(80.0, 10),
                   {left, top, left + random.Pick(1, 60), top + random.Pick(1, 50)}, "window", i);
    }
}

TEST(CoverageStore, EqualsStockAggOverUprightEdges)
{
    RandomPolygons random;
    for (int i = 0; i < 600; ++i) {
        SCOPED_TRACE(i);
        // Rectangles, at times more than are swept as such, and here and there something slanted.
        Polygons polygons = i % 3 == 0 ? Polygons() : random.Make(i % 3 == 1 ? 4.0 : 60.0, 3);
        for (int n = random.Pick(1, 12); n > 0; --n) {
            const double x = 50.0 + random.Spread(60.0), y = 40.0 + random.Spread(70.0);
            const double width = random.Spread(i % 2 ? 100.0 : 3.0), height = random.Spread(90.0);
            const bool isWhole = random.Pick(0, 2) == 0;
            const auto place = [&](double value) { return isWhole ? std::round(value) : value; };
            polygons.AddRect({place(x), place(y), place(x + width), place(y + height)});
        }
        const RectT<int> window{random.Pick(-40, 50), random.Pick(-30, 40), random.Pick(51, 150),
                                random.Pick(41, 120)};
        ExpectSame(polygons, window, "upright", i);
        if (HasFatalFailure())
            return;
    }
}

/// Takes several rows at once.
class PictureRowsSink
{
public:
    explicit PictureRowsSink(CoveragePicture& picture) : m_picture(picture) {}
    void BeginRow(int y) { m_y = y; }
    void Run(int x, unsigned length, unsigned char cover, unsigned rows = 1)
    {
        for (unsigned row = 0; row < rows; ++row) {
            for (unsigned i = 0; i < length; ++i)
                m_picture.At(x + int(i), m_y + int(row)) = cover;
        }
    }
    void Mask(int x, unsigned length, const unsigned char* covers, unsigned rows = 1)
    {
        for (unsigned i = 0; i < length; ++i)
            Run(x + int(i), 1, covers[i], rows);
    }

private:
    CoveragePicture& m_picture;
    int m_y = 0;
};

TEST(CoverageStore, SinksMayTakeRowsThatAreAlike)
{
    RandomPolygons random;
    const RectT<int> window{3, 5, 130, 140};
    for (int i = 0; i < 100; ++i) {
        Polygons polygons = random.Make(10.0, 3);
        for (int n = random.Pick(1, 6); n > 0; --n)
            polygons.AddRect({random.Spread(150.0), random.Spread(150.0), random.Spread(150.0),
                              random.Spread(150.0)});
        const CoveragePicture rowByRow = RenderWithStore(polygons, true, window);
        const CoveragePicture rows = RenderWithStore<PictureRowsSink>(polygons, true, window);
        ASSERT_EQ(rowByRow.GetBytes(), rows.GetBytes()) << i;
    }
}

TEST(CoverageStore, EqualsStockAggInSeveralBands)
{
    // Wide and tall enough for several bands of half a megabyte, with edges through all of them.
    const RectT<int> window{0, 0, 1500, 900};
    ExpectSame(MakeStar(750, 450, 800, 71, 30), window, "star", 0);
    RandomPolygons random;
    for (int i = 0; i < 6; ++i)
        ExpectSame(random.Make(1200.0, 60), window, "large", i);
}

TEST(CoverageStore, DrawsWhatIsWiderThanTheEnginesLimits)
{
    // A wedge from (0, 0) over 60,000 pixels down to 60: on column x it covers the top x/1000 rows.
    Polygons wedge;
    wedge.BeginPolygon();
    wedge.AddPoint({0, 0});
    wedge.AddPoint({60000, 0});
    wedge.AddPoint({60000, 60});
    const RectT<int> window{0, 0, 60000, 61};
    CoveragePicture picture = RenderWithStore(wedge, true, window);
    for (int x = 500; x < 60000; x += 997) {
        int sum = 0;
        for (int y = 0; y < 61; ++y)
            sum += picture.At(x, y);
        EXPECT_NEAR(sum / 255.0, (x + 0.5) / 1000.0, 0.02) << x;
    }
    // A rectangle far wider than the guard box covers the window wholly.
    for (const double far : {1e5, 1e7, 1e12, 1e300}) {
        CoveragePicture full =
            RenderWithStore(Polygons(RectT<double>{-far, 10, far, 20}), true, {40, 0, 50, 30});
        for (int y = 0; y < 30; ++y)
            EXPECT_EQ(full.At(45, y), y >= 10 && y < 20 ? 255 : 0) << far << " row " << y;
    }
}

TEST(CoverageStore, DropsSetsWithPointsThatAreNotFinite)
{
    for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity()}) {
        Polygons polygons(RectT<double>{1, 1, 9, 9});
        polygons.BeginPolygon();
        polygons.AddPoint({5, bad});
        polygons.AddPoint({7, 3});
        CoveragePicture picture = RenderWithStore(polygons, true, {0, 0, 10, 10});
        EXPECT_EQ(picture.At(5, 5), 0);
    }
}

TEST(CoverageStore, AnEndedSweepLeavesNothingBehind)
{
    CoverageStore& store = SharedStore();
    const RectT<int> window{0, 0, 64, 64};
    store.Reset(window);
    Coverage::AddPolygons(store, MakeStar(32, 32, 30, 7, 3), {});
    CoveragePicture ignored(window);
    PictureSink sink(ignored);
    store.Sweep(
        {true, nullptr}, [](int y) { return y < 10; }, sink);
    ExpectSame(MakeStar(30, 33, 25, 5, 2), window, "after an ended sweep", 0);
}

struct SinkThatFails
{
    void Run(int, unsigned, unsigned char) const { throw std::bad_alloc(); }
    void Mask(int, unsigned, const unsigned char*) const { throw std::bad_alloc(); }
};

TEST(CoverageStore, ForgetsASweepThatFailed)
{
    CoverageStore& store = SharedStore();
    store.Reset({0, 0, 50, 40});
    Coverage::AddPolygons(store, MakeStar(25, 20, 18, 5, 2), {});
    EXPECT_THROW(store.Sweep(
                     {}, [](int) { return true; }, SinkThatFails()),
                 std::bad_alloc);
    ExpectSame(MakeStar(20, 22, 15, 7, 3), {0, 0, 50, 40}, "after a failure", 0);
}

TEST(Rasterizer, ClipXTrimsSpans)
{
    constexpr int largest = std::numeric_limits<int>::max();
    const unsigned char covers[8] = {};
    const struct
    {
        int x, length;
        RectT<int> clip;
        int trimmedX, trimmedLength, skipped;
    } cases[] = {
        {-3, 5, {0, 0, 9, 9}, 0, 2, 3},
        {7, 5, {0, 0, 9, 9}, 7, 2, 0},
        {-9, 5, {0, 0, 9, 9}, 0, 0, 0},
        {9, 5, {0, 0, 9, 9}, 9, 0, 0},
        {largest - 2, 5, {0, 0, largest, 9}, largest - 2, 2, 0},
        {-largest, 5, {largest - 1, 0, largest, 9}, largest - 1, 0, 0},
    };
    for (const auto& test : cases) {
        int x = test.x, length = test.length;
        const unsigned char* at = covers;
        RenderTargetRasterizer::ClipX(x, length, at, test.clip);
        EXPECT_EQ(x, test.trimmedX);
        EXPECT_EQ(length, test.trimmedLength);
        EXPECT_EQ(at - covers, test.skipped);
    }
}

TEST(Rasterizer, RowsMayRunBottomUp)
{
    unsigned char pixels[3 * 16] = {};
    RenderTargetRasterizer rasterizer;
    rasterizer.Create(pixels, 4, 3, -16, 4);
    EXPECT_EQ(rasterizer.GetRow(0), pixels + 32);
    EXPECT_EQ(rasterizer.GetRow(2), pixels);
}

TEST(Rasterizer, GammaTables)
{
    RenderTargetRasterizer rasterizer;
    const auto at = [&](std::size_t i) { return int(rasterizer.GetGammaTable()[i]); };
    rasterizer.SetGamma(2.0);
    EXPECT_EQ(at(128), 64);
    for (const double neutral : {1.0000005, std::nan("")}) {
        rasterizer.SetGamma(neutral);
        EXPECT_EQ(at(77), 77);
    }
    rasterizer.SetGamma(-3.0);
    EXPECT_EQ(at(0), 0);
    EXPECT_EQ(at(1), 255);
    const auto curve = Kernel::MakeCounted<Geometry::CurveDbl>(Kernel::PointT<double>{0, 0});
    curve->LineTo({0.5, 1});
    curve->LineTo({1, std::nan("")});
    rasterizer.SetGammaCurve(curve);
    EXPECT_EQ(at(51), 102);
    EXPECT_EQ(at(200), 0); // not a number
    EXPECT_EQ(at(255), 255);
}

} // namespace
} // namespace Renderer
