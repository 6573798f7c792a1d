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

    /// Candidates are retained before they are looked at, because an entry whose count is 0 belongs
    /// to an object under destruction. They are released after the lock: the last release removes
    /// the candidate's own entry, which takes the lock again.
    using Candidates = std::vector<Counted<const SharedSerialisable>>;

    /// \return the instance that equals \p object, with one reference added, or null.
    const SharedSerialisable* Find(const SharedSerialisable& object, std::uint64_t hash,
                                   Candidates& candidates) const
    {
        const auto [first, last] = instances.equal_range(hash);
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
        return nullptr;
    }

    mutable std::mutex mutex;
    std::unordered_multimap<std::uint64_t, Instance> instances;
};

namespace {

std::uint64_t FindHash(const SharedSerialisable& object)
{
    HashAccumulator accumulator;
    object.AccumulateHash(accumulator);
    return accumulator.GetHash();
}

} // namespace

SharedClassProperties::SharedClassProperties(ClassUID uid, Factory factory, unsigned short version,
                                             const DefaultItem* defaults,
                                             const SharedClassProperties* base, const char* name)
    : ClassPropertiesBase(uid, version, defaults, name, true),
      m_factory(factory),
      m_base(base),
      m_table(std::make_unique<Table>())
{}

SharedClassProperties::SharedClassProperties() : m_table(std::make_unique<Table>()) {}

SharedClassProperties::~SharedClassProperties() = default;

std::size_t SharedClassProperties::GetInstanceCount() const
{
    const std::lock_guard lock(m_table->mutex);
    return m_table->instances.size();
}

const SharedSerialisable* SharedClassProperties::FindCanonical(const SharedSerialisable& object)
{
    if (object.m_record) {
        object.Retain();
        return &object;
    }
    const std::uint64_t hash = FindHash(object);
    const Table& table = *object.GetObjectSharedClassProperties().m_table;
    Table::Candidates candidates; // released after the lock
    const std::lock_guard lock(table.mutex);
    return table.Find(object, hash, candidates);
}

const SharedSerialisable* SharedClassProperties::Consolidate(SharedSerialisable& object)
{
    if (object.m_record) {
        object.Retain();
        return &object;
    }
    const std::uint64_t hash = FindHash(object);
    const SharedClassProperties& record = object.GetObjectSharedClassProperties();
    Table::Candidates candidates; // released after the lock
    const std::lock_guard lock(record.m_table->mutex);
    if (const SharedSerialisable* known = record.m_table->Find(object, hash, candidates))
        return known;
    record.m_table->instances.emplace(hash, Table::Instance{&object, &object});
    object.m_record = &record;
    object.m_hash = hash;
    object.Retain();
    return &object;
}

bool SharedClassProperties::AddAsConsolidated(const Counted<SharedSerialisable>& object)
{
    const auto canonical = Counted<const SharedSerialisable>::Adopt(Consolidate(*object));
    return canonical == object;
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
