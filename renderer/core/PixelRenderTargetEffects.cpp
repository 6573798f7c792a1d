// What the bitmap targets answer about filter effects, and the rectangles of live filters.

#include <algorithm>

#include <renderer/core/MakeRoom.h>
#include <renderer/core/PixelRenderTarget.h>

namespace Renderer {

using Kernel::RectT;

void PixelRenderTarget::SplitFilterEffects(
    Kernel::Counted<const FilterEffectsContext> effects, RectT<double>,
    std::vector<Kernel::Counted<const FilterEffectsContext>>& parts)
{
    parts.push_back(std::move(effects));
}

bool PixelRenderTarget::PushFilterEffects(Kernel::Counted<const FilterEffectsContext>,
                                          RectT<double>)
{
    return false;
}

void PixelRenderTarget::PopFilterEffects() {}

void PixelRenderTarget::PushFilterEffectsSupport(bool, bool, bool, bool, bool,
                                                 FillBlendMode::BlendMode, const BlendOptions&,
                                                 double)
{}

void PixelRenderTarget::PopFilterEffectsSupport() {}

void PixelRenderTarget::PushLiveFilters(RectT<int> rect)
{
    // Overlapping rectangles become one, until none overlap.
    MakeRoomForOne(m_liveFilters);
    m_liveFilterLevels.push_back(m_liveFilters);
    for (auto other = m_liveFilters.begin(); other != m_liveFilters.end();) {
        if (rect.Intersect(*other).IsEmpty()) {
            ++other;
            continue;
        }
        rect = rect.Union(*other);
        m_liveFilters.erase(other);
        other = m_liveFilters.begin();
    }
    m_liveFilters.push_back(rect);
}

void PixelRenderTarget::PopLiveFilters()
{
    if (m_liveFilterLevels.empty())
        return;
    m_liveFilters = std::move(m_liveFilterLevels.back());
    m_liveFilterLevels.pop_back();
}

} // namespace Renderer
