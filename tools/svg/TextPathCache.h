#pragma once

#include <map>
#include <memory>
#include <tuple>

#include <geometry/PathMeasure.h>

#include "Element.h"
#include "Length.h"

namespace Svg {

/// The paths that text was laid along, each measured once for all text on it.
class TextPathCache
{
public:
    /// Null where there is no such path.
    using Measure = std::shared_ptr<const Geometry::PathMeasure>;

    /// The path of an element as lengths are understood there, made by \p make() where it is not
    /// known.
    template<class Make>
    Measure Get(const Element& owner, const LengthContext& lengths, const Make& make)
    {
        const Key key{&owner, lengths.viewportWidth, lengths.viewportHeight, lengths.fontSize};
        if (const auto found = m_known.find(key); found != m_known.end())
            return found->second;
        return m_known.emplace(key, make()).first->second;
    }

private:
    using Key = std::tuple<const Element*, double, double, double>;

    std::map<Key, Measure> m_known;
};

} // namespace Svg
