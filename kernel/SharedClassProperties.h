#pragma once

#include <cstdint>
#include <memory>

#include <kernel/ClassPropertiesBase.h>
#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/SharedSerialisable.h>

namespace Kernel {

/// The record of one class of shared values; it holds the table of its canonical instances.
///
/// Each concrete class has one record. Safe from many threads.
class KERNEL_EXPORT SharedClassProperties : public ClassPropertiesBase
{
public:
    /// Makes a default object for the loader to call Load on.
    using Factory = Counted<SharedSerialisable> (*)();

    /// \param factory null for an abstract class, whose version is 0.
    /// \param base the record of the serialisable base class, or null.
    /// \param name the class's name, for messages; lives as long as the record.
    SharedClassProperties(ClassUID uid, Factory factory, unsigned short version,
                          const DefaultItem* defaults, const SharedClassProperties* base,
                          const char* name);
    /// The record of a class that is consolidated but never saved.
    SharedClassProperties();
    ~SharedClassProperties();

    /// The record of the serialisable base class, or null.
    const SharedClassProperties* GetBase() const noexcept { return m_base; }
    /// A default object; empty for a class that is abstract or never saved.
    Counted<SharedSerialisable> CreateObject() const { return m_factory ? m_factory() : nullptr; }

    /// Makes \p object the canonical instance of its value, or drops it for the one that is known.
    /// \param object a fresh object that nobody else holds; it must not be changed afterwards.
    template<class T>
    static Consolidated<T> ConsolidateObjectSacrifice(Counted<T> object)
    {
        return Wrap<T>(Consolidate(*object));
    }

    /// The canonical instance that equals \p object; empty when there is none.
    template<class T>
    static Consolidated<T> FindConsolidatedObject(const T& object)
    {
        return Wrap<T>(FindCanonical(object));
    }

    /// Makes a fresh object canonical unless an equal one is.
    /// \return whether \p object is canonical now.
    static bool AddAsConsolidated(const Counted<SharedSerialisable>& object);

    /// How many canonical instances are alive; for tests and diagnostics.
    std::size_t GetInstanceCount() const;

private:
    friend class SharedSerialisable;
    struct Table;

    template<class T>
    static Consolidated<T> Wrap(const SharedSerialisable* retained)
    {
        return Consolidated<T>(Counted<const T>::Adopt(dynamic_cast<const T*>(retained)));
    }

    /// \return the canonical instance with one reference added for the caller, or null.
    static const SharedSerialisable* FindCanonical(const SharedSerialisable& object);
    /// \return the canonical instance with one reference added for the caller.
    static const SharedSerialisable* Consolidate(SharedSerialisable& object);
    void Remove(const SharedSerialisable& object) const;

    Factory m_factory = nullptr;
    const SharedClassProperties* m_base = nullptr;
    std::unique_ptr<Table> m_table;
};

} // namespace Kernel
