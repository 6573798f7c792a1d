#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Scene.h"

namespace Benchmarks {

/// One thing to measure: a scene that every peer draws.
struct Case
{
    std::string name; ///< without the peer
    std::function<Scene()> makeScene;
    double tolerance;    ///< the mean difference that peers may have; see CheckPeers
    double shapes = 0.0; ///< drawn by the scene; 0 where they are not counted
    bool inCairo = true; ///< whether Cairo knows the paint
};

/// Fill/SHAPE/SIZE/PAINT, Stroke/SHAPE/SIZE/PAINT and Bitmap/PLACEMENT/SIZE/RESAMPLER: one shape,
/// again and again at places of its own, over a page of 600 × 600.
std::vector<Case> MakeShapeCases();

/// Drawing/NAME for the SVG files of a folder, 1024 pixels wide. Reading and recording belong to
/// making the scene.
std::vector<Case> MakeDrawingCases(const std::string& folder);

} // namespace Benchmarks
