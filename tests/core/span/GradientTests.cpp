#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "GradientOracle.h"
#include "Painter.h"

namespace Renderer {

namespace {

using Stops = std::vector<Gradient::ColourPosition>;
using Type = FillGradient::FillGradientType;

constexpr Kernel::RectT<int> Page{-7, -5, 74, 37};

const auto Red = MakeColour(1, 0, 0, 1);
const auto Green = MakeColour(0, 0.6F, 0.1F, 0.25F);
const auto Blue = MakeColour(0.1F, 0.2F, 0.9F, 0.8F);
const auto Clear = MakeColour(1, 1, 0, 0);

/// Smooth, hard edges (at both ends too), a narrow stretch, midpoints, and many stops.
std::vector<Stops> MakeStops()
{
    std::vector<Stops> all{
        {{Red, 0.0}, {Blue, 1.0}},
        {{Red, 0.25}, {Clear, 0.6}},
        {{Red, 0.0}, {Blue, 0.0}, {Green, 0.5}, {Red, 0.5}, {Blue, 1.0}, {Green, 1.0}},
        {{Red, 0.0}, {Green, 0.4}, {Blue, 0.4003}, {Clear, 1.0}},
        {{Red, 0.0, 0.1}, {Blue, 0.5, 0.85, 1.0}, {Green, 1.0}},
        {{Red, 0.1, 0.0}, {Blue, 0.5, 1.0}, {Green, 0.9}},
        {{Blue, 0.5}},
    };
    Stops many;
    for (int i = 0; i <= 150; ++i)
        many.push_back({i % 3 == 0 ? Red : (i % 3 == 1 ? Green : Blue), i / 150.0});
    all.push_back(many);
    return all;
}

const Params Maps[]{
    {41.3, 0, 11.7, 0, 37.1, 9.3},         // upright
    {30.2, -17.9, 40.1, 12.3, 25.7, 20.9}, // turned and skewed
    {-25.3, 14.1, 50.7, 21.1, 30.3, -3.1}, // mirrored
    {3.1, 0.4, 33.3, -0.7, 2.9, 21.7},     // small: many repeats
    {0, -35.1, 20.3, 40.7, 0, 3.3},        // linear gradients are constant along rows
    {2900.1, -700.3, -900.7, 300.9, 2100.3, -800.9},
};

double GetTolerance(std::uint8_t)
{
    return 1.0;
}
double GetTolerance(std::uint16_t)
{
    return 1.0;
}
double GetTolerance(float)
{
    return 1e-5;
}

/// How far a pixel is from a colour, in steps of an integer format.
template<class P>
double GetError(const P& pixel, const std::array<double, P::ChannelCount>& exact)
{
    const double scale = std::is_integral_v<typename P::ChannelType> ? double(P::Max) : 1.0;
    double error = 0;
    for (std::size_t c = 0; c < P::ChannelCount; ++c)
        error = std::max(error, std::abs(double(pixel[c]) / double(P::Max) - exact[c]) * scale);
    return error;
}

/// The error against the exact colour; at a discontinuity either side is right.
template<class P>
double CheckPixel(const FillGradient& fill, const Params& map, int x, int y, const P& pixel)
{
    const double t = GradientOracle::GetParameter(fill, map, {x + 0.5, y + 0.5});
    double best = std::numeric_limits<double>::infinity();
    for (const double shift : {0.0, -1e-9, 1e-9}) {
        double at = t + shift * std::max(1.0, std::abs(t));
        at = fill.GetType() == FillGradient::Conical ? at - std::floor(at)
                                                     : GradientOracle::Spread(fill.GetSpread(), at);
        best =
            std::min(best, GetError(pixel, GradientOracle::GetColour<P>(*fill.GetGradient(), at)));
        if (best <= GetTolerance(typename P::ChannelType{}))
            break;
    }
    return best;
}

template<class P>
class GradientTest : public testing::Test
{
protected:
    /// Paints the page and compares every pixel.
    void Check(const FillGradient& fill, const Params& map, const std::string& what)
    {
        CheckAt({Page.left, Page.top}, fill, map, what);
    }

    /// The same with the page's corner elsewhere.
    void CheckAt(Kernel::PointT<int> corner, const FillGradient& fill, const Params& map,
                 const std::string& what)
    {
        const Kernel::RectT<int> page{corner.x, corner.y, corner.x + Page.Width(),
                                      corner.y + Page.Height()};
        const auto pixels = m_painter.Paint(fill, map, page);
        ASSERT_FALSE(pixels.empty()) << what;
        std::size_t i = 0;
        for (int y = page.top; y < page.bottom; ++y) {
            for (int x = page.left; x < page.right; ++x, ++i) {
                const double error = CheckPixel(fill, map, x, y, pixels[i]);
                ASSERT_LE(error, GetTolerance(typename P::ChannelType{}))
                    << what << " at " << x << ", " << y;
            }
        }
        m_painter.m_store.Reset();
    }

