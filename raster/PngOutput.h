#pragma once

#include <exception>
#include <memory>
#include <new>
#include <string>

#include <kernel/OutStream.h>
#include <raster/ICCProfile.h>
#include <raster/PngProtect.h>

namespace Raster {

/// What every PNG file that is written needs while libpng may jump; owns only the libpng
/// structures. Writers derive their own state from it.
struct PngOutput
{
    PngError error;
    png_structp png;
    png_infop info;
    Kernel::OutStream* out;
    std::exception_ptr* thrown; ///< by the stream
    const ICCProfile* profile;  ///< null for sRGB
    int compression;            ///< 0 to 9
};

struct PngOutputCloser
{
    void operator()(PngOutput* output) const noexcept
    {
        png_destroy_write_struct(&output->png, &output->info);
    }
};

/// Begins a file: connects the stream and sets limits and compression. May jump.
void BeginPng(PngOutput& output);

/// Adds the profile, or the mark of sRGB. May jump.
void SetPngColourSpace(PngOutput& output);

/// Runs a step that writes a whole file.
/// \throws what the stream throws; WriteException when libpng fails.
template<class State>
void WritePngFile(Kernel::OutStream& out, void (*step)(State&), State& state)
{
    std::exception_ptr thrown;
    state.out = &out;
    state.thrown = &thrown;
    state.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &state.error, RaisePngError,
                                        IgnorePngWarning);
    if (!state.png)
        throw std::bad_alloc();
    const std::unique_ptr<PngOutput, PngOutputCloser> closer(&state);

    const bool isDone = RunPngStep(state.png, step, state);
    if (thrown)
        std::rethrow_exception(thrown);
    if (!isDone)
        throw Kernel::OutStream::WriteException("cannot write PNG: " +
                                                std::string(state.error.message));
}

} // namespace Raster
