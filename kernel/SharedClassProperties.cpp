#include <kernel/SharedClassProperties.h>

#include <mutex>
#include <unordered_map>
#include <vector>

namespace Kernel {

struct SharedClassProperties::Table
{
    /// The count has an address of its own here: it is a virtual base, and the way to it from an
    /// object that another thread is destroying would read what the destructor changes.
    struct Instance
    {
        const SharedSerialisable* object;
        const Countable* count;
    };

    mutable std::mutex mutex;
    std::unordered_multimap<std::uint64_t, Instance> instances;
};

SharedClassProperties::SharedClassProperties() : m_table(std::make_unique<Table>()) {}

SharedClassProperties::~SharedClassProperties() = default;

std::size_t SharedClassProperties::GetInstanceCount() const
{
    const std::lock_guard lock(m_table->mutex);
    return m_table->instances.size();
}

const SharedSerialisable* SharedClassProperties::Consolidate(SharedSerialisable& object)
{
    if (object.m_record) {
        object.Retain();
        return &object;
    }
    HashAccumulator accumulator;
    object.AccumulateHash(accumulator);
    const std::uint64_t hash = accumulator.GetHash();
    const SharedClassProperties& record = object.GetObjectSharedClassProperties();

    // Candidates are retained before they are looked at, because an entry whose count is 0 belongs
    // to an object under destruction. They are released after the lock: the last release removes
    // the candidate's own entry, which takes the lock again.
    std::vector<Counted<const SharedSerialisable>> candidates;
    const std::lock_guard lock(record.m_table->mutex);
    const auto [first, last] = record.m_table->instances.equal_range(hash);
    for (auto entry = first; entry != last; ++entry) {
        const auto [candidate, count] = entry->second;
        if (!count->TryRetain())
            continue;
        candidates.push_back(Counted<const SharedSerialisable>::Adopt(candidate));
        if (candidate->CompareMembers(object)) {
            candidate->Retain();
            return candidate;
        }
    }
    record.m_table->instances.emplace(hash, Table::Instance{&object, &object});
    object.m_record = &record;
    object.m_hash = hash;
    object.Retain();
    return &object;
}

void SharedClassProperties::Remove(const SharedSerialisable& object, std::uint64_t hash) const
{
    const std::lock_guard lock(m_table->mutex);
    const auto [first, last] = m_table->instances.equal_range(hash);
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second.object == &object) {
            m_table->instances.erase(entry);
            return;
        }
    }
}

} // namespace Kernel
