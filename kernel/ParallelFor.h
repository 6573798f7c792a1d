#pragma once

#include <kernel/Dispatch.h>

namespace Kernel::Dispatch {

/// The back-end of DispatchParallelFor: at most \p threads threads, the caller's included, share
/// the indices. \p priority is 0, 1 or 2; \p count and \p threads are at least 2.
void ParallelFor(Body body, unsigned count, void* context, int priority, unsigned threads);

} // namespace Kernel::Dispatch
