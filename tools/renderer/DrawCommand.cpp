#include "DrawCommand.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <new>

#include <kernel/BasicProgressReporter.h>
#include <kernel/FileOutStream.h>
#include <kernel/FormatException.h>
#include <raster/Codecs.h>
#include <raster/Convert.h>
#include <raster/ICCManager.h>
#include <renderer/core/BitmapRenderTarget.h>

#include <svg/ColourValue.h>
#include <svg/Drawing.h>
#include <svg/PaintServers.h>
#include <svg/Scanner.h>

#include "ReadFile.h"

namespace Command {

namespace {

using Profile = Kernel::Counted<const Raster::ICCProfile>;

/// Flattened curves stay this close to the true ones, in pixels: what the eye can't see.
constexpr double ExpansionTolerance = 0.05;
/// Pictures of more pixels than this are refused: a gigabyte of memory, and what decoders accept.
constexpr double MaxPixels = 268435456.0;
constexpr double MaxSide = 1 << 20;

using Writer = void (*)(Kernel::OutStream&, const Raster::DynamicBitmap&);

struct PictureType
{
    const char* ending;
    Writer write;
};

constexpr Writer WriteJPEG = [](Kernel::OutStream& out, const Raster::DynamicBitmap& bitmap) {
    Raster::WriteJPEG(out, bitmap);
};
constexpr PictureType PictureTypes[] = {
    {".png", [](Kernel::OutStream& out,
                const Raster::DynamicBitmap& bitmap) { Raster::WritePNG(out, bitmap); }},
    {".jpg", WriteJPEG},
    {".jpeg", WriteJPEG},
    {".webp", [](Kernel::OutStream& out,
                 const Raster::DynamicBitmap& bitmap) { Raster::WriteWebP(out, bitmap); }},
    {".tif", Raster::WriteTIFF},
    {".tiff", Raster::WriteTIFF},
};

Writer FindWriter(const std::string& path)
{
    const std::string ending = std::filesystem::path(path).extension().string();
    for (const PictureType& type : PictureTypes) {
        if (Svg::EqualsIgnoringCase(ending, type.ending))
            return type.write;
    }
    throw UsageException(path + ": the output must end in .png, .jpg, .webp or .tif");
}

void CheckOptions(const DrawOptions& options)
{
    if (options.format != "rgba8")
        throw UsageException("--format " + options.format + " is not available; rgba8 is");
    if (options.target != "bitmap")
        throw UsageException("--target " + options.target + " is not available; bitmap is");
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

Kernel::Counted<Renderer::BitmapRenderTarget> MakeTarget(const Extent& extent,
                                                         const DrawOptions& options)
{
    const Kernel::Counted<Renderer::BitmapRenderTarget> target(
        Renderer::BitmapRenderTarget::Create(Raster::Format::RGBA8, {}));
    if (!target || !target->CreateBuffer(extent.width, extent.height))
        throw FileException(options.input, "there is not enough memory for the picture");
    target->SetDeviceExpansionTolerance(ExpansionTolerance);
    if (!options.background.empty()) {
        target->Blend(1.0F, Renderer::FillBlendMode::Normal, Renderer::BlendOptions::Identity(),
                      Svg::MakeSolidFill(*Svg::ParseColour(options.background), 1.0), {});
    }
    target->SetLogToDevTransform(Raster::AffineTransform::Scaling(extent.scale, extent.scale));
    return target;
}

/// The profile that the picture is to be in; none means sRGB.
Profile ReadProfile(const DrawOptions& options)
{
    if (options.profile.empty())
        return nullptr;
    const std::string bytes = ReadFile(options.profile);
    try {
        auto profile = Raster::ICCProfile::Create(
            {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
        if (profile->GetColourSpace() != Raster::ColourSpace::RGB)
            throw FileException(options.profile, "the profile is not one of RGB colours");
        return profile;
    } catch (const Kernel::FormatException& error) {
        throw FileException(options.profile, error.what());
    }
}

/// Drawings are in sRGB, and are composited in it; the finished picture goes into the profile.
Raster::DynamicBitmap MakeBitmap(const Renderer::BitmapRenderTarget& target, const Profile& profile)
{
    Kernel::Counted<const Raster::DynamicBuffer> buffer = target.GetBuffer();
    if (profile) {
        const Raster::Format format = buffer->GetFormat();
        Raster::ICCManager::ICCProfileSet profiles;
        profiles.SetProfile(format, profile);
        buffer = Raster::ConvertBuffer(
            buffer, Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(format), format,
            profiles);
        if (!buffer)
            throw std::bad_alloc();
    }
    return Raster::DynamicBitmap(buffer, profile);
}

void WritePicture(const Raster::DynamicBitmap& bitmap, const DrawOptions& options)
{
    try {
        Kernel::FileOutStream out(options.output);
        FindWriter(options.output)(out, bitmap);
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

void DrawOnto(Svg::Drawing& drawing, Renderer::BitmapRenderTarget& target)
{
    Kernel::BasicProgressReporter progress;
    progress.SetMessage("drawing");
    drawing.Draw(target, &progress);
}

} // namespace

void Draw(const DrawOptions& options)
{
    CheckOptions(options);
    FindWriter(options.output);
    const Profile profile = ReadProfile(options);
    try {
        Svg::Drawing drawing(ReadFile(options.input), FindFolder(options.input));
        const auto target = MakeTarget(FindExtent(drawing, options), options);
        DrawOnto(drawing, *target);
        for (const std::string& notice : drawing.GetNotices())
            std::fprintf(stderr, "renderer: %s: %s\n", options.input.c_str(), notice.c_str());
        WritePicture(MakeBitmap(*target, profile), options);
    } catch (const Kernel::FormatException& error) {
        throw FileException(options.input, error.what());
    }
}

} // namespace Command
