#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <kernel/ClassProperties.h>
#include <raster/Codecs.h>
#include <raster/RasterBrush.h>
#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillBuffer.h>

#include "SavedPaintSamples.h"

namespace Renderer::SavedPaint {
namespace {

using Object = Kernel::InSerialiserFile::Object;
using Raster::Format;

const std::filesystem::path Folder = PAINT_GOLDEN;

template<class T>
Consolidated<T> WithAttributes(const Counted<T>& colour, double noise, double tint)
{
    colour->SetNoise(noise);
    colour->SetTint(tint);
    colour->SetIntensity(0.75);
    colour->SetGlobalName("Grün 10 €");
    colour->SetOverprint(true);
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(colour);
}

Counted<Raster::DynamicBuffer> MakePixels(Format format, unsigned width, unsigned height)
{
    const auto buffer = Raster::DynamicBuffer::Create(format, width, height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned i = 0; i < width * buffer->GetPixelSize(); ++i)
            buffer->GetRow(y)[i] = static_cast<unsigned char>(i * i + 40 * y);
    return buffer;
}

Counted<const Geometry::CurveDbl> MakeCurve()
{
    const auto curve = Kernel::MakeCounted<Geometry::CurveDbl>();
    curve->MoveTo({0.0, 0.5});
    curve->LineTo({0.25, -0.0});
    curve->CurveTo({0.5, 1.0}, {0.75, 1.0}, {1.0, 1e-300});
    curve->SetClosed(true);
    return curve;
}

BlendOptions MakeBlendOptions()
{
    const auto spline = Kernel::MakeCounted<Geometry::Spline>(
        std::vector<Geometry::Point>{{0.0, 1.0}, {0.5, 0.25}, {1.0, 0.0}});
    BlendOptions options;
    options.SetMasterCurve(BlendOptions::Side::Source, spline);
    options.SetChannelCurve(BlendOptions::Side::Destination, 4, spline);
    options.SetBlendGamma(1.8);
    options.SetAntialiasingGamma(MakeCurve());
    return options;
}

Consolidated<LineStyle> MakeLineStyle()
{
    LineStyle style(2.5, true);
    style.SetCap(LineStyle::RoundCap);
    style.SetJoin(LineStyle::BevelJoin);
    style.SetMiterLimit(7.0);
    style.SetDashPhase(0.5);
    style.SetDashPattern({3.0, 1.0});
    return LineStyle::Consolidate(style);
}

/// A brush with every setting away from its default.
Kernel::Counted<Raster::RasterBrush> MakeBrush(const Counted<const Raster::DynamicBitmap>& tip)
{
    Raster::BrushSettings settings;
    settings.mode = Raster::BrushSettings::Mode::Stretched;
    settings.tipUse = Raster::BrushSettings::TipUse::OwnColours;
    settings.overlap = Raster::BrushSettings::Overlap::MaxOpacity;
    settings.spacing = 0.5;
    settings.rotation = -0.75;
    settings.followsPath = false;
    settings.opacity = 0.875;
    settings.positionJitter = 0.1;
    settings.angleJitter = 0.2;
    settings.sizeJitter = 0.3;
    settings.opacityJitter = 0.4;
    settings.seed = 0xfedcba98;
    settings.sizeByPressure = 0.25;
    settings.opacityByPressure = 1.0;
    return Kernel::MakeCounted<Raster::RasterBrush>(tip, settings);
}

/// An object of each class, with every item of it.
std::vector<std::pair<const char*, Object>> MakeSamples()
{
    const Raster::PixelRGBAUF unbounded{1.5F, -0.0F, std::numeric_limits<float>::infinity(), 0.5F};
    const auto red = ColourRGB::Create(Raster::PixelRGBA8{255, 0, 0, 255});
    const auto rgb = WithAttributes(ColourRGB::CreateFakeTemporary(unbounded), 0.1, 0.4);
    const auto cmyk =
        ColourCMYK::CreateFakeTemporary(Raster::PixelCMYKAF{0.1F, 0.2F, 0.3F, 0.4F, 0.5F});
    const auto hsl = ColourHSL::CreateFakeTemporary(Raster::PixelHSLAF{0.1F, 0.2F, 0.3F, 0.4F});
    const auto lab = ColourLAB::CreateFakeTemporary(Raster::PixelLABA16{1, 256, 65535, 32768});
    const auto named = ColourNamed::CreateFakeTemporary("Ink 7", true, rgb, red);
    const auto solid = FillSolid::Create(red);
    const auto gradient =
        Gradient::Create({{red, 0.0}, {rgb, 0.25, 0.75, 0.125}, {red, 1.0, 0.5, 1.0}});
    const auto ramp = FillGradient::Create(FillGradient::Radial, gradient, false,
                                           FillGradient::Reflect, {0.5, -0.25});
    const Raster::AffineTransform::Params map{2.0, 0.5, 10.0, -0.5, 3.0, 20.0};
    const Counted<const FillDescriptorConst> placed(new FillDescriptorConst(ramp, map));
    const auto bitmap = Kernel::MakeCounted<Raster::DynamicBitmap>(
        MakePixels(Format::RGBA16, 5, 4), Raster::ICCManager::GetInstance().GetLinearRGBProfile());
    Kernel::MemoryOutStream png;
    Raster::WritePNG(png, Raster::DynamicBitmap(MakePixels(Format::IA8, 3, 2)));
    const auto file = Kernel::MakeCounted<const Raster::CompressedRasterData>(png.TakeData());

    const auto shared = [](const Consolidated<Kernel::SharedSerialisable>& object) {
        return Object{object, {}};
    };
    const auto plain = [](const Counted<Kernel::Serialisable>& object) {
        return Object{{}, object};
    };
    return {
        {"RGBA", shared(rgb)},
        {"CMYK", shared(WithAttributes(cmyk, 0.0, 0.5))},
        {"HSLA", shared(WithAttributes(hsl, -0.5, 1.0))},
        {"GRAY", shared(ColourGrayscale::Create(0.25F, 1.0F))},
        {"LABA", shared(WithAttributes(lab, 1.0, 0.0))},
        {"Pant", shared(WithAttributes(named, 0.5, 0.5))},
        {"RegC", shared(WithAttributes(ColourRegistration::CreateFakeTemporary(), 0.5, 0.5))},
        {"Grad", shared(gradient)},
        {"FilN", shared(FillNone::Create())},
        {"FilS", shared(solid)},
        {"FilG", shared(ramp)},
        {"FilB", shared(FillBitmap::Create(file->Decode(), Raster::ExtendType::MirrorOnce,
                                           Raster::ResamplerType::Lanczos3, true, file))},
        {"FlBu",
         shared(FillBuffer::Create(MakePixels(Format::CMYKA8, 7, 3), Raster::ExtendType::Wrap,
                                   Raster::ResamplerType::Bicubic))},
        {"BacB", shared(FillBackBuffer::Create())},
        {"MulF", shared(FillMulti::Create(
                     {Counted<const FillDescriptorConst>(new FillDescriptorConst(solid)), placed,
                      placed}))},
        {"FDsc", plain(Kernel::MakeCounted<FillDescriptor>(ramp, map))},
        {"LSty", shared(MakeLineStyle())},
        {"LDsc", plain(Kernel::MakeCounted<LineStyleDescriptor>(
                     MakeLineStyle(), MakeCurve(), true, true,
                     LineStyleDescriptor::StrokeAlignment::Outside))},
        {"Pltt", shared(Palette::Create({red, rgb, red}))},
        {"Spln", plain(Kernel::MakeCounted<Geometry::Spline>(
                     std::vector<Geometry::Point>{{-1.0, 0.5}, {0.0, -0.0}}))},
        {"DBmp", plain(bitmap)},
        {"RBru", plain(MakeBrush(bitmap))},
        {"TBOp", plain(Kernel::MakeCounted<BlendOptionsBox>(MakeBlendOptions()))},
    };
}

Bytes Save(const Object& object)
{
    return object.shared ? SavedPaint::Save(object.shared) : SavedPaint::Save(object.plain);
}

Bytes ReadFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The pixels of a bitmap or of a fill that has one; empty for others.
Counted<const Raster::DynamicBuffer> GetPixels(const Object& object)
{
    if (const auto* fill = dynamic_cast<const FillBitmap*>(object.shared.Get()))
        return fill->GetBitmap()->GetBuffer();
    if (const auto* fill = dynamic_cast<const FillBuffer*>(object.shared.Get()))
        return fill->GetBuffer();
    if (const auto* brush = dynamic_cast<const Raster::RasterBrush*>(object.plain.Get()))
        return brush->GetTip()->GetBuffer();
    const auto* bitmap = dynamic_cast<const Raster::DynamicBitmap*>(object.plain.Get());
    return bitmap ? bitmap->GetBuffer() : nullptr;
}

bool AreEqual(const Raster::DynamicBuffer& a, const Raster::DynamicBuffer& b)
{
    bool equal = a.GetFormat() == b.GetFormat() && a.GetWidth() == b.GetWidth() &&
                 a.GetHeight() == b.GetHeight();
    for (unsigned y = 0; equal && y < a.GetHeight(); ++y)
        equal = std::equal(a.GetRow(y), a.GetRow(y) + a.GetWidth() * a.GetPixelSize(), b.GetRow(y));
    return equal;
}

/// Files that were written once must be read for ever. RENDERER_UPDATE_REFERENCES writes those that
/// are missing, of new classes.
TEST(SavedGolden, FilesOfEveryClassKeepLoading)
{
    for (const auto& [uid, sample] : MakeSamples()) {
        SCOPED_TRACE(uid);
        const std::filesystem::path path = Folder / (std::string(uid) + ".saved");
        if (!std::filesystem::exists(path) && std::getenv("RENDERER_UPDATE_REFERENCES")) {
            const Bytes bytes = Save(sample);
            std::ofstream(path, std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
        }
        const Bytes bytes = ReadFile(path);
        const Object loaded = Kernel::InSerialiserFile(bytes).ParseWithChecks();
        EXPECT_TRUE(Save(loaded) == bytes);
        if (const auto pixels = GetPixels(loaded)) {
            EXPECT_TRUE(AreEqual(*pixels, *GetPixels(sample)));
        } else {
            EXPECT_TRUE(Save(sample) == bytes); // but for pixels, which zlib may pack otherwise
            EXPECT_EQ(loaded.shared, sample.shared);
        }
    }
    const auto bitmap = Kernel::SerialiseFromFile<Raster::DynamicBitmap>(Folder / "DBmp.saved");
    EXPECT_EQ(bitmap->GetProfile(), Raster::ICCManager::GetInstance().GetLinearRGBProfile());
    const auto brush = Kernel::SerialiseFromFile<Raster::RasterBrush>(Folder / "RBru.saved");
    EXPECT_EQ(*brush, *MakeBrush(bitmap));
    const auto fill = Kernel::SerialiseFromFile<FillBitmap>(Folder / "FilB.saved");
    EXPECT_FALSE(fill->GetOriginalData()->IsDeflated());
    EXPECT_TRUE(fill->GetIgnoreAlpha());
}

/// The registry knows what the shared libraries brought: each concrete class, though nothing here
/// refers to most of them.
TEST(SavedGolden, EveryRegisteredClassHasAFile)
{
    Bytes all;
    for (const auto& entry : std::filesystem::directory_iterator(Folder)) {
        const Bytes bytes = ReadFile(entry.path());
        all.insert(all.end(), bytes.begin(), bytes.end());
    }
    int count = 0;
    for (const Kernel::ClassPropertiesBase* record : Kernel::ClassPropertiesBase::GetAll()) {
        const std::string uid = record->GetClassUID().ToString();
        if (record->GetVersion() == 0 || uid == "TFrg") // made by hand, in other tests
            continue;
        const std::string object = "\xd8\x1c\x83\x64" + uid;
        EXPECT_TRUE(std::search(all.begin(), all.end(), object.begin(), object.end(),
                                [](unsigned char a, char b) {
                                    return a == static_cast<unsigned char>(b);
                                }) != all.end())
            << uid << ' ' << record->GetName() << ": add a sample to MakeSamples";
        ++count;
    }
    EXPECT_GE(count, 24);
}

} // namespace
} // namespace Renderer::SavedPaint
