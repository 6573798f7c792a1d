#pragma once

#include <renderer/paint/ColourOf.h>

namespace Renderer {

/// A CIE L*a*b* D50 colour in 16-bit words: L* = L/65535·100, a* = a/65535·255 − 128, b* likewise.
class RENDERER_EXPORT ColourLAB final : public ColourOf<ColourLAB>
{
public:
    /// How documents call the class.
    static constexpr Kernel::ClassUID SavedUID{"LABA"};
    static constexpr const char* SavedName = "ColourLAB";

    /// Makes a consolidated colour.
    static Kernel::Consolidated<ColourLAB> Create(const Raster::PixelLABA16& channels,
                                                  double tint = 1.0, double intensity = 1.0,
                                                  const Kernel::String& globalName = {});
    /// The same unconsolidated, for short-lived use or further changes.
    static Kernel::Counted<ColourLAB> CreateFakeTemporary(const Raster::PixelLABA16& channels,
                                                          double tint = 1.0, double intensity = 1.0,
                                                          const Kernel::String& globalName = {});

    /// Opaque black.
    ColourLAB();
    explicit ColourLAB(const Raster::PixelLABA16& channels);

    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    Type GetType() const override { return LAB; }
    Raster::ColourSpace GetColourSpace() const override { return Raster::ColourSpace::LAB; }
    Kernel::String GetDefaultName() const override;
    double GetAlphaF() const override;
    /// Kept as a 16-bit word; values outside 0…1 are clamped.
    void SetAlphaF(double alpha) override;
    bool AreUntintedColoursEqual(const Colour& other) const override;

    /// The channels as they are stored.
    const Raster::PixelLABA16& GetColourInternal() const noexcept { return m_channels; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    friend class ColourOf<ColourLAB>;

    Raster::PixelLABA16 m_channels;
};

extern template class ColourOf<ColourLAB>;

} // namespace Renderer
