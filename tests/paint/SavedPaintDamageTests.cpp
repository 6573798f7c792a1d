#include <array>
#include <functional>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <kernel/DelayLoadHolder.h>
#include <kernel/FormatException.h>
#include <kernel/FutureVersionException.h>

#include "ForgedFile.h"

namespace Renderer::SavedPaint {
namespace {

using Kernel::InSerialiserFile;

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

TEST(SavedPaintDamage, WhatCannotExistWithoutItsPartsFails)
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
TEST(SavedPaintDamage, WrongContentIsSurvived)
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

TEST(SavedPaintDamage, StacksOfFillsNestUpToALimit)
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
TEST(SavedPaintDamage, DepthAndSizeOfSharedObjectsAreBounded)
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

TEST(SavedPaintDamage, NewerNestedClassesAreNotLeftOut)
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

TEST(SavedPaintDamage, DamagedElementsOfArrays)
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

} // namespace
} // namespace Renderer::SavedPaint
