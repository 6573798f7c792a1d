#include <cmath>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include <kernel/FormatException.h>
#include <raster/Codecs.h>
#include <raster/Pixel.h>
#include <raster/TiffFile.h>

#include "TestFiles.h"

using namespace Raster;
using namespace RasterTest;

namespace {

constexpr Format Formats[] = {Format::RGBA8, Format::RGBA16, Format::IA8,
                              Format::IA16,  Format::CMYKA8, Format::LABA16};

/// A picture of one pixel value.
template<class P>
Kernel::Counted<const DynamicBitmap> MakePlain(const P& pixel, unsigned width = 3)
{
    const auto buffer = DynamicBuffer::Create(FormatOfPixel<P>, width, 2);
    for (unsigned y = 0; y < 2; ++y)
        std::fill_n(reinterpret_cast<P*>(buffer->GetRow(y)), width, pixel);
    return Kernel::MakeCounted<const DynamicBitmap>(buffer);
}

/// What libtiff says about a file, and its first row.
struct Description
{
    explicit Description(const Bytes& bytes) : file(bytes)
    {
        row.resize(std::size_t(TIFFScanlineSize(file.Get())));
        EXPECT_EQ(TIFFReadScanline(file.Get(), row.data(), 0, 0), 1);
    }
    unsigned Get(std::uint32_t tag) const { return file.GetTag(tag, std::uint16_t{999}); }
    int GetExtraSample() const
    {
        std::uint16_t count = 0;
        const std::uint16_t* kinds = nullptr;
        return TIFFGetField(file.Get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) ? kinds[0] : -1;
    }
    Bytes GetProfile() const
    {
        std::uint32_t size = 0;
        const unsigned char* data = nullptr;
        if (!TIFFGetField(file.Get(), TIFFTAG_ICCPROFILE, &size, &data))
            return {};
        return {data, data + size};
    }

    TiffFile file;
    Bytes row;
};

/// A file that libtiff makes of samples in rows.
struct Source
{
    unsigned width, height;
    unsigned bits, samples, photometric;
    unsigned compression = COMPRESSION_NONE;
    bool isSeparate = false;
    unsigned tileSide = 0;
    int extraSample = -1;
    Bytes data{}; ///< interleaved, 16-bit samples in the order of the machine

    std::size_t GetRowSize() const { return (width * bits * samples + 7) / 8; }
    std::size_t GetSampleSize() const { return bits / 8; }

    void FillAtRandom()
    {
        std::mt19937 random(7);
        for (std::size_t i = 0; i < GetRowSize() * height; ++i)
            data.push_back(static_cast<unsigned char>(random()));
    }

    /// The samples of a rectangle, of one plane or of all; 0 outside of the picture.
    Bytes Cut(unsigned left, unsigned top, unsigned w, unsigned h, unsigned plane) const
    {
        Bytes part;
        for (unsigned y = top; y < top + h; ++y)
            for (unsigned x = left; x < left + w; ++x)
                for (unsigned s = 0; s < samples; ++s) {
                    if (isSeparate && s != plane)
                        continue;
                    const std::size_t at = y * GetRowSize() + (x * samples + s) * GetSampleSize();
                    for (std::size_t b = 0; b < GetSampleSize(); ++b)
                        part.push_back(x < width && y < height ? data[at + b]
                                                               : static_cast<unsigned char>(0));
                }
        return part;
    }

