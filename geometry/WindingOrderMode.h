#pragma once

namespace Geometry {

/// The rule that says which points lie inside a path.
enum class WindingOrderMode
{
    EvenOdd = 0, ///< inside where a ray crosses the path an odd number of times
    NonZero = 1, ///< inside where the signed number of crossings is not 0
};

} // namespace Geometry
