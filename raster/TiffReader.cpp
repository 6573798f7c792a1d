#include <raster/Codecs.h>

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <kernel/FormatException.h>
#include <raster/CodecSupport.h>
#include <raster/Convert.h>
#include <raster/TiffFile.h>
#include <raster/TiffSamples.h>

namespace Raster {

namespace {

[[noreturn]] void Fail(const std::string& message)
{
    throw Kernel::FormatException("damaged TIFF file: " + message);
}

/// What the tags say about the first picture of a file.
struct Layout
{
    explicit Layout(const TiffFile& file)
        : width(file.GetTag(TIFFTAG_IMAGEWIDTH, std::uint32_t{0})),
          height(file.GetTag(TIFFTAG_IMAGELENGTH, std::uint32_t{0})),
          bits(file.GetTag(TIFFTAG_BITSPERSAMPLE, std::uint16_t{1})),
          samples(file.GetTag(TIFFTAG_SAMPLESPERPIXEL, std::uint16_t{1})),
          photometric(file.GetTag(TIFFTAG_PHOTOMETRIC, std::uint16_t{0xffff})),
          compression(file.GetTag(TIFFTAG_COMPRESSION, std::uint16_t{COMPRESSION_NONE})),
          sampleFormat(file.GetTag(TIFFTAG_SAMPLEFORMAT, std::uint16_t{SAMPLEFORMAT_UINT})),
          isSeparate(file.GetTag(TIFFTAG_PLANARCONFIG, std::uint16_t{PLANARCONFIG_CONTIG}) ==
                     PLANARCONFIG_SEPARATE),
          isTiled(TIFFIsTiled(file.Get()) != 0)
    {}

    std::uint32_t width;
    std::uint32_t height;
    std::uint16_t bits;
    std::uint16_t samples;
    std::uint16_t photometric;
    std::uint16_t compression;
    std::uint16_t sampleFormat;
    bool isSeparate;
    bool isTiled;
};

/// How the samples of a pixel become our channels.
struct Decoding
{
    Format format = Format::None; ///< None: the samples are left to libtiff's own conversion
    std::array<TiffCode, 4> codes{};
    unsigned alpha = 0; ///< number of the sample; 0: there is none
    bool isPremultiplied = false;
};

Decoding ChooseColours(const Layout& layout)
{
    using enum TiffCode;
    const bool isDeep = layout.bits == 16;
    switch (layout.photometric) {
    case PHOTOMETRIC_MINISBLACK:
        return {isDeep ? Format::IA16 : Format::IA8, {Plain}};
    case PHOTOMETRIC_MINISWHITE:
        return {isDeep ? Format::IA16 : Format::IA8, {Inverted}};
    case PHOTOMETRIC_RGB:
        return {isDeep ? Format::RGBA16 : Format::RGBA8, {Plain, Plain, Plain}};
    case PHOTOMETRIC_SEPARATED:
        return {Format::CMYKA8, {Plain, Plain, Plain, Plain}};
    case PHOTOMETRIC_CIELAB:
        return {Format::LABA16, {Plain, SignedOpponent, SignedOpponent}};
    case PHOTOMETRIC_ICCLAB:
        return {Format::LABA16, {ICCLightness, ICCOpponent, ICCOpponent}};
    default:
        return {};
    }
}

std::size_t GetColourCount(Format format)
{
    return WithPixelOfFormat(format, std::size_t{0}, [](auto pixel) { return pixel.ColourCount; });
}

/// The first extra sample that is said to be alpha.
void FindAlpha(const TiffFile& file, std::size_t colours, Decoding& decoding)
{
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    if (!TIFFGetField(file.Get(), TIFFTAG_EXTRASAMPLES, &count, &kinds))
        return;
    for (unsigned i = 0; i < count; ++i) {
        if (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA)
            continue;
        decoding.alpha = unsigned(colours) + i;
        decoding.isPremultiplied =
            kinds[i] == EXTRASAMPLE_ASSOCALPHA && KeepsPremultiplied(decoding.format);
        return;
    }
}

Decoding ChooseDecoding(const TiffFile& file, const Layout& layout)
{
    const bool isInteger =
        layout.sampleFormat == SAMPLEFORMAT_UINT || layout.sampleFormat == SAMPLEFORMAT_VOID ||
        (layout.sampleFormat == SAMPLEFORMAT_INT && layout.photometric == PHOTOMETRIC_CIELAB);
    if ((layout.bits != 8 && layout.bits != 16) || !isInteger)
        return {};
    Decoding decoding = ChooseColours(layout);
    const std::size_t colours = GetColourCount(decoding.format);
    if (colours == 0 || layout.samples < colours)
        return {};
    FindAlpha(file, colours, decoding);
    if (decoding.alpha >= layout.samples)
        return {};
    return decoding;
}

/// Nothing is allocated for more pixels than the file can hold, as far as the compression has a
/// bound: PackBits makes 128 bytes of 2, Deflate 1032 of 1, LZW some 2700 of 1.
/// \pre there are no more than MaxDecodedPixels.
void CheckPlausible(const Layout& layout, std::size_t fileSize)
{
    const std::uint64_t ratio = layout.compression == COMPRESSION_NONE       ? 1
                                : layout.compression == COMPRESSION_PACKBITS ? 64
                                : layout.compression == COMPRESSION_LZW      ? 4096
                                : layout.compression == COMPRESSION_DEFLATE ||
                                        layout.compression == COMPRESSION_ADOBE_DEFLATE
                                    ? 1032
                                    : std::uint64_t{1} << 32;
    // Subsampled colour takes some room too, but how much is left to the decoder.
    const unsigned samples = layout.photometric == PHOTOMETRIC_YCBCR ? 1 : layout.samples;
    const std::uint64_t bits =
        std::uint64_t{layout.width} * layout.height * layout.bits * samples; // below 2⁶⁰
    if (bits / 8 / ratio > fileSize)
        Fail("less data than its size needs");
}

/// Reads the samples of a picture as they are stored, strip by strip or tile by tile.
template<class P, class Sample>
class SampleReader
{
public:
    SampleReader(const TiffFile& file, const Layout& layout, const Decoding& decoding,
                 DynamicBuffer& buffer)
        : m_file(file), m_layout(layout), m_decoding(decoding), m_buffer(buffer)
    {}

