#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include <svg/Document.h>
#include <svg/MarkerVertices.h>
#include <svg/Shapes.h>

#include "Picture.h"

namespace {

TEST(MarkerVertices, PointAlongThePath)
{
    const struct
    {
        std::string shape;
        std::vector<std::array<double, 3>> vertices; ///< x, y, degrees
    } cases[] = {
        {"<path d='M0 0H10V10'/>", {{0, 0, 0}, {10, 0, 45}, {10, 10, 90}}},
        {"<polyline points='0,0 10,0 0,0'/>", {{0, 0, 0}, {10, 0, 90}, {0, 0, 180}}},
        {"<line x1='1' y1='9' x2='1' y2='4'/>", {{1, 9, -90}, {1, 4, -90}}},
        // Closed: the ends are corners as well, and the closing line is a segment.
        {"<polygon points='0,0 10,0 10,10 0,10'/>",
         {{0, 0, -45}, {10, 0, 45}, {10, 10, 135}, {0, 10, -135}, {0, 0, -45}}},
        // The shorter way round, across 180°.
        {"<path d='M0 0L-10 1L-20 0'/>", {{0, 0, 174.289}, {-10, 1, 180}, {-20, 0, -174.289}}},
        // The controls give the direction; those that lie on the end do not.
        {"<path d='M0 0C0 5 5 10 10 10'/>", {{0, 0, 90}, {10, 10, 0}}},
        {"<path d='M0 0C0 0 0 10 10 10'/>", {{0, 0, 90}, {10, 10, 0}}},
        {"<path d='M0 0C0 0 10 10 10 10'/>", {{0, 0, 45}, {10, 10, 45}}},
        // An arc is one segment, however many curves it takes.
        {"<path d='M0 0A10 10 0 1 1 20 0L30 0'/>", {{0, 0, -90}, {20, 0, 45}, {30, 0, 0}}},
        {"<path d='M5 5h1zA10 10 0 0 1 25 5'/>",
         {{5, 5, 90}, {6, 5, 90}, {5, 5, 90}, {5, 5, -90}, {25, 5, 90}}},
        // Without a length: as before, or else as after.
        {"<path d='M0 0H10H10V10'/>", {{0, 0, 0}, {10, 0, 0}, {10, 0, 45}, {10, 10, 90}}},
        {"<path d='M0 0H0V10'/>", {{0, 0, 90}, {0, 0, 90}, {0, 10, 90}}},
        {"<path d='M3 4'/>", {{3, 4, 0}}},
        {"<path d='M0 0H9M0 5V9'/>", {{0, 0, 0}, {9, 0, 0}, {0, 5, 90}, {0, 9, 90}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shape);
        const Svg::Document document(MakeDocument(c.shape));
        const Svg::Element& element = *document.GetRoot().firstChild;
        Svg::Notices notices;
        const auto shape = Svg::MakeShape(element, {}, notices);
        ASSERT_TRUE(shape);
        const auto vertices = Svg::FindMarkerVertices(*shape, element);
        ASSERT_EQ(vertices.size(), c.vertices.size());
        for (std::size_t i = 0; i < vertices.size(); ++i) {
            EXPECT_NEAR(vertices[i].point.x, c.vertices[i][0], 1e-9) << i;
            EXPECT_NEAR(vertices[i].point.y, c.vertices[i][1], 1e-9) << i;
            const double turn = vertices[i].angle * 180.0 / std::numbers::pi - c.vertices[i][2];
            EXPECT_NEAR(std::remainder(turn, 360.0), 0.0, 1e-3) << i;
        }
    }
}

TEST(Marker, IsPlacedAtItsVertices)
{
    const std::string content = "<rect width='2' height='1'/>";
    const std::string line = "<path d='M10 10H30V50' fill='none' stroke='red' stroke-width='2' ";
    const struct
    {
        std::string marker;
        std::string shape;
        std::vector<Kernel::RectT<double>> boxes; ///< of what is drawn besides the shape
    } cases[] = {
        {"", line + "marker-start='url(#m)'/>", {{10, 10, 14, 12}}},
        {"markerUnits='userSpaceOnUse'", line + "marker-end='url(#m)'/>", {{30, 50, 32, 51}}},
        {"markerUnits='userSpaceOnUse'", line + "marker-mid='url(#m)'/>", {{30, 10, 32, 11}}},
        {"markerUnits='userSpaceOnUse' refX='2' refY='.5'",
         line + "marker-start='url(#m)'/>",
         {{8, 9.5, 10, 10.5}}},
        {"markerUnits='userSpaceOnUse' orient='auto'",
         line + "marker-end='url(#m)'/>",
         {{29, 50, 30, 52}}},
        {"markerUnits='userSpaceOnUse' orient='auto-start-reverse'",
         line + "style='marker:url(#m)' marker-mid='none'/>",
         {{8, 9, 10, 10}, {29.293, 10, 31.414, 12.121}, {29, 50, 30, 52}}},
        {"markerUnits='userSpaceOnUse' orient='0.25turn'",
         line + "marker-start='url(#m)'/>",
         {{9, 10, 10, 12}}},
        {"markerUnits='userSpaceOnUse' orient='100grad'",
         line + "marker-start='url(#m)'/>",
         {{9, 10, 10, 12}}},
        {"markerUnits='userSpaceOnUse' markerWidth='10' markerHeight='20' viewBox='0 0 2 2'",
         line + "marker-start='url(#m)'/>",
         {{10, 10, 20, 15}}},
        {"markerUnits='userSpaceOnUse' markerWidth='10' markerHeight='10' viewBox='0 0 2 1' "
         "refX='center' refY='bottom'",
         line + "marker-start='url(#m)'/>",
         {{5, 5, 15, 10}}},
        {"markerWidth='0'", line + "marker-start='url(#m)'/>", {}},
        {"viewBox='0 0 0 1'", line + "marker-start='url(#m)'/>", {}},
        {"", "<rect width='5' height='5' fill='none' stroke='red' marker-start='url(#m)'/>", {}},
        {"", line + "marker-start='url(#nothing)'/>", {}},
        {"", "<g marker-start='url(#m)'>" + line + "/></g>", {{10, 10, 14, 12}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.marker + c.shape);
        const Recorded recorded(
            MakeDocument("<marker id='m' " + c.marker + ">" + content + "</marker>" + c.shape));
        ASSERT_EQ(recorded.target.shapes.size(), c.boxes.size() + 1);
        for (std::size_t i = 0; i < c.boxes.size(); ++i)
            ExpectBox(recorded.target.GetBox(i + 1), c.boxes[i], 1e-3);
    }
}

TEST(Marker, IsClippedAndLiesInOrder)
{
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "DCDc"},
        {"overflow:visible", "DD"},
        {"opacity:.5", "DCGDgc"},
    };
    const std::string line = "<path d='M10 10H30' stroke='red' style='marker-end:url(#m)";
    for (const auto& [style, trace] : cases)
        EXPECT_EQ(Recorded(MakeDocument("<marker id='m' style='" + style +
                                        "'><path d='M0 0H1V1'/></marker>" + line + "'/>"))
                      .target.trace,
                  trace)
            << style;
    // The shape and its markers are one object.
    const std::string marker =
        "<marker id='m' overflow='visible'><circle r='1'/></marker>" + line + ";opacity:.5;";
    EXPECT_EQ(Recorded(MakeDocument(marker + "'/>")).target.trace, "GDDg");
    EXPECT_EQ(Recorded(MakeDocument(marker + "paint-order:stroke markers'/>")).target.trace,
              "GDDDg");
    const Recorded first(MakeDocument(marker + "paint-order:markers'/>"));
    EXPECT_TRUE(first.target.shapes.at(0).lineFill.IsFillNone());
    EXPECT_FALSE(first.target.shapes.at(1).lineFill.IsFillNone());
}

TEST(Marker, CirclesAndCrowdsEndWithANotice)
{
    const Recorded itself(
        MakeDocument("<marker id='m'><path d='M0 0L1 1L2 2' marker-mid='url(#m)'/></marker>"
                     "<path d='M0 0L1 1L2 2' marker-mid='url(#m)'/>"));
    EXPECT_EQ(itself.target.shapes.size(), 2U);
    EXPECT_EQ(itself.drawing.GetNotices().size(), 1U);

    std::string path = "<marker id='m' overflow='visible'><path d='M0 0'/></marker><path "
                       "marker-mid='url(#m)' d='M0 0";
    for (int i = 0; i < 300000; ++i)
        path += "h1";
    const Recorded crowd(MakeDocument(path + "'/>"));
    EXPECT_EQ(crowd.target.shapes.size(), 200001U);
    EXPECT_EQ(crowd.drawing.GetNotices().size(), 1U);
}

} // namespace
