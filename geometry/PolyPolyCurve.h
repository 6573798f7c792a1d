#pragma once

#include <utility>
#include <vector>

#include <geometry/PolyCurve.h>

namespace Geometry {

/// A set of shared poly-curves, each with a transform of its own that places it.
/// \tparam Transform a class with a nested `Params` type: the transform's value.
template<class Transform>
class ConstPolyPolyCurveDblT : public Kernel::Countable
{
public:
    struct Entry
    {
        Kernel::Counted<const PolyCurveDbl> curve; ///< may be empty; such entries draw nothing
        typename Transform::Params transform;
    };

    ConstPolyPolyCurveDblT() = default;
    explicit ConstPolyPolyCurveDblT(std::vector<Entry> entries) : m_entries(std::move(entries)) {}

    void Add(Kernel::Counted<const PolyCurveDbl> curve, const typename Transform::Params& transform = {})
    {
        m_entries.push_back({std::move(curve), transform});
    }

    const std::vector<Entry>& GetEntries() const noexcept { return m_entries; }
    bool IsEmpty() const noexcept { return m_entries.empty(); }

private:
    std::vector<Entry> m_entries;
};

} // namespace Geometry
