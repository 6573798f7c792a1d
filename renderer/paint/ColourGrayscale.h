#pragma once

#include <cstdint>

#include <renderer/paint/ColourOf.h>

namespace Renderer {

/// A grey of the document's grey profile: intensity 0 (black) to 1 (white).
class RENDERER_EXPORT ColourGrayscale final : public ColourOf<ColourGrayscale>
{
public:
    /// How documents call the class.
    static constexpr Kernel::ClassUID SavedUID{"GRAY"};
    static constexpr const char* SavedName = "ColourGrayscale";

    /// \name Makes a grey: consolidated, or an unconsolidated one for short-lived use or further
    /// changes. \tparam T double or float (1 is white), or std::uint8_t or std::uint16_t (the
    /// largest value is
    ///         white).
    /// @{
    template<class T>
    static Kernel::Consolidated<ColourGrayscale> Create(T grey, T alpha, double tint = 1.0,
                                                        double intensity = 1.0,
                                                        const Kernel::String& globalName = {})
    {
        return Share(Make(tint, intensity, globalName, grey, alpha));
    }
    template<class T>
    static Kernel::Counted<ColourGrayscale>
    CreateFakeTemporary(T grey, T alpha, double tint = 1.0, double intensity = 1.0,
                        const Kernel::String& globalName = {})
    {
        return Make(tint, intensity, globalName, grey, alpha);
    }
    /// @}

    /// Opaque black.
    ColourGrayscale();
    ColourGrayscale(double grey, double alpha);
    ColourGrayscale(float grey, float alpha);
    ColourGrayscale(std::uint8_t grey, std::uint8_t alpha);
    ColourGrayscale(std::uint16_t grey, std::uint16_t alpha);

    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    Type GetType() const override { return Grayscale; }
    Raster::ColourSpace GetColourSpace() const override { return Raster::ColourSpace::Grey; }
    Kernel::String GetDefaultName() const override;
    double GetAlphaF() const override { return m_channels.Alpha(); }
    void SetAlphaF(double alpha) override { m_channels.Alpha() = static_cast<float>(alpha); }
    bool AreUntintedColoursEqual(const Colour& other) const override;

    /// The channels as they are stored.
    const Raster::PixelIAF& GetColourInternal() const noexcept { return m_channels; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    friend class ColourOf<ColourGrayscale>;

    Raster::PixelIAF m_channels;
};

extern template class ColourOf<ColourGrayscale>;

} // namespace Renderer