    Bytes Encode() const
    {
        TiffFile file(false);
        TIFF* const tiff = file.Get();
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
                     isSeparate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
        const auto kind = std::uint16_t(extraSample);
        if (extraSample >= 0)
            TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
        if (photometric == PHOTOMETRIC_PALETTE) {
            std::vector<std::uint16_t> ramp;
            for (unsigned i = 0; i < 1u << bits; ++i)
                ramp.push_back(std::uint16_t(i * 0x1111));
            const std::vector<std::uint16_t> zero(ramp.size(), 0);
            TIFFSetField(tiff, TIFFTAG_COLORMAP, ramp.data(), zero.data(), ramp.data());
        }
        if (compression == COMPRESSION_JPEG && photometric == PHOTOMETRIC_YCBCR)
            TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        const unsigned planes = isSeparate ? samples : 1;
        if (tileSide > 0) {
            TIFFSetField(tiff, TIFFTAG_TILEWIDTH, tileSide);
            TIFFSetField(tiff, TIFFTAG_TILELENGTH, tileSide);
            for (unsigned plane = 0; plane < planes; ++plane)
                for (unsigned y = 0; y < height; y += tileSide)
                    for (unsigned x = 0; x < width; x += tileSide)
                        TIFFWriteTile(tiff, Cut(x, y, tileSide, tileSide, plane).data(), x, y, 0,
                                      std::uint16_t(plane));
        } else {
            TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 16);
            for (unsigned plane = 0; plane < planes; ++plane)
                for (unsigned y = 0; y < height; ++y) {
                    Bytes row = bits < 8 ? Bytes(data.begin() + long(y * GetRowSize()),
                                                 data.begin() + long((y + 1) * GetRowSize()))
                                         : Cut(0, y, width, 1, plane);
                    TIFFWriteScanline(tiff, row.data(), y, std::uint16_t(plane));
                }
        }
        return file.Finish();
    }
};

/// A sample as a fraction of its range.
double GetFraction(const Source& source, unsigned x, unsigned y, unsigned sample)
{
    const std::size_t at =
        y * source.GetRowSize() + (x * source.samples + sample) * source.GetSampleSize();
    if (source.bits == 8)
        return source.data[at] / 255.0;
    std::uint16_t value = 0;
    std::memcpy(&value, &source.data[at], 2);
    return value / 65535.0;
}

} // namespace

TEST(TIFF, WrittenPicturesComeBackUnchanged)
{
    const auto profiles = MakeFullSet();
    for (const Format format : Formats) {
        for (const bool isOpaque : {false, true}) {
            SCOPED_TRACE(testing::Message() << "format " << int(format) << " opaque " << isOpaque);
            const auto profile = profiles.GetProfile(format);
            const auto bitmap = MakeRandomBitmap(format, 301, 403, false, isOpaque, profile);
            const Bytes file = Write(WriteTIFF, *bitmap);
            EXPECT_EQ(file, Write(WriteTIFF, *bitmap)); // no time of making
            const auto read = ReadImage(file);
            // a* and b* have fewer steps in the file
            ExpectSimilar(*read, *bitmap, format == Format::LABA16 ? 1 : 0);
            EXPECT_EQ(read->GetProfile().Get(), format == Format::LABA16 ? nullptr : profile.Get());
        }
    }
}

TEST(TIFF, FilesSayWhatTheirSamplesMean)
{
    const Description rgb(Write(WriteTIFF, *MakePlain(PixelRGBA8{{100, 50, 25, 128}})));
    EXPECT_EQ(rgb.Get(TIFFTAG_PHOTOMETRIC), unsigned(PHOTOMETRIC_RGB));
    EXPECT_EQ(rgb.GetExtraSample(), EXTRASAMPLE_ASSOCALPHA);
    EXPECT_EQ(Bytes(rgb.row.begin(), rgb.row.begin() + 4), (Bytes{100, 50, 25, 128}));
    const auto srgb = ICCManager::GetInstance().GetDefaultProfileForFormat(Format::RGBA8);
    EXPECT_EQ(rgb.GetProfile(), srgb->GetBytes());

    const Description cmyk(Write(WriteTIFF, *MakePlain(PixelCMYKA8{{1, 2, 3, 4, 255}})));
    EXPECT_EQ(cmyk.Get(TIFFTAG_PHOTOMETRIC), unsigned(PHOTOMETRIC_SEPARATED));
    EXPECT_EQ(cmyk.GetExtraSample(), -1);
    EXPECT_EQ(cmyk.row, (Bytes{1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 4}));
    EXPECT_TRUE(cmyk.GetProfile().empty());

    const Description grey(Write(WriteTIFF, *MakePlain(PixelIA16{{0x1234, 0x8000}})));
    EXPECT_EQ(grey.Get(TIFFTAG_PHOTOMETRIC), unsigned(PHOTOMETRIC_MINISBLACK));
    EXPECT_EQ(grey.Get(TIFFTAG_BITSPERSAMPLE), 16u);

    // L* 50, a* 10, b* −20 at half alpha: stored plain, a* and b* as signed 256ths.
    const auto encode = [](double value) { return std::uint16_t(std::lround(value * 0.5)); };
    const Description lab(
        Write(WriteTIFF, *MakePlain(PixelLABA16{{encode(32767.5), encode(138 * 257),
                                                 encode(108 * 257), encode(65535)}})));
    EXPECT_EQ(lab.Get(TIFFTAG_PHOTOMETRIC), unsigned(PHOTOMETRIC_CIELAB));
    EXPECT_EQ(lab.GetExtraSample(), EXTRASAMPLE_UNASSALPHA);
    std::int16_t samples[4];
    std::memcpy(samples, lab.row.data(), sizeof(samples));
    EXPECT_NEAR(std::uint16_t(samples[0]), 32767.5, 2);
    EXPECT_NEAR(samples[1], 10 * 256, 2);
    EXPECT_NEAR(samples[2], -20 * 256, 2);
}

