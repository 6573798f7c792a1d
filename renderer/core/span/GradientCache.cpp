#include <renderer/core/span/GradientCache.h>

#include <utility>

namespace Renderer {

void GradientCache::Clear() noexcept
{
    m_index.clear();
    m_entries.clear();
    m_byteCount = 0;
}

const Kernel::Countable* GradientCache::Find(const Key& key) noexcept
{
    if (m_entries.empty())
        return nullptr;
    if (GetKey(m_entries.front()) == key)
        return m_entries.front().colours.Get();
    const auto found = m_index.find(key);
    if (found == m_index.end())
        return nullptr;
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return m_entries.front().colours.Get();
}

void GradientCache::Keep(Entry entry)
{
    const std::size_t size = entry.byteSize;
    if (size > m_byteBudget || m_maxEntries == 0)
        return;
    while (m_entries.size() >= m_maxEntries || m_byteCount + size > m_byteBudget)
        DropLeastRecent();
    m_entries.push_front(std::move(entry));
    try {
        m_index.emplace(GetKey(m_entries.front()), m_entries.begin());
    } catch (...) {
        m_entries.pop_front();
        throw;
    }
    m_byteCount += size;
}

void GradientCache::DropLeastRecent() noexcept
{
    m_byteCount -= m_entries.back().byteSize;
    m_index.erase(GetKey(m_entries.back()));
    m_entries.pop_back();
}

} // namespace Renderer
