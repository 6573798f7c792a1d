#pragma once

#include <span>
#include <vector>

#include <raster/ColourPoint.h>

namespace Raster {

/// A colour and how many pixels have it.
struct WeightedColour
{
    ColourPoint point;
    double weight;
};

/// The centres of at most \p count clusters of the colours of each class, such that the squared
/// distances of all colours to the nearest centre of their class, times their weights, add up to
/// about the least. A colour that has more than half of the weight of its cluster is its centre.
///
/// \param classes sets of colours that share no cluster; none is empty.
/// \param count over all classes, at least one for each.
/// \return the centres of each class, at least one.
std::vector<std::vector<ColourPoint>>
FindColourClusters(std::span<const std::vector<WeightedColour>> classes, std::size_t count);

} // namespace Raster
