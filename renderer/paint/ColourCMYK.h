#pragma once

#include <renderer/paint/ColourOf.h>

namespace Renderer {

/// A colour of process inks, 0…1 each, in the document's CMYK profile.
class RENDERER_EXPORT ColourCMYK final : public ColourOf<ColourCMYK>
{
public:
    /// How documents call the class.
    static constexpr Kernel::ClassUID SavedUID{"CMYK"};
    static constexpr const char* SavedName = "ColourCMYK";

    /// \name Makes a colour from channels that are not premultiplied: consolidated, or an
    /// unconsolidated one for short-lived use or further changes. \tparam P PixelCMYKA8 or
    /// PixelCMYKAF.
    /// @{
    template<class P>
    static Kernel::Consolidated<ColourCMYK> Create(const P& channels, double tint = 1.0,
                                                   double intensity = 1.0,
                                                   const Kernel::String& globalName = {})
    {
        return Share(Make(tint, intensity, globalName, channels));
    }
    template<class P>
    static Kernel::Counted<ColourCMYK> CreateFakeTemporary(const P& channels, double tint = 1.0,
                                                           double intensity = 1.0,
                                                           const Kernel::String& globalName = {})
    {
        return Make(tint, intensity, globalName, channels);
    }
    /// @}

    /// Opaque black of the black ink alone.
    ColourCMYK();
    explicit ColourCMYK(const Raster::PixelCMYKA8& channels);
    explicit ColourCMYK(const Raster::PixelCMYKAF& channels);

    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    Type GetType() const override { return CMYK; }
    Raster::ColourSpace GetColourSpace() const override { return Raster::ColourSpace::CMYK; }
    Kernel::String GetDefaultName() const override;
    double GetAlphaF() const override { return m_channels.Alpha(); }
    void SetAlphaF(double alpha) override { m_channels.Alpha() = static_cast<float>(alpha); }
    bool AreUntintedColoursEqual(const Colour& other) const override;

    /// The channels as they are stored.
    const Raster::PixelCMYKAF& GetColourInternal() const noexcept { return m_channels; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    friend class ColourOf<ColourCMYK>;

    Raster::PixelCMYKAF m_channels;
};

extern template class ColourOf<ColourCMYK>;

} // namespace Renderer
