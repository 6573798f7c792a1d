#pragma once

#include <array>

#include <renderer/paint/FillDescriptorConst.h>

#include "Scene.h"

namespace Benchmarks {

/// A paint that is fitted to the square of a given side at a place. The objects that places can
/// share are shared.
struct Paint
{
    const char* name;
    Renderer::FillDescriptorConst (*make)(const Kernel::RectT<double>& square);
    bool inCairo = true;
};

extern const std::array<Paint, 7> Paints;

/// A picture of the given size, half of it translucent.
Kernel::Counted<const Raster::DynamicBitmap> MakeBitmap(unsigned width, unsigned height);

} // namespace Benchmarks
