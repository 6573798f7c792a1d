#include <renderer/paint/Colour.h>

#include <cmath>

#include <kernel/SavedItems.h>
#include <renderer/paint/ColourText.h>

namespace Renderer {

namespace {

/// Adds a percentage to a name, unless it rounds to 100.
void AppendPercent(Kernel::String& text, const char* format, double value)
{
    const double percent = std::round(value * 100.0);
    if (percent < 100.0)
        text = Kernel::FormatVT(format, text, ToRoundedString(percent));
}

} // namespace

Colour::~Colour() = default;

template<class Self, class Items>
void Colour::ListItems(Self& self, Items&& items)
{
    items.Optional("_nse", self.m_noise, 0.0);
    items.Optional("_tnt", self.m_tint, 1.0);
    items.Optional("_int", self.m_intensity, 1.0);
    items.Optional("_glb", self.m_globalName, {});
    items.Optional("_ovp", self.m_overprint, false);
}

void Colour::Save(Kernel::OutSerialiser& out) const
{
    ListItems(*this, Kernel::SavedItems::Writer(out));
}

bool Colour::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    ListItems(*this, Kernel::SavedItems::Reader(in));
    return true;
}

void Colour::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(m_noise);
    hash.Add(m_tint);
    hash.Add(m_intensity);
    hash.Add(std::string_view(m_globalName));
    hash.Add(m_overprint);
}

bool Colour::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    const auto& colour = static_cast<const Colour&>(other);
    return Kernel::SavedItems::AreClose(m_noise, colour.m_noise) &&
           Kernel::SavedItems::AreClose(m_tint, colour.m_tint) &&
           Kernel::SavedItems::AreClose(m_intensity, colour.m_intensity) &&
           m_globalName == colour.m_globalName && m_overprint == colour.m_overprint;
}

void Colour::SetAttributes(const Colour& other)
{
    m_overprint = other.m_overprint;
    m_noise = other.m_noise;
    m_tint = other.m_tint;
    m_intensity = other.m_intensity;
    m_globalName = other.m_globalName;
}

Kernel::String Colour::GetDefaultName(const Kernel::String& base) const
{
    Kernel::String text = base;
    AppendPercent(text, "%1 A:%2%%", GetAlphaF());
    AppendPercent(text, "%1 T:%2%%", m_tint);
    return text;
}

Kernel::String Colour::GetCSSAttributes() const
{
    Raster::PixelRGBA8 pixel;
    GetColour(pixel, true, {});
    return Kernel::FormatVT("rgba(%1,%2,%3,%4)", Kernel::ToString(pixel[0]),
                            Kernel::ToString(pixel[1]), Kernel::ToString(pixel[2]),
                            Kernel::ToString(pixel.Alpha() / 255.0, 1, 0));
}

Raster::DynamicPixel Colour::GetRasterDynamicPixel(Raster::Format format,
                                                   const ICCProfileSet& profiles) const
{
    return Raster::WithPixelOfFormat(format, Raster::DynamicPixel(), [&](auto pixel) {
        GetColour(pixel, true, profiles);
        return Raster::DynamicPixel(pixel);
    });
}

Kernel::Consolidated<Colour> Colour::Consolidate(const Kernel::Counted<const Colour>& colour)
{
    if (!colour || colour->IsConsolidated())
        return Kernel::Consolidated<Colour>(colour);
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(colour->Clone());
}

} // namespace Renderer
