#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <kernel/Export.h>

namespace Kernel {

/// One value of a saved enum.
struct EnumEntry
{
    std::int32_t value;
    std::int32_t reserved; ///< always 0
};

/// Knows which values of an enum are legal in files. The number itself is what is stored.
///
/// One class per enum derives from it, a singleton made on first use whose constructor registers a
/// set of values for each generation of the enum, the oldest first.
class KERNEL_EXPORT EnumSerialiser
{
public:
    EnumSerialiser(const EnumSerialiser&) = delete;
    EnumSerialiser& operator=(const EnumSerialiser&) = delete;
    virtual ~EnumSerialiser();

    /// Whether the value is in the set of any generation.
    bool IsLegal(std::int64_t value) const noexcept;

    std::size_t GetGenerationCount() const noexcept { return m_generations.size(); }
    /// The values of a generation, ascending.
    std::span<const std::int32_t> GetGeneration(std::size_t generation) const noexcept
    {
        return m_generations[generation];
    }

protected:
    EnumSerialiser() = default;

    /// Adds a generation.
    /// \param entries its values in any order, those of the generation before among them.
    /// \throws std::logic_error when a value of the generation before is missing.
    void RegisterEnumSet(const EnumEntry* entries, std::size_t count);

private:
    std::vector<std::vector<std::int32_t>> m_generations;
};

} // namespace Kernel
