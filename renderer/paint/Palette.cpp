#include <renderer/paint/Palette.h>

#include <utility>

#include <kernel/SavedItems.h>
#include <renderer/paint/ColourConversion.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/ColourVisitor.h>

namespace Renderer {

namespace {

/// The nearest opaque RGB colour of a palette entry.
template<class P>
Raster::PixelRGBA8 MakeOpaqueRGB(const P& entry)
{
    Raster::PixelRGBA8 pixel;
    if constexpr (ColourConversion::HasColour<P>)
        ColourConversion::ConvertPixel(entry, pixel, {});
    pixel.Alpha() = 255;
    return pixel;
}

} // namespace

Palette::Palette(Colours colours) : m_colours(std::move(colours))
{
    std::erase(m_colours, nullptr);
}

Palette::~Palette() = default;

Kernel::Consolidated<Palette> Palette::Create(Colours colours)
{
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(
        Kernel::MakeCounted<Palette>(std::move(colours)));
}

Kernel::Consolidated<Palette>
Palette::CreateFromDynamicPalette(const Raster::DynamicPalette& palette, Raster::Format format)
{
    Colours colours;
    if (palette.GetFormat() == format) {
        for (const Raster::DynamicPixel& entry : palette.GetEntries()) {
            const auto pixel =
                Raster::WithPixelOfFormat(format, Raster::PixelRGBA8{}, [&]<class P>(P) {
                    return MakeOpaqueRGB(entry.Get<P>());
                });
            colours.push_back(ColourRGB::Create(pixel));
        }
    }
    return Create(std::move(colours));
}

const Kernel::SharedClassProperties& Palette::GetTypeSharedClassProperties()
{
    static const auto& record = *new Kernel::SharedClassProperties(
        "Pltt", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "Palette");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = Palette::GetTypeSharedClassProperties();

} // namespace

template<class Self, class Items>
void Palette::ListItems(Self& self, Items&& items)
{
    items.Objects("cols", self.m_colours);
}

void Palette::Save(Kernel::OutSerialiser& out) const
{
    ListItems(*this, Kernel::SavedItems::Writer(out));
}

bool Palette::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    ListItems(*this, Kernel::SavedItems::Reader(in));
    return true;
}

void Palette::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(m_colours.size());
    for (const auto& colour : m_colours)
        hash.AddAddress(colour.Get());
}

bool Palette::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return m_colours == static_cast<const Palette&>(other).m_colours;
}

Kernel::Counted<Palette> Palette::Clone() const
{
    return Kernel::MakeCounted<Palette>(*this);
}

void Palette::FillDynamicPalette(Raster::DynamicPalette& palette, Raster::Format format,
                                 const Raster::ICCManager::ICCProfileSet& profiles) const
{
    palette.Reset(format);
    if (Raster::GetPixelSize(format) == 0)
        return;
    for (const auto& colour : m_colours)
        palette.Add(colour->GetRasterDynamicPixel(format, profiles));
}

Kernel::Consolidated<Palette> Palette::Accept(ColourVisitor& visitor) const
{
    Colours colours = m_colours;
    for (auto& colour : colours) {
        if (const auto answer = colour->Accept(visitor))
            colour = Colour::Consolidate(answer);
    }
    return Create(std::move(colours));
}

} // namespace Renderer
