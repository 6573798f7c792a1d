#pragma once

#include <cstdint>

#include <renderer/paint/ColourOf.h>

namespace Renderer {

/// A colour of hue (a fraction of a turn), saturation and luminosity, 0…1 each, over the document's
/// RGB profile.
class RENDERER_EXPORT ColourHSL final : public ColourOf<ColourHSL>
{
public:
    /// How documents call the class.
    static constexpr Kernel::ClassUID SavedUID{"HSLA"};
    static constexpr const char* SavedName = "ColourHSL";

    /// \name Makes a consolidated colour, from doubles, from 16-bit integers (65535 is 1) or from a
    /// pixel.
    /// @{
    static Kernel::Consolidated<ColourHSL> Create(double hue, double saturation, double luminosity,
                                                  double alpha, double tint = 1.0,
                                                  double intensity = 1.0,
                                                  const Kernel::String& globalName = {});
    static Kernel::Consolidated<ColourHSL> Create(std::uint16_t hue, std::uint16_t saturation,
                                                  std::uint16_t luminosity, std::uint16_t alpha,
                                                  double tint = 1.0, double intensity = 1.0,
                                                  const Kernel::String& globalName = {});
    static Kernel::Consolidated<ColourHSL> Create(const Raster::PixelHSLAF& channels,
                                                  double tint = 1.0, double intensity = 1.0,
                                                  const Kernel::String& globalName = {});
    /// @}

    /// \name The same unconsolidated, for short-lived use or further changes.
    /// @{
    static Kernel::Counted<ColourHSL> CreateFakeTemporary(double hue, double saturation,
                                                          double luminosity, double alpha,
                                                          double tint = 1.0, double intensity = 1.0,
                                                          const Kernel::String& globalName = {});
    static Kernel::Counted<ColourHSL>
    CreateFakeTemporary(std::uint16_t hue, std::uint16_t saturation, std::uint16_t luminosity,
                        std::uint16_t alpha, double tint = 1.0, double intensity = 1.0,
                        const Kernel::String& globalName = {});
    static Kernel::Counted<ColourHSL> CreateFakeTemporary(const Raster::PixelHSLAF& channels,
                                                          double tint = 1.0, double intensity = 1.0,
                                                          const Kernel::String& globalName = {});
    /// @}

    /// Opaque black.
    ColourHSL();
    explicit ColourHSL(const Raster::PixelHSLAF& channels);

    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    Type GetType() const override { return HSL; }
    Raster::ColourSpace GetColourSpace() const override { return Raster::ColourSpace::HSL; }
    Kernel::String GetDefaultName() const override;
    double GetAlphaF() const override { return m_channels.Alpha(); }
    void SetAlphaF(double alpha) override { m_channels.Alpha() = static_cast<float>(alpha); }
    bool AreUntintedColoursEqual(const Colour& other) const override;
    /// `hsla(…)` of the stored values without tint; degrees and percents are cut, not rounded.
    Kernel::String GetCSSAttributes() const override;

    /// The channels as they are stored.
    const Raster::PixelHSLAF& GetColourInternal() const noexcept { return m_channels; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    friend class ColourOf<ColourHSL>;

    Raster::PixelHSLAF m_channels;
};

extern template class ColourOf<ColourHSL>;

} // namespace Renderer