TEST(TIFF, ReadsEveryLayoutOfSamples)
{
    struct Kind
    {
        unsigned photometric, colours;
        Format narrow, wide;
    };
    const Kind kinds[] = {{PHOTOMETRIC_MINISBLACK, 1, Format::IA8, Format::IA16},
                          {PHOTOMETRIC_MINISWHITE, 1, Format::IA8, Format::IA16},
                          {PHOTOMETRIC_RGB, 3, Format::RGBA8, Format::RGBA16},
                          {PHOTOMETRIC_SEPARATED, 4, Format::CMYKA8, Format::CMYKA8}};
    for (const Kind& kind : kinds)
        for (const unsigned bits : {8u, 16u})
            for (const bool isSeparate : {false, true})
                for (const unsigned tileSide : {0u, 16u})
                    for (const int extra : {-1, EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNASSALPHA}) {
                        SCOPED_TRACE(testing::Message()
                                     << kind.photometric << ' ' << bits << ' ' << isSeparate << ' '
                                     << tileSide << ' ' << extra);
                        Source source{21,
                                      19,
                                      bits,
                                      kind.colours + (extra >= 0),
                                      kind.photometric,
                                      COMPRESSION_LZW,
                                      isSeparate,
                                      tileSide,
                                      extra};
                        source.FillAtRandom();
                        const auto read = ReadTIFF(source.Encode());
                        ASSERT_EQ(read->GetFormat(), bits == 8 ? kind.narrow : kind.wide);
                        double worst = 0;
                        WithPixelOfFormat(read->GetFormat(), false, [&]<class P>(P) {
                            for (unsigned y = 0; y < 19; ++y)
                                for (unsigned x = 0; x < 21; ++x) {
                                    const P& p =
                                        reinterpret_cast<const P*>(read->GetBuffer()->GetRow(y))[x];
                                    const double alpha =
                                        extra == EXTRASAMPLE_UNASSALPHA
                                            ? GetFraction(source, x, y, kind.colours)
                                            : 1;
                                    worst = std::max(worst, std::abs(alpha * P::Max - p.Alpha()));
                                    for (unsigned c = 0; c < kind.colours; ++c) {
                                        double v = GetFraction(source, x, y, c);
                                        if (kind.photometric == PHOTOMETRIC_MINISWHITE)
                                            v = 1 - v;
                                        worst =
                                            std::max(worst, std::abs(v * alpha * P::Max - p[c]));
                                    }
                                }
                            return true;
                        });
                        EXPECT_LE(worst, bits == 16 && kind.colours == 4 ? 1.5 : 0.5001);
                    }
}

