#pragma once

#include <utility>
#include <vector>

#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <renderer/effects/FilterEffect.h>
#include <renderer/Export.h>

namespace Renderer {

/// The effects of one layer, in the order in which they are applied. Immutable, shared.
class RENDERER_EXPORT FilterEffectsContext : public Kernel::Countable
{
public:
    using Effects = std::vector<Kernel::Counted<const FilterEffect>>;

    explicit FilterEffectsContext(Effects effects) : m_effects(std::move(effects)) {}
    ~FilterEffectsContext() override;

    const Effects& GetEffects() const noexcept { return m_effects; }

private:
    Effects m_effects;
};

} // namespace Renderer
