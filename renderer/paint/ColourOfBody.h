#pragma once

// The bodies of ColourOf. Each colour class includes them and instantiates them once.

#include <algorithm>

#include <kernel/SavedItems.h>
#include <renderer/paint/ColourConversion.h>
#include <renderer/paint/ColourOf.h>
#include <renderer/paint/ColourVisitor.h>

namespace Renderer {

/// The colour as a pixel before its own tint. Classes without channels of their own have an
/// overload; \p applyTint is for the colours that they hold.
template<class Model, class P>
void MakePixel(const Model& colour, P& pixel, bool /*applyTint*/,
               const Colour::ICCProfileSet& profiles)
{
    ColourConversion::ConvertPixel(colour.GetColourInternal(), pixel, profiles);
}

/// Whether two colours have the same numbers, of which some may be not-a-number.
template<class P>
bool HaveSameChannels(const P& a, const P& b) noexcept
{
    return std::ranges::equal(a.channels, b.channels, [](auto left, auto right) {
        return Kernel::SavedItems::AreSame(left, right);
    });
}

template<class Derived>
const Kernel::SharedClassProperties& ColourOf<Derived>::GetTypeSharedClassProperties()
{
    static const auto& record = *new Kernel::SharedClassProperties(
        Derived::SavedUID, &ColourOf::CreateObject, 1, ColourOf::__GetDefaultSerialisation(),
        nullptr, Derived::SavedName);
    return record;
}

template<class Derived>
template<class Self, class Items>
void ColourOf<Derived>::ListChannels(Self& self, Items&& items)
{
    if constexpr (requires { self.m_channels; }) {
        using Channels = decltype(self.m_channels);
        static_assert(sizeof(Channels) ==
                      Channels::ChannelCount * sizeof(typename Channels::ChannelType));
        items.Raw("_col", self.m_channels);
    }
}

template<class Derived>
void ColourOf<Derived>::Save(Kernel::OutSerialiser& out) const
{
    Colour::Save(out);
    ListChannels(static_cast<const Derived&>(*this), Kernel::SavedItems::Writer(out));
}

template<class Derived>
bool ColourOf<Derived>::Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
                             unsigned short version)
{
    ListChannels(static_cast<Derived&>(*this), Kernel::SavedItems::Reader(in));
    return Colour::Load(in, store, version);
}

template<class Derived>
Kernel::Counted<Colour> ColourOf<Derived>::Clone() const
{
    return Kernel::Counted<Colour>(new Derived(static_cast<const Derived&>(*this)));
}

template<class Derived>
Kernel::Counted<const Colour> ColourOf<Derived>::Accept(ColourVisitor& visitor) const
{
    return visitor.Visit(Kernel::Counted<const Derived>(static_cast<const Derived*>(this)));
}

template<class Derived>
template<class P>
void ColourOf<Derived>::Convert(P& pixel, bool applyTint, const ICCProfileSet& profiles) const
{
    MakePixel(static_cast<const Derived&>(*this), pixel, applyTint, profiles);
    if (applyTint)
        ColourConversion::ApplyTint(pixel, this->GetTint());
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelAlphaF& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelAlpha16& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelAlpha8& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelRGBAUF& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelHSLAF& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelCMYKAF& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelRGBAF& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelRGBA16& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelLABA16& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelIA16& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelIA8& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelCMYKA8& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

template<class Derived>
void ColourOf<Derived>::GetColour(Raster::PixelRGBA8& pixel, bool applyTint,
                                  const ICCProfileSet& profiles) const
{
    Convert(pixel, applyTint, profiles);
}

} // namespace Renderer
