#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include <kernel/InSerialiserFile.h>
#include <kernel/MemoryOutStream.h>
#include <kernel/SerialiseFile.h>
#include <renderer/paint/BlendOptions.h>
#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/ColourGrayscale.h>
#include <renderer/paint/ColourHSL.h>
#include <renderer/paint/ColourLAB.h>
#include <renderer/paint/ColourNamed.h>
#include <renderer/paint/ColourRegistration.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillBackBuffer.h>
#include <renderer/paint/FillDescriptor.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillMulti.h>
#include <renderer/paint/FillNone.h>
#include <renderer/paint/FillSolid.h>
#include <renderer/paint/LineStyleDescriptor.h>
#include <renderer/paint/Palette.h>

/// Random objects of every saved class, for tests.
namespace Renderer::SavedPaint {

using Bytes = std::vector<unsigned char>;
using Kernel::Consolidated;
using Kernel::Counted;

inline Bytes Save(const Consolidated<Kernel::SharedSerialisable>& object,
                  Kernel::SaveMode mode = Kernel::SaveMode::Full)
{
    Kernel::MemoryOutStream out;
    Kernel::SerialiseToStream(out, object, mode);
    return out.TakeData();
}
inline Bytes Save(const Counted<Kernel::Serialisable>& object,
                  Kernel::SaveMode mode = Kernel::SaveMode::Full)
{
    Kernel::MemoryOutStream out;
    Kernel::SerialiseToStream(out, Kernel::NonCounted<const Kernel::Serialisable>(object.Get()),
                              mode);
    return out.TakeData();
}
/// A holder of BlendOptions, which are saved as nested class items only.
class BlendOptionsBox : public Kernel::PlainSavedClass<BlendOptionsBox>
{
public:
    explicit BlendOptionsBox(BlendOptions value = {}) : options(std::move(value)) {}
    void Save(Kernel::OutSerialiser& out) const override { out.SavePropClassI("optn", options); }
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short) override
    {
        return in.LoadPropClassI(
            "optn", [&](const Kernel::InSerialiser& items, Kernel::ClassUID uid,
                        unsigned short version) { return options.Load(items, uid, version); });
    }
    static const Kernel::ClassProperties& GetTypeClassProperties()
    {
        static const auto& record = *new Kernel::ClassProperties(
            "TBOp", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "BlendOptionsBox");
        return record;
    }
    BlendOptions options;
};

/// Makes random objects; the same ones for the same seed.
class Maker
{
public:
    /// \param nearDefaults whether parameters may lie within the tolerance of their defaults, so
    /// that
    ///        files leave them out.
    Maker(std::uint32_t seed, bool nearDefaults) : m_random(seed), m_nearDefaults(nearDefaults) {}

    int Pick(int count) { return static_cast<int>(m_random() % static_cast<std::uint32_t>(count)); }
    bool Perhaps() { return Pick(2) == 0; }
    /// 0 … 1.
    double Unit() { return static_cast<double>(m_random()) / 4294967295.0; }
    /// Any parameter: now and then its neighbourhood of the default or an extreme value.
    double Parameter(double standard)
    {
        const double special[] = {standard,
                                  standard + 5e-7,
                                  standard - 2e-6,
                                  -0.0,
                                  std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::denorm_min(),
                                  -1e300,
                                  std::numeric_limits<double>::quiet_NaN()};
        const double value = Perhaps() ? Unit() : special[Pick(8)];
        const bool isNear = value != standard && std::abs(value - standard) < 2e-6;
        return isNear && !m_nearDefaults ? standard : value;
    }
    float Channel()
    {
        const float special[] = {0.0F,  1.0F,   -0.25F,
                                 1.75F, 1e-38F, std::numeric_limits<float>::quiet_NaN()};
        return Perhaps() ? static_cast<float>(Unit()) : special[Pick(6)];
    }
    std::uint16_t Word() { return static_cast<std::uint16_t>(m_random()); }
    Kernel::String Name()
    {
        const char* const names[] = {"", "swatch", "Grün 10 €", "not UTF-8: \xff"};
        return names[Pick(4)];
    }

