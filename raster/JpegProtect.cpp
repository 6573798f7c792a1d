#include <raster/JpegProtect.h>

#include <jerror.h>

namespace Raster {

namespace {

JpegError& GetError(j_common_ptr codec)
{
    return *reinterpret_cast<JpegError*>(codec->err);
}

[[noreturn]] void ExitWithError(j_common_ptr codec)
{
    JpegError& error = GetError(codec);
    error.base.format_message(codec, error.message);
    std::longjmp(error.target, 1);
}

/// Warnings that mean missing or wrong picture data; libjpeg itself would go on with grey.
bool IsDamage(int code)
{
    return code == JWRN_HIT_MARKER || code == JWRN_HUFF_BAD_CODE || code == JWRN_JPEG_EOF ||
           code == JWRN_MUST_RESYNC || code == JWRN_ARITH_BAD_CODE;
}

void EmitMessage(j_common_ptr codec, int level)
{
    if (level < 0 && IsDamage(codec->err->msg_code))
        ExitWithError(codec);
}

void PrintNothing(j_common_ptr) {}

} // namespace

jpeg_error_mgr* InitialiseJpegError(JpegError& error)
{
    jpeg_std_error(&error.base);
    error.base.error_exit = ExitWithError;
    error.base.emit_message = EmitMessage;
    error.base.output_message = PrintNothing;
    error.message[0] = 0;
    return &error.base;
}

void RaiseJpegError(j_common_ptr codec, const char* message)
{
    JpegError& error = GetError(codec);
    std::snprintf(error.message, sizeof(error.message), "%s", message);
    std::longjmp(error.target, 1);
}

} // namespace Raster
