#include <cstring>
#include <filesystem>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <raster/Codecs.h>
#include <renderer/core/BitmapRenderTarget.h>
#include <renderer/paint/ConvertColourOrProfileVisitor.h>
#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillBuffer.h>
#include <renderer/paint/ForceColourVisitor.h>

#include <support/TestFolder.h>

#include "SavedPaintSamples.h"

namespace Renderer::SavedPaint {
namespace {

using Kernel::InSerialiserFile;
using Raster::CompressedRasterData;
using Raster::DynamicBitmap;
using Raster::ExtendType;
using Raster::Format;
using Raster::ResamplerType;

Counted<Raster::DynamicBuffer> MakePixels(int seed = 0, unsigned scale = 1)
{
    const auto buffer = Raster::DynamicBuffer::Create(Format::RGBA8, 24 * scale, 16 * scale);
    std::mt19937 random(static_cast<unsigned>(seed));
    for (unsigned y = 0; y < buffer->GetHeight(); ++y)
        for (unsigned i = 0; i < buffer->GetWidth() * 4; ++i)
            buffer->GetRow(y)[i] = static_cast<unsigned char>(i % 4 == 3 ? 255 : random() % 200);
    return buffer;
}

/// A picture and the file that it came from.
Counted<const CompressedRasterData> MakeFile()
{
    Kernel::MemoryOutStream out;
    Raster::WritePNG(out, DynamicBitmap(MakePixels()));
    return Kernel::MakeCounted<const CompressedRasterData>(out.TakeData());
}

/// The pixels of a page on which the fill was drawn twice, so that its outside shows too.
Bytes Draw(const Consolidated<Fill>& fill)
{
    const Counted<BitmapRenderTarget> target(BitmapRenderTarget::Create(Format::RGBA8, {}));
    EXPECT_TRUE(target->CreateBuffer(64, 48));
    const FillDescriptorConst paint(fill, {40, 6, 5, -4, 30, 9});
    target->DrawRectangle({2, 3, 60, 44}, 0.8F, paint, {}, {});
    target->DrawRectangle({20, 10, 40, 30}, 1.0F, paint, {}, {});
    const auto buffer = target->GetBuffer();
    Bytes pixels;
    for (unsigned y = 0; y < 48; ++y)
        pixels.insert(pixels.end(), buffer->GetRow(y), buffer->GetRow(y) + 64 * 4);
    return pixels;
}
bool IsBlank(const Bytes& pixels)
{
    return std::ranges::all_of(pixels, [](unsigned char byte) { return byte == 0; });
}

template<class T>
Consolidated<T> Load(const Bytes& bytes)
{
    return InSerialiserFile(bytes).ParseWithChecks<T>();
}

TEST(SavedBitmapFill, ComesBackDrawsAlikeAndIsDecodedWhenDrawn)
{
    const auto file = MakeFile();
    const Counted<const DynamicBitmap> bitmaps[] = {
        file->Decode(), Kernel::MakeCounted<const DynamicBitmap>(MakePixels())};
    for (int i = 0; i < 40; ++i) {
        const auto fill = FillBitmap::Create(bitmaps[i % 2], static_cast<ExtendType>(i % 5),
                                             static_cast<ResamplerType>(i % 4), i % 3 == 0,
                                             i % 7 < 4 ? file : nullptr);
        const Bytes bytes = Save(fill);
        const auto loaded = Load<FillBitmap>(bytes);
        EXPECT_EQ(loaded->GetExtendType(), fill->GetExtendType());
        EXPECT_EQ(loaded->GetUpSampler(), fill->GetUpSampler());
        EXPECT_EQ(loaded->GetIgnoreAlpha(), fill->GetIgnoreAlpha());
        EXPECT_EQ(loaded->GetOriginalData()->IsDeflated(), i % 2 == 1 && i % 7 >= 4);
        EXPECT_TRUE(Save(loaded) == bytes);
        EXPECT_TRUE(Load<FillBitmap>(Save(fill, Kernel::SaveMode::Partial)));
        EXPECT_FALSE(loaded->GetBitmap()->IsDecoded());
        const Bytes drawn = Draw(fill);
        EXPECT_FALSE(IsBlank(drawn));
        EXPECT_TRUE(Draw(loaded) == drawn) << i;
        EXPECT_TRUE(loaded->GetBitmap()->IsDecoded());
        EXPECT_TRUE(Save(loaded) == bytes);
    }
    EXPECT_TRUE(
        Load<FillBitmap>(Save(FillBitmap::Create({}, ExtendType::Wrap, ResamplerType::Bilinear))));
}

Consolidated<Fill> Stack(const std::vector<Consolidated<Fill>>& fills)
{
    FillMulti::Descriptors entries;
    for (const auto& fill : fills)
        entries.emplace_back(new FillDescriptorConst(fill));
    return FillMulti::Create(entries);
}

TEST(SavedBitmapFill, SourcesAreWrittenOnceAndStayWhilePixelsDo)
{
    const auto file = MakeFile();
    const auto bitmap = file->Decode();
    const auto fill =
        FillBitmap::Create(bitmap, ExtendType::Wrap, ResamplerType::Bicubic, false, file);
    const auto size = file->GetBytes().GetSize();
    std::vector<Consolidated<Fill>> fills;
    for (int i = 0; i < 4; ++i)
        fills.push_back(FillBitmap::Create(bitmap, static_cast<ExtendType>(i),
                                           ResamplerType::Bilinear, false, file));
    EXPECT_LT(Save(Stack(fills)).size(), 2 * size);
    const auto loaded = Load<FillMulti>(Save(Stack(fills)));
    const auto at = [&](std::size_t i) -> const FillBitmap& {
        return dynamic_cast<const FillBitmap&>(*loaded->GetDescriptors()[i]->GetFill());
    };
    EXPECT_EQ(at(0).GetBitmap()->GetBuffer(), at(3).GetBitmap()->GetBuffer());

    const auto other = FillBitmap::Create(bitmap, ExtendType::Wrap, ResamplerType::Bicubic);
    EXPECT_NE(other, fill); // it would lose its source
    EXPECT_EQ(FillBitmap::Create(bitmap, ExtendType::Wrap, ResamplerType::Bicubic, false,
                                 Kernel::MakeCounted<const CompressedRasterData>(file->GetBytes())),
              fill);

    // A document that gets another profile converts no pixels and reads none; grey pixels are no
    // longer those of the source.
    Raster::ICCManager::ICCProfileSet linear;
    linear.SetRGB(Raster::ICCManager::GetInstance().GetLinearRGBProfile());
    ConvertColourOrProfileVisitor convert(Format::RGBA8, {}, Format::RGBA8, linear, nullptr);
    const auto plain = FillBitmap::Create(Kernel::MakeCounted<const DynamicBitmap>(MakePixels()),
                                          ExtendType::Wrap, ResamplerType::Bicubic, false, file);
    const auto lazy = Load<FillBitmap>(Save(plain));
    const Counted<const Fill> tagged = lazy->Accept(convert);
    const auto& taggedFill = dynamic_cast<const FillBitmap&>(*tagged);
    EXPECT_TRUE(taggedFill.GetBitmap()->GetProfile());
    EXPECT_FALSE(taggedFill.GetBitmap()->IsDecoded());
    EXPECT_EQ(*taggedFill.GetOriginalData(), *lazy->GetOriginalData());
    ForceColourVisitor force(Raster::ColourSpace::Grey, {});
    const Counted<const Fill> grey = lazy->Accept(force);
    EXPECT_TRUE(dynamic_cast<const FillBitmap&>(*grey).GetOriginalData()->IsDeflated());
}

/// The payload section of a file without its last bytes would be refused at once: here the payload
/// itself is wrong, or the file goes while it is open.
TEST(SavedBitmapFill, DamageThatIsFoundLateDrawsNothing)
{
    const auto pixels = Kernel::MakeCounted<const DynamicBitmap>(MakePixels());
    const auto file = MakeFile();
    for (const auto& bitmap : {pixels, file->Decode()}) {
        const auto fill = FillBitmap::Create(bitmap, ExtendType::Clamp, ResamplerType::Bilinear);
        Bytes bytes = Save(fill);
        bytes[bytes.size() - 60] ^= 0x55;
        const auto loaded = Load<FillBitmap>(bytes);
        EXPECT_TRUE(IsBlank(Draw(loaded)));
        const auto part = [](const Consolidated<Fill>& inner) {
            return Counted<const FillDescriptorConst>(new FillDescriptorConst(inner));
        };
        const auto red = FillSolid::Create(ColourRGB::Create(Raster::PixelRGBA8{255, 0, 0, 255}));
        EXPECT_TRUE(Draw(FillMulti::Create({part(loaded), part(red), part(loaded)})) == Draw(red));
        EXPECT_FALSE(loaded->GetBitmap()->GetBuffer());
        EXPECT_EQ(loaded->GetMeanAlpha(), 0.0);
        Kernel::MemoryOutStream out;
        EXPECT_THROW(Raster::WritePNG(out, *loaded->GetBitmap()), Kernel::FormatException);
        ForceColourVisitor force(Raster::ColourSpace::Grey, {});
        EXPECT_EQ(loaded->Accept(force).Get(), loaded.Get());
        EXPECT_TRUE(Save(loaded) == bytes); // nothing is lost
    }
    const TestSupport::TestFolder folder;
    const auto large = Kernel::MakeCounted<const DynamicBitmap>(MakePixels(0, 10));
    Kernel::SerialiseToFile(folder / "fill",
                            FillBitmap::Create(large, ExtendType::Clamp, ResamplerType::Bilinear));
    const auto cut = Kernel::SerialiseFromFile<FillBitmap>(folder / "fill");
    std::filesystem::resize_file(folder / "fill", std::filesystem::file_size(folder / "fill") - 50);
    EXPECT_TRUE(IsBlank(Draw(cut)));

    Bytes bytes = Save(FillBuffer::Create(MakePixels()));
    bytes[bytes.size() - 60] ^= 0x55;
    const auto loaded = Load<FillBuffer>(bytes);
    EXPECT_TRUE(IsBlank(Draw(loaded)));
    EXPECT_EQ(loaded->GetMeanAlpha(), 0.0);
}

TEST(SavedBitmapFill, BuffersAreSavedAsTheyAreThen)
{
    const auto buffer = MakePixels();
    const auto fill = FillBuffer::Create(buffer, ExtendType::Mirror, ResamplerType::Bicubic);
    const Bytes before = Save(fill), drawn = Draw(fill);
    for (unsigned y = 0; y < buffer->GetHeight(); ++y)
        std::memcpy(buffer->GetRow(y), MakePixels(77)->GetRow(y), 24 * 4);
    EXPECT_FALSE(Save(fill) == before);
    const auto loaded = Load<FillBuffer>(before);
    EXPECT_FALSE(loaded->IsFillNone());
    EXPECT_EQ(loaded->GetExtendType(), ExtendType::Mirror);
    EXPECT_EQ(loaded->GetUpSampler(), ResamplerType::Bicubic);
    EXPECT_TRUE(Save(loaded) == before);
    EXPECT_TRUE(Draw(loaded) == drawn);
    EXPECT_FALSE(Draw(fill) == drawn);
    EXPECT_TRUE(Load<FillBuffer>(Save(FillBuffer::Create({})))->IsFillNone());
}

} // namespace
} // namespace Renderer::SavedPaint
