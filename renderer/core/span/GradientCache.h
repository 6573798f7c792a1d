#pragma once

#include <cstddef>
#include <list>
#include <unordered_map>

#include <kernel/Consolidated.h>
#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <raster/ICCManager.h>
#include <renderer/paint/Gradient.h>

namespace Renderer {

/// The gradients whose colours a target has made ready in its own format, so that a gradient that
/// is drawn again costs a look-up and allocates nothing. Keeps the gradients alive. Bounded in
/// entries and bytes: what was used least recently goes first, and lives on with those who still
/// use it. Serves one thread.
class GradientCache
{
public:
    using Profiles = Raster::ICCManager::ICCProfileSet;

    static constexpr std::size_t DefaultMaxEntries = 1024;
    static constexpr std::size_t DefaultByteBudget = std::size_t{8} << 20;

    explicit GradientCache(std::size_t maxEntries = DefaultMaxEntries,
                           std::size_t byteBudget = DefaultByteBudget)
        : m_maxEntries(maxEntries), m_byteBudget(byteBudget)
    {}

    /// The colours of a gradient that has stops, from the cache or new.
    /// \tparam Colours a GradientColours; each kind has entries of its own.
    template<class Colours>
    Kernel::Counted<const Colours> Get(const Kernel::Consolidated<Gradient>& gradient,
                                       const Profiles& profiles)
    {
        if (const Kernel::Countable* found = Find({gradient.Get(), &KindOf<Colours>, &profiles}))
            return static_cast<const Colours*>(found);
        Kernel::Counted<const Colours> made(new Colours(*gradient, profiles));
        Keep({gradient, &KindOf<Colours>, profiles, made, made->GetByteSize()});
        return made;
    }

    /// Drops everything.
    void Clear() noexcept;

    std::size_t GetEntryCount() const noexcept { return m_entries.size(); }
    /// Bytes of the colours that are kept.
    std::size_t GetByteCount() const noexcept { return m_byteCount; }

private:
    /// Its address stands for a class.
    template<class Colours>
    static inline const char KindOf = 0;

    struct Entry
    {
        Kernel::Consolidated<Gradient> gradient;
        const void* kind;
        Profiles profiles;
        Kernel::Counted<const Kernel::Countable> colours;
        std::size_t byteSize;
    };
    /// Refers to an entry's members or to a question's.
    struct Key
    {
        const Gradient* gradient;
        const void* kind;
        const Profiles* profiles;

        friend bool operator==(const Key& a, const Key& b) noexcept
        {
            return a.gradient == b.gradient && a.kind == b.kind && *a.profiles == *b.profiles;
        }
    };
    /// Profiles hardly ever differ within a target: they are only compared.
    struct Hash
    {
        std::size_t operator()(const Key& key) const noexcept
        {
            return std::hash<const void*>()(key.gradient) ^ std::hash<const void*>()(key.kind);
        }
    };

    static Key GetKey(const Entry& entry) noexcept
    {
        return {entry.gradient.Get(), entry.kind, &entry.profiles};
    }

    /// The colours of an entry, which becomes the latest; null when there is none.
    const Kernel::Countable* Find(const Key& key) noexcept;
    void Keep(Entry entry);
    void DropLeastRecent() noexcept;

    std::size_t m_maxEntries;
    std::size_t m_byteBudget;
    std::size_t m_byteCount = 0;
    std::list<Entry> m_entries; // the latest used first
    std::unordered_map<Key, std::list<Entry>::iterator, Hash> m_index;
};

} // namespace Renderer
