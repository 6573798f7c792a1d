#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <kernel/DelayLoadHolder.h>
#include <kernel/FormatException.h>
#include <kernel/FutureVersionException.h>
#include <kernel/OutSerialiser.h>
#include <renderer/paint/FillBlendMode.h>

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

/// Items by tag of an object that is written by hand, in the place of a class of the library.
class Forged : public Kernel::Serialisable
{
public:
    using Writer = std::function<void(Kernel::OutSerialiser&)>;
    Forged(const char* uid, unsigned short version, Writer writer)
        : m_uid(uid), m_version(version), m_writer(std::move(writer))
    {}
    Bytes GetFile() const
    {
        static const Kernel::ClassProperties& record =
            *new Kernel::ClassProperties("TFrg", nullptr, 1, nullptr, nullptr, "Forged");
        m_record = &record;
        Bytes bytes = SavedPaint::Save(Kernel::MakeCounted<Forged>(*this));
        // The identifier and the version are the first things in the object.
        const std::string own = std::string("dTFrg") + '\x01';
        const auto at = std::search(bytes.begin(), bytes.end(), own.begin(), own.end());
        std::copy(m_uid.begin(), m_uid.end(), at + 1);
        at[5] = static_cast<unsigned char>(m_version);
        return bytes;
    }
    void Save(Kernel::OutSerialiser& out) const override { m_writer(out); }
    const Kernel::ClassProperties& GetObjectClassProperties() const override { return *m_record; }

private:
    std::string m_uid;
    unsigned short m_version;
    Writer m_writer;
    static inline const Kernel::ClassProperties* m_record = nullptr;
};

