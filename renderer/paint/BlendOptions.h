#pragma once

#include <array>

#include <geometry/Curve.h>
#include <geometry/Spline.h>
#include <kernel/Counted.h>
#include <kernel/FourCharCode.h>
#include <kernel/HashAccumulator.h>
#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>
#include <renderer/Export.h>

namespace Renderer {

/// The blend controls of a layer beyond mode and opacity: weights over the channel values of source
/// and destination (blend ranges), blend gamma, and a gamma curve of the anti-aliasing. A plain
/// value.
class RENDERER_EXPORT BlendOptions
{
public:
    using Curve = Kernel::Counted<const Geometry::Spline>;

    /// Whose channel values a blend range looks at.
    enum class Side
    {
        Source = 0,
        Destination = 1,
    };

    /// Channels with curves of their own, besides the master curve.
    static constexpr int ChannelCount = 5;
    static constexpr double DefaultBlendGamma = 2.2;

    /// The shared default value.
    static const BlendOptions& Identity();

    /// \name Blend ranges: each gives a weight 0…1 over a value 0…1; empty counts as the
    /// constant 1. The master curve looks at the lightness, the others at the channel of their
    /// index.
    /// @{
    const Curve& GetMasterCurve(Side side) const noexcept;
    void SetMasterCurve(Side side, Curve curve);
    /// \param channel 0 … ChannelCount − 1.
    const Curve& GetChannelCurve(Side side, int channel) const noexcept;
    void SetChannelCurve(Side side, int channel, Curve curve);
    /// @}

    double GetBlendGamma() const noexcept { return m_blendGamma; }
    void SetBlendGamma(double gamma) noexcept { m_blendGamma = gamma; }

    /// The curve that maps coverage before it is used, over the unit square; empty for none.
    const Kernel::Counted<const Geometry::CurveDbl>& GetAntialiasingGamma() const noexcept
    {
        return m_antialiasingGamma;
    }
    void SetAntialiasingGamma(Kernel::Counted<const Geometry::CurveDbl> curve);

    /// Whether nothing differs from the defaults.
    bool IsIdentity() const;
    bool IsIdentityCurves() const;
    bool IsIdentityBlendGamma() const noexcept;
    bool IsIdentityAntialiasingGamma() const noexcept { return !m_antialiasingGamma; }
    /// Whether a blend range lets every value through: it is empty or the constant 1.
    static bool IsIdentitySpline(const Curve& curve);

    /// \name As a nested class item of saved objects
    /// @{
    static constexpr Kernel::ClassUID GetClassUID() noexcept { return "BlOp"; }
    static constexpr unsigned short GetSchemaVersion() noexcept { return 1; }
    void Save(Kernel::OutSerialiser& out) const;
    /// \return false, with nothing changed, for items of another class or a newer version.
    bool Load(const Kernel::InSerialiser& in, const Kernel::ClassUID& uid, unsigned short version);
    /// @}

    /// Adds every member. Values that are only equal within the tolerance may hash apart.
    void AccumulateHash(Kernel::HashAccumulator& hash) const;

    /// Whether all members are equal: blend ranges point by point, the gamma and the points of the
    /// anti-aliasing curve within 1e-6.
    friend RENDERER_EXPORT bool operator==(const BlendOptions& a, const BlendOptions& b);

private:
    static constexpr std::size_t Index(Side side, int curve) noexcept
    {
        return static_cast<std::size_t>(2 * curve + static_cast<int>(side));
    }

    template<class Self, class Items>
    static void ListItems(Self& self, Items&& items);

    // Source and destination in turn, the master curves first.
    std::array<Curve, 2 * (1 + ChannelCount)> m_curves;
    double m_blendGamma = DefaultBlendGamma;
    Kernel::Counted<const Geometry::CurveDbl> m_antialiasingGamma;
};

} // namespace Renderer
