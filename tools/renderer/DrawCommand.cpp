#include "DrawCommand.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>

#include <kernel/BasicProgressReporter.h>
#include <kernel/FileOutStream.h>
#include <kernel/FormatException.h>
#include <raster/Codecs.h>
#include <renderer/core/BitmapRenderTarget.h>

#include <svg/ColourValue.h>
#include <svg/Drawing.h>
#include <svg/PaintServers.h>
#include <svg/Scanner.h>

#include "ReadFile.h"

namespace Command {

namespace {

/// Flattened curves stay this close to the true ones, in pixels: what the eye can't see.
constexpr double ExpansionTolerance = 0.05;
/// Pictures of more pixels than this are refused: a gigabyte of memory, and what decoders accept.
constexpr double MaxPixels = 268435456.0;
constexpr double MaxSide = 1 << 20;

enum class PictureType
{
    PNG,
    JPEG,
};

PictureType FindPictureType(const std::string& path)
{
    const std::string ending = std::filesystem::path(path).extension().string();
    if (Svg::EqualsIgnoringCase(ending, ".png"))
        return PictureType::PNG;
    if (Svg::EqualsIgnoringCase(ending, ".jpg") || Svg::EqualsIgnoringCase(ending, ".jpeg"))
        return PictureType::JPEG;
    throw UsageException(path + ": the output must end in .png or .jpg");
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

void WritePicture(const Renderer::BitmapRenderTarget& target, const DrawOptions& options)
{
    const Raster::DynamicBitmap bitmap{target.GetBuffer()};
    try {
        Kernel::FileOutStream out(options.output);
        if (FindPictureType(options.output) == PictureType::PNG)
            Raster::WritePNG(out, bitmap);
        else
            Raster::WriteJPEG(out, bitmap);
        out.Close();
    } catch (const Kernel::OutStream::WriteException& error) {
        throw FileException(options.output, error.what());
    }
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
    FindPictureType(options.output);
    try {
        Svg::Drawing drawing(ReadFile(options.input));
        const auto target = MakeTarget(FindExtent(drawing, options), options);
        DrawOnto(drawing, *target);
        for (const std::string& notice : drawing.GetNotices())
            std::fprintf(stderr, "renderer: %s: %s\n", options.input.c_str(), notice.c_str());
        WritePicture(*target, options);
    } catch (const Kernel::FormatException& error) {
        throw FileException(options.input, error.what());
    }
}

} // namespace Command
