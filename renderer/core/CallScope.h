#pragma once

#include <renderer/core/PixelRenderTarget.h>

namespace Renderer {

/// Lasts as long as a drawing call works: whatever way the call ends, populators and rasteriser are
/// reset, so that a failed call leaves no state behind.
class PixelRenderTarget::CallScope
{
public:
    explicit CallScope(PixelRenderTarget& target) : m_target(target) {}
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;
    ~CallScope()
    {
        m_target.m_rasterizer.ResetSpanPopulators();
        m_target.m_rasterizer.ResetRasterizer();
        m_target.m_populators.Reset();
        if (m_hasGammaCurve)
            m_target.m_rasterizer.SetGamma(m_target.m_gamma);
    }

    void SetGammaCurve(const Kernel::Counted<const Geometry::CurveDbl>& curve)
    {
        m_hasGammaCurve = static_cast<bool>(curve);
        if (curve)
            m_target.m_rasterizer.SetGammaCurve(curve);
    }

private:
    PixelRenderTarget& m_target;
    bool m_hasGammaCurve = false;
};

/// A group of the size of one shape. Unless it is painted, what was drawn into it is dropped, so
/// that a call that fails half-way leaves clips and groups as they were.
class PixelRenderTarget::ShapeGroup
{
public:
    ShapeGroup(PixelRenderTarget& target, const Kernel::RectT<int>& rect,
               const Composition& composition)
        : m_target(target)
    {
        // Before the clip narrows, so that the clip paths' coverage serves the next shapes too.
        target.UpdateClipRasterizer();
        target.PushAbsoluteDeviceClip(rect);
        try {
            target.PushComposite(CompositeInit::Clear, composition.mode, composition.options,
                                 composition.opacity);
        } catch (...) {
            target.PopDeviceClip();
            throw;
        }
    }
    ShapeGroup(const ShapeGroup&) = delete;
    ShapeGroup& operator=(const ShapeGroup&) = delete;
    ~ShapeGroup()
    {
        if (m_isOpen)
            m_target.CloseComposite(); // with its buffer
        m_target.PopDeviceClip();
    }

    void Paint(const FillDescriptorConst& transparency)
    {
        m_isOpen = false; // closing comes first and cannot fail
        m_target.PopCompositeAsFill({}, transparency);
    }

private:
    PixelRenderTarget& m_target;
    bool m_isOpen = true;
};

} // namespace Renderer
