#pragma once

#include <vector>

#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/SavedClass.h>
#include <raster/DynamicPalette.h>
#include <renderer/Export.h>
#include <renderer/paint/Colour.h>

namespace Renderer {

class ColourVisitor;

/// An ordered list of colours that a palettised picture is limited to. An immutable shared value.
///
/// The colours of the palettes made here are opaque ColourRGB of 8-bit channels.
class RENDERER_EXPORT Palette final : public Kernel::SharedSavedClass<Palette>
{
public:
    using Colours = std::vector<Kernel::Consolidated<Colour>>;

    /// The consolidated palette of some colours, which see the constructor.
    static Kernel::Consolidated<Palette> Create(Colours colours);

    /// \name Fixed palettes
    /// @{
    /// Black and white.
    static Kernel::Consolidated<Palette> GetBlackAndWhitePalette();
    /// Greys in equal steps from black to white, rounded to 8 bits. \param n how many, at most 256;
    /// 1 is black alone.
    static Kernel::Consolidated<Palette> CreateGrayscale(unsigned n);
    /// The 216 colours of the channel levels 0, 51, 102, 153, 204 and 255, from black to white;
    /// blue changes fastest.
    static Kernel::Consolidated<Palette> GetWebPalette();
    /// The 256 colours of the system palette: the cube of the web palette from white down, without
    /// its black; ten steps each of red, green, blue and grey, those multiples of 17 from 238 down
    /// that are not in the cube; black.
    static Kernel::Consolidated<Palette> GetMacintoshPalette();
    /// The 256 colours of the system palette: eight dark base colours, light grey with the seven
    /// bright ones, the four pastel colours of the desktop, the cube of the web palette without the
    /// corners that came before, and 28 greys in equal steps between black and white.
    static Kernel::Consolidated<Palette> GetWindowsPalette();
    /// @}

    /// The entries of a palette as opaque colours: their alpha is left out. Formats other than RGB
    /// become RGB by the fixed formulas.
    /// \param format the format of the entries; a palette in another one gives an empty one.
    static Kernel::Consolidated<Palette>
    CreateFromDynamicPalette(const Raster::DynamicPalette& palette, Raster::Format format);

    Palette() = default;
    /// Empty references are left out.
    explicit Palette(Colours colours);

    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

public:
    ~Palette() override;
    /// A copy that is not consolidated.
    Kernel::Counted<Palette> Clone() const;

    /// None is empty.
    const Colours& GetColours() const noexcept { return m_colours; }

    /// Turns \p palette into this one: each colour as a pixel of a format, tinted and in the
    /// profiles given, in order. Stays empty for Format::None.
    void FillDynamicPalette(Raster::DynamicPalette& palette, Raster::Format format,
                            const Raster::ICCManager::ICCProfileSet& profiles) const;

    /// The palette with every colour replaced by the visitor's answer.
    Kernel::Consolidated<Palette> Accept(ColourVisitor& visitor) const;

private:
    template<class Self, class Items>
    static void ListItems(Self& self, Items&& items);

    Colours m_colours;
};

} // namespace Renderer
