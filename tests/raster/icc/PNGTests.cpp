#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <raster/Codecs.h>
#include <raster/Pixel.h>

#include "TestFiles.h"

using namespace Raster;
using namespace RasterTest;

namespace {

bool Contains(const Bytes& bytes, const std::string& text)
{
    return std::search(bytes.begin(), bytes.end(), text.begin(), text.end()) != bytes.end();
}

/// The colour of a pixel of \p file by the rules of the format: channels and alpha at full range.
struct ExpectedPixel
{
    double colour[3];
    double alpha;
};

/// The palette and the transparent colours that the test's files use.
constexpr unsigned PaletteSize = 16;
unsigned char PaletteEntry(unsigned index, unsigned channel)
{
    return static_cast<unsigned char>(index * 17 + channel * 60);
}
constexpr unsigned char PaletteAlpha[] = {0, 100, 255, 7}; // the rest is opaque

ExpectedPixel Expect(const PngFile& file, unsigned x, unsigned y, bool hasKey)
{
    const unsigned* s = &file.samples[(y * file.width + x) * file.GetChannels()];
    const double max = (1u << file.depth) - 1;
    switch (file.colourType) {
    case 3:
        return {{PaletteEntry(s[0], 0) / 255.0, PaletteEntry(s[0], 1) / 255.0,
                 PaletteEntry(s[0], 2) / 255.0},
                s[0] < 4 ? PaletteAlpha[s[0]] / 255.0 : 1};
    case 0:
    case 4:
        return {{s[0] / max, 0, 0},
                file.colourType == 4  ? s[1] / max
                : hasKey && s[0] == 1 ? 0.0
                                      : 1.0};
    default: {
        const bool isKey = hasKey && s[0] == 1 && s[1] == 1 && s[2] == 1;
        return {{s[0] / max, s[1] / max, s[2] / max},
                file.colourType == 6 ? s[3] / max
                : isKey              ? 0.0
                                     : 1.0};
    }
    }
}

PngFile MakeFile(unsigned colourType, unsigned depth, bool isInterlaced, bool hasKey)
{
    PngFile file{11, 9, depth, colourType, isInterlaced, {}, {}};
    std::mt19937 random(depth * 7 + colourType);
    const unsigned max = (1u << depth) - 1;
    const unsigned range = colourType == 3 ? std::min(PaletteSize, max + 1) : max + 1;
    for (unsigned i = 0; i < file.width * file.height; ++i) {
        const bool isSpecial = random() % 3 == 0; // often the transparent colour
        for (unsigned c = 0; c < file.GetChannels(); ++c)
            file.samples.push_back(isSpecial ? 1 : unsigned(random()) % range);
    }
    Bytes palette;
    for (unsigned i = 0; i < std::min(PaletteSize, max + 1); ++i)
        for (unsigned c = 0; c < 3; ++c)
            palette.push_back(PaletteEntry(i, c));
    if (colourType == 3) {
        const Bytes alpha(PaletteAlpha, PaletteAlpha + std::min<unsigned>(4, max + 1));
        file.chunks = MakePngChunk("PLTE", palette);
        const Bytes transparency = MakePngChunk("tRNS", alpha);
        file.chunks.insert(file.chunks.end(), transparency.begin(), transparency.end());
    } else if (hasKey) {
        file.chunks = MakePngChunk("tRNS", colourType == 0 ? Bytes{0, 1} : Bytes{0, 1, 0, 1, 0, 1});
    }
    return file;
}

void ExpectDecoded(const PngFile& file, bool hasKey)
{
    const auto bitmap = ReadImage(file.Encode());
    const bool isGrey = file.colourType == 0 || file.colourType == 4;
    const Format format = file.depth == 16 ? (isGrey ? Format::IA16 : Format::RGBA16)
                                           : (isGrey ? Format::IA8 : Format::RGBA8);
    ASSERT_EQ(bitmap->GetFormat(), format);
    WithPixelOfFormat(format, false, [&]<class P>(P) {
        for (unsigned y = 0; y < file.height; ++y) {
            const P* row = reinterpret_cast<const P*>(bitmap->GetBuffer()->GetRow(y));
            for (unsigned x = 0; x < file.width; ++x) {
                const ExpectedPixel expected = Expect(file, x, y, hasKey);
                EXPECT_NEAR(row[x].Alpha(), expected.alpha * double(P::Max), 1e-6);
                for (std::size_t c = 0; c < P::ColourCount; ++c) {
                    EXPECT_NEAR(row[x][c], expected.colour[c] * expected.alpha * double(P::Max),
                                0.5 + 1e-6)
                        << x << ' ' << y;
                }
            }
        }
        return true;
    });
}

} // namespace

