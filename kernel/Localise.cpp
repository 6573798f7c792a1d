#include <kernel/Localise.h>

#include <memory>
#include <mutex>
#include <utility>

namespace Kernel {
namespace {

struct HookHolder
{
    std::mutex mutex;
    std::shared_ptr<const LocaliseHook> hook;
};

HookHolder& GetHolder()
{
    // Never destroyed, so that names may be localised until the program's very end.
    static HookHolder& holder = *new HookHolder;
    return holder;
}

} // namespace

String Localise(std::string_view key, std::string_view fallback)
{
    std::shared_ptr<const LocaliseHook> hook;
    {
        const std::lock_guard lock(GetHolder().mutex);
        hook = GetHolder().hook;
    }
    // Called without the lock: a hook may take its time, and localise other keys.
    if (hook) {
        if (std::optional<String> text = (*hook)(key))
            return *std::move(text);
    }
    return String(fallback);
}

void SetLocaliseHook(LocaliseHook hook)
{
    auto replacement = hook ? std::make_shared<const LocaliseHook>(std::move(hook)) : nullptr;
    const std::lock_guard lock(GetHolder().mutex);
    GetHolder().hook.swap(replacement); // the one before is destroyed after the lock
}

} // namespace Kernel
