#include <raster/Codecs.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <webp/encode.h>
#include <webp/mux.h>

#include <raster/CodecSupport.h>
#include <raster/Convert.h>
#include <raster/Pixel.h>

namespace Raster {

namespace {

struct FreePicture
{
    void operator()(WebPPicture* picture) const noexcept { WebPPictureFree(picture); }
};
struct DeleteMux
{
    void operator()(WebPMux* mux) const noexcept { WebPMuxDelete(mux); }
};
struct ClearData
{
    void operator()(WebPData* data) const noexcept { WebPDataClear(data); }
};

[[noreturn]] void Fail(const std::string& what)
{
    throw Kernel::OutStream::WriteException("cannot write WebP: " + what);
}

/// libwebp's encoder wants to hear no exceptions.
int AppendBytes(const std::uint8_t* data, std::size_t size, const WebPPicture* picture)
{
    try {
        auto& bytes = *static_cast<std::vector<std::uint8_t>*>(picture->custom_ptr);
        bytes.insert(bytes.end(), data, data + size);
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}

WebPConfig MakeConfig(std::optional<int> quality)
{
    WebPConfig config;
    if (!WebPConfigPreset(&config, WEBP_PRESET_DEFAULT, float(quality.value_or(100))))
        Fail("the library is of another version");
    if (quality) {
        config.use_sharp_yuv = 1; // colour has half the resolution: keeps thin coloured lines
    } else {
        // Level 4 of 0 to 9. Higher ones save a few percent and take several times as long.
        WebPConfigLosslessPreset(&config, 4);
        config.exact = 1;
    }
    return config;
}

/// Puts unpremultiplied pixels into the encoder's picture, as 0xAARRGGBB.
void FillPicture(const DynamicBuffer& buffer, WebPPicture& picture)
{
    std::vector<PixelRGBA8> row(buffer.GetWidth());
    for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
        std::copy_n(reinterpret_cast<const PixelRGBA8*>(buffer.GetRow(y)), row.size(), row.data());
        Unpremultiply(Format::RGBA8, row.data(), row.size());
        std::uint32_t* packed = picture.argb + std::ptrdiff_t(y) * picture.argb_stride;
        for (const PixelRGBA8& pixel : row)
            *packed++ = std::uint32_t{pixel[3]} << 24 | std::uint32_t{pixel[0]} << 16 |
                        std::uint32_t{pixel[1]} << 8 | pixel[2];
    }
}

std::vector<std::uint8_t> Encode(const DynamicBuffer& buffer, std::optional<int> quality)
{
    const WebPConfig config = MakeConfig(quality);
    WebPPicture picture;
    if (!WebPPictureInit(&picture))
        Fail("the library is of another version");
    const std::unique_ptr<WebPPicture, FreePicture> owner(&picture);
    std::vector<std::uint8_t> bytes;
    picture.use_argb = 1;
    picture.width = int(buffer.GetWidth());
    picture.height = int(buffer.GetHeight());
    picture.writer = AppendBytes;
    picture.custom_ptr = &bytes;
    if (!WebPPictureAlloc(&picture))
        throw std::bad_alloc();
    FillPicture(buffer, picture);
    if (!WebPEncode(&config, &picture)) {
        if (picture.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ||
            picture.error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY ||
            picture.error_code == VP8_ENC_ERROR_BAD_WRITE)
            throw std::bad_alloc();
        Fail("error " + std::to_string(int(picture.error_code)) + " of the encoder");
    }
    return bytes;
}

/// The container with the profile before the picture.
void WriteWithProfile(Kernel::OutStream& out, const std::vector<std::uint8_t>& picture,
                      const ICCProfile& profile)
{
    const std::unique_ptr<WebPMux, DeleteMux> mux(WebPMuxNew());
    if (!mux)
        throw std::bad_alloc();
    const WebPData pictureData{picture.data(), picture.size()};
    const WebPData profileData{profile.GetBytes().data(), profile.GetBytes().size()};
    WebPData file{};
    const std::unique_ptr<WebPData, ClearData> owner(&file);
    if (WebPMuxSetImage(mux.get(), &pictureData, 0) != WEBP_MUX_OK ||
        WebPMuxSetChunk(mux.get(), "ICCP", &profileData, 0) != WEBP_MUX_OK ||
        WebPMuxAssemble(mux.get(), &file) != WEBP_MUX_OK)
        Fail("the profile does not fit");
    out.Write(file.bytes, file.size);
}

} // namespace

void WriteWebP(Kernel::OutStream& out, const DynamicBitmap& bitmap, std::optional<int> quality)
{
    if (bitmap.GetFormat() != Format::RGBA8)
        throw std::invalid_argument("WebP files hold RGB pictures of 8 bits");
    if (quality && (*quality < 1 || *quality > 100))
        throw std::invalid_argument("the quality of a WebP file is from 1 to 100");
    if (bitmap.GetWidth() > WEBP_MAX_DIMENSION || bitmap.GetHeight() > WEBP_MAX_DIMENSION)
        throw std::invalid_argument("the sides of a WebP picture have at most 16383 pixels");
    const auto profile = GetProfileToEmbed(Format::RGBA8, bitmap.GetProfile());
    const std::vector<std::uint8_t> picture = Encode(bitmap.GetPixels(), quality);
    if (profile)
        WriteWithProfile(out, picture, *profile);
    else
        out.Write(picture.data(), picture.size());
}

} // namespace Raster
