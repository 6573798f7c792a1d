#pragma once

#include <atomic>

namespace Renderer {

/// Reads an abort flag, which other threads may write. \param abort may be null: never aborted.
inline bool IsAbortSet(const bool* abort)
{
    return abort &&
           std::atomic_ref<bool>(*const_cast<bool*>(abort)).load(std::memory_order_relaxed);
}

} // namespace Renderer
