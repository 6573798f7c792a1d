#include <raster/PngOutput.h>

namespace Raster {

namespace {

/// An exception of the stream must not cross libpng: it is kept and thrown again outside.
void WriteBytes(png_structp png, png_bytep data, std::size_t count)
{
    auto* output = static_cast<PngOutput*>(png_get_io_ptr(png));
    try {
        output->out->Write(data, count);
        return;
    } catch (...) {
        *output->thrown = std::current_exception();
    }
    png_error(png, "cannot write");
}

void FlushNothing(png_structp) {}

} // namespace

void BeginPng(PngOutput& output)
{
    output.info = png_create_info_struct(output.png);
    if (!output.info)
        png_error(output.png, "out of memory");
    png_set_write_fn(output.png, &output, WriteBytes, FlushNothing);
    png_set_user_limits(output.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_benign_errors(output.png, 1); // a profile that libpng dislikes is left out
    png_set_compression_level(output.png, output.compression);
}

void SetPngColourSpace(PngOutput& output)
{
    if (output.profile)
        png_set_iCCP(output.png, output.info, "ICC profile", PNG_COMPRESSION_TYPE_BASE,
                     output.profile->GetBytes().data(),
                     static_cast<png_uint_32>(output.profile->GetBytes().size()));
    else
        png_set_sRGB(output.png, output.info, PNG_sRGB_INTENT_RELATIVE);
}

} // namespace Raster
