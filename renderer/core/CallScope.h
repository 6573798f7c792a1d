#pragma once

#include <renderer/core/PixelRenderTarget.h>

namespace Renderer {

/// Lasts as long as a drawing call works: whatever way the call ends, populators and rasteriser are
/// reset, so that a failed call leaves no state behind.
class PixelRenderTarget::CallScope
{
public:
    explicit CallScope(PixelRenderTarget& target,
                       const BlendOptions& options = BlendOptions::Identity())
        : m_target(target)
    {
        const bool isAlphaOnly = target.IsAlphaOnly();
        target.m_rasterizer.SetBlends(isAlphaOnly ? target.m_alphaBlends : target.m_blends);
        // Ranges look at colours, and transforms may make alpha of them.
        target.m_paintsAlphaOnly =
            isAlphaOnly && target.m_colourTransforms.empty() && options.IsIdentityCurves();
    }
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

/// Lasts while the present buffer's pixels are written: the host's copy of them is brought up to
/// date before and dropped after, also when the work is cut short.
class PixelRenderTarget::WriteScope
{
public:
    /// \param rect of the page, within which pixels change; what lies outside the buffer is left
    /// out.
    WriteScope(PixelRenderTarget& target, const Kernel::RectT<int>& rect)
        : m_buffer(target.m_current), m_rect(rect.Intersect(target.GetVisibleRect()))
    {
        m_rect.left -= target.m_currentOrigin.x;
        m_rect.top -= target.m_currentOrigin.y;
        m_rect.right -= target.m_currentOrigin.x;
        m_rect.bottom -= target.m_currentOrigin.y;
        m_buffer->SyncHostCache();
    }
    WriteScope(const WriteScope&) = delete;
    WriteScope& operator=(const WriteScope&) = delete;
    ~WriteScope() { m_buffer->InvalidateHardwareCache(m_rect); }

private:
    const Kernel::Counted<Raster::DynamicBuffer> m_buffer;
    Kernel::RectT<int> m_rect;
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