    Counted<Colour> MakeChannels(int type)
    {
        switch (type) {
        case Colour::RGB:
            return ColourRGB::CreateFakeTemporary(
                Raster::PixelRGBAUF{Channel(), Channel(), Channel(), Channel()});
        case Colour::CMYK:
            return ColourCMYK::CreateFakeTemporary(
                Raster::PixelCMYKAF{Channel(), Channel(), Channel(), Channel(), Channel()});
        case Colour::HSL:
            return ColourHSL::CreateFakeTemporary(
                Raster::PixelHSLAF{Channel(), Channel(), Channel(), Channel()});
        case Colour::Grayscale:
            return ColourGrayscale::CreateFakeTemporary(Channel(), Channel());
        case Colour::LAB:
            return ColourLAB::CreateFakeTemporary(
                Raster::PixelLABA16{Word(), Word(), Word(), Word()});
        case Colour::Named: {
            Consolidated<ColourRGB> sRGB;
            if (Perhaps())
                sRGB = ColourRGB::Create(Raster::PixelRGBA8{1, 2, 3, 255});
            return ColourNamed::CreateFakeTemporary(Name(), Perhaps(), MakeColour(), sRGB);
        }
        default:
            return ColourRegistration::CreateFakeTemporary();
        }
    }
    Consolidated<Colour> MakeColour(int type)
    {
        const Counted<Colour> colour = MakeChannels(type);
        colour->SetNoise(Parameter(0.0));
        colour->SetTint(Parameter(1.0));
        colour->SetIntensity(Parameter(1.0));
        colour->SetGlobalName(Name());
        colour->SetOverprint(Perhaps());
        return Colour::Consolidate(colour);
    }
    Consolidated<Colour> MakeColour() { return MakeColour(Pick(5)); }

    Consolidated<Gradient> MakeGradient()
    {
        std::vector<Gradient::ColourPosition> stops;
        for (int count = Pick(5); count > 0; --count)
            stops.push_back(
                {MakeColour(), Unit(), Perhaps() ? 0.5 : Unit(), Pick(3) == 0 ? Unit() : 0.0});
        return Gradient::Create(std::move(stops));
    }
    Raster::AffineTransform::Params MakeTransform()
    {
        if (Pick(3) == 0)
            return {};
        return {Unit(), Parameter(0), Unit(), Parameter(0), Unit(), Unit()};
    }
    Consolidated<Fill> MakeFillGradient()
    {
        return FillGradient::Create(
            static_cast<FillGradient::FillGradientType>(Pick(4)), MakeGradient(), true,
            static_cast<FillGradient::Spread>(Pick(3)),
            Perhaps() ? Kernel::PointT<double>{Unit(), -Unit()} : Kernel::PointT<double>{});
    }
    Consolidated<Fill> MakeFillMulti(int depth)
    {
        FillMulti::Descriptors entries;
        for (int count = Pick(4); count > 0; --count)
            entries.emplace_back(new FillDescriptorConst(MakeFill(depth - 1), MakeTransform()));
        return FillMulti::Create(entries);
    }
    Consolidated<Fill> MakeFill(int depth = 2)
    {
        switch (Pick(depth > 0 ? 5 : 4)) {
        case 0:
            return FillNone::Create();
        case 1:
            return FillBackBuffer::Create();
        case 2:
            return FillSolid::Create(MakeColour(Pick(7)));
        case 3:
            return MakeFillGradient();
        default:
            return MakeFillMulti(depth);
        }
    }