template<class T>
auto LoadForged(const char* uid, unsigned short version, const Forged::Writer& writer)
{
    return InSerialiserFile(Forged(uid, version, writer).GetFile()).ParseWithChecks<T>();
}
template<class T>
auto LoadForged(const char* uid, const Forged::Writer& writer)
{
    return LoadForged<T>(uid, 1, writer);
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

TEST(SavedPaint, WhatCannotExistWithoutItsPartsFails)
{
    using Kernel::FormatException;
    const auto nothing = [](Kernel::OutSerialiser&) {};
    EXPECT_THROW(LoadForged<FillSolid>("FilS", nothing), FormatException);
    EXPECT_THROW(LoadForged<ColourNamed>("Pant", nothing), FormatException);
    EXPECT_THROW(LoadForged<FillDescriptor>("FDsc", nothing), FormatException);
    EXPECT_THROW(LoadForged<FillGradient>("FilG", 2, nothing), FormatException);
    // A part that is null, or of another class, is none.
    EXPECT_THROW(LoadForged<FillSolid>("FilS",
                                       [](Kernel::OutSerialiser& out) {
                                           out.SaveSharedObject("Colr", FillNone::Create());
                                       }),
                 FormatException);
    EXPECT_THROW(
        LoadForged<FillDescriptor>(
            "FDsc", [](Kernel::OutSerialiser& out) { out.SaveSharedObject("FDeF", nullptr); }),
        FormatException);
    EXPECT_TRUE(LoadForged<Gradient>("Grad", nothing)->GetColours().empty());
    EXPECT_TRUE(LoadForged<Palette>("Pltt", nothing)->GetColours().empty());
    EXPECT_TRUE(LoadForged<FillMulti>("MulF", nothing)->IsFillNone());
    EXPECT_TRUE(LoadForged<LineStyle>("LSty", nothing)->IsNone());
    EXPECT_TRUE(LoadForged<LineStyleDescriptor>("LDsc", nothing)->IsLineStyleNone());
    EXPECT_EQ(LoadForged<Colour>("RGBA", nothing),
              ColourRGB::Create(Raster::PixelRGBAUF{0, 0, 0, 1}));
}

/// Every item of every class with content of each wrong kind, size and value: it counts as absent,
/// or what it makes can be saved and loaded.
TEST(SavedPaint, WrongContentIsSurvived)
{
    const auto colour = ColourRGB::Create(Raster::PixelRGBA8{1, 2, 3, 4});
    const std::vector<Consolidated<Kernel::SharedSerialisable>> mixed{
        colour, FillNone::Create(), {}};
    const std::vector<std::pair<const char*, std::vector<Kernel::IDTag>>> classes{
        {"RGBA", {"_col", "_nse", "_glb", "_ovp"}},
        {"Pant", {"base", "srgb", "ispt", "name"}},
        {"Grad", {"Posn", "Cols", "Smth"}},
        {"FilS", {"Colr"}},
        {"FilG", {"Type", "Grad", "XCor", "Sprd", "Focs", "Posn", "Cols"}},
        {"MulF", {"Desc"}},
        {"FDsc", {"FDeF", "FDeX"}},
        {"LSty", {"Data", "Wght", "Brus", "Phse", "Patn"}},
        {"LDsc", {"LDeL", "LDBe", "LDeP", "LDSa"}},
        {"Pltt", {"cols"}},
        {"FilB", {"Bitm", "ExtT", "ResT", "IgnA", "Orig"}},
        {"FlBu", {"Bitm", "ExtT", "ResT"}},
        {"ICCP", {"Prof"}},
        {"DBmp", {"Frmt", "Widt", "Heig", "Prof", "Data"}},
        {"Spln", {"Pnts"}}};
    const Kernel::DelayLoadHolder payload({1, 2, 3});
    const std::vector<double> numbers{NotANumber, 1e308, -std::numeric_limits<double>::infinity(),
                                      0.0,        1.0,   2.0};
    const std::vector<std::function<void(Kernel::OutSerialiser&, Kernel::IDTag)>> contents{
        [](auto& out, auto tag) { out.SaveType(tag, true); },
        [](auto& out, auto tag) { out.SaveTypeI(tag, std::int32_t{77}); },
        [](auto& out, auto tag) { out.SaveTypeI(tag, NotANumber); },
        [](auto& out, auto tag) { out.SaveType(tag, Kernel::String("text")); },
        [](auto& out, auto tag) { out.SaveTypeArrayI(tag, {}); },
        [&](auto& out, auto tag) { out.SaveTypeArrayI(tag, numbers); },
        [](auto& out, auto tag) {
            out.SaveRawStructI(tag, "\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff", 12);
        },
        [&](auto& out, auto tag) { out.SaveSharedObject(tag, colour); },
        [](auto& out, auto tag) { out.SaveNullPropClassI(tag); },
        [&](auto& out, auto tag) { out.SaveDelayLoadObject(tag, payload); },
        [](auto& out, auto tag) { out.SaveObject(tag, Kernel::MakeCounted<Geometry::Spline>()); },
        [&](auto& out, auto tag) { out.SaveSharedObjectArrayI(tag, mixed); },
        [](auto& out, auto tag) {
            out.SavePropClassI(tag, "Curv", 1, [](Kernel::OutSerialiser& items) {
                items.SaveTypeArrayI("Pnts", std::array{0.0, NotANumber, 1.0, 2.0});
                items.SaveRawStructI("Segm", "\x01\x02", 2);
            });
        }};
    int loadedCount = 0;
    for (const auto& [uid, tags] : classes) {
        for (const Kernel::IDTag tag : tags) {
            for (const auto& content : contents) {
                InSerialiserFile::Object object;
                try {
                    object =
                        InSerialiserFile(
                            Forged(uid, 1, [&](Kernel::OutSerialiser& out) { content(out, tag); })
                                .GetFile())
                            .ParseWithChecks();
                } catch (const Kernel::FormatException&) {
                    continue; // it cannot exist without its parts
                }
                ++loadedCount;
                const auto save = [](const InSerialiserFile::Object& saved) {
                    return saved.shared ? Save(saved.shared) : Save(saved.plain);
                };
                const Bytes bytes = save(object);
                EXPECT_TRUE(save(InSerialiserFile(bytes).ParseWithChecks()) == bytes)
                    << uid << ' ' << tag.ToString();
            }
        }
    }
    EXPECT_GT(loadedCount, 150);
}

TEST(SavedPaint, StacksOfFillsNestUpToALimit)
{
    Consolidated<Colour> colour = ColourRegistration::Create();
    for (unsigned depth = 0; depth < ColourNamed::MaxDepth; ++depth)
        colour = ColourNamed::Create("name", false, colour, {});
    Consolidated<Fill> fill =
        FillGradient::Create(FillGradient::Linear, Gradient::Create({{colour, 0.0}}));
    const auto wrap = [&] {
        fill =
            FillMulti::Create({Counted<const FillDescriptorConst>(new FillDescriptorConst(fill))});
    };
    for (unsigned depth = 0; depth < FillMulti::MaxDepth; ++depth)
        wrap();
    EXPECT_TRUE(InSerialiserFile(Save(fill)).ParseWithChecks<Fill>() == fill);
    EXPECT_FALSE(fill->IsFillNone());
    wrap();
    EXPECT_TRUE(fill->IsFillNone());
}

/// Objects that share each other: small files must not stand for unbounded work.
TEST(SavedPaint, DepthAndSizeOfSharedObjectsAreBounded)
{
    const auto stack = [](const Consolidated<Fill>& fill, std::size_t count) {
        return FillMulti::Create(FillMulti::Descriptors(
            count, Counted<const FillDescriptorConst>(new FillDescriptorConst(fill))));
    };
    const Consolidated<Colour> red = ColourRGB::Create(Raster::PixelRGBA8{255, 0, 0, 255});
    Consolidated<Fill> chain = FillSolid::Create(red);
    for (unsigned depth = 0; depth < FillMulti::MaxDepth; ++depth)
        chain = stack(chain, 1);
    EXPECT_FALSE(chain->IsFillNone());
    EXPECT_TRUE(stack(chain, 1)->GetDescriptors().empty());

    const auto wide = stack(stack(FillSolid::Create(red), 64), 64);
    const auto full = stack(wide, 20);
    EXPECT_EQ(full->GetDescriptors().size(), FillMulti::MaxLeaves / 64 / 64);
    EXPECT_TRUE(full->IsSpatiallyInvariant());
    EXPECT_FALSE(full->HasNonFullAlpha());
    EXPECT_EQ(InSerialiserFile(Save(full)).ParseWithChecks<FillMulti>(), full);
    const auto loadStack = [&](const Consolidated<FillMulti>& fill, std::size_t count) {
        const std::vector<Counted<FillDescriptor>> entries(
            count, Kernel::MakeCounted<FillDescriptor>(FillDescriptorConst(fill)));
        return LoadForged<FillMulti>("MulF", [&](Kernel::OutSerialiser& out) {
            out.SaveObjectArrayI("Desc", entries,
                                 [](const auto& entry) -> const FillDescriptor& { return *entry; });
        });
    };
    EXPECT_TRUE(loadStack(full, 1));
    EXPECT_THROW(loadStack(full, 2), Kernel::FormatException);

    Consolidated<Colour> named = red;
    const auto wrap = [&](unsigned count) {
        for (unsigned i = 0; i < count; ++i)
            named = ColourNamed::Create(std::to_string(i).c_str(), false, named, {});
    };
    const auto loadNamed = [&] {
        return LoadForged<ColourNamed>(
            "Pant", [&](Kernel::OutSerialiser& out) { out.SaveSharedObject("base", named); });
    };
    wrap(ColourNamed::MaxDepth - 1);
    EXPECT_EQ(loadNamed()->GetBaseColour(), named);
    wrap(100);
    EXPECT_EQ(InSerialiserFile(Save(named)).ParseWithChecks<Colour>(), named);
    EXPECT_THROW(loadNamed(), Kernel::FormatException);
    unsigned depth = 0;
    for (; named->GetType() == Colour::Named; ++depth)
        named = Consolidated<Colour>(dynamic_cast<const ColourNamed&>(*named).GetBaseColour());
    EXPECT_EQ(depth, ColourNamed::MaxDepth);
    EXPECT_EQ(named, red);
}

TEST(SavedPaint, NewerNestedClassesAreNotLeftOut)
{
    const auto write = [](Kernel::IDTag tag, Kernel::ClassUID uid) {
        return [=](Kernel::OutSerialiser& out) {
            out.SavePropClassI(tag, uid, 2, [](Kernel::OutSerialiser&) {});
        };
    };
    EXPECT_THROW(LoadForged<LineStyleDescriptor>("LDsc", write("LDeP", "Curv")),
                 Kernel::FutureVersionException);
    EXPECT_THROW(LoadForged<BlendOptionsBox>("TBOp", write("optn", "BlOp")),
                 Kernel::FutureVersionException);
}

TEST(SavedPaint, DamagedElementsOfArrays)
{
    const Consolidated<Colour> red = ColourRGB::Create(Raster::PixelRGBA8{255, 0, 0, 255});
    const std::vector<Consolidated<Kernel::SharedSerialisable>> colours{
        {}, red, FillNone::Create(), ColourRegistration::Create()};
    const auto write = [&](Kernel::IDTag tag) {
        return [&colours, tag](Kernel::OutSerialiser& out) {
            out.SaveSharedObjectArrayI(tag, colours);
        };
    };
    EXPECT_EQ(LoadForged<Palette>("Pltt", write("cols"))->GetColours(),
              (Palette::Colours{red, ColourRegistration::Create()}));
    EXPECT_TRUE(LoadForged<Gradient>("Grad", write("Cols"))->GetColours().empty());
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