    Painter<P> m_painter;
};

TYPED_TEST_SUITE(GradientTest, TestedPixels);

TYPED_TEST(GradientTest, AgreesWithTheOracle)
{
    const auto stops = MakeStops();
    for (std::size_t s = 0; s < stops.size(); ++s) {
        const auto gradient = Gradient::Create(stops[s]);
        for (const Params& map : Maps) {
            for (const Type type : {FillGradient::Linear, FillGradient::Elliptical,
                                    FillGradient::Radial, FillGradient::Conical}) {
                const int index = static_cast<int>(&map - Maps);
                // Every combination of flag and spread turns up in the course of the sweep.
                const bool corrected = (s + static_cast<unsigned>(index)) % 2 == 0;
                const auto spread = static_cast<FillGradient::Spread>((s + unsigned(type)) % 3);
                const auto fill = FillGradient::Create(type, gradient, corrected, spread);
                this->Check(*fill, map,
                            "stops " + std::to_string(s) + " map " + std::to_string(index) +
                                " type " + std::to_string(type));
            }
        }
    }
}

TYPED_TEST(GradientTest, FocusAgreesWithTheOracle)
{
    const auto gradient = Gradient::Create({{Red, 0.0}, {Green, 0.3}, {Blue, 1.0}});
    for (const auto focus : {Kernel::PointT<double>{0.3, -0.6}, {-0.5, 0.0}, {0.6, 0.8}}) {
        for (const bool corrected : {false, true}) {
            for (const auto spread : {FillGradient::Pad, FillGradient::Reflect}) {
                const auto fill =
                    FillGradient::Create(FillGradient::Radial, gradient, corrected, spread, focus);
                this->Check(*fill, Maps[1], "turned");
                this->Check(*fill, Maps[2], "mirrored");
            }
        }
    }
}

TYPED_TEST(GradientTest, SpansMayBeCutAnywhere)
{
    using P = TypeParam;
    std::mt19937 random(5);
    for (const Type type :
         {FillGradient::Linear, FillGradient::Elliptical, FillGradient::Conical}) {
        const auto stops = MakeStops();
        const auto fill = FillGradient::Create(type, Gradient::Create(stops[2]), true,
                                               FillGradient::Repeat, {0.2, 0.1});
        ASSERT_TRUE(this->m_painter.Make(*fill, Maps[1]));
        const auto whole = this->m_painter.Run(-50, 13, std::vector<P>(400));
        std::vector<P> parts;
        while (parts.size() < whole.size()) {
            const std::size_t length =
                std::min<std::size_t>(1 + random() % 150, whole.size() - parts.size());
            const auto part =
                this->m_painter.Run(-50 + int(parts.size()), 13, std::vector<P>(length));
            parts.insert(parts.end(), part.begin(), part.end());
        }
        EXPECT_EQ(whole, parts);
        // Another populator that begins elsewhere gives the same pixels.
        Painter<P> other;
        ASSERT_TRUE(other.Make(*fill, Maps[1]));
        EXPECT_EQ(other.Run(349, 13, std::vector<P>(1)).front(), whole.back());
    }
}

/// Large gradients in the corners of large pages, with a hard edge in the middle of them.
TYPED_TEST(GradientTest, FarOffAgreesWithTheOracle)
{
    const auto gradient =
        Gradient::Create({{Red, 0.0}, {Blue, 0.5}, {Green, 0.5}, {Red, 0.7}, {Clear, 1.0}});
    for (const double size : {50.3, 40000.7}) {
        for (const double corner : {-30000.4, 30000.4}) {
            for (const Type type : {FillGradient::Linear, FillGradient::Elliptical,
                                    FillGradient::Radial, FillGradient::Conical}) {
                for (const double focus : {0.0, 0.7}) {
                    // The edge, or the centre of conical gradients, passes through the page.
                    const double shift = type == FillGradient::Conical ? 0.0 : 0.5 * size;
                    const Params map{size, -0.1 * size, 0, 0.1 * size, size, 0};
                    const auto fill =
                        FillGradient::Create(type, gradient, true, FillGradient::Pad, {0.0, focus});
                    Params far = map;
                    far.m02 = corner - shift;
                    far.m12 = -corner;
                    this->CheckAt({static_cast<int>(corner) - 40, static_cast<int>(-corner) - 20},
                                  *fill, far,
                                  "size " + std::to_string(size) + " type " + std::to_string(type));
                }
            }
        }
    }
}

TYPED_TEST(GradientTest, IsOpaqueWhereAllStopsAre)
{
    for (const auto& [last, isOpaque] : {std::pair{Red, true}, std::pair{Blue, false}}) {
        const auto fill = FillGradient::Create(
            FillGradient::Linear, Gradient::Create({{Red, 0.0}, {last, 0.5}, {Red, 1.0}}));
        ASSERT_TRUE(this->m_painter.Make(*fill, Maps[0]));
        EXPECT_EQ(this->m_painter.m_populator.isOpaque, isOpaque);
        ASSERT_TRUE(this->m_painter.Make(*fill, Maps[0], PopulatorRole::Transparency));
        EXPECT_FALSE(this->m_painter.m_populator.isOpaque);
    }
}

TYPED_TEST(GradientTest, CollapsedMapsPaintTheLastStop)
{
    using P = TypeParam;
    const auto gradient = Gradient::Create({{Red, 0.0}, {Blue, 0.5}});
    P last;
    Blue->GetColour(last, true, {});
    last = PixProcessor<P, false>::Premultiply(last);
    for (const Type type : {FillGradient::Linear, FillGradient::Elliptical, FillGradient::Radial,
                            FillGradient::Conical}) {
        for (const Params& map : {Params{0, 3, 5, 0, 4, 5}, Params{0, 0, 1, 0, 0, 1}}) {
            const auto fill = FillGradient::Create(type, gradient);
            ASSERT_TRUE(this->m_painter.Make(*fill, map));
            EXPECT_EQ(this->m_painter.Run(3, 3, std::vector<P>(2)), std::vector<P>(2, last));
        }
    }
}

TYPED_TEST(GradientTest, RefusesWhatCannotBeDrawn)
{
    const auto fill =
        FillGradient::Create(FillGradient::Linear, Gradient::Create({{Red, 0.0}, {Blue, 1.0}}));
    constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(this->m_painter.Make(*fill, {NaN, 0, 0, 0, 1, 0}));
    EXPECT_FALSE(this->m_painter.Make(*fill, {1, 0, Infinity, 0, 1, 0}));
    EXPECT_FALSE(this->m_painter.Make(FillGradient(), {}));
}

/// Extreme maps and coordinates end in some colour of the gradient, whatever the spread.
TYPED_TEST(GradientTest, ExtremeMapsStayFinite)
{
    using P = TypeParam;
    const auto gradient = Gradient::Create({{Red, 0.0}, {Blue, 1.0}});
    for (const double scale : {1e-300, 1e-18, 1e-9, 1e18, 1e300}) {
        for (const auto spread : {FillGradient::Pad, FillGradient::Reflect, FillGradient::Repeat}) {
            for (int type = 0; type < 4; ++type) {
                const auto fill =
                    FillGradient::Create(Type(type), gradient, true, spread, {0.9, 0});
                if (!this->m_painter.Make(*fill, {scale, 0, 1e6, 0, scale, -1e6}))
                    continue;
                for (const P& pixel :
                     this->m_painter.Run(2'000'000'000, -2'000'000'000, std::vector<P>(70)))
                    for (std::size_t c = 0; c < P::ChannelCount; ++c)
                        ASSERT_TRUE(pixel[c] >= 0 && pixel[c] <= P::Max) << scale;
            }
        }
    }
}

/// A hard edge falls between two pixels, not somewhere in a cell of a table, and the colour before
/// an edge at 0 or after one at 1 is the outer one.
TEST(GradientEdge, FallsOnTheExactPixel)
{
    for (const double edge : {0.0, 0.123, 1.0}) {
        const auto fill = FillGradient::Create(
            FillGradient::Linear,
            Gradient::Create({{Red, 0.0}, {Red, edge}, {Blue, edge}, {Blue, 1.0}}));
        Painter<Raster::PixelRGBA8> painter;
        ASSERT_TRUE(painter.Make(*fill, {1e6, 0, 0, 0, 1, 0}));
        const int first = static_cast<int>(std::lround(edge * 1e6)) - 10;
        const auto row = painter.Run(first, 0, std::vector<Raster::PixelRGBA8>(20));
        for (std::size_t i = 0; i < row.size(); ++i)
            EXPECT_EQ(row[i].Alpha(), i < 10 ? 255 : 204) << edge << ", " << i;
    }
}

} // namespace

} // namespace Renderer
