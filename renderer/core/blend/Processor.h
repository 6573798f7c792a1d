#pragma once

#include <kernel/Processor.h>

namespace Renderer::Blending {

using Kernel::BaselineCode;
using Kernel::HasWideCode;
using Kernel::WideCode;

} // namespace Renderer::Blending
