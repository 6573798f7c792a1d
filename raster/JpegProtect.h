#pragma once

#include <csetjmp>
#include <cstddef>
#include <cstdio> // jpeglib.h needs it first

#include <jpeglib.h>

namespace Raster {

/// libjpeg's error manager with a place to jump to and the last message. \c base comes first, so
/// that a pointer to it is one to the whole.
struct JpegError
{
    jpeg_error_mgr base;
    std::jmp_buf target;
    char message[JMSG_LENGTH_MAX];
};

/// Makes the manager: errors, and warnings that mean damaged data, jump to RunJpegStep.
jpeg_error_mgr* InitialiseJpegError(JpegError& error);

/// Ends the running step with a message of our own.
[[noreturn]] void RaiseJpegError(j_common_ptr codec, const char* message);

/// Calls \p step, out of which libjpeg may jump. As with libpng's: \p step and what it calls own
/// nothing, and everything they change is in \p state.
/// \return false after an error.
template<class State>
bool RunJpegStep(JpegError& error, void (*step)(State&), State& state) noexcept
{
    if (setjmp(error.target))
        return false;
    step(state);
    return true;
}

} // namespace Raster