    void Read()
    {
        const std::uint16_t planes = m_layout.isSeparate ? m_layout.samples : std::uint16_t{1};
        for (std::uint16_t plane = 0; plane < planes; ++plane) {
            if (m_layout.isSeparate && !IsUsed(plane))
                continue;
            if (m_layout.isTiled)
                ReadTiles(plane);
            else
                ReadScanlines(plane);
        }
        for (unsigned y = 0; y < m_layout.height; ++y)
            FinishRow(GetRow(y));
    }

private:
    P* GetRow(unsigned y) const { return reinterpret_cast<P*>(m_buffer.GetRow(y)); }
    bool IsUsed(unsigned sample) const
    {
        return sample < P::ColourCount || sample == m_decoding.alpha;
    }
    /// Samples from one pixel to the next.
    std::size_t GetStep() const { return m_layout.isSeparate ? 1 : m_layout.samples; }

    void ReadScanlines(std::uint16_t plane)
    {
        const auto size = TIFFScanlineSize64(m_file.Get());
        if (size < sizeof(Sample) * GetStep() * m_layout.width)
            Fail("unexpected layout of rows");
        std::vector<Sample> row(std::size_t(size) / sizeof(Sample) + 1);
        for (unsigned y = 0; y < m_layout.height; ++y) {
            if (TIFFReadScanline(m_file.Get(), row.data(), y, plane) < 0)
                Fail(m_file.GetError());
            Decode(row.data(), plane, GetRow(y), m_layout.width);
        }
    }

    void ReadTiles(std::uint16_t plane)
    {
        const unsigned width = m_file.GetTag(TIFFTAG_TILEWIDTH, 0U);
        const unsigned height = m_file.GetTag(TIFFTAG_TILELENGTH, 0U);
        constexpr std::uint64_t maxTile = 1 << 28;
        const auto size = TIFFTileSize64(m_file.Get());
        const std::uint64_t needed = sizeof(Sample) * GetStep() * width * height;
        if (width == 0 || height == 0 || width > maxTile / height || size > 8 * maxTile ||
            size < needed)
            Fail("tiles of an impossible size");
        std::vector<Sample> tile(std::size_t(size) / sizeof(Sample) + 1);
        for (unsigned top = 0; top < m_layout.height; top += height) {
            for (unsigned left = 0; left < m_layout.width; left += width) {
                if (TIFFReadTile(m_file.Get(), tile.data(), left, top, 0, plane) < 0)
                    Fail(m_file.GetError());
                const unsigned count = std::min(width, m_layout.width - left);
                for (unsigned y = 0; y < std::min(height, m_layout.height - top); ++y)
                    Decode(tile.data() + std::size_t{y} * width * GetStep(), plane,
                           GetRow(top + y) + left, count);
            }
        }
    }

    /// Decodes a stretch of pixels; of separate planes, the channel that \p plane holds.
    void Decode(const Sample* samples, unsigned plane, P* pixels, std::size_t count) const
    {
        for (unsigned channel = 0; channel < P::ChannelCount; ++channel) {
            const bool isAlpha = channel == P::AlphaIndex;
            if (isAlpha && m_decoding.alpha == 0)
                continue;
            const unsigned sample = isAlpha ? m_decoding.alpha : channel;
            if (m_layout.isSeparate && sample != plane)
                continue;
            DecodeTiffChannel(isAlpha ? TiffCode::Plain : m_decoding.codes[channel],
                              samples + (m_layout.isSeparate ? 0 : sample), GetStep(), pixels,
                              count, channel);
        }
    }

