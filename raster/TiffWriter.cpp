#include <raster/Codecs.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

#include <raster/CodecSupport.h>
#include <raster/Convert.h>
#include <raster/ICCLayout.h>
#include <raster/ICCManager.h>
#include <raster/TiffFile.h>
#include <raster/TiffSamples.h>

namespace Raster {

namespace {

constexpr std::size_t StripBytes = 1 << 18;

bool IsSupported(Format format)
{
    const auto layout = GetICCLayout(format);
    return layout && layout->depth != ICCDepth::Float;
}

std::uint16_t GetPhotometric(Format format)
{
    switch (format) {
    case Format::CMYKA8:
        return PHOTOMETRIC_SEPARATED;
    case Format::LABA16:
        return PHOTOMETRIC_CIELAB;
    default:
        return IsGrey(format) ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB;
    }
}

/// TIFF has no mark for sRGB: what the colours are is told by a profile even if it is the default.
/// Lab needs none: the encoding says it, together with the white point.
Kernel::Counted<const ICCProfile> ChooseProfile(const DynamicBitmap& bitmap)
{
    const Format format = bitmap.GetFormat();
    auto profile = GetProfileToEmbed(format, bitmap.GetProfile());
    if (!profile && format != Format::LABA16)
        profile = ICCManager::GetInstance().GetDefaultProfileForFormat(format);
    return profile;
}

/// One picture on its way into a file.
class Writer
{
public:
    explicit Writer(const DynamicBitmap& bitmap)
        : m_buffer(bitmap.GetPixels()),
          m_format(bitmap.GetFormat()),
          m_isOpaque(Raster::IsOpaque(m_buffer)),
          m_file(GetRawSize() > MaxClassicSize)
    {
        if (!m_file.Get())
            m_file.FailWriting();
        WithPixelOfFormat(m_format, false, [&]<class P>(P) {
            SetTags<P>(ChooseProfile(bitmap));
            WriteRows<P>();
            return true;
        });
    }

    std::vector<unsigned char> Finish() { return m_file.Finish(); }

private:
    /// Offsets of 32 bits must reach over everything, with room for rows that do not shrink.
    static constexpr std::uint64_t MaxClassicSize = 0xe0000000;

    std::uint64_t GetRawSize() const
    {
        return std::uint64_t{m_buffer.GetPixelSize()} * m_buffer.GetWidth() * m_buffer.GetHeight();
    }

    template<class... Values>
    void Set(std::uint32_t tag, Values... values)
    {
        if (!TIFFSetField(m_file.Get(), tag, values...))
            m_file.FailWriting();
    }

    template<class P>
    void SetTags(const Kernel::Counted<const ICCProfile>& profile)
    {
        constexpr unsigned bits = 8 * sizeof(typename P::ChannelType);
        const std::size_t samples = P::ChannelCount - (m_isOpaque ? 1 : 0);
        const std::size_t rowBytes =
            samples * sizeof(typename P::ChannelType) * m_buffer.GetWidth();
        Set(TIFFTAG_IMAGEWIDTH, m_buffer.GetWidth());
        Set(TIFFTAG_IMAGELENGTH, m_buffer.GetHeight());
        Set(TIFFTAG_SAMPLESPERPIXEL, unsigned(samples));
        Set(TIFFTAG_BITSPERSAMPLE, bits);
        Set(TIFFTAG_PHOTOMETRIC, unsigned(GetPhotometric(m_format)));
        Set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        Set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
        Set(TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        Set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        Set(TIFFTAG_ROWSPERSTRIP,
            unsigned(std::clamp<std::size_t>(StripBytes / rowBytes, 1, m_buffer.GetHeight())));
        Set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_NONE);
        Set(TIFFTAG_XRESOLUTION, 1.0);
        Set(TIFFTAG_YRESOLUTION, 1.0);
        if (m_format == Format::CMYKA8)
            Set(TIFFTAG_INKSET, INKSET_CMYK);
        if (m_format == Format::LABA16) {
            const std::array<float, 2> d50{0.3457F, 0.3585F};
            Set(TIFFTAG_WHITEPOINT, d50.data());
        }
        if (!m_isOpaque) {
            const std::array<std::uint16_t, 1> alpha{std::uint16_t(
                KeepsPremultiplied(m_format) ? EXTRASAMPLE_ASSOCALPHA : EXTRASAMPLE_UNASSALPHA)};
            Set(TIFFTAG_EXTRASAMPLES, 1U, alpha.data());
        }
        if (profile)
            Set(TIFFTAG_ICCPROFILE, unsigned(profile->GetBytes().size()),
                profile->GetBytes().data());
    }

    template<class P>
    void WriteRows()
    {
        const unsigned width = m_buffer.GetWidth();
        std::vector<P> row(width);
        std::vector<typename P::ChannelType> samples(width * P::ChannelCount);
        for (unsigned y = 0; y < m_buffer.GetHeight(); ++y) {
            std::copy_n(reinterpret_cast<const P*>(m_buffer.GetRow(y)), width, row.data());
            if (!KeepsPremultiplied(m_format))
                Unpremultiply(m_format, row.data(), width);
            EncodeTiffRow(row.data(), width, m_isOpaque, samples.data());
            if (TIFFWriteScanline(m_file.Get(), samples.data(), y, 0) < 0)
                m_file.FailWriting();
        }
    }

    const DynamicBuffer& m_buffer;
    Format m_format;
    bool m_isOpaque;
    TiffFile m_file;
};

} // namespace

void WriteTIFF(Kernel::OutStream& out, const DynamicBitmap& bitmap)
{
    if (!IsSupported(bitmap.GetFormat()))
        throw std::invalid_argument("TIFF files are written from pictures of 8 or 16 bits");
    const std::vector<unsigned char> bytes = Writer(bitmap).Finish();
    out.Write(bytes.data(), bytes.size());
}

} // namespace Raster
