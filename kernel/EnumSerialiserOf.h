#pragma once

#include <numeric>
#include <vector>

#include <kernel/EnumSerialiser.h>

namespace Kernel {

/// What the serialisers of enums do alike: the singleton, made on first use.
template<class Derived>
class EnumSerialiserOf : public EnumSerialiser
{
public:
    static const Derived& GetInstance()
    {
        static const Derived instance;
        return instance;
    }

protected:
    /// Adds a generation of the given values.
    void Register(const std::vector<std::int32_t>& values)
    {
        std::vector<EnumEntry> entries;
        for (const std::int32_t value : values)
            entries.push_back({value, 0});
        RegisterEnumSet(entries.data(), entries.size());
    }
    /// Adds a generation of the values 0 … count − 1.
    void RegisterCount(std::int32_t count)
    {
        std::vector<std::int32_t> values(static_cast<std::size_t>(count));
        std::iota(values.begin(), values.end(), 0);
        Register(values);
    }
};

} // namespace Kernel