TEST(PNG, ReadsEveryColourTypeDepthAndInterlacing)
{
    struct Kind
    {
        unsigned colourType;
        std::vector<unsigned> depths;
    };
    const Kind kinds[] = {
        {0, {1, 2, 4, 8, 16}}, {2, {8, 16}}, {3, {1, 2, 4, 8}}, {4, {8, 16}}, {6, {8, 16}}};
    for (const Kind& kind : kinds) {
        for (const unsigned depth : kind.depths) {
            for (const bool isInterlaced : {false, true}) {
                for (const bool hasKey : {false, true}) {
                    SCOPED_TRACE(testing::Message()
                                 << "type " << kind.colourType << " depth " << depth
                                 << " interlaced " << isInterlaced << " key " << hasKey);
                    if (kind.colourType < 4)
                        ExpectDecoded(MakeFile(kind.colourType, depth, isInterlaced, hasKey),
                                      hasKey);
                    else if (!hasKey)
                        ExpectDecoded(MakeFile(kind.colourType, depth, isInterlaced, false), false);
                }
            }
        }
    }
}

TEST(PNG, WrittenPicturesComeBackUnchanged)
{
    for (const Format format : {Format::RGBA8, Format::RGBA16, Format::IA8, Format::IA16}) {
        for (const bool isFlat : {false, true}) {
            for (const bool isOpaque : {false, true}) {
                const auto bitmap = MakeRandomBitmap(format, 61, 23, isFlat, isOpaque);
                const Bytes file = Write(WritePNG, *bitmap, isFlat ? 0 : 9);
                ExpectSimilar(*ReadPNG(file), *bitmap);
                EXPECT_TRUE(Contains(file, "sRGB"));
                const bool hasAlpha = file[25] & 4; // the colour type in IHDR
                EXPECT_EQ(hasAlpha, !isOpaque);
            }
        }
    }
}

TEST(PNG, ProfilesThatAreNotWorthKeepingAreLeftAside)
{
    // The default needs no embedding.
    const Profile srgb = ICCManager::GetInstance().GetDefaultProfileForFormat(Format::RGBA8);
    const auto bitmap = MakeRandomBitmap(Format::RGBA8, 4, 4, false, false, srgb);
    const Bytes plain = Write(WritePNG, *bitmap, 6);
    EXPECT_TRUE(Contains(plain, "sRGB") && !Contains(plain, "iCCP"));
    EXPECT_FALSE(ReadPNG(plain)->GetProfile());

    // A profile that inflates to 100 MB, one of garbage, and texts to 40 MB each: all left aside.
    PngFile file{1, 1, 8, 0, false, {9}, {}};
    for (const auto& content : {Bytes(100 << 20), Bytes(500, 'x')}) {
        Bytes chunk{'n', 0, 0};
        const Bytes packed = Deflate(content);
        chunk.insert(chunk.end(), packed.begin(), packed.end());
        file.chunks = MakePngChunk("iCCP", chunk);
        const Bytes text = MakePngChunk("zTXt", chunk);
        for (int i = 0; i < 20; ++i)
            file.chunks.insert(file.chunks.end(), text.begin(), text.end());
        const auto read = ReadPNG(file.Encode());
        EXPECT_FALSE(read->GetProfile());
        EXPECT_EQ(read->GetBuffer()->GetRow(0)[0], 9);
    }
}

TEST(PNG, DamageIsRefused)
{
    ReadDamaged(MakeFile(6, 8, true, false).Encode(), ReadPNG, 2000);
    EXPECT_THROW(ReadImage(Bytes{'G', 'I', 'F', '8'}), Kernel::FormatException);
    EXPECT_THROW(ReadImage({}), Kernel::FormatException);
    // Pictures that claim more than is allowed, or more than the file can hold.
    for (const unsigned side : {2000000000u, 60000u, 16000u, 0u}) {
        const PngFile bomb{side, side, 16, 6, false, {}, {}};
        EXPECT_THROW(ReadPNG(bomb.Encode()), Kernel::FormatException);
    }
}
