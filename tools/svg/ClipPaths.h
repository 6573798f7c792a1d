#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include <geometry/BoundingBox.h>
#include <renderer/core/RenderTarget.h>

#include "Context.h"
#include "TransformList.h"

namespace Svg {

/// Pushes clip paths of the drawing onto a target.
class ClipPaths
{
public:
    /// The clip in force after a push.
    struct Result
    {
        int pushed = 0;        ///< how many pops are owed to the target
        bool hidesAll = false; ///< nothing is left to be seen
    };
    /// Measures the element that is clipped, in its own coordinates; called only where needed.
    using Measure = std::function<Geometry::BoundingBoxT<double>()>;

    ClipPaths(Context& context, Renderer::RenderTarget& target)
        : m_context(context), m_target(target)
    {}

    /// Pushes what a `clip-path` refers to. A reference to nothing clips nothing, nor
    /// does one from a clip path to itself. \throws Kernel::FormatException when too many follow
    /// one another.
    Result Push(std::string_view reference, const LengthContext& lengths, const Measure& measure);

private:
    /// One shape of a clip path.
    struct Member
    {
        Kernel::Counted<const Geometry::PolyCurveDbl> shape; ///< in its own coordinates
        Transform transform; ///< to those of the element that is clipped
        bool evenOdd = false;
        std::vector<std::string> clips; ///< what clips the shape itself
    };

    void Add(Result& result, const Result& more);
    std::vector<Member> CollectMembers(const Element& clipPath, const Transform& map,
                                       const LengthContext& lengths);
    void CollectMember(const Element& element, const Style& parent, const Transform& map,
                       const LengthContext& lengths, Member member, std::vector<Member>& out);
    void CollectText(const Element& text, const Style& style, const LengthContext& lengths,
                     Member member, std::vector<Member>& out);
    Result PushMembers(const std::vector<Member>& members, const LengthContext& lengths);
    void PushShape(const Member& member);

    Context& m_context;
    Renderer::RenderTarget& m_target;
    std::vector<const Element*> m_active;
};

} // namespace Svg