    /// Gives the row its alpha and makes it premultiplied.
    void FinishRow(P* row) const
    {
        if (m_decoding.alpha == 0) {
            for (unsigned x = 0; x < m_layout.width; ++x)
                row[x].Alpha() = P::Max;
        } else if (!m_decoding.isPremultiplied) {
            Premultiply(FormatOfPixel<P>, row, m_layout.width);
        } else {
            for (unsigned x = 0; x < m_layout.width; ++x)
                for (std::size_t c = 0; c < P::ColourCount; ++c)
                    row[x][c] = std::min(row[x][c], row[x].Alpha());
        }
    }

    const TiffFile& m_file;
    const Layout& m_layout;
    const Decoding& m_decoding;
    DynamicBuffer& m_buffer;
};

void ReadSamples(const TiffFile& file, const Layout& layout, const Decoding& decoding,
                 DynamicBuffer& buffer)
{
    WithPixelOfFormat(decoding.format, false, [&]<class P>(P) {
        if constexpr (std::is_integral_v<typename P::ChannelType> && P::ColourCount > 0) {
            if (layout.bits == 8)
                SampleReader<P, std::uint8_t>(file, layout, decoding, buffer).Read();
            else
                SampleReader<P, std::uint16_t>(file, layout, decoding, buffer).Read();
        }
        return true;
    });
}

/// Palettes, few bits, YCbCr and the like: libtiff makes RGBA of them, premultiplied.
void ReadConverted(const TiffFile& file, const Layout& layout, DynamicBuffer& buffer)
{
    struct End
    {
        void operator()(TIFFRGBAImage* image) const noexcept { TIFFRGBAImageEnd(image); }
    };
    TIFFRGBAImage image;
    char message[1024] = "";
    if (!TIFFRGBAImageOK(file.Get(), message))
        throw Kernel::FormatException("TIFF file of an unsupported kind: " + std::string(message));
    if (!TIFFRGBAImageBegin(&image, file.Get(), 1, message))
        Fail(message);
    const std::unique_ptr<TIFFRGBAImage, End> end(&image);
    image.req_orientation = image.orientation; // rows as they are stored
    std::vector<std::uint32_t> pixels(std::size_t{layout.width} * layout.height);
    if (!TIFFRGBAImageGet(&image, pixels.data(), layout.width, layout.height))
        Fail(file.GetError());
    for (unsigned y = 0; y < layout.height; ++y) {
        auto* row = reinterpret_cast<PixelRGBA8*>(buffer.GetRow(y));
        const std::uint32_t* packed = pixels.data() + std::size_t{y} * layout.width;
        for (unsigned x = 0; x < layout.width; ++x) {
            row[x].Alpha() = std::uint8_t(TIFFGetA(packed[x]));
            row[x][0] = std::min<std::uint8_t>(std::uint8_t(TIFFGetR(packed[x])), row[x].Alpha());
            row[x][1] = std::min<std::uint8_t>(std::uint8_t(TIFFGetG(packed[x])), row[x].Alpha());
            row[x][2] = std::min<std::uint8_t>(std::uint8_t(TIFFGetB(packed[x])), row[x].Alpha());
        }
    }
}

Kernel::Counted<const ICCProfile> ReadProfile(const TiffFile& file, Format format)
{
    std::uint32_t size = 0;
    const unsigned char* bytes = nullptr;
    if (!TIFFGetField(file.Get(), TIFFTAG_ICCPROFILE, &size, &bytes) || !bytes)
        return nullptr;
    return ReadEmbeddedProfile({bytes, size}, format);
}

} // namespace

Kernel::Counted<const DynamicBitmap> ReadTIFF(std::span<const unsigned char> bytes,
                                              std::uint64_t maxPixels)
{
    const TiffFile file(bytes);
    if (!file.Get())
        throw Kernel::FormatException("this is not a TIFF file: " + file.GetError(), 0);
    const Layout layout(file);
    const Decoding decoding = ChooseDecoding(file, layout);
    const bool isConverted = decoding.format == Format::None;
    const Format format = isConverted ? Format::RGBA8 : decoding.format;
    if (std::uint64_t{layout.width} * layout.height > maxPixels)
        throw Kernel::FormatException("the picture is too large");
    CheckPlausible(layout, bytes.size());
    const auto buffer = MakeDecodedBuffer(format, layout.width, layout.height, maxPixels);
    if (isConverted)
        ReadConverted(file, layout, *buffer);
    else
        ReadSamples(file, layout, decoding, *buffer);
    return Kernel::MakeCounted<const DynamicBitmap>(buffer, ReadProfile(file, format));
}

} // namespace Raster
