#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>
#include <raster/Resample.h>

#include "TestPictures.h"

using namespace Raster;
using Params = AffineTransform::Params;

namespace {

constexpr ResamplerType Resamplers[] = {ResamplerType::NearestNeighbour, ResamplerType::Bilinear,
                                        ResamplerType::Bicubic, ResamplerType::Lanczos3};
constexpr ExtendType Extends[] = {ExtendType::Clamp, ExtendType::Transparent, ExtendType::Mirror,
                                  ExtendType::MirrorOnce, ExtendType::Wrap};

/// Where a picture of 7 × 5 pixels is placed.
const Params Placements[] = {
    {7, 0, 3, 0, 5, 2},                 // whole pixels
    {7, 0, -1.3, 0, 5, 2.6},            // fractions of a pixel
    {17, -10, 4, 10, 17, -3},           // rotated, larger
    {7, 6.1, 0.2, 0, 5.3, 0.4},         // skewed
    {3.1, 0, 2.4, 0, 1.7, 1.3},         // smaller
    {0.02, 0.01, 3.3, 0.01, 0.04, 4.1}, // tiny
    {-9.7, 0, 11.2, 0, -5.5, 6.3},      // flipped
    {2.1, -3.7, 6, 1.9, 0.8, 1},        // rotated, smaller
};

/// Index of the pixel at \p i by stepping towards the picture, as the modes are described; −1
/// outside.
int Walk(int i, int size, ExtendType extend)
{
    if (extend == ExtendType::MirrorOnce && i < 0)
        i = -1 - i;
    while (i < 0 || i >= size) {
        if (extend == ExtendType::Transparent)
            return -1;
        if (extend == ExtendType::Clamp || extend == ExtendType::MirrorOnce)
            i += i < 0 ? 1 : -1;
        else if (extend == ExtendType::Wrap)
            i += i < 0 ? size : -size;
        else
            i = i < 0 ? -1 - i : 2 * size - 1 - i;
    }
    return i;
}

double GetKernel(ResamplerType type, double d)
{
    d = std::abs(d);
    const auto sinc = [](double x) {
        return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
    };
    switch (type) {
    case ResamplerType::NearestNeighbour:
        return d < 0.5;
    case ResamplerType::Bilinear:
        return std::max(0.0, 1 - d);
    case ResamplerType::Bicubic:
        return d < 1   ? 1.5 * d * d * d - 2.5 * d * d + 1
               : d < 2 ? -0.5 * d * d * d + 2.5 * d * d - 4 * d + 2
                       : 0;
    case ResamplerType::Lanczos3:
        return d < 3 ? sinc(d) * sinc(d / 3) : 0;
    }
    return 0;
}

/// The real-valued channels at source position (u, v), each in its channel's steps.
template<class P>
std::vector<double> GetExpected(const DynamicBuffer& source, double u, double v, ResamplerType type,
                                ExtendType extend)
{
    std::vector<double> sums(P::ChannelCount);
    double weights = 0;
    const int column = int(std::floor(u));
    const int row = int(std::floor(v));
    for (int j = row - 4; j <= row + 4; ++j) {
        for (int i = column - 4; i <= column + 4; ++i) {
            const double weight = GetKernel(type, u - (i + 0.5)) * GetKernel(type, v - (j + 0.5));
            const int x = Walk(i, int(source.GetWidth()), extend);
            const int y = Walk(j, int(source.GetHeight()), extend);
            weights += weight;
            for (std::size_t c = 0; weight != 0 && x >= 0 && y >= 0 && c < sums.size(); ++c)
                sums[c] += weight * double(GetPixel<P>(source, unsigned(x), unsigned(y))[c]);
        }
    }
    for (double& sum : sums)
        sum /= weights;
    double& alpha = sums[P::AlphaIndex];
    if (alpha < 0.0) // there is no pixel, whose colour would be negative too
        return std::vector<double>(P::ChannelCount);
    alpha = std::min(alpha, double(P::Max));
    if (!std::is_floating_point_v<typename P::ChannelType>)
        for (double& sum : sums)
            sum = std::clamp(sum, 0.0, alpha);
    return sums;
}

double GetFraction(double value)
{
    return value - std::floor(value);
}

/// Compares a patch of the device around the picture with the oracle.
template<class P>
void CheckPatch(const Kernel::Counted<const DynamicBuffer>& picture, const Params& placement,
                ResamplerType up, ExtendType extend)
{
    Params map;
    ASSERT_TRUE(AffineTransform::Invert(placement, map));
    SpanSampler<P> sampler(picture, map, up, ResamplerType::Bilinear, extend);

    const auto reduce = [](unsigned size, double x, double y) {
        return unsigned(std::max(1.0, size / std::max(1.0, size * std::hypot(x, y))));
    };
    const auto source = ReduceByArea(picture, reduce(picture->GetWidth(), map.m00, map.m01),
                                     reduce(picture->GetHeight(), map.m10, map.m11));

    const bool isFloat = std::is_floating_point_v<typename P::ChannelType>;
    constexpr unsigned Length = 16;
    for (int y = -3; y < 9; ++y) {
        P row[Length];
        sampler.Sample(-4, y, Length, row);
        for (unsigned i = 0; i < Length; ++i) {
            const auto unit = map.Map({double(i) - 3.5, y + 0.5});
            const double u = unit.x * source->GetWidth();
            const double v = unit.y * source->GetHeight();
            // Midway between two pixels, either is nearest.
            if (up == ResamplerType::NearestNeighbour &&
                (GetFraction(u + 1e-4) < 2e-4 || GetFraction(v + 1e-4) < 2e-4))
                continue;
            const auto expected = GetExpected<P>(*source, u, v, up, extend);
            for (std::size_t c = 0; c < P::ChannelCount; ++c) {
                ASSERT_NEAR(double(row[i][c]), expected[c], isFloat ? 1e-6 : 0.502)
                    << "at " << int(i) - 4 << ", " << y << " channel " << c;
                if (!isFloat) {
                    ASSERT_LE(row[i][c], row[i].Alpha());
                }
            }
        }
    }
}

template<class P>
std::vector<P> SampleRow(SpanSampler<P> sampler, int x, int y, unsigned length)
{
    std::vector<P> row(length);
    sampler.Sample(x, y, length, row.data());
    return row;
}

} // namespace

