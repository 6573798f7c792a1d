#include <kernel/OutStream.h>

namespace Kernel {

OutStream::WriteException::~WriteException() = default;

OutStream::~OutStream() = default;

} // namespace Kernel
