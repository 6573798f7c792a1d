#pragma once

#include <cstddef>
#include <type_traits>

#include <kernel/Countable.h>
#include <renderer/core/span/GradientRamp.h>
#include <renderer/core/span/GradientTable.h>

namespace Renderer {

/// The colours of a gradient in one pixel format, ready for drawing: the ramp, and its table where
/// the format gains by one. Immutable; what GradientCache keeps.
template<class Processor>
class GradientColours final : public Kernel::Countable
{
public:
    using Ramp = GradientRamp<Processor>;
    struct NoTable
    {
        explicit NoTable(const Ramp&) noexcept {}
        static constexpr std::size_t GetByteSize() noexcept { return 0; }
    };
    using Table = std::conditional_t<Processor::UsesTables, GradientTable<Processor>, NoTable>;

    /// \pre \p gradient has stops.
    GradientColours(const Gradient& gradient, const typename Processor::Profiles& profiles)
        : m_ramp(gradient, profiles),
          m_table(m_ramp),
          m_isOpaque(m_ramp.IsOpaque()),
          m_hasNoise(m_ramp.HasNoise())
    {}

    const Ramp& GetRamp() const noexcept { return m_ramp; }
    const Table& GetTable() const noexcept { return m_table; }
    /// Whether all stops have full alpha.
    bool IsOpaque() const noexcept { return m_isOpaque; }
    /// Whether some stop has a noise amount.
    bool HasNoise() const noexcept { return m_hasNoise; }

    std::size_t GetByteSize() const noexcept
    {
        return sizeof(*this) + m_ramp.GetByteSize() + m_table.GetByteSize();
    }

private:
    Ramp m_ramp;
    [[no_unique_address]] Table m_table;
    bool m_isOpaque;
    bool m_hasNoise;
};

} // namespace Renderer
