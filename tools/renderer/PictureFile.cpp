#include "PictureFile.h"

#include <filesystem>
#include <new>

#include <raster/Codecs.h>
#include <raster/Convert.h>
#include <raster/ICCManager.h>

#include <svg/Scanner.h>

#include "DrawCommand.h"

namespace Command {

namespace {

using Raster::Format;

bool IsGrey(Format format)
{
    return format == Format::IA8 || format == Format::IA16;
}

bool IsDeep(Format format)
{
    return format == Format::RGBA16 || format == Format::IA16 || format == Format::LABA16 ||
           format == Format::RGBAUF;
}

bool IsByteRGB(Format format)
{
    return format == Format::RGBA8;
}

bool IsOfPNG(Format format)
{
    return format == Format::RGBA8 || format == Format::RGBA16 || IsGrey(format);
}

bool IsOfJPEG(Format format)
{
    return format == Format::RGBA8 || format == Format::IA8 || format == Format::CMYKA8;
}

bool IsInteger(Format format)
{
    return format != Format::RGBAUF;
}

bool IsFloat(Format format)
{
    return format == Format::RGBAUF;
}

void WritePNG(Kernel::OutStream& out, const Raster::DynamicBitmap& bitmap)
{
    Raster::WritePNG(out, bitmap);
}

void WritePalettisedPNG(Kernel::OutStream& out, const Raster::PalettisedBitmap& bitmap)
{
    Raster::WritePNG(out, bitmap);
}

void WriteJPEG(Kernel::OutStream& out, const Raster::DynamicBitmap& bitmap)
{
    Raster::WriteJPEG(out, bitmap);
}

void WriteWebP(Kernel::OutStream& out, const Raster::DynamicBitmap& bitmap)
{
    Raster::WriteWebP(out, bitmap);
}

constexpr PictureKind PictureKinds[] = {
    {".png", WritePNG, IsOfPNG, WritePalettisedPNG, Raster::PaletteAlpha::Full},
    {".gif", nullptr, IsByteRGB, Raster::WriteGIF, Raster::PaletteAlpha::OneBit},
    {".jpg", WriteJPEG, IsOfJPEG},
    {".jpeg", WriteJPEG, IsOfJPEG},
    {".webp", WriteWebP, IsByteRGB},
    {".tif", Raster::WriteTIFF, IsInteger},
    {".tiff", Raster::WriteTIFF, IsInteger},
    {".exr", Raster::WriteEXR, IsFloat},
};

} // namespace

const PictureKind& FindPictureKind(const std::string& path)
{
    const std::string ending = std::filesystem::path(path).extension().string();
    for (const PictureKind& kind : PictureKinds) {
        if (Svg::EqualsIgnoringCase(ending, kind.ending))
            return kind;
    }
    throw UsageException(path + ": the output must end in .png, .gif, .jpg, .webp, .tif or .exr");
}

Format FindHeldFormat(const PictureKind& kind, Format drawn)
{
    if (kind.holds(drawn))
        return drawn;
    if (IsGrey(drawn) && kind.holds(Format::IA8))
        return Format::IA8;
    if (IsDeep(drawn) && kind.holds(Format::RGBA16))
        return Format::RGBA16;
    return kind.holds(Format::RGBA8) ? Format::RGBA8 : Format::RGBAUF;
}

Raster::DynamicBitmap ConvertPicture(const Kernel::Counted<const Raster::DynamicBuffer>& picture,
                                     Format format,
                                     const Kernel::Counted<const Raster::ICCProfile>& profile)
{
    const bool isRGB = profile && profile->GetColourSpace() == Raster::ColourSpace::RGB;
    const auto from =
        isRGB ? Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(picture->GetFormat())
              : profile;
    Raster::ICCManager::ICCProfileSet profiles;
    profiles.SetProfile(format, profile);
    const auto converted = Raster::ConvertBuffer(picture, from, format, profiles);
    if (!converted)
        throw std::bad_alloc();
    return Raster::DynamicBitmap(converted, profiles.GetProfile(format));
}

} // namespace Command
