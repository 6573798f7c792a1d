#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include <kernel/Export.h>
#include <kernel/String.h>

namespace Kernel {

/// Gives the text for a key in the user's language, or nothing when it does not know the key.
/// Called from any thread, several at once.
using LocaliseHook = std::function<std::optional<String>(std::string_view key)>;

/// The text that users see for \p key: what the host's hook says, else \p fallback.
KERNEL_EXPORT String Localise(std::string_view key, std::string_view fallback);

/// Sets the host's hook; an empty function takes it away. Calls of Localise() that are under way
/// may still use the one before.
KERNEL_EXPORT void SetLocaliseHook(LocaliseHook hook);

} // namespace Kernel
