#pragma once

#include <csetjmp>

#include <png.h>

namespace Raster {

/// What went wrong inside libpng, kept where its error function can reach it.
struct PngError
{
    char message[128];
};

/// libpng's error function: keeps the message and jumps to RunPngStep.
[[noreturn]] void RaisePngError(png_structp png, png_const_charp message);
void IgnorePngWarning(png_structp png, png_const_charp message);

/// Calls \p step, out of which libpng may jump.
///
/// The jump skips destructors and C++ objects changed between must not be kept in registers:
/// \p step and what it calls own nothing, and everything they change is in \p state.
/// \return false after an error.
template<class State>
bool RunPngStep(png_structp png, void (*step)(State&), State& state) noexcept
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    step(state);
    return true;
}

} // namespace Raster
