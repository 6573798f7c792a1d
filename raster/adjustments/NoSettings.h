#pragma once

#include <kernel/HashAccumulator.h>

namespace Raster {

/// The settings of adjustments that have none.
struct NoSettings
{
    void AccumulateHash(Kernel::HashAccumulator&) const {}
    friend bool operator==(const NoSettings&, const NoSettings&) = default;
};

} // namespace Raster
