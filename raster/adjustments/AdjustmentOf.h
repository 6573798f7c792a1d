#pragma once

#include <cmath>

#include <kernel/HashAccumulator.h>
#include <raster/ColourTransform.h>

namespace Raster {

/// \p value in \p low … \p high; \p neutral where it is not a number. Settings that make no sense
/// change nothing.
constexpr float LimitSetting(float value, float low, float high, float neutral) noexcept
{
    return value != value ? neutral : value < low ? low : value > high ? high : value;
}

/// \p value in 0…1; 0 where it is not a number.
constexpr float LimitToUnit(float value) noexcept
{
    const float positive = value > 0.0f ? value : 0.0f;
    return positive < 1.0f ? positive : 1.0f;
}

/// What colour transforms share that a value describes completely. \tparam Settings compares with
/// == and has AccumulateHash(HashAccumulator&).
template<class Derived, class Settings>
class AdjustmentOf : public ColourTransform
{
public:
    const Settings& GetSettings() const noexcept { return m_settings; }

    std::uint64_t GetHash() const final
    {
        Kernel::HashAccumulator hash;
        hash.Add(Derived::Name);
        m_settings.AccumulateHash(hash);
        return hash.GetHash();
    }
    bool IsEqual(const ColourTransform& other) const final
    {
        const auto* same = dynamic_cast<const Derived*>(&other);
        return same && same->GetSettings() == m_settings;
    }

protected:
    explicit AdjustmentOf(Settings settings) : m_settings(std::move(settings)) {}

private:
    Settings m_settings;
};

} // namespace Raster