TEST(TIFF, ReadsLabAndWhatLibtiffConverts)
{
    struct LabCase
    {
        unsigned photometric, bits;
        Bytes sample; ///< L* 100, a* 10, b* −20; little-endian
    };
    for (const LabCase& c : {LabCase{PHOTOMETRIC_CIELAB, 8, {255, 10, 236}},
                             LabCase{PHOTOMETRIC_ICCLAB, 8, {255, 138, 108}},
                             LabCase{PHOTOMETRIC_CIELAB, 16, {255, 255, 0, 10, 0, 236}},
                             LabCase{PHOTOMETRIC_ICCLAB, 16, {0, 255, 0, 138, 0, 108}}}) {
        const auto read = ReadTIFF(
            Source{1, 1, c.bits, 3, c.photometric, COMPRESSION_NONE, false, 0, -1, c.sample}
                .Encode());
        ASSERT_EQ(read->GetFormat(), Format::LABA16);
        EXPECT_EQ(*reinterpret_cast<const PixelLABA16*>(read->GetBuffer()->GetRow(0)),
                  (PixelLABA16{{65535, 138 * 257, 108 * 257, 65535}}));
    }

    const auto expectFirst = [](const Source& source, const PixelRGBA8& expected, int tolerance) {
        const auto read = ReadTIFF(source.Encode());
        ASSERT_EQ(read->GetFormat(), Format::RGBA8);
        const auto& pixel = *reinterpret_cast<const PixelRGBA8*>(read->GetBuffer()->GetRow(0));
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(pixel[i], expected[i], tolerance);
    };
    expectFirst({2, 1, 4, 1, PHOTOMETRIC_PALETTE, COMPRESSION_NONE, false, 0, -1, {0x5f}},
                {{0x55, 0, 0x55, 255}}, 0);
    expectFirst({8, 1, 1, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_CCITTFAX4, false, 0, -1, {0x55}},
                {{255, 255, 255, 255}}, 0);
    Source photo{16, 16, 8, 3, PHOTOMETRIC_YCBCR, COMPRESSION_JPEG};
    for (int i = 0; i < 256; ++i)
        photo.data.insert(photo.data.end(), {200, 100, 50});
    expectFirst(photo, {{200, 100, 50, 255}}, 3);

    // Big-endian, put together by hand: 1 × 1, 16 bits, grey 0x1234.
    const Bytes bigEndian{'M', 'M', 0, 42, 0,    0,   0, 8, 0, 7,         //
                          1,   0,   0, 3,  0,    0,   0, 1, 0, 1,  0, 0,  // width
                          1,   1,   0, 3,  0,    0,   0, 1, 0, 1,  0, 0,  // height
                          1,   2,   0, 3,  0,    0,   0, 1, 0, 16, 0, 0,  // bits
                          1,   3,   0, 3,  0,    0,   0, 1, 0, 1,  0, 0,  // uncompressed
                          1,   6,   0, 3,  0,    0,   0, 1, 0, 1,  0, 0,  // min is black
                          1,   17,  0, 4,  0,    0,   0, 1, 0, 0,  0, 98, // strip offset
                          1,   23,  0, 4,  0,    0,   0, 1, 0, 0,  0, 2,  // strip size
                          0,   0,   0, 0,  0x12, 0x34};
    const auto read = ReadImage(bigEndian);
    ASSERT_EQ(read->GetFormat(), Format::IA16);
    EXPECT_EQ(*reinterpret_cast<const PixelIA16*>(read->GetBuffer()->GetRow(0)),
              (PixelIA16{{0x1234, 0xffff}}));
}

TEST(TIFF, DamageIsRefused)
{
    ReadDamaged(Write(WriteTIFF, *MakeRandomBitmap(Format::LABA16, 9, 7, true, false)), ReadTIFF,
                3000);
    for (const unsigned compression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_PACKBITS,
                                       COMPRESSION_JPEG, COMPRESSION_ADOBE_DEFLATE}) {
        Source source{24, 17, 8, 3, PHOTOMETRIC_RGB, compression, false, 16};
        source.FillAtRandom();
        ReadDamaged(source.Encode(), ReadTIFF, 1000);
        source.tileSide = 0;
        source.isSeparate = compression != COMPRESSION_JPEG;
        ReadDamaged(source.Encode(), ReadTIFF, 1000);
    }
    ReadDamaged(
        Source{2, 1, 4, 1, PHOTOMETRIC_PALETTE, COMPRESSION_NONE, false, 0, -1, {0x5f}}.Encode(),
        ReadTIFF, 2000);

    // Pictures that claim more than is allowed, or more than the file can hold.
    for (const auto& [width, height] :
         {std::pair{60000u, 60000u}, std::pair{16000u, 16000u}, std::pair{300u, 800000u},
          std::pair{4000000000u, 1u}, std::pair{1u, 4000000000u}}) {
        TiffFile file(false);
        TIFFSetField(file.Get(), TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(file.Get(), TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(file.Get(), TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(file.Get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(file.Get(), TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        TIFFSetField(file.Get(), TIFFTAG_ROWSPERSTRIP, height);
        EXPECT_THROW(ReadTIFF(file.Finish()), Kernel::FormatException) << width;
    }
}