TEST(SpanSampler, AgreesWithTheDoublePrecisionSum)
{
    ForEachPixelType([](auto pixel) {
        const auto picture = MakePicture<decltype(pixel)>(7, 5);
        for (const auto& placement : Placements)
            for (const auto up : Resamplers)
                for (const auto extend : Extends) {
                    SCOPED_TRACE("placement " + std::to_string(&placement - Placements) +
                                 " filter " + std::to_string(int(up)) + " extend " +
                                 std::to_string(int(extend)));
                    CheckPatch<decltype(pixel)>(picture, placement, up, extend);
                }
    });
}

TEST(SpanSampler, PicturesOfOnePixelExtendInEveryMode)
{
    const auto picture = MakePicture<PixelRGBA8>(1, 1);
    for (const auto up : Resamplers)
        for (const auto extend : Extends)
            CheckPatch<PixelRGBA8>(picture, {2.3, 0.4, 1, -0.6, 2.2, 1}, up, extend);
}

TEST(SpanSampler, WholeRatiosGiveThePlainReduction)
{
    const Kernel::Counted<const DynamicBuffer> picture = MakePicture<PixelRGBA8>(30, 12);
    Params map;
    // A third of the width and a quarter of the height, placed with rounding noise.
    AffineTransform::Invert({10 + 1e-9, 0, 5 - 1e-9, 0, 3 - 1e-9, 7}, map);
    SpanSampler<PixelRGBA8> sampler(picture, map, ResamplerType::Lanczos3, ResamplerType::Bilinear,
                                    ExtendType::Transparent);
    EXPECT_TRUE(sampler.IsWholePixelTranslation());
    const auto reduced = ReduceByArea(picture, 10, 3);
    for (unsigned y = 0; y < 3; ++y)
        EXPECT_EQ(std::memcmp(SampleRow(sampler, 5, 7 + int(y), 10).data(), reduced->GetRow(y), 40),
                  0);
}

