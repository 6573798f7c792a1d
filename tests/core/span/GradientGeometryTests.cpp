#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <renderer/core/span/GradientGeometry.h>

#include "Painter.h"

namespace Renderer {

namespace {

constexpr unsigned Block = GradientGeometry::BlockLength;

struct Case
{
    std::string name;
    Kernel::Consolidated<FillGradient> fill;
    Params map;
    Kernel::PointT<int> pixel;
};

/// Every kind of geometry and spread, from some pixels in size to many thousand, near the page's
/// origin and far off.
std::vector<Case> MakeCases()
{
    std::vector<Case> cases;
    const auto gradient =
        Gradient::Create({{MakeColour(1, 0, 0, 1), 0.0}, {MakeColour(0, 0, 1, 1), 1.0}});
    const Kernel::PointT<double> focuses[]{{}, {0.3, -0.5}, {0.0, 0.9985}};
    for (const auto type : {FillGradient::Linear, FillGradient::Elliptical, FillGradient::Radial,
                            FillGradient::Conical}) {
        for (int spread = 0; spread < 3; ++spread) {
            for (const auto focus : focuses) {
                for (const double size : {2.7, 31.0, 900.3, 60000.7}) {
                    for (const int origin : {0, 31000, -1'000'000}) {
                        const Params map{size,       -0.4 * size, origin + 20.2,
                                         0.3 * size, 0.8 * size,  7.7 - origin};
                        const auto fill = FillGradient::Create(type, gradient, spread != 1,
                                                               FillGradient::Spread(spread), focus);
                        cases.push_back(
                            {"type " + std::to_string(type) + " spread " + std::to_string(spread) +
                                 " focus " + std::to_string(focus.y) + " size " +
                                 std::to_string(size) + " origin " + std::to_string(origin),
                             fill,
                             map,
                             {origin, -origin}});
                    }
                }
            }
        }
    }
    return cases;
}

TEST(GradientGeometry, BothBuildsGiveTheSameBits)
{
    if (!Blending::HasWideCode())
        GTEST_SKIP() << "this processor runs one build only";
    PopulatorStore store;
    for (const Case& c : MakeCases()) {
        const auto narrow = GradientGeometry::Make(*c.fill, c.map, store, false);
        const auto wide = GradientGeometry::Make(*c.fill, c.map, store, true);
        ASSERT_TRUE(narrow && wide);
        for (const unsigned count : {1U, 9U, Block}) {
            double t[2][Block];
            std::int32_t cells[2][Block];
            narrow->FindParameters(c.pixel.x, c.pixel.y, count, t[0]);
            wide->FindParameters(c.pixel.x, c.pixel.y, count, t[1]);
            ASSERT_EQ(std::memcmp(t[0], t[1], count * sizeof(double)), 0) << c.name;
            narrow->FindCells(c.pixel.x, c.pixel.y, count, 4096, cells[0]);
            wide->FindCells(c.pixel.x, c.pixel.y, count, 4096, cells[1]);
            ASSERT_EQ(std::memcmp(cells[0], cells[1], count * sizeof(std::int32_t)), 0) << c.name;
        }
    }
}

/// What a GradientTable relies on.
TEST(GradientGeometry, CellsAreThoseOfTheParametersWithinTheAllowedError)
{
    constexpr int CellsPerUnit = 8192;
    const auto toCell = [](double position) {
        return static_cast<int>(std::clamp(position, 0.0, CellsPerUnit + 2.0));
    };
    PopulatorStore store;
    for (const Case& c : MakeCases()) {
        const auto geometry = GradientGeometry::Make(*c.fill, c.map, store);
        ASSERT_TRUE(geometry);
        for (int row = -300; row < 300; row += 7) {
            double t[Block];
            std::int32_t cells[Block];
            geometry->FindParameters(c.pixel.x, c.pixel.y + row, Block, t);
            geometry->FindCells(c.pixel.x, c.pixel.y + row, Block, CellsPerUnit, cells);
            for (unsigned i = 0; i < Block; ++i) {
                const double position = t[i] * CellsPerUnit + 2.0;
                constexpr double Error = 0.8 * GradientGeometry::LargestCellError;
                // Parameters do not tell how far beyond the end a pixel lies.
                const int cell = std::min(cells[i], CellsPerUnit + 2);
                ASSERT_GE(cell, toCell(position - Error)) << c.name << " t " << t[i];
                ASSERT_LE(cell, toCell(position + Error)) << c.name << " t " << t[i];
            }
        }
    }
}

} // namespace

} // namespace Renderer
