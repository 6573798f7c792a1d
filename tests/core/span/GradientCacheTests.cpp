#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include <renderer/core/formats/PixProcessor.h>
#include <renderer/core/span/GradientCache.h>
#include <renderer/core/span/GradientColours.h>

#include "Painter.h"

namespace Renderer {

namespace {

using Colours = GradientColours<PixProcessor_RGBA>;
using Alphas = GradientColours<PixProcessor_RGBA_Alpha>;
using Profiles = GradientCache::Profiles;

/// Another gradient for every \p shade, 0…255.
Kernel::Consolidated<Gradient> MakeGradient(int shade, float alpha = 1.0F)
{
    const float grey = static_cast<float>(shade) / 255.0F;
    return Gradient::Create(
        {{MakeColour(grey, 0, 0, 1), 0.0}, {MakeColour(0, 1, grey, alpha), 1.0}});
}

/// All pixels of a table, and whether every cell has one.
std::vector<Raster::PixelRGBA8> ReadTable(const Colours& colours, bool& isWhole)
{
    const auto& table = colours.GetTable();
    std::vector<std::int32_t> cells(static_cast<std::size_t>(table.GetCellsPerUnit()) + 4);
    std::iota(cells.begin(), cells.end(), 0);
    std::vector<Raster::PixelRGBA8> pixels(cells.size());
    isWhole = table.LookUp(cells.data(), static_cast<unsigned>(cells.size()), pixels.data());
    return pixels;
}

TEST(GradientCache, MakesEachKindOfColoursOnce)
{
    GradientCache cache;
    const auto gradient = MakeGradient(1);
    const auto first = cache.Get<Colours>(gradient, {});
    const auto alphas = cache.Get<Alphas>(gradient, {});
    const auto other = cache.Get<Colours>(MakeGradient(2), {});
    EXPECT_EQ(cache.GetEntryCount(), 3U);
    EXPECT_NE(first, other);
    EXPECT_EQ(cache.Get<Colours>(gradient, {}), first);
    EXPECT_EQ(cache.Get<Colours>(MakeGradient(1), {}), first); // an equal gradient is the same one
    EXPECT_EQ(cache.Get<Alphas>(gradient, {}), alphas);
    EXPECT_EQ(cache.GetByteCount(),
              first->GetByteSize() + alphas->GetByteSize() + other->GetByteSize());
    cache.Clear();
    EXPECT_EQ(cache.GetEntryCount(), 0U);
    EXPECT_EQ(cache.GetByteCount(), 0U);
    EXPECT_NE(cache.Get<Colours>(gradient, {}), first);

    Profiles grey;
    grey.SetGrey(Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(Raster::Format::IA8));
    const auto managed = cache.Get<Colours>(gradient, grey);
    EXPECT_NE(cache.Get<Colours>(gradient, {}), managed);
    EXPECT_EQ(cache.Get<Colours>(gradient, grey), managed);
}

TEST(GradientCache, DropsWhatWasUsedLeastRecently)
{
    GradientCache cache(3);
    std::vector<Kernel::Counted<const Colours>> kept;
    for (int i = 0; i < 3; ++i)
        kept.push_back(cache.Get<Colours>(MakeGradient(i), {}));
    cache.Get<Colours>(MakeGradient(0), {});
    cache.Get<Colours>(MakeGradient(3), {}); // in the place of 1
    EXPECT_EQ(cache.GetEntryCount(), 3U);
    EXPECT_EQ(cache.Get<Colours>(MakeGradient(0), {}), kept[0]);
    EXPECT_EQ(cache.Get<Colours>(MakeGradient(2), {}), kept[2]);
    EXPECT_NE(cache.Get<Colours>(MakeGradient(1), {}), kept[1]);

    // A gradient that was deleted could come back as another one at the same address.
    const auto gradient = MakeGradient(9);
    cache.Get<Colours>(gradient, {});
    EXPECT_EQ(gradient->GetReferenceCount(), 2U);
    for (int i = 0; i < 3; ++i)
        cache.Get<Colours>(MakeGradient(i), {});
    EXPECT_EQ(gradient->GetReferenceCount(), 1U);
}

TEST(GradientCache, StaysWithinItsBytes)
{
    const std::size_t size = Colours(*MakeGradient(0), {}).GetByteSize();
    GradientCache cache(100, 5 * size / 2);
    for (int i = 0; i < 4; ++i) {
        cache.Get<Colours>(MakeGradient(i), {});
        EXPECT_LE(cache.GetByteCount(), 5 * size / 2);
    }
    EXPECT_EQ(cache.GetEntryCount(), 2U);
    GradientCache none(100, size - 1); // too small for any
    EXPECT_TRUE(none.Get<Colours>(MakeGradient(0), {}));
    EXPECT_EQ(none.GetEntryCount(), 0U);
}

/// Several populators of a call may use gradients that have no room in the cache together.
TEST(GradientCache, DroppedColoursServeTheirPopulatorsOn)
{
    Painter<Raster::PixelRGBA8> painter;
    GradientCache small(1);
    PopulatorContext context{
        painter.m_profiles, Raster::ResamplerType::Bilinear, nullptr, {}, painter.m_bitmaps, small};
    std::vector<SpanPopulator> populators;
    for (int i = 0; i < 8; ++i) {
        const auto fill = FillGradient::Create(FillGradient::Linear, MakeGradient(30 * i));
        ASSERT_TRUE(MakePopulator<PixProcessor_RGBA>(*fill, {20, 0, 0, 0, 20, 0},
                                                     PopulatorRole::Colour, context,
                                                     painter.m_store, populators.emplace_back()));
    }
    EXPECT_EQ(small.GetEntryCount(), 1U);
    for (int i = 0; i < 8; ++i) {
        const SpanPopulator& populator = populators[static_cast<std::size_t>(i)];
        Raster::PixelRGBA8 pixel;
        populator.function(populator.context, &pixel, -5, 0, 1);
        EXPECT_EQ(pixel, (Raster::PixelRGBA8{{static_cast<std::uint8_t>(30 * i), 0, 0, 255}}));
    }
}

/// Only hard edges and slopes that no table resolves are left to the ramp, which is slow.
TEST(GradientTable, SmoothGradientsHaveAPixelInEveryCell)
{
    const auto red = MakeColour(1, 0, 0, 1);
    const auto green = MakeColour(0, 1, 0, 0.2F);
    bool isWhole = false;
    for (const double midpoint : {0.5, 0.3, 0.7}) {
        for (const double smoothness : {0.0, 1.0}) {
            const Colours colours(*Gradient::Create({{red, 0.1, midpoint, smoothness},
                                                     {green, 0.437, midpoint, smoothness},
                                                     {red, 1.0}}),
                                  {});
            ReadTable(colours, isWhole);
            EXPECT_TRUE(isWhole) << midpoint << ", " << smoothness;
        }
    }
    const Colours edge(*Gradient::Create({{red, 0.0}, {red, 0.5}, {green, 0.5}, {green, 1.0}}), {});
    const auto pixels = ReadTable(edge, isWhole);
    EXPECT_FALSE(isWhole);
    EXPECT_EQ(std::count_if(pixels.begin(), pixels.end(), Colours::Table::IsMark), 2);
}

} // namespace

} // namespace Renderer
