#include <renderer/paint/ColourNamed.h>

#include <renderer/paint/ColourOfBody.h>

namespace Renderer {

namespace {

/// Brings an 8-bit sRGB pixel into the RGB profile of a set.
void ConvertFromSRGB(Raster::PixelRGBA8& pixel, const Colour::ICCProfileSet& profiles)
{
    auto& manager = Raster::ICCManager::GetInstance();
    Colour::ICCProfileSet sRGB;
    sRGB.SetRGB(manager.GetDefaultProfileForFormat(Raster::Format::RGBA8));
    // Without a transform both profiles are the same.
    manager.DoTransform(Raster::Format::RGBA8, sRGB, &pixel, Raster::Format::RGBA8, profiles,
                        &pixel, 1);
}

bool AreUntintedEqual(const Colour* a, const Colour* b)
{
    return a && b ? a->AreUntintedColoursEqual(*b) : a == b;
}

} // namespace

template<class P>
void MakePixel(const ColourNamed& colour, P& pixel, bool applyTint,
               const Colour::ICCProfileSet& profiles)
{
    if constexpr (std::is_same_v<P, Raster::PixelRGBA8>) {
        if (colour.GetSRGBColour()) {
            colour.GetSRGBColour()->GetColour(pixel, applyTint, {});
            ConvertFromSRGB(pixel, profiles);
            return;
        }
    }
    colour.GetBaseColour()->GetColour(pixel, applyTint, profiles);
}

Kernel::Consolidated<ColourNamed> ColourNamed::Create(const Kernel::String& name, bool isSpot,
                                                      const Kernel::Consolidated<Colour>& base,
                                                      const Kernel::Consolidated<ColourRGB>& sRGB,
                                                      double tint, double intensity,
                                                      const Kernel::String& globalName)
{
    return Share(Make(tint, intensity, globalName, name, isSpot, base, sRGB));
}

Kernel::Counted<ColourNamed>
ColourNamed::CreateFakeTemporary(const Kernel::String& name, bool isSpot,
                                 const Kernel::Consolidated<Colour>& base,
                                 const Kernel::Consolidated<ColourRGB>& sRGB, double tint,
                                 double intensity, const Kernel::String& globalName)
{
    return Make(tint, intensity, globalName, name, isSpot, base, sRGB);
}

ColourNamed::ColourNamed() : ColourNamed({}, false, nullptr, nullptr) {}

ColourNamed::ColourNamed(Kernel::String name, bool isSpot, Kernel::Consolidated<Colour> base,
                         Kernel::Consolidated<ColourRGB> sRGB)
    : m_base(std::move(base)), m_sRGB(std::move(sRGB)), m_isSpot(isSpot), m_name(std::move(name))
{
    if (!m_base)
        m_base = ColourRGB::Create(Raster::PixelRGBAUF{0, 0, 0, 1});
    m_depth = GetDepthOver(*m_base);
    if (m_depth > MaxDepth) {
        const auto inner = static_cast<const ColourNamed&>(*m_base).m_base;
        m_base = inner;
        m_depth = MaxDepth;
    }
}

unsigned ColourNamed::GetDepthOver(const Colour& base)
{
    return base.GetType() == Named ? static_cast<const ColourNamed&>(base).m_depth + 1 : 1;
}

template<class Self, class Items>
void ColourNamed::ListItems(Self& self, Items&& items)
{
    items.Required("base", self.m_base);
    items.OptionalObject("srgb", self.m_sRGB);
    items.Always("ispt", self.m_isSpot);
    items.Optional("name", self.m_name, {});
}

void ColourNamed::Save(Kernel::OutSerialiser& out) const
{
    Colour::Save(out);
    ListItems(*this, Kernel::SavedItems::Writer(out));
}

bool ColourNamed::Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
                       unsigned short version)
{
    Kernel::SavedItems::Reader items(in);
    ListItems(*this, items);
    m_depth = GetDepthOver(*m_base);
    return Colour::Load(in, store, version) && items.IsComplete() && m_depth <= MaxDepth;
}

void ColourNamed::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.AddAddress(m_base.Get());
    hash.AddAddress(m_sRGB.Get());
    hash.Add(m_isSpot);
    hash.Add(std::string_view(m_name));
    Colour::AccumulateHash(hash);
}

bool ColourNamed::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    const auto& colour = static_cast<const ColourNamed&>(other);
    return m_base == colour.m_base && m_sRGB == colour.m_sRGB && m_isSpot == colour.m_isSpot &&
           m_name == colour.m_name && Colour::CompareMembers(other);
}

bool ColourNamed::AreUntintedColoursEqual(const Colour& other) const
{
    const auto* colour = dynamic_cast<const ColourNamed*>(&other);
    return colour && AreUntintedEqual(m_base.Get(), colour->m_base.Get()) &&
           AreUntintedEqual(m_sRGB.Get(), colour->m_sRGB.Get()) && m_name == colour->m_name &&
           m_isSpot == colour->m_isSpot;
}

Kernel::String ColourNamed::GetDefaultName() const
{
    return Colour::GetDefaultName(m_name);
}

void ColourNamed::SetAlphaF(double alpha)
{
    const auto change = [alpha](Colour& colour) { colour.SetAlphaF(alpha); };
    m_base = Modify(*m_base, change);
    if (m_sRGB) {
        const Kernel::Counted<ColourRGB> copy = Kernel::MakeCounted<ColourRGB>(*m_sRGB);
        change(*copy);
        m_sRGB = Kernel::SharedClassProperties::ConsolidateObjectSacrifice(copy);
    }
}

template class ColourOf<ColourNamed>;

namespace {

[[maybe_unused]] const auto& registration = ColourNamed::GetTypeSharedClassProperties();

} // namespace

} // namespace Renderer
