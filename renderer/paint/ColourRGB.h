#pragma once

#include <renderer/paint/ColourOf.h>

namespace Renderer {

/// A colour of red, green and blue in the document's RGB profile. Channels may leave 0…1.
class RENDERER_EXPORT ColourRGB final : public ColourOf<ColourRGB>
{
public:
    /// How documents call the class.
    static constexpr Kernel::ClassUID SavedUID{"RGBA"};
    static constexpr const char* SavedName = "ColourRGB";

    /// \name Makes a colour from channels that are not premultiplied: consolidated, or an
    /// unconsolidated one for short-lived use or further changes. \tparam P PixelRGBA8,
    /// PixelRGBA16, PixelRGBAF or PixelRGBAUF.
    /// @{
    template<class P>
    static Kernel::Consolidated<ColourRGB> Create(const P& channels, double tint = 1.0,
                                                  double intensity = 1.0,
                                                  const Kernel::String& globalName = {})
    {
        return Share(Make(tint, intensity, globalName, channels));
    }
    template<class P>
    static Kernel::Counted<ColourRGB> CreateFakeTemporary(const P& channels, double tint = 1.0,
                                                          double intensity = 1.0,
                                                          const Kernel::String& globalName = {})
    {
        return Make(tint, intensity, globalName, channels);
    }
    /// @}

    /// Opaque black.
    ColourRGB();
    explicit ColourRGB(const Raster::PixelRGBA8& channels);
    explicit ColourRGB(const Raster::PixelRGBA16& channels);
    explicit ColourRGB(const Raster::PixelRGBAF& channels);
    explicit ColourRGB(const Raster::PixelRGBAUF& channels);

    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    Type GetType() const override { return RGB; }
    Raster::ColourSpace GetColourSpace() const override { return Raster::ColourSpace::RGB; }
    Kernel::String GetDefaultName() const override;
    double GetAlphaF() const override { return m_channels.Alpha(); }
    void SetAlphaF(double alpha) override { m_channels.Alpha() = static_cast<float>(alpha); }
    bool AreUntintedColoursEqual(const Colour& other) const override;

    /// The channels as they are stored.
    const Raster::PixelRGBAUF& GetColourInternal() const noexcept { return m_channels; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    friend class ColourOf<ColourRGB>;

    Raster::PixelRGBAUF m_channels;
};

extern template class ColourOf<ColourRGB>;

} // namespace Renderer
