#pragma once

#include <renderer/paint/ColourOf.h>

namespace Renderer {

/// The printer's registration colour: every ink in full, black on screens. Always opaque.
class RENDERER_EXPORT ColourRegistration final : public ColourOf<ColourRegistration>
{
public:
    /// How documents call the class.
    static constexpr Kernel::ClassUID SavedUID{"RegC"};
    static constexpr const char* SavedName = "ColourRegistration";

    /// Makes a consolidated colour.
    static Kernel::Consolidated<ColourRegistration>
    Create(double tint = 1.0, double intensity = 1.0, const Kernel::String& globalName = {});
    /// The same unconsolidated, for short-lived use or further changes.
    static Kernel::Counted<ColourRegistration>
    CreateFakeTemporary(double tint = 1.0, double intensity = 1.0,
                        const Kernel::String& globalName = {});

    ColourRegistration() = default;

    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    Type GetType() const override { return Registration; }
    Raster::ColourSpace GetColourSpace() const override { return Raster::ColourSpace::CMYK; }
    Kernel::String GetDefaultName() const override;
    double GetAlphaF() const override { return 1.0; }
    /// Does nothing.
    void SetAlphaF(double alpha) override;
    bool AreUntintedColoursEqual(const Colour& other) const override;
    /// Empty: CSS has no such colour.
    Kernel::String GetCSSAttributes() const override { return {}; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;
};

extern template class ColourOf<ColourRegistration>;

} // namespace Renderer
