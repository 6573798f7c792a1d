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
    bool isolates = false; ///< what is inside must not blend with what is below

    /// Whether drawing without a group would look different.
    bool IsNeeded() const
    {
        return isolates || opacity < 1.0 || mode != Renderer::FillBlendMode::Normal;
    }
};

/// A group that is composited as one object, where that is needed.
class GroupScope
{
public:
    GroupScope(Renderer::RenderTarget& target, const Grouping& grouping)
        : m_target(target), m_isOpen(grouping.IsNeeded())
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
            m_target.PopCompositeAsFill({}, {});
    }
    GroupScope(const GroupScope&) = delete;
    GroupScope& operator=(const GroupScope&) = delete;

private:
    Renderer::RenderTarget& m_target;
    bool m_isOpen;
};

/// A mask in the resolution of a target's device.
struct MaskPixels
{
    Kernel::Counted<const Raster::DynamicBuffer> pixels; ///< M8; empty where nothing is masked
    Kernel::RectT<int> rect{};                           ///< where on the device they lie
    bool hidesAll = false;                               ///< nothing is left to be seen
};

/// A mask in force, if there is one.
class MaskScope
{
public:
    MaskScope(Renderer::RenderTarget& target, const MaskPixels& mask) : m_target(target)
    {
        using Raster::AffineTransform;
        const Transform current = target.GetCurrentTransform();
        Transform toLogical;
        m_inForce = mask.pixels && AffineTransform::Invert(current, toLogical);
        if (!m_inForce)
            return;
        const Kernel::RectT<double> rect{double(mask.rect.left), double(mask.rect.top),
                                         double(mask.rect.right), double(mask.rect.bottom)};
        const bool upright =
            current.m01 == 0.0 && current.m10 == 0.0 && current.m00 > 0.0 && current.m11 > 0.0;
        if (upright) {
            target.PushClippingMask(AffineTransform::MapRect(toLogical, rect), mask.pixels);
            return;
        }
        // Pushes nest: what is drawn gets its coordinates back by a second transform.
        m_isTurned = true;
        target.PushTransform(toLogical, Renderer::RenderTarget::TransformScalarMode::Inherit);
        target.PushClippingMask(rect, mask.pixels);
        target.PushTransform(current, Renderer::RenderTarget::TransformScalarMode::Inherit);
    }
    ~MaskScope()
    {
        if (m_isTurned)
            m_target.PopTransform();
        if (m_inForce)
            m_target.PopClippingMask();
        if (m_isTurned)
            m_target.PopTransform();
    }
    MaskScope(const MaskScope&) = delete;
    MaskScope& operator=(const MaskScope&) = delete;

private:
    Renderer::RenderTarget& m_target;
    bool m_inForce = false;
    bool m_isTurned = false;
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