TEST(SpanSampler, NearestNeighbourMinifiesByPickingPixels)
{
    const auto picture = MakePicture<PixelRGBA8>(30, 12);
    SpanSampler<PixelRGBA8> sampler(picture, {0.1, 0, 0, 0, 0.25, 0},
                                    ResamplerType::NearestNeighbour,
                                    ResamplerType::NearestNeighbour, ExtendType::Clamp);
    const auto row = SampleRow(sampler, 0, 1, 10);
    for (unsigned i = 0; i < 10; ++i)
        EXPECT_EQ(row[i], GetPixel<PixelRGBA8>(*picture, 3 * i + 1, 4));
}

TEST(SpanSampler, FarCoordinatesKeepTheEdgeRules)
{
    const auto picture = MakePicture<PixelRGBA8>(7, 5);
    const int far = std::numeric_limits<int>::max() - 20;
    for (const Params& placement : {Params{7, 0, 0, 0, 5, 0}, Params{7.5, 0, 0.3, 0, 5.5, 0.2},
                                    Params{1e-9, 0, 0, 0, 1e-9, 0}})
        for (const auto up : Resamplers) {
            Params map;
            ASSERT_TRUE(AffineTransform::Invert(placement, map));
            const auto down = ResamplerType::NearestNeighbour;
            for (const auto extend : Extends) // must end without overflow
                SampleRow(SpanSampler<PixelRGBA8>(picture, map, up, down, extend), far, -far, 20);
            SpanSampler<PixelRGBA8> clamp(picture, map, up, down, ExtendType::Clamp);
            EXPECT_EQ(SampleRow(clamp, far, far, 20)[19], GetPixel<PixelRGBA8>(*picture, 6, 4));
            EXPECT_EQ(SampleRow(clamp, -far, -far, 1)[0], GetPixel<PixelRGBA8>(*picture, 0, 0));
            SpanSampler<PixelRGBA8> none(picture, map, up, down, ExtendType::Transparent);
            EXPECT_EQ(SampleRow(none, far, 2, 20)[3], PixelRGBA8{});
        }
    SpanSampler<PixelRGBA8> wrapped(picture, {1.0 / 7, 0, 1e9, 0, 1.0 / 5, -1e9},
                                    ResamplerType::Bicubic, ResamplerType::Bilinear,
                                    ExtendType::Wrap);
    EXPECT_TRUE(wrapped.IsWholePixelTranslation());
    EXPECT_EQ(SampleRow(wrapped, 16, 8, 9)[4], GetPixel<PixelRGBA8>(*picture, 6, 3));
}

TEST(SpanSampler, UnusableMapsAndSourcesAreTransparent)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const auto picture = MakePicture<PixelRGBA8>(7, 5);
    const auto check = [](const Kernel::Counted<const DynamicBuffer>& source, const Params& map) {
        for (const auto up : Resamplers) {
            std::vector<PixelRGBA8> row(9, PixelRGBA8{{1, 2, 3, 4}});
            SpanSampler<PixelRGBA8> sampler(source, map, up, up, ExtendType::Clamp);
            sampler.Sample(-4, 2, 9, row.data());
            EXPECT_EQ(row, std::vector<PixelRGBA8>(9));
        }
    };
    check(picture, {nan, 0, 0, 0, 1, 0});
    check(picture, {1, 0, 0, 0, 1, infinity});
    check(picture, {1, 2, 0, 2, 4, 0});
    check(picture, {0, 0, 0.5, 0, 0, 0.5});
    check(picture, {1e300, 0, 0, 0, 1e300, 0});
    check({}, {});
    check(MakePicture<PixelIA8>(7, 5), {});
}
