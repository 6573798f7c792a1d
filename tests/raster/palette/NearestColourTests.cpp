#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <raster/NearestColour.h>

using namespace Raster;

namespace {

unsigned FindByLooking(const std::vector<ColourPoint>& colours, const ColourPoint& point)
{
    unsigned best = 0;
    for (unsigned i = 1; i < colours.size(); ++i)
        if (GetSquaredDistance(colours[i], point) < GetSquaredDistance(colours[best], point))
            best = i;
    return best;
}

/// What the distance stands for: the squared differences on black and on white, times 2.
int MeasureOnBlackAndWhite(const PixelRGBA8& a, const PixelRGBA8& b)
{
    int sum = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const int onBlack = a[c] - b[c];
        const int onWhite = (a[c] - a.Alpha()) - (b[c] - b.Alpha());
        sum += onBlack * onBlack + onWhite * onWhite;
    }
    return 2 * sum;
}

TEST(NearestColour, IsExactAndTakesTheFirstOfEquallyNearColours)
{
    std::mt19937 random(1);
    // Few levels per channel: many colours are equally near, and some are there twice.
    for (const unsigned levels : {2U, 4U, 16U, 256U}) {
        for (const unsigned size : {1U, 2U, 7U, 64U, 256U}) {
            const auto draw = [&] {
                PixelRGBA8 pixel;
                pixel.Alpha() = static_cast<std::uint8_t>(random() % levels * (255 / (levels - 1)));
                for (std::size_t c = 0; c < 3; ++c)
                    pixel[c] = static_cast<std::uint8_t>(random() % levels * (255 / (levels - 1)) *
                                                         pixel.Alpha() / 255);
                return pixel;
            };
            std::vector<PixelRGBA8> pixels(size);
            std::vector<ColourPoint> points;
            for (PixelRGBA8& pixel : pixels) {
                pixel = draw();
                points.push_back(MakeColourPoint(pixel));
            }
            const NearestColour nearest(points);
            for (int round = 0; round < 500; ++round) {
                const PixelRGBA8 pixel = draw();
                const ColourPoint point = MakeColourPoint(pixel);
                const unsigned expected = FindByLooking(points, point);
                ASSERT_EQ(nearest.Find(point), expected) << levels << ' ' << size;
                ASSERT_EQ(GetSquaredDistance(points[expected], point),
                          float(MeasureOnBlackAndWhite(pixels[expected], pixel)));
            }
        }
    }
}

} // namespace
