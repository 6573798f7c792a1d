#include <kernel/ClassPropertiesBase.h>

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <unordered_map>

namespace Kernel {
namespace {

struct Registry
{
    std::shared_mutex mutex;
    std::unordered_map<ClassUID, const ClassPropertiesBase*> records;
};

Registry& GetRegistry()
{
    static auto& registry = *new Registry; // outlives every static object
    return registry;
}

} // namespace

ClassPropertiesBase::ClassPropertiesBase(ClassUID uid, unsigned short version,
                                         const DefaultItem* defaults, const char* name, bool shared)
    : m_uid(uid), m_version(version), m_shared(shared), m_defaults(defaults), m_name(name)
{
    Registry& registry = GetRegistry();
    const std::lock_guard lock(registry.mutex);
    if (!registry.records.emplace(uid, this).second)
        throw std::logic_error("two classes have the identifier " + uid.ToString());
}

const ClassPropertiesBase* ClassPropertiesBase::Find(ClassUID uid)
{
    Registry& registry = GetRegistry();
    const std::shared_lock lock(registry.mutex);
    const auto found = registry.records.find(uid);
    return found == registry.records.end() ? nullptr : found->second;
}

std::vector<const ClassPropertiesBase*> ClassPropertiesBase::GetAll()
{
    std::vector<const ClassPropertiesBase*> all;
    {
        Registry& registry = GetRegistry();
        const std::shared_lock lock(registry.mutex);
        for (const auto& [uid, record] : registry.records)
            all.push_back(record);
    }
    std::ranges::sort(all, {}, &ClassPropertiesBase::GetClassUID);
    return all;
}

} // namespace Kernel
