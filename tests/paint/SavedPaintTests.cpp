#include <algorithm>
#include <array>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <kernel/OutSerialiser.h>
#include <renderer/paint/FillBlendMode.h>

#include "ForgedFile.h"
#include "SavedPaintSamples.h"

namespace Renderer::SavedPaint {
namespace {

using Kernel::InSerialiserFile;
using Kernel::SaveMode;

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

[[maybe_unused]] const auto& registration = BlendOptionsBox::GetTypeClassProperties();

const BlendOptions& Value(const BlendOptionsBox& box)
{
    return box.options;
}
const FillDescriptorConst& Value(const FillDescriptor& descriptor)
{
    return descriptor;
}
const LineStyleDescriptorConst& Value(const LineStyleDescriptor& descriptor)
{
    return descriptor;
}

std::uint64_t Hash(const Kernel::SharedSerialisable& object)
{
    Kernel::HashAccumulator hash;
    object.AccumulateHash(hash);
    return hash.GetHash();
}

/// Saves a shared value, lets it go, and loads it: what was within the tolerance of its default is
/// the default now, which may make two values one; everything else keeps its bits, so that saving
/// again gives the same bytes.
/// \param isKept whether no parameter within it becomes its default, so that the same value is
/// loaded.
template<class T>
void CheckRoundTrip(Consolidated<T> object, bool isKept)
{
    const Bytes bytes = Save(object);
    const Counted<T> copy(object->Clone());
    EXPECT_TRUE(copy->Equals(*object));
    EXPECT_EQ(Hash(*copy), Hash(*object));
    object = {};
    const auto loaded = InSerialiserFile(bytes).ParseWithChecks<T>();
    if (isKept) {
        EXPECT_TRUE(Save(loaded) == bytes);
        EXPECT_TRUE(loaded->Equals(*copy));
        EXPECT_EQ(Hash(*loaded), Hash(*copy));
    }
    const auto again = InSerialiserFile(Save(loaded)).ParseWithChecks<T>();
    EXPECT_EQ(again, loaded); // equal values are one object
    const Bytes partial = Save(loaded, SaveMode::Partial);
    EXPECT_LE(partial.size(), bytes.size());
    EXPECT_TRUE(InSerialiserFile(partial).ParseWithChecks<T>());
}

template<class T>
void CheckRoundTrip(const Counted<T>& object, bool isKept)
{
    const Bytes bytes = Save(object);
    const auto loaded = InSerialiserFile(bytes).ParseWithChecks<T>();
    EXPECT_TRUE(!isKept || Save(loaded) == bytes);
    EXPECT_TRUE(Save(InSerialiserFile(Save(loaded)).ParseWithChecks<T>()) == Save(loaded));
    EXPECT_TRUE(!isKept || Value(*loaded) == Value(*object));
    EXPECT_TRUE(InSerialiserFile(Save(object, SaveMode::Partial)).ParseWithChecks<T>());
}

TEST(SavedPaint, RandomObjectsComeBackAndSaveToTheSameBytes)
{
    for (int i = 0; i < 600 && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        const bool isKept = i % 2 == 0;
        Maker maker(std::uint32_t(i), !isKept);
        for (int type = Colour::RGB; type <= Colour::Registration; ++type)
            CheckRoundTrip(maker.MakeColour(type), isKept);
        CheckRoundTrip(maker.MakeGradient(), isKept);
        CheckRoundTrip(maker.MakeFill(), isKept);
        CheckRoundTrip(maker.MakeLineStyle(), isKept);
        CheckRoundTrip(maker.MakePalette(), isKept);
        CheckRoundTrip(Kernel::MakeCounted<FillDescriptor>(maker.MakeFill(), maker.MakeTransform()),
                       isKept);
        CheckRoundTrip(maker.MakeLineStyleDescriptor(), isKept);
        CheckRoundTrip(Kernel::MakeCounted<BlendOptionsBox>(maker.MakeBlendOptions()), isKept);
    }
}

TEST(SavedPaint, LinesLoseABrushWithoutTip)
{
    LineStyle style(3.0);
    style.SetType(LineStyle::RasterBrush);
    style.SetBrush(Kernel::MakeCounted<const Raster::RasterBrush>());
    const auto loaded =
        InSerialiserFile(Save(LineStyle::Consolidate(style))).ParseWithChecks<LineStyle>();
    ASSERT_TRUE(loaded);
    EXPECT_FALSE(loaded->GetBrush());
    EXPECT_EQ(loaded->GetType(), LineStyle::RasterBrush);
}

/// Whether a file tells of a tag.
bool Has(const Bytes& bytes, const std::string& tag)
{
    const std::string key = "d" + tag;
    return std::search(bytes.begin(), bytes.end(), key.begin(), key.end()) != bytes.end();
}

TEST(SavedPaint, DefaultsAreLeftOut)
{
    const Raster::PixelRGBAUF red{1, 0, 0, 1};
    const Bytes close = Save(ColourRGB::Create(red, 1.0000005));
    EXPECT_FALSE(Has(close, "_tnt"));
    EXPECT_EQ(InSerialiserFile(close).ParseWithChecks<Colour>()->GetTint(), 1.0);
    EXPECT_TRUE(Has(Save(ColourRGB::Create(red, 0.999998)), "_tnt"));

    const auto phase = Kernel::MakeCounted<LineStyle>(2.0);
    phase->SetDashPhase(5e-7);
    const Bytes style = Save(LineStyle::Consolidate(*phase));
    EXPECT_FALSE(Has(style, "Phse"));
    EXPECT_FALSE(Has(style, "Patn"));
    EXPECT_EQ(InSerialiserFile(style).ParseWithChecks<LineStyle>()->GetDashPhase(), 0.0);

    const Raster::AffineTransform::Params twice{2, 0, 0, 0, 2, 0};
    const auto solid = FillSolid::Create(ColourRGB::Create(red));
    const auto ramp = FillGradient::Create(FillGradient::Linear,
                                           Gradient::Create({{ColourRGB::Create(red), 0.0}}));
    const auto hasTransform = [](const Consolidated<Fill>& fill, const auto& transform) {
        return Has(Save(Kernel::MakeCounted<FillDescriptor>(fill, transform)), "FDeX");
    };
    EXPECT_FALSE(hasTransform(solid, twice));
    EXPECT_FALSE(hasTransform(ramp, Raster::AffineTransform::Params{}));
    EXPECT_TRUE(hasTransform(ramp, twice));

    const auto line = Kernel::MakeCounted<LineStyleDescriptor>(1.0);
    EXPECT_TRUE(Has(Save(line), "LDeP"));
    EXPECT_FALSE(Has(Save(line, SaveMode::Partial), "LDeP"));
}

TEST(SavedPaint, TransformCorrectionIsToldWhereItMatters)
{
    const auto stops =
        Gradient::Create({{ColourRGB::Create(Raster::PixelRGBAUF{1, 0, 0, 1}), 0.0}});
    for (int type = 0; type < 4; ++type) {
        for (const bool flag : {false, true}) {
            const Bytes bytes = Save(FillGradient::Create(
                static_cast<FillGradient::FillGradientType>(type), stops, flag));
            EXPECT_EQ(Has(bytes, "XCor"), !flag && type != FillGradient::Elliptical);
            EXPECT_EQ(
                InSerialiserFile(bytes).ParseWithChecks<FillGradient>()->GetTransformCorrected(),
                flag || type == FillGradient::Elliptical);
        }
    }
    const auto writeGradient = [&](Kernel::OutSerialiser& out) {
        out.SaveSharedObject("Grad", stops);
    };
    EXPECT_FALSE(LoadForged<FillGradient>("FilG", 1, writeGradient)->GetTransformCorrected());
    EXPECT_TRUE(LoadForged<FillGradient>("FilG", 2, writeGradient)->GetTransformCorrected());
}

TEST(SavedPaint, StopsWithinTheFillAreRead)
{
    const std::vector<Consolidated<Colour>> colours{
        ColourRGB::Create(Raster::PixelRGBA8{255, 0, 0, 255}), ColourLAB::Create({1, 2, 3, 4}),
        ColourRegistration::Create()};
    const auto evenly = LoadForged<FillGradient>("FilG", [&](Kernel::OutSerialiser& out) {
        out.SaveSharedObjectArrayI("Cols", colours);
        out.SaveTypeArrayI("Posn", std::array{0.5, 0.5}); // too few, so they do not count
    });
    ASSERT_EQ(evenly->GetGradient()->GetColours().size(), 3U);
    for (int i = 0; i < 3; ++i) {
        const auto& stop = evenly->GetGradient()->GetColours()[static_cast<std::size_t>(i)];
        EXPECT_EQ(stop.position, 0.5 * i);
        EXPECT_EQ(stop.midpoint, 0.5);
    }
    const auto placed = LoadForged<FillGradient>("FilG", [&](Kernel::OutSerialiser& out) {
        out.SaveTypeArrayI("Posn", std::array{0.1, 0.25, NotANumber, -7.0, 0.05, 3.0});
        out.SaveSharedObjectArrayI("Cols", colours);
    });
    const auto& stops = placed->GetGradient()->GetColours();
    EXPECT_EQ(stops[0].midpoint, 0.25);
    for (const auto& stop : stops)
        EXPECT_EQ(stop.position, 0.1);
    EXPECT_EQ(stops[2].midpoint, 1.0);
}

TEST(SavedPaint, BlendModesGrewFourTimes)
{
    const auto& serialiser = FillBlendMode::BlendModeEnumSerialiser::GetInstance();
    ASSERT_EQ(serialiser.GetGenerationCount(), 4U);
    const std::size_t sizes[] = {28, 31, 32, 33};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(serialiser.GetGeneration(i).size(), sizes[i]);
    for (int mode = -1; mode <= 33; ++mode)
        EXPECT_EQ(serialiser.IsLegal(mode), mode >= 0 && mode <= 32);
}

} // namespace
} // namespace Renderer::SavedPaint
