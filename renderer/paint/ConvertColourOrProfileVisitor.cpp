#include <renderer/paint/ConvertColourOrProfileVisitor.h>

#include <cmath>

#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/ColourConversion.h>
#include <renderer/paint/ColourGrayscale.h>
#include <renderer/paint/ColourHSL.h>
#include <renderer/paint/ColourLAB.h>
#include <renderer/paint/ColourNamed.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillBitmap.h>

namespace Renderer {

namespace {

using AnyColour = Kernel::Counted<const Colour>;
using Raster::ColourSpace;

/// The profiles with the one of RGB colours in a document of a format in the slot for RGB.
Raster::ICCManager::ICCProfileSet WithRGBOf(Raster::Format format,
                                            const Raster::ICCManager::ICCProfileSet& profiles)
{
    const bool isUnbounded = format == Raster::Format::RGBAUF;
    auto rgb = isUnbounded ? profiles.GetAlternativeRGB() : profiles.GetRGB();
    if (!rgb)
        rgb = Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(
            isUnbounded ? format : Raster::Format::RGBA8);
    auto result = profiles;
    result.SetRGB(rgb);
    return result;
}

const Kernel::Counted<const Raster::ICCProfile>&
GetProfile(ColourSpace space, const Raster::ICCManager::ICCProfileSet& profiles)
{
    switch (space) {
    case ColourSpace::Grey:
        return profiles.GetGrey();
    case ColourSpace::CMYK:
        return profiles.GetCMYK();
    case ColourSpace::LAB:
        return profiles.GetLAB();
    default:
        return profiles.GetRGB();
    }
}

/// Whether no channel differs by more than transforms of the same colour may.
template<class P>
bool AreSame(const P& a, const P& b)
{
    constexpr float tolerance = 1e-6F;
    for (std::size_t c = 0; c < P::ChannelCount; ++c)
        if (!(std::abs(ColourConversion::ToFloat(a[c]) - ColourConversion::ToFloat(b[c])) <=
              tolerance))
            return false;
    return true;
}

} // namespace

ConvertColourOrProfileVisitor::ConvertColourOrProfileVisitor(Raster::Format oldFormat,
                                                             const ICCProfileSet& oldProfiles,
                                                             Raster::Format newFormat,
                                                             const ICCProfileSet& newProfiles,
                                                             bool* changed)
    : m_oldProfiles(oldProfiles),
      m_newProfiles(newProfiles),
      m_oldColours(WithRGBOf(oldFormat, oldProfiles)),
      m_newColours(WithRGBOf(newFormat, newProfiles)),
      m_changed(changed)
{}

ConvertColourOrProfileVisitor::~ConvertColourOrProfileVisitor() = default;

void ConvertColourOrProfileVisitor::NoteChange() noexcept
{
    if (m_changed)
        *m_changed = true;
}

bool ConvertColourOrProfileVisitor::Transform(ColourSpace space, Channels& channels) const
{
    const auto transform = Raster::ICCManager::GetInstance().GetFloatTransform(space, m_oldColours,
                                                                               space, m_newColours);
    if (!transform)
        return false;
    const Channels source = channels;
    transform->Apply(source.data(), channels.data(), 1);
    return true;
}

bool ConvertColourOrProfileVisitor::ConvertHSL(Channels& channels) const
{
    Channels rgb{};
    Raster::ConvertFloatPixel(ColourSpace::HSL, channels.data(), ColourSpace::RGB, rgb.data());
    Channels converted = rgb;
    if (!Transform(ColourSpace::RGB, converted))
        return false;
    // Greys and black have no hue of their own: only what is seen decides.
    if (AreSame(Raster::PixelRGBAF{rgb[0], rgb[1], rgb[2], rgb[3]},
                Raster::PixelRGBAF{converted[0], converted[1], converted[2], converted[3]}))
        return false;
    const float hue = channels[0];
    Raster::ConvertFloatPixel(ColourSpace::RGB, converted.data(), ColourSpace::HSL,
                              channels.data());
    if (channels[1] == 0.0F)
        channels[0] = hue;
    return true;
}

bool ConvertColourOrProfileVisitor::ConvertThroughRGB(ColourSpace space, Channels& channels) const
{
    Channels rgb{};
    ColourConversion::ConvertChannels(space, channels, ColourSpace::RGB, rgb, m_oldColours);
    Transform(ColourSpace::RGB, rgb);
    ColourConversion::ConvertChannels(ColourSpace::RGB, rgb, space, channels, m_newColours);
    return true;
}

bool ConvertColourOrProfileVisitor::Convert(ColourSpace space, Channels& channels) const
{
    if (space == ColourSpace::HSL)
        return ConvertHSL(channels);
    const bool isFromProfile = bool(GetProfile(space, m_oldColours));
    const bool isToProfile = bool(GetProfile(space, m_newColours));
    if (isFromProfile && isToProfile)
        return Transform(space, channels);
    return isFromProfile != isToProfile && space != ColourSpace::LAB &&
           ConvertThroughRGB(space, channels);
}

template<class Model>
AnyColour ConvertColourOrProfileVisitor::Replace(const Kernel::Counted<const Model>& colour)
{
    auto pixel = colour->GetColourInternal();
    Channels channels = ColourConversion::Load(pixel);
    if (!Convert(colour->GetColourSpace(), channels))
        return colour;
    using Channel = typename decltype(pixel)::ChannelType;
    for (std::size_t c = 0; c < pixel.ColourCount; ++c)
        pixel[c] = ColourConversion::FromFloat<Channel>(
            std::is_integral_v<Channel> ? ColourConversion::Clamp01(channels[c]) : channels[c]);
    if (AreSame(pixel, colour->GetColourInternal()))
        return colour;
    const auto result = Kernel::MakeCounted<Model>(pixel);
    result->SetAttributes(*colour);
    NoteChange();
    return result;
}

template<>
AnyColour
ConvertColourOrProfileVisitor::Replace(const Kernel::Counted<const ColourGrayscale>& colour)
{
    Channels channels = ColourConversion::Load(colour->GetColourInternal());
    if (!Convert(ColourSpace::Grey, channels))
        return colour;
    const Raster::PixelIAF pixel{channels[0], colour->GetColourInternal().Alpha()};
    if (AreSame(pixel, colour->GetColourInternal()))
        return colour;
    const auto result = Kernel::MakeCounted<ColourGrayscale>(pixel[0], pixel.Alpha());
    result->SetAttributes(*colour);
    NoteChange();
    return result;
}

AnyColour ConvertColourOrProfileVisitor::Visit(const Kernel::Counted<const ColourHSL>& colour)
{
    return Replace(colour);
}

AnyColour ConvertColourOrProfileVisitor::Visit(const Kernel::Counted<const ColourRGB>& colour)
{
    return Replace(colour);
}

AnyColour ConvertColourOrProfileVisitor::Visit(const Kernel::Counted<const ColourCMYK>& colour)
{
    return Replace(colour);
}

AnyColour ConvertColourOrProfileVisitor::Visit(const Kernel::Counted<const ColourGrayscale>& colour)
{
    return Replace(colour);
}

AnyColour ConvertColourOrProfileVisitor::Visit(const Kernel::Counted<const ColourLAB>& colour)
{
    return Replace(colour);
}

AnyColour ConvertColourOrProfileVisitor::Visit(const Kernel::Counted<const ColourNamed>& colour)
{
    const auto base = Colour::Consolidate(colour->GetBaseColour()->Accept(*this));
    if (base == colour->GetBaseColour())
        return colour;
    const auto result = Kernel::MakeCounted<ColourNamed>(colour->GetName(), colour->IsSpot(), base,
                                                         colour->GetSRGBColour());
    result->SetAttributes(*colour);
    return result;
}

Kernel::Counted<const FillBitmap>
ConvertColourOrProfileVisitor::Visit(const Kernel::Counted<const FillBitmap>& fill)
{
    const auto& bitmap = fill->GetBitmap();
    if (!bitmap || bitmap->GetProfile())
        return fill;
    const Raster::Format format = bitmap->GetFormat();
    auto profile = m_oldProfiles.GetProfile(format);
    if (profile == m_newProfiles.GetProfile(format))
        return fill;
    if (!profile)
        profile = Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(format);
    if (!profile)
        return fill;
    const auto tagged = m_bitmaps.Get(bitmap, [&] { return bitmap->WithProfile(profile); });
    NoteChange();
    return fill->WithBitmap(tagged, true).GetCounted();
}

} // namespace Renderer
