#include <kernel/SharedClassProperties.h>

#include <mutex>
#include <vector>

namespace Kernel {

/// A hash table whose entries are the canonical instances themselves, chained.
struct SharedClassProperties::Table
{
    /// Candidates are retained before they are looked at, because an entry whose count is 0 belongs
    /// to an object under destruction. They are released after the lock: the last release removes
    /// the candidate's own entry, which takes the lock again.
    using Candidates = std::vector<Counted<const SharedSerialisable>>;

    const SharedSerialisable*& GetChain(std::uint64_t hash) noexcept
    {
        return chains[static_cast<std::size_t>(hash) & (chains.size() - 1)];
    }

    /// \return the instance that equals \p object, with one reference added, or null.
    const SharedSerialisable* Find(const SharedSerialisable& object, std::uint64_t hash,
                                   Candidates& candidates)
    {
        for (const auto* entry = GetChain(hash); entry; entry = entry->m_next) {
            if (entry->m_hash != hash || !entry->m_count->TryRetain())
                continue;
            candidates.push_back(Counted<const SharedSerialisable>::Adopt(entry));
            if (entry->CompareMembers(object)) {
                entry->Retain();
                return entry;
            }
        }
        return nullptr;
    }

    /// \pre the object's hash is set.
    void Add(const SharedSerialisable& object)
    {
        if (count == chains.size())
            Grow();
        Link(object);
        ++count;
    }

    void Remove(const SharedSerialisable& object) noexcept
    {
        const SharedSerialisable** link = &GetChain(object.m_hash);
        while (*link != &object)
            link = &(*link)->m_next;
        *link = object.m_next;
        --count;
    }

    std::mutex mutex;
    std::size_t count = 0;

private:
    void Link(const SharedSerialisable& object) noexcept
    {
        const SharedSerialisable*& chain = GetChain(object.m_hash);
        object.m_next = chain;
        chain = &object;
    }

    void Grow()
    {
        std::vector<const SharedSerialisable*> old(2 * chains.size());
        chains.swap(old);
        for (const SharedSerialisable* entry : old) {
            while (entry) {
                const SharedSerialisable* const next = entry->m_next;
                Link(*entry);
                entry = next;
            }
        }
    }

    std::vector<const SharedSerialisable*> chains =
        std::vector<const SharedSerialisable*>(16); // a power of two
};

namespace {

std::uint64_t FindHash(const SharedSerialisable& object)
{
    HashAccumulator accumulator(HashAccumulator::GetProcessSeed());
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
    return m_table->count;
}

const SharedSerialisable* SharedClassProperties::FindCanonical(const SharedSerialisable& object)
{
    if (object.m_record) {
        object.Retain();
        return &object;
    }
    const std::uint64_t hash = FindHash(object);
    Table& table = *object.GetObjectSharedClassProperties().m_table;
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
    object.m_hash = hash;
    object.m_count = &object;
    record.m_table->Add(object);
    object.m_record = &record;
    object.Retain();
    return &object;
}

bool SharedClassProperties::AddAsConsolidated(const Counted<SharedSerialisable>& object)
{
    const auto canonical = Counted<const SharedSerialisable>::Adopt(Consolidate(*object));
    return canonical == object;
}

void SharedClassProperties::Remove(const SharedSerialisable& object) const
{
    const std::lock_guard lock(m_table->mutex);
    m_table->Remove(object);
}

} // namespace Kernel
