#include <kernel/EnumSerialiser.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Kernel {

EnumSerialiser::~EnumSerialiser() = default;

bool EnumSerialiser::IsLegal(std::int64_t value) const noexcept
{
    // The newest generation holds all others.
    return !m_generations.empty() && std::ranges::binary_search(m_generations.back(), value);
}

void EnumSerialiser::RegisterEnumSet(const EnumEntry* entries, std::size_t count)
{
    std::vector<std::int32_t> values(count);
    std::transform(entries, entries + count, values.begin(),
                   [](const EnumEntry& entry) { return entry.value; });
    std::ranges::sort(values);
    if (!m_generations.empty() && !std::ranges::includes(values, m_generations.back()))
        throw std::logic_error("a generation of an enum lacks a value of the one before");
    m_generations.push_back(std::move(values));
}

} // namespace Kernel
