#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <svg/PathData.h>

using namespace Svg;

namespace {

void Append(std::string& text, Geometry::Point p)
{
    char number[64];
    std::snprintf(number, sizeof(number), "%.6g,%.6g ", p.x, p.y);
    text += number;
}

/// A path in absolute commands.
std::string Describe(const Geometry::PolyCurveDbl& path)
{
    std::string text;
    for (const Geometry::CurveDbl& curve : path.GetCurves()) {
        const auto& points = curve.GetPoints();
        text += "M ";
        Append(text, points.front());
        for (std::size_t i = 0; i < curve.GetSegmentCount(); ++i) {
            if (curve.GetSegment(i) == Geometry::CurveDbl::Segment::Cubic) {
                text += "C ";
                Append(text, points[3 * i + 1]);
                Append(text, points[3 * i + 2]);
            } else {
                text += "L ";
            }
            Append(text, points[3 * i + 3]);
        }
        text += curve.IsClosed() ? "Z " : "";
    }
    return text;
}

struct PathCase
{
    std::string_view text;
    std::string_view path;
    bool complete = true;
};

TEST(PathData, ReadsEveryCommand)
{
    const std::vector<PathCase> cases{
        {"M1 2L3,4", "M 1,2 L 3,4 "},
        {"M1-2l3.5.5", "M 1,-2 L 4.5,-1.5 "},
        {"m1,2 3,4 5,6", "M 1,2 L 4,6 L 9,12 "},
        {"M1 2 3 4z", "M 1,2 L 3,4 Z "},
        {"M1 1H5V6h-1v-2", "M 1,1 L 5,1 L 5,6 L 4,6 L 4,4 "},
        {"M0 0H1 2 3", "M 0,0 L 1,0 L 2,0 L 3,0 "},
        {"M0 0C1 2 3 4 5 6s3 4 5 6", "M 0,0 C 1,2 3,4 5,6 C 7,8 8,10 10,12 "},
        {"M0 0S3 4 5 6", "M 0,0 C 0,0 3,4 5,6 "},
        {"M1 1c1 0 2 0 3 0 1 0 2 0 3 0", "M 1,1 C 2,1 3,1 4,1 C 5,1 6,1 7,1 "},
        {"M0 0Q3 3 6 0T12 0", "M 0,0 C 2,2 4,2 6,0 C 8,-2 10,-2 12,0 "},
        {"M0 0T6 0", "M 0,0 C 0,0 2,0 6,0 "},
        // S after Q and T after C reflect nothing.
        {"M0 0Q3 3 6 0S9 3 12 0", "M 0,0 C 2,2 4,2 6,0 C 6,0 9,3 12,0 "},
        // After a closed run, drawing goes on from its start.
        {"M5 5h1v1zl1 0", "M 5,5 L 6,5 L 6,6 Z M 5,5 L 6,5 "},
        {"M5 5h1v1zm1 0h1", "M 5,5 L 6,5 L 6,6 Z M 6,5 L 7,5 "},
        {"", ""},
        {"none", ""},
        {" \n\tM 1e1 , -.5e0 ", "M 10,-0.5 "},
    };
    for (const PathCase& c : cases) {
        const PathDataResult result = ParsePathData(c.text);
        EXPECT_EQ(Describe(*result.path), c.path) << c.text;
        EXPECT_TRUE(result.complete) << c.text;
    }
}

TEST(PathData, DrawsUpToAnError)
{
    const std::vector<PathCase> cases{
        {"L1 2", "", false},
        {"1 2", "", false},
        {"M1", "", false},
        {"M1 2L3", "M 1,2 ", false},
        {"M1 2L3 4 5", "M 1,2 L 3,4 ", false},
        {"M1 2L3 4x5 6", "M 1,2 L 3,4 ", false},
        {"M1 2L3 NaN", "M 1,2 ", false},
        {"M1 2 L3 4,L5 6", "M 1,2 L 3,4 ", false},
        {"M1 2C1 2 3 4 5", "M 1,2 ", false},
        {"M1 2A1 1 0 2 0 3 4", "M 1,2 ", false},
        {"M1 2zz M", "M 1,2 Z ", false},
    };
    for (const PathCase& c : cases) {
        const PathDataResult result = ParsePathData(c.text);
        EXPECT_EQ(Describe(*result.path), c.path) << c.text;
        EXPECT_FALSE(result.complete) << c.text;
    }
}

TEST(PathData, ReadsArcsWhoseFlagsRunTogether)
{
    // The half circle above the x axis, three ways; sweep 1 turns clockwise on the page.
    for (const std::string_view text :
         {"M0 0A5 5 0 0 1 10 0", "M0 0a5,5,0,01,10,0", "M0 0a5 5 0 0110 0"}) {
        const PathDataResult result = ParsePathData(text);
        EXPECT_TRUE(result.complete) << text;
        const auto box = result.path->GetBoundingBox().GetRect();
        EXPECT_NEAR(box.left, 0.0, 2e-3) << text;
        EXPECT_NEAR(box.top, -5.0, 2e-3) << text;
        EXPECT_NEAR(box.right, 10.0, 2e-3) << text;
        EXPECT_NEAR(box.bottom, 0.0, 2e-3) << text;
    }
    // Rotation is in degrees: an ellipse standing upright.
    const auto box = ParsePathData("M0 0A10 5 90 0 1 10 0").path->GetBoundingBox().GetRect();
    EXPECT_NEAR(box.top, -10.0, 4e-3);
}

TEST(Points, KeepsWholePairs)
{
    EXPECT_EQ(ParsePoints("1,2 3,4").points, (std::vector<Geometry::Point>{{1, 2}, {3, 4}}));
    EXPECT_EQ(ParsePoints("1-2.5.5").points, (std::vector<Geometry::Point>{{1, -2.5}}));
    EXPECT_FALSE(ParsePoints("1-2.5.5").complete);
    const PointListResult damaged = ParsePoints("1 2, 3 4, x");
    EXPECT_EQ(damaged.points.size(), 2U);
    EXPECT_FALSE(damaged.complete);
    EXPECT_TRUE(ParsePoints("").complete);
}

} // namespace
