#include <renderer/paint/ForceColourVisitor.h>

#include <raster/Convert.h>
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
using Raster::Format;

/// A pixel of one model as one of another.
template<class Target, class Source>
Target To(const Source& source, const Colour::ICCProfileSet& profiles)
{
    Target target;
    ColourConversion::ConvertPixel(source, target, profiles);
    return target;
}

template<class Source>
Kernel::Counted<Colour> MakeColour(ColourSpace space, const Source& source,
                                   const Colour::ICCProfileSet& profiles)
{
    switch (space) {
    case ColourSpace::HSL:
        return Kernel::MakeCounted<ColourHSL>(To<Raster::PixelHSLAF>(source, profiles));
    case ColourSpace::Grey: {
        const auto grey = To<Raster::PixelIAF>(source, profiles);
        return Kernel::MakeCounted<ColourGrayscale>(grey[0], grey.Alpha());
    }
    case ColourSpace::CMYK:
        return Kernel::MakeCounted<ColourCMYK>(To<Raster::PixelCMYKAF>(source, profiles));
    case ColourSpace::LAB:
        return Kernel::MakeCounted<ColourLAB>(To<Raster::PixelLABA16>(source, profiles));
    case ColourSpace::RGB:
        break;
    }
    return Kernel::MakeCounted<ColourRGB>(To<Raster::PixelRGBAF>(source, profiles));
}

/// The format of a space that keeps most of the depth of another; the same format when it is of
/// that space already.
Format FindFormat(ColourSpace space, Format format)
{
    const bool isDeep =
        format != Format::RGBA8 && format != Format::IA8 && format != Format::CMYKA8;
    switch (space) {
    case ColourSpace::Grey:
        return isDeep ? Format::IA16 : Format::IA8;
    case ColourSpace::CMYK:
        return Format::CMYKA8;
    case ColourSpace::LAB:
        return Format::LABA16;
    default:
        if (format == Format::RGBAUF)
            return format;
        return isDeep ? Format::RGBA16 : Format::RGBA8;
    }
}

bool HasColours(Format format)
{
    return Raster::WithPixelOfFormat(format, false,
                                     []<class P>(P) { return ColourConversion::HasColour<P>; });
}

} // namespace

ForceColourVisitor::ForceColourVisitor(ColourSpace space, const ICCProfileSet& profiles)
    : m_space(space), m_profiles(profiles)
{}

ForceColourVisitor::~ForceColourVisitor() = default;

template<class Model>
AnyColour ForceColourVisitor::Force(const Kernel::Counted<const Model>& colour) const
{
    if (colour->GetColourSpace() == m_space)
        return colour;
    const auto result = MakeColour(m_space, colour->GetColourInternal(), m_profiles);
    result->SetAttributes(*colour);
    return result;
}

AnyColour ForceColourVisitor::Visit(const Kernel::Counted<const ColourHSL>& colour)
{
    return Force(colour);
}

AnyColour ForceColourVisitor::Visit(const Kernel::Counted<const ColourRGB>& colour)
{
    return Force(colour);
}

AnyColour ForceColourVisitor::Visit(const Kernel::Counted<const ColourCMYK>& colour)
{
    return Force(colour);
}

AnyColour ForceColourVisitor::Visit(const Kernel::Counted<const ColourGrayscale>& colour)
{
    return Force(colour);
}

AnyColour ForceColourVisitor::Visit(const Kernel::Counted<const ColourLAB>& colour)
{
    return Force(colour);
}

AnyColour ForceColourVisitor::Visit(const Kernel::Counted<const ColourNamed>& colour)
{
    const auto base = Colour::Consolidate(colour->GetBaseColour()->Accept(*this));
    const auto sRGB = m_space == ColourSpace::RGB ? colour->GetSRGBColour() : nullptr;
    if (base == colour->GetBaseColour() && sRGB == colour->GetSRGBColour())
        return colour;
    const auto result =
        Kernel::MakeCounted<ColourNamed>(colour->GetName(), colour->IsSpot(), base, sRGB);
    result->SetAttributes(*colour);
    return result;
}

Kernel::Counted<const FillBitmap>
ForceColourVisitor::Visit(const Kernel::Counted<const FillBitmap>& fill)
{
    const auto& bitmap = fill->GetBitmap();
    if (!bitmap || !HasColours(bitmap->GetFormat()))
        return fill;
    const Format format = FindFormat(m_space, bitmap->GetFormat());
    if (format == bitmap->GetFormat())
        return fill;
    const auto converted = m_bitmaps.Get(bitmap, [&] {
        if (!bitmap->GetBuffer())
            return bitmap; // damaged
        const auto buffer =
            Raster::ConvertBuffer(bitmap->GetBuffer(), bitmap->GetProfile(), format, m_profiles);
        return buffer ? Kernel::MakeCounted<const Raster::DynamicBitmap>(
                            buffer, m_profiles.GetProfile(format))
                      : bitmap; // out of memory: as it was rather than gone
    });
    return fill->WithBitmap(converted, converted == bitmap).GetCounted();
}

} // namespace Renderer
