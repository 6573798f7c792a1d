// The loops of SpanSampler against each other: which one a span goes through must not show.

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <raster/Resample.h>

#include "TestPictures.h"

using namespace Raster;
using Params = AffineTransform::Params;

namespace {

constexpr ExtendType Extends[] = {ExtendType::Clamp, ExtendType::Transparent, ExtendType::Mirror,
                                  ExtendType::MirrorOnce, ExtendType::Wrap};
constexpr ResamplerType Resamplers[] = {ResamplerType::NearestNeighbour, ResamplerType::Bilinear,
                                        ResamplerType::Bicubic, ResamplerType::Lanczos3};

class Random
{
public:
    double Real(double low, double high)
    {
        return std::uniform_real_distribution(low, high)(m_engine);
    }
    int Int(int low, int high) { return std::uniform_int_distribution(low, high)(m_engine); }
    template<class T, std::size_t Count>
    T Pick(const T (&values)[Count])
    {
        return values[Int(0, int(Count) - 1)];
    }

private:
    std::mt19937 m_engine{20};
};

enum class Kind
{
    Shift,
    Rows,
    Any,
};

/// A map to the unit square of a picture; device pixels around 0 lie in it.
Params MakeMap(Random& random, Kind kind, unsigned width, unsigned height)
{
    Params map{1, 0, random.Real(-9, 9), 0, random.Real(-1.3, 1.3), random.Real(-9, 9)};
    if (kind == Kind::Shift)
        map.m11 = 1;
    if (kind != Kind::Shift)
        map.m00 = random.Real(-1.2, 1.2);
    if (kind == Kind::Rows && random.Int(0, 3) == 0)
        map.m01 = random.Real(-0.3, 0.3);
    if (kind == Kind::Any) {
        map.m01 = random.Real(-1, 1);
        map.m10 = random.Real(-1, 1);
    }
    for (double* element : {&map.m00, &map.m01, &map.m02})
        *element /= width;
    for (double* element : {&map.m10, &map.m11, &map.m12})
        *element /= height;
    return map;
}

/// The row in one piece.
template<class P>
std::vector<P> ReadRow(SpanSampler<P>& sampler, int x, int y, unsigned length)
{
    std::vector<P> row(length);
    sampler.Sample(x, y, length, row.data());
    return row;
}

/// The row in pieces that meet or share a pixel.
template<class P>
std::vector<P> ReadPieces(SpanSampler<P>& sampler, int x, int y, unsigned length, Random& random)
{
    std::vector<P> row(length);
    for (unsigned begin = 0, end = 0; end < length; begin = end - unsigned(random.Int(0, 1))) {
        // Short ones are not worked on as long ones are.
        end = std::min(length, begin + unsigned(random.Int(1, random.Int(0, 1) ? 30 : 300)));
        sampler.Sample(x + int(begin), y, end - begin, &row[begin]);
    }
    return row;
}

template<class P>
bool AreSame(const std::vector<P>& a, const std::vector<P>& b)
{
    return std::memcmp(a.data(), b.data(), a.size() * sizeof(P)) == 0;
}

template<class P>
void CheckLoops(Random& random, Kind kind)
{
    const auto width = unsigned(random.Int(1, random.Int(0, 1) ? 12 : 700));
    const auto height = unsigned(random.Int(1, 20));
    const auto picture = MakePicture<P>(width, height);
    const Params map = MakeMap(random, kind, width, height);
    const auto up = random.Pick(Resamplers);
    const auto extend = random.Pick(Extends);
    const auto down = random.Int(0, 1) ? up : ResamplerType::NearestNeighbour;
    SCOPED_TRACE("filter " + std::to_string(int(up)) + " extend " + std::to_string(int(extend)) +
                 " kind " + std::to_string(int(kind)) + " width " + std::to_string(width));
    const auto make = [&](SamplerCode code) {
        return SpanSampler<P>(picture, map, up, down, extend, code);
    };
    auto best = make(SamplerCode::Best);
    auto baseline = make(SamplerCode::Baseline);
    auto general = make(SamplerCode::General);
    const unsigned length = random.Int(0, 9) == 0 ? 2500 : 310;
    const int x = -random.Int(0, 1300);
    for (const int y : {-7, 0, 1, 6}) {
        const auto expected = ReadRow(best, x, y, length);
        ASSERT_TRUE(AreSame(expected, ReadRow(baseline, x, y, length)));
        ASSERT_TRUE(AreSame(expected, ReadPieces(best, x, y, length, random)));
        const auto generalRow = ReadRow(general, x, y, length);
        if (kind != Kind::Shift || up != ResamplerType::Bilinear) {
            ASSERT_TRUE(AreSame(expected, generalRow));
            continue;
        }
        // Shifts have one fraction for all pixels, without each position's rounding.
        const double tolerance = std::is_integral_v<typename P::ChannelType> ? 1 : 1e-6;
        for (unsigned i = 0; i < length; ++i)
            for (std::size_t c = 0; c < P::ChannelCount; ++c)
                ASSERT_NEAR(double(expected[i][c]), double(generalRow[i][c]), tolerance);
    }
}

} // namespace

