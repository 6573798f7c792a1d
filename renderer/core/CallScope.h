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

} // namespace Renderer
