#pragma once

#include <renderer/paint/ColourOf.h>
#include <renderer/paint/ColourRGB.h>

namespace Renderer {

/// A swatch of a colour book: a name over a base colour that stands for it, and perhaps what it
/// looks like in sRGB.
///
/// 8-bit RGB pixels come from the sRGB equivalent where there is one, brought into the target's
/// profile; every other pixel comes from the base colour. With tint, the base colour is taken with
/// its own tint, and then this colour's tint is applied. A base colour may be named itself, up to
/// MaxDepth named colours one upon the other.
class RENDERER_EXPORT ColourNamed final : public ColourOf<ColourNamed>
{
public:
    /// How documents call the class.
    static constexpr Kernel::ClassUID SavedUID{"Pant"};
    static constexpr const char* SavedName = "ColourNamed";

    /// Named colours one upon the other, at most.
    static constexpr unsigned MaxDepth = 8;

    /// Makes a consolidated colour. \param base not empty; where it would exceed MaxDepth, its own
    /// base colour takes its place. \param sRGB may be empty.
    static Kernel::Consolidated<ColourNamed> Create(const Kernel::String& name, bool isSpot,
                                                    const Kernel::Consolidated<Colour>& base,
                                                    const Kernel::Consolidated<ColourRGB>& sRGB,
                                                    double tint = 1.0, double intensity = 1.0,
                                                    const Kernel::String& globalName = {});
    /// The same unconsolidated, for short-lived use or further changes.
    static Kernel::Counted<ColourNamed>
    CreateFakeTemporary(const Kernel::String& name, bool isSpot,
                        const Kernel::Consolidated<Colour>& base,
                        const Kernel::Consolidated<ColourRGB>& sRGB, double tint = 1.0,
                        double intensity = 1.0, const Kernel::String& globalName = {});

    /// An unnamed process colour of opaque black.
    ColourNamed();
    ColourNamed(Kernel::String name, bool isSpot, Kernel::Consolidated<Colour> base,
                Kernel::Consolidated<ColourRGB> sRGB);

    void Save(Kernel::OutSerialiser& out) const override;
    /// False without a base colour, and beyond MaxDepth.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    Type GetType() const override { return Named; }
    /// That of the base colour.
    Raster::ColourSpace GetColourSpace() const override { return m_base->GetColourSpace(); }
    Kernel::String GetDefaultName() const override;
    /// That of the base colour.
    double GetAlphaF() const override { return m_base->GetAlphaF(); }
    /// Replaces the base colour, and the sRGB equivalent, by ones of this alpha.
    void SetAlphaF(double alpha) override;
    bool AreUntintedColoursEqual(const Colour& other) const override;
    /// That of the base colour.
    Kernel::String GetCSSAttributes() const override { return m_base->GetCSSAttributes(); }

    /// Never empty.
    const Kernel::Consolidated<Colour>& GetBaseColour() const noexcept { return m_base; }
    /// May be empty.
    const Kernel::Consolidated<ColourRGB>& GetSRGBColour() const noexcept { return m_sRGB; }
    /// Whether this is an ink of its own and not a mixture of the process inks.
    bool IsSpot() const noexcept { return m_isSpot; }
    void SetIsSpot(bool isSpot) noexcept { m_isSpot = isSpot; }
    const Kernel::String& GetName() const noexcept { return m_name; }
    void SetName(Kernel::String name) { m_name = std::move(name); }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    /// The depth of a colour over this base.
    static unsigned GetDepthOver(const Colour& base);

    template<class Self, class Items>
    static void ListItems(Self& self, Items&& items);

    Kernel::Consolidated<Colour> m_base;
    Kernel::Consolidated<ColourRGB> m_sRGB;
    bool m_isSpot = false;
    Kernel::String m_name;
    unsigned m_depth = 1; // named colours down to the first base colour, this one included
};

extern template class ColourOf<ColourNamed>;

} // namespace Renderer