TEST(SamplerLoops, GiveTheSameBytes)
{
    Random random;
    ForEachPixelType([&](auto pixel) {
        for (int i = 0; i < 120; ++i)
            for (const auto kind : {Kind::Shift, Kind::Rows, Kind::Any})
                CheckLoops<decltype(pixel)>(random, kind);
    });
}

TEST(SamplerLoops, NoiseOfInversionsDoesNotChooseAnotherLoop)
{
    // A picture at its own size whose placement went through turns and scales.
    const auto picture = MakePicture<PixelRGBA16>(49, 31);
    const Params clean{1.0 / 49, 0, -10.25 / 49, 0, 1.0 / 31, -3.5 / 31};
    Params noisy = clean;
    noisy.m00 *= 1 + 1e-15;
    noisy.m10 = 3e-17;
    noisy.m01 = -2e-17;
    const auto up = ResamplerType::Bilinear;
    SpanSampler<PixelRGBA16> a(picture, clean, up, up, ExtendType::Clamp);
    SpanSampler<PixelRGBA16> b(picture, noisy, up, up, ExtendType::Clamp);
    for (int y = 0; y < 40; ++y)
        ASSERT_TRUE(AreSame(ReadRow(a, -5, y, 80), ReadRow(b, -5, y, 80)));
}

TEST(SamplerLoops, ShiftedPicturesInterpolateBetweenTheirPixels)
{
    // Far wider than the blocks that are worked on: a ramp stays a ramp.
    const unsigned width = 3000;
    const auto picture = DynamicBuffer::Create(Format::M16, width, 2);
    for (unsigned y = 0; y < 2; ++y)
        for (unsigned x = 0; x < width; ++x)
            reinterpret_cast<PixelAlpha16*>(picture->GetRow(y))[x][0] =
                static_cast<std::uint16_t>(20 * x + 8 * y);
    SpanSampler<PixelAlpha16> sampler(picture, {1.0 / width, 0, 0.25 / width, 0, 0.5, 0.125},
                                      ResamplerType::Bilinear, ResamplerType::Bilinear,
                                      ExtendType::Clamp);
    const auto row = ReadRow(sampler, 0, 0, width - 1);
    for (unsigned x = 0; x + 1 < width; ++x)
        ASSERT_EQ(row[x][0], 20 * x + 5 + 2) << x;
}

TEST(SamplerLoops, OpacityIsKeptWhereItIsPromised)
{
    Random random;
    ForEachPixelType([&](auto pixel) {
        using P = decltype(pixel);
        const auto picture = MakePicture<P>(40, 9);
        for (unsigned y = 0; y < 9; ++y)
            for (unsigned x = 0; x < 40; ++x)
                reinterpret_cast<P*>(picture->GetRow(y))[x].Alpha() = P::Max;
        int promises = 0;
        for (int i = 0; i < 60; ++i) {
            const Params map = MakeMap(random, Kind(i % 3), 40, 9);
            const auto up = random.Pick(Resamplers);
            SpanSampler<P> sampler(picture, map, up, up, random.Pick(Extends));
            if (!sampler.KeepsOpacity())
                continue;
            ++promises;
            for (const P& sampled : ReadRow(sampler, -60, i % 7, 150))
                ASSERT_EQ(sampled.Alpha(), P::Max);
        }
        EXPECT_GT(promises, 5);
    });
}

TEST(GetReducedSize, IsTheLargestThatNoPixelSteps)
{
    const PictureSize size{300, 200};
    const auto placed = [&](const Params& placement) {
        Params map;
        EXPECT_TRUE(AffineTransform::Invert(placement, map));
        return GetReducedSize(size, map);
    };
    EXPECT_EQ(placed({300, 0, 7.5, 0, 200, 2}), size);
    EXPECT_EQ(placed({900, 0, 7.5, 0, 201, 2}), size);
    EXPECT_EQ(placed({100, 0, 7.5, 0, 200, 2}), (PictureSize{100, 200}));
    EXPECT_EQ(placed({0, -50.5, 0, 75, 0, 0}), (PictureSize{75, 50}));
    EXPECT_EQ(placed({0.1, 0, 0, 0, 0.1, 0}), (PictureSize{1, 1}));
    EXPECT_EQ(GetReducedSize(size, {std::nan(""), 0, 0, 0, 1, 0}), size);
}
