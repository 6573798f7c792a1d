#pragma once

#include "Context.h"
#include "TextClusters.h"
#include "TextPathCache.h"

namespace Svg {

/// The path that a textPath element lays its text along.
class TextPath
{
public:
    /// \param lengths as the element understands them.
    TextPath(Context& context, const Element& textPath, const LengthContext& lengths);

    /// Whether there is a path, and it has a length.
    bool IsUsable() const noexcept { return m_measure && m_measure->GetLength() > 0.0; }
    /// Where text goes on behind the path. \pre IsUsable()
    Kernel::PointT<double> GetEnd() const;

    /// Turns the place of a cluster on a straight line into that on the path; one whose middle is
    /// beyond an end is hidden.
    void Place(TextCluster& cluster, TextAnchor anchor) const;

private:
    Geometry::PathMeasure::Place Locate(double distance) const;
    bool IsHidden(double middle, TextAnchor anchor) const;

    TextPathCache::Measure m_measure; ///< null where there is no path
    double m_offset = 0.0;            ///< where text begins
    bool m_isReversed = false;
};

} // namespace Svg
