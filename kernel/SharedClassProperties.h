#pragma once

#include <cstdint>
#include <memory>

#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/SharedSerialisable.h>

namespace Kernel {

/// The record of one class of shared values; it holds the table of its canonical instances.
///
/// Each concrete class has one record, made on first use and never destroyed, so that values which
/// live in static storage may be released at any time of the program's end. Safe from many threads.
class KERNEL_EXPORT SharedClassProperties
{
public:
    SharedClassProperties();
    ~SharedClassProperties();
    SharedClassProperties(const SharedClassProperties&) = delete;
    SharedClassProperties& operator=(const SharedClassProperties&) = delete;

    /// Makes \p object the canonical instance of its value, or drops it for the one that is known.
    /// \param object a fresh object that nobody else holds; it must not be changed afterwards.
    template<class T>
    static Consolidated<T> ConsolidateObjectSacrifice(Counted<T> object)
    {
        const SharedSerialisable* canonical = Consolidate(*object);
        return Consolidated<T>(Counted<const T>::Adopt(dynamic_cast<const T*>(canonical)));
    }

    /// How many canonical instances are alive; for tests and diagnostics.
    std::size_t GetInstanceCount() const;

private:
    friend class SharedSerialisable;
    struct Table;

    /// \return the canonical instance with one reference added for the caller.
    static const SharedSerialisable* Consolidate(SharedSerialisable& object);
    void Remove(const SharedSerialisable& object, std::uint64_t hash) const;

    std::unique_ptr<Table> m_table;
};

} // namespace Kernel