    Counted<const Geometry::CurveDbl> MakeCurve()
    {
        const auto curve = Kernel::MakeCounted<Geometry::CurveDbl>();
        if (Pick(5) == 0)
            return curve;
        curve->MoveTo({Unit(), Unit()});
        for (int count = Pick(4); count > 0; --count) {
            if (Perhaps())
                curve->LineTo({Unit(), Unit()});
            else
                curve->CurveTo({Unit(), Unit()}, {Unit(), -Unit()}, {Unit(), Unit()});
        }
        curve->SetClosed(Perhaps());
        return curve;
    }
    BlendOptions MakeBlendOptions()
    {
        BlendOptions options;
        for (const auto side : {BlendOptions::Side::Source, BlendOptions::Side::Destination}) {
            for (int channel = -1; channel < BlendOptions::ChannelCount; ++channel) {
                if (Pick(3) != 0)
                    continue;
                const auto curve = Kernel::MakeCounted<Geometry::Spline>(
                    std::vector<Geometry::Point>{{Unit(), Unit()}, {Unit(), -0.0}, {Unit(), 1.0}});
                if (channel < 0)
                    options.SetMasterCurve(side, curve);
                else
                    options.SetChannelCurve(side, channel, curve);
            }
        }
        options.SetBlendGamma(Parameter(BlendOptions::DefaultBlendGamma));
        if (Perhaps())
            options.SetAntialiasingGamma(MakeCurve());
        return options;
    }

    Counted<const Raster::RasterBrush> MakeBrush()
    {
        const auto pixels = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, 3, 2);
        for (unsigned y = 0; y < 2; ++y)
            for (unsigned x = 0; x < 3; ++x)
                pixels->GetRow(y)[4 * x + 3] = static_cast<unsigned char>(Pick(256));
        using Settings = Raster::BrushSettings;
        Settings settings;
        settings.mode = static_cast<Settings::Mode>(Pick(3));
        settings.tipUse = static_cast<Settings::TipUse>(Pick(3));
        settings.overlap = static_cast<Settings::Overlap>(Pick(2));
        settings.spacing = Parameter(0.25);
        settings.rotation = Parameter(0);
        settings.followsPath = Perhaps();
        settings.opacity = Parameter(1);
        settings.positionJitter = Parameter(0);
        settings.angleJitter = Parameter(0);
        settings.sizeJitter = Parameter(0);
        settings.opacityJitter = Parameter(0);
        settings.sizeByPressure = Parameter(1);
        settings.opacityByPressure = Parameter(0);
        settings.seed = Perhaps() ? 0 : static_cast<std::uint32_t>(m_random());
        return Kernel::MakeCounted<Raster::RasterBrush>(
            Kernel::MakeCounted<Raster::DynamicBitmap>(pixels), settings);
    }
    Consolidated<LineStyle> MakeLineStyle()
    {
        LineStyle style(Parameter(0), Perhaps());
        style.SetCap(static_cast<LineStyle::LineCap>(Pick(3)));
        style.SetJoin(static_cast<LineStyle::LineJoin>(Pick(4)));
        style.SetMiterLimit(Parameter(LineStyle::DefaultMiterLimit));
        style.SetDashPhase(Parameter(0));
        if (Perhaps())
            style.SetDashPattern({Unit(), Parameter(1), Unit()});
        style.SetType(static_cast<LineStyle::LineType>(Pick(5)));
        if (Pick(3) == 0)
            style.SetBrush(MakeBrush());
        return LineStyle::Consolidate(style);
    }
    Counted<LineStyleDescriptor> MakeLineStyleDescriptor()
    {
        return Kernel::MakeCounted<LineStyleDescriptor>(
            MakeLineStyle(), Perhaps() ? MakeCurve() : nullptr, Perhaps(), Perhaps(),
            static_cast<LineStyleDescriptor::StrokeAlignment>(Pick(3)));
    }
    Consolidated<Palette> MakePalette()
    {
        Palette::Colours colours;
        for (int count = Pick(6); count > 0; --count)
            colours.push_back(MakeColour(Pick(7)));
        return Palette::Create(std::move(colours));
    }

private:
    std::mt19937 m_random;
    bool m_nearDefaults;
};

} // namespace Renderer::SavedPaint
