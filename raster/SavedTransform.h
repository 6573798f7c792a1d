#pragma once

#include <kernel/PropType.h>
#include <raster/AffineTransform.h>

/// Transforms are saved as their six elements, row by row.
template<>
struct Kernel::PropTypeOf<Raster::AffineTransform::Params>
    : Kernel::PropTypeConstant<Kernel::PropType::AffineTransform>
{};
