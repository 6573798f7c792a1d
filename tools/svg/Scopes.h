#pragma once

#include <utility>

#include <kernel/FormatException.h>
#include <renderer/core/RenderTarget.h>

#include "TransformList.h"

namespace Svg {

/// \name State of a target that is in force for as long as the object lives
/// @{

class TransformScope
{
public:
    TransformScope(Renderer::RenderTarget& target, const Transform& transform) : m_target(target)
    {
        target.PushTransform(transform, Renderer::RenderTarget::TransformScalarMode::Concatenate);
    }
    ~TransformScope() { m_target.PopTransform(); }
    TransformScope(const TransformScope&) = delete;
    TransformScope& operator=(const TransformScope&) = delete;

private:
    Renderer::RenderTarget& m_target;
};

/// Pops clip paths that were pushed already.
class ClipScope
{
public:
    ClipScope(Renderer::RenderTarget& target, int count) : m_target(target), m_count(count) {}
    ~ClipScope()
    {
        for (int i = 0; i < m_count; ++i)
            m_target.PopClipPath();
    }
    ClipScope(const ClipScope&) = delete;
    ClipScope& operator=(const ClipScope&) = delete;

private:
    Renderer::RenderTarget& m_target;
    int m_count;
};

/// How a group is laid over what is below it.
struct Grouping
{
    double opacity = 1.0;
    Renderer::FillBlendMode::BlendMode mode = Renderer::FillBlendMode::Normal;
    Renderer::FillDescriptorConst mask{}; ///< scales the group by its alpha; empty for none
    bool isolates = false;                ///< what is inside must not blend with what is below

    /// Whether drawing without a group would look different.
    bool IsNeeded() const
    {
        return isolates || opacity < 1.0 || mode != Renderer::FillBlendMode::Normal ||
               !mask.IsFillNone();
    }
};

/// A group that is composited as one object, where that is needed.
class GroupScope
{
public:
    GroupScope(Renderer::RenderTarget& target, const Grouping& grouping)
        : m_target(target), m_mask(grouping.mask), m_isOpen(grouping.IsNeeded())
    {
        if (m_isOpen) {
            target.PushComposite(Renderer::RenderTarget::CompositeInit::Clear, grouping.mode,
                                 Renderer::BlendOptions::Identity(),
                                 static_cast<float>(grouping.opacity));
        }
    }
    ~GroupScope()
    {
        if (m_isOpen)
            m_target.PopCompositeAsFill({}, m_mask);
    }
    GroupScope(const GroupScope&) = delete;
    GroupScope& operator=(const GroupScope&) = delete;

private:
    Renderer::RenderTarget& m_target;
    Renderer::FillDescriptorConst m_mask;
    bool m_isOpen;
};

/// Bitmaps are magnified without smoothing.
class ResamplerScope
{
public:
    ResamplerScope(Renderer::RenderTarget& target, bool pixelated)
        : m_target(target), m_former(target.GetUpResamplerType())
    {
        if (pixelated)
            target.SetUpResamplerType(Raster::ResamplerType::NearestNeighbour);
    }
    ~ResamplerScope() { m_target.SetUpResamplerType(m_former); }
    ResamplerScope(const ResamplerScope&) = delete;
    ResamplerScope& operator=(const ResamplerScope&) = delete;

private:
    Renderer::RenderTarget& m_target;
    Raster::ResamplerType m_former;
};
/// @}

/// A value that another takes the place of.
template<class T>
class ValueScope
{
public:
    ValueScope(T& place, T value) : m_place(place), m_former(place) { place = std::move(value); }
    ~ValueScope() { m_place = std::move(m_former); }
    ValueScope(const ValueScope&) = delete;
    ValueScope& operator=(const ValueScope&) = delete;

private:
    T& m_place;
    T m_former;
};

/// One level of a nesting that is bounded.
class CountedDepth
{
public:
    /// \throws Kernel::FormatException when \p depth would exceed \p limit.
    CountedDepth(int& depth, int limit) : m_depth(depth)
    {
        if (depth >= limit)
            throw Kernel::FormatException("elements are nested too deep");
        ++depth;
    }
    ~CountedDepth() { --m_depth; }
    CountedDepth(const CountedDepth&) = delete;
    CountedDepth& operator=(const CountedDepth&) = delete;

private:
    int& m_depth;
};

} // namespace Svg
