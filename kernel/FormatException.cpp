#include <kernel/FormatException.h>

namespace Kernel {

FormatException::~FormatException() = default;

} // namespace Kernel
