// The coverage of every path, stroke and clip of whole drawings against AGG's own rasteriser.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <variant>

#include <gtest/gtest.h>

#include <benchmarks/RecordingTarget.h>
#include <geometry/Stroker.h>
#include <renderer/core/coverage/AddPolygons.h>
#include <renderer/core/coverage/CoverageStore.h>
#include <svg/Drawing.h>

#include "../core/coverage/StockAgg.h"

namespace Renderer {
namespace {

using Benchmarks::Overloaded;
using Kernel::RectT;
using Polygons = Geometry::PolyPolygonType<double>;
using Raster::AffineTransform;
using Transform = Raster::AffineTransform::Params;

constexpr double PageWidth = 1024.0;
constexpr double Tolerance = 0.1; // pixels

/// Goes through a recorded drawing and compares the coverage of all that has any.
class Comparison
{
public:
    explicit Comparison(const Benchmarks::Scene& scene)
        : m_page{0, 0, int(scene.width), int(scene.height)}, m_transforms{scene.logicalToDevice}
    {}

    void Play(const Benchmarks::Command& command)
    {
        std::visit(Overloaded{[&](const Benchmarks::DrawPath& draw) { Compare(draw); },
                              [&](const Benchmarks::PushClip& clip) {
                                  CompareFill(*clip.path, clip.winding);
                              },
                              [&](const Benchmarks::PushTransform& push) {
                                  m_transforms.push_back(AffineTransform::Concatenate(
                                      push.transform, m_transforms.back()));
                              },
                              [&](const Benchmarks::PopTransform&) { m_transforms.pop_back(); },
                              [](const auto&) {}},
                   command);
    }

    std::size_t GetPathCount() const { return m_pathCount; }

private:
    void Compare(const Benchmarks::DrawPath& draw)
    {
        if (draw.HasFill())
            CompareFill(*draw.path, draw.winding);
        if (!draw.HasStroke())
            return;
        const LineStyle& style = *draw.lineStyle.GetLineStyle();
        Geometry::StrokeParameters pen;
        pen.width = style.GetWeight();
        pen.cap = static_cast<Geometry::StrokeCap>(style.GetCap());
        pen.join = static_cast<Geometry::StrokeJoin>(style.GetJoin());
        pen.tolerance = GetTolerance();
        pen.dashes = style.GetDashPattern();
        Polygons outline;
        Geometry::StrokePolyCurve(*draw.path, pen, outline);
        Compare(outline, false);
    }

    void CompareFill(const Geometry::PolyCurveDbl& path, Geometry::WindingOrderMode winding)
    {
        Polygons polygons;
        path.ExpandAdaptive(GetTolerance(), polygons);
        Compare(polygons, winding == Geometry::WindingOrderMode::EvenOdd);
    }

    double GetTolerance() const
    {
        return Tolerance / AffineTransform::GetLargestSingularValue(m_transforms.back());
    }

    void Compare(const Polygons& polygons, bool evenOdd)
    {
        ++m_pathCount;
        Polygons device;
        for (std::size_t i = 0; i < polygons.GetPolygonCount(); ++i) {
            device.BeginPolygon(true);
            for (const auto& point : polygons.GetPolygon(i).points)
                device.AddPoint(m_transforms.back().Map(point));
        }
        m_store.Reset(m_page);
        Coverage::AddPolygons(m_store, polygons, m_transforms.back());
        const RectT<int> window = m_store.GetBounds();
        if (window.IsEmpty())
            return;
        CoveragePicture ours(window);
        PictureSink sink(ours);
        m_store.Sweep(
            {evenOdd, nullptr},
            [&](int y) {
                sink.BeginRow(y);
                return true;
            },
            sink);
        const CoveragePicture stock = RenderWithStockAgg(device, evenOdd, window);
        ASSERT_TRUE(ours.GetBytes() == stock.GetBytes()) << "path " << m_pathCount;
    }

    RectT<int> m_page;
    std::vector<Transform> m_transforms;
    Coverage::CoverageStore m_store;
    std::size_t m_pathCount = 0;
};

Benchmarks::Scene Record(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    Svg::Drawing drawing(std::string(std::istreambuf_iterator<char>(file), {}));
    const double scale = PageWidth / drawing.GetWidth();
    Benchmarks::Scene scene;
    scene.width = unsigned(PageWidth);
    scene.height = unsigned(std::max(1.0, std::round(drawing.GetHeight() * scale)));
    scene.logicalToDevice = AffineTransform::Scaling(scale, scale);
    const auto target = Kernel::MakeCounted<Benchmarks::RecordingTarget>(scene);
    target->SetLogToDevTransform(scene.logicalToDevice);
    drawing.Draw(*target);
    return scene;
}

TEST(DrawingCoverage, EqualsStockAgg)
{
    std::size_t drawings = 0, paths = 0;
    for (const auto& entry : std::filesystem::directory_iterator(DRAWINGS "/svg")) {
        SCOPED_TRACE(entry.path().filename().string());
        const Benchmarks::Scene scene = Record(entry.path());
        Comparison comparison(scene);
        for (const auto& command : scene.commands) {
            comparison.Play(command);
            if (HasFatalFailure())
                return;
        }
        ++drawings;
        paths += comparison.GetPathCount();
    }
    EXPECT_GE(drawings, 30U);
    EXPECT_GE(paths, 3000U);
}

} // namespace
} // namespace Renderer
