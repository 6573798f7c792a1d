#include <raster/PngProtect.h>

#include <cstdio>

namespace Raster {

void RaisePngError(png_structp png, png_const_charp message)
{
    auto* error = static_cast<PngError*>(png_get_error_ptr(png));
    std::snprintf(error->message, sizeof(error->message), "%s", message);
    png_longjmp(png, 1);
}

void IgnorePngWarning(png_structp, png_const_charp) {}

} // namespace Raster
