#pragma once

#include <memory>
#include <span>

#include <raster/ColourPoint.h>

namespace Raster {

/// Finds the nearest of some colours: a search in a k-d tree. The answer is exact; among colours
/// that are equally near it is the one of the lowest index.
class NearestColour
{
public:
    /// \param colours at least one; copied.
    explicit NearestColour(std::span<const ColourPoint> colours);
    ~NearestColour();
    NearestColour(NearestColour&&) noexcept;
    NearestColour& operator=(NearestColour&&) noexcept;

    /// The index of the nearest colour. Safe from many threads.
    unsigned Find(const ColourPoint& point) const;

private:
    struct Tree;
    std::unique_ptr<Tree> m_tree;
};

} // namespace Raster
