#include "DrawCommand.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>

#include <kernel/BasicProgressReporter.h>
#include <kernel/FileOutStream.h>
#include <kernel/FormatException.h>
#include <raster/ICCManager.h>
#include <renderer/core/BitmapRenderTarget.h>
#include <renderer/core/RenderTargetFactory.h>

#include <svg/ColourValue.h>
#include <svg/Drawing.h>
#include <svg/PaintServers.h>
#include <svg/Scanner.h>

#include "CountingTarget.h"
#include "PictureFile.h"
#include "ReadFile.h"

namespace Command {

namespace {

using Profile = Kernel::Counted<const Raster::ICCProfile>;

/// Flattened curves stay this close to the true ones, in pixels: what the eye can't see.
constexpr double ExpansionTolerance = 0.05;
/// Pictures of more pixels than this are refused: a gigabyte in RGBA8, and what decoders accept.
constexpr double MaxPixels = 268435456.0;
constexpr double MaxSide = 1 << 20;

struct NamedFormat
{
    const char* name;
    Raster::Format format;
};

constexpr NamedFormat Formats[] = {
    {"rgba8", Raster::Format::RGBA8},   {"rgba16", Raster::Format::RGBA16},
    {"ia8", Raster::Format::IA8},       {"ia16", Raster::Format::IA16},
    {"cmyka8", Raster::Format::CMYKA8}, {"laba16", Raster::Format::LABA16},
    {"rgbauf", Raster::Format::RGBAUF},
};

Raster::Format FindFormat(const std::string& name)
{
    std::string known;
    for (const NamedFormat& item : Formats) {
        if (name == item.name)
            return item.format;
        known += std::string(known.empty() ? "" : ", ") + item.name;
    }
    throw UsageException("--format " + name + " is not one of " + known);
}

void CheckOutput(const DrawOptions& options)
{
    if (options.output.empty())
        throw UsageException("OUT, the picture to write, is missing");
    const PictureKind& kind = FindPictureKind(options.output);
    if (options.palette.IsGiven() && !kind.writePalettised)
        throw UsageException("--colours, --palette and --diffuse are for .png and .gif");
}

void CheckOptions(const DrawOptions& options)
{
    FindFormat(options.format);
    if (options.target != Target::Null)
        CheckOutput(options);
    CheckPaletteOptions(options.palette);
    if (options.target == Target::Wireframe && options.format != "rgba8")
        throw UsageException("--target wireframe draws in rgba8 only");
    if (options.width && *options.width <= 0)
        throw UsageException("--width must be at least 1");
    if (options.scale && (!(*options.scale > 0.0) || !std::isfinite(*options.scale)))
        throw UsageException("--scale must be a positive number");
    if (!options.background.empty() && !Svg::ParseColour(options.background))
        throw UsageException("--background " + options.background + " is not a colour");
}

/// The extent of the picture in pixels and the scale that the drawing is shown at.
struct Extent
{
    unsigned width;
    unsigned height;
    double scale;
};

Extent FindExtent(const Svg::Drawing& drawing, const DrawOptions& options)
{
    double scale = options.scale.value_or(1.0);
    if (options.width)
        scale = static_cast<double>(*options.width) / drawing.GetWidth();
    const double width = options.width ? static_cast<double>(*options.width)
                                       : std::max(1.0, std::round(drawing.GetWidth() * scale));
    const double height = std::max(1.0, std::round(drawing.GetHeight() * scale));
    if (!(width <= MaxSide) || !(height <= MaxSide) || !(width * height <= MaxPixels)) {
        char message[96];
        std::snprintf(message, sizeof(message), "a picture of %.6g × %.6g pixels is too large",
                      width, height);
        throw FileException(options.input, message);
    }
    return {static_cast<unsigned>(width), static_cast<unsigned>(height), scale};
}

/// \param profile the colours asked for, or none. Drawings are in sRGB and RGB is composited in it:
///        only other spaces are drawn in a profile of their own.
Kernel::Counted<Renderer::BitmapRenderTarget>
MakeTarget(const Extent& extent, const DrawOptions& options, const Profile& profile)
{
    const Raster::Format format = FindFormat(options.format);
    Raster::ICCManager::ICCProfileSet profiles;
    if (profile && profile->GetColourSpace() != Raster::ColourSpace::RGB)
        profiles.SetProfile(format, profile);
    const Kernel::Counted<Renderer::BitmapRenderTarget> target(
        options.target == Target::Wireframe
            ? Renderer::RenderTargetFactory::CreateWireframeRenderTarget(profiles)
            : Renderer::BitmapRenderTarget::Create(format, profiles));
    if (!target || !target->CreateBuffer(extent.width, extent.height))
        throw FileException(options.input, "there is not enough memory for the picture");
    target->SetDithering(options.dither);
    target->SetPerfectClipping(options.perfectClipping);
    if (!options.background.empty())
        target->Matte(Svg::MakeColour(*Svg::ParseColour(options.background), 1.0));
    return target;
}

/// The profile that the picture is to be in; none means sRGB, or the fixed formulas for other
/// spaces.
Profile ReadProfile(const DrawOptions& options)
{
    if (options.profile.empty())
        return nullptr;
    const std::string bytes = ReadFile(options.profile);
    try {
        auto profile = Raster::ICCProfile::Create(
            {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
        Raster::ICCManager::ICCProfileSet profiles;
        profiles.SetProfile(FindFormat(options.format), profile); // refuses those of other spaces
        if (!profiles.GetProfile(FindFormat(options.format)))
            throw FileException(options.profile,
                                "the profile is not for the colours of " + options.format);
        return profile;
    } catch (const Kernel::FormatException& error) {
        throw FileException(options.profile, error.what());
    }
}

void WritePicture(const Kernel::Counted<Raster::DynamicBuffer>& picture, const Profile& profile,
                  const DrawOptions& options)
{
    const PictureKind& kind = FindPictureKind(options.output);
    const bool isPalettised = options.palette.IsGiven() || !kind.write;
    const Raster::Format format =
        isPalettised ? Raster::Format::RGBA8 : FindHeldFormat(kind, picture->GetFormat());
    const Raster::DynamicBitmap bitmap = ConvertPicture(picture, format, profile);
    try {
        Kernel::FileOutStream out(options.output);
        if (isPalettised)
            kind.writePalettised(out, *Palettise(bitmap, options.palette, kind.paletteAlpha));
        else
            kind.write(out, bitmap);
        out.Close();
    } catch (const Kernel::OutStream::WriteException& error) {
        throw FileException(options.output, error.what());
    } catch (const std::invalid_argument& error) { // too large for the kind of file
        throw FileException(options.output, error.what());
    }
}

/// The folder that a file lies in.
std::filesystem::path FindFolder(const std::string& path)
{
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder;
}

/// Draws, and tells what is left out.
void DrawOnto(Svg::Drawing& drawing, Renderer::RenderTarget& target, const DrawOptions& options,
              double scale)
{
    target.SetDeviceExpansionTolerance(ExpansionTolerance);
    target.SetLogToDevTransform(Raster::AffineTransform::Scaling(scale, scale));
    Kernel::BasicProgressReporter progress;
    progress.SetMessage("drawing");
    drawing.Draw(target, &progress);
    for (const std::string& notice : drawing.GetNotices())
        std::fprintf(stderr, "renderer: %s: %s\n", options.input.c_str(), notice.c_str());
}

void PrintWhatIsTouched(Svg::Drawing& drawing, const Extent& extent, const DrawOptions& options)
{
    const auto target = Kernel::MakeCounted<CountingTarget>(extent.width, extent.height);
    DrawOnto(drawing, *target, options, extent.scale);
    std::fputs(target->Report().c_str(), stdout);
}

} // namespace

void Draw(const DrawOptions& options)
{
    CheckOptions(options);
    const Profile profile = ReadProfile(options);
    try {
        Svg::Drawing drawing(ReadFile(options.input), FindFolder(options.input));
        const Extent extent = FindExtent(drawing, options);
        if (options.target == Target::Null)
            return PrintWhatIsTouched(drawing, extent, options);
        const auto target = MakeTarget(extent, options, profile);
        DrawOnto(drawing, *target, options, extent.scale);
        WritePicture(target->GetBuffer(), profile, options);
    } catch (const Kernel::FormatException& error) {
        throw FileException(options.input, error.what());
    }
}

} // namespace Command
