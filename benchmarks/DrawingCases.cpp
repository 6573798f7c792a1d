#include "Cases.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include <svg/Drawing.h>

#include "RecordingTarget.h"

namespace Benchmarks {

namespace {

constexpr double DrawingWidth = 1024.0;
constexpr double PictureTolerance = 4.0;

Scene RecordDrawing(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    Svg::Drawing drawing(std::string(std::istreambuf_iterator<char>(file), {}));
    const double scale = DrawingWidth / drawing.GetWidth();
    Scene scene;
    scene.width = unsigned(DrawingWidth);
    scene.height = unsigned(std::max(1.0, std::round(drawing.GetHeight() * scale)));
    scene.logicalToDevice = Raster::AffineTransform::Scaling(scale, scale);
    const auto target = Kernel::MakeCounted<RecordingTarget>(scene);
    target->SetLogToDevTransform(scene.logicalToDevice);
    drawing.Draw(*target);
    return scene;
}

} // namespace

std::vector<Case> MakeDrawingCases(const std::string& folder)
{
    std::vector<std::filesystem::path> paths;
    std::error_code ignored; // a folder that is missing holds no drawings
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored))
        if (entry.path().extension() == ".svg" || entry.path().extension() == ".svgz")
            paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::vector<Case> cases;
    for (const auto& path : paths) {
        // Kept: every repetition draws the same recording.
        const auto kept = std::make_shared<std::unique_ptr<Scene>>();
        cases.push_back({"Drawing/" + path.stem().string(),
                         [path = path.string(), kept] {
                             if (!*kept)
                                 *kept = std::make_unique<Scene>(RecordDrawing(path));
                             return **kept;
                         },
                         PictureTolerance});
    }
    return cases;
}

} // namespace Benchmarks
