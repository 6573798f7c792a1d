#pragma once

#include <kernel/ClassPropertiesBase.h>
#include <kernel/Counted.h>
#include <kernel/Serialisable.h>

namespace Kernel {

/// The record of one class of plain saved objects.
class KERNEL_EXPORT ClassProperties : public ClassPropertiesBase
{
public:
    /// Makes a default object for the loader to call Load on.
    using Factory = Counted<Serialisable> (*)();

    /// \param factory null for an abstract class, whose version is 0.
    /// \param base the record of the serialisable base class, or null.
    /// \param name the class's name, for messages; lives as long as the record.
    ClassProperties(ClassUID uid, Factory factory, unsigned short version,
                    const DefaultItem* defaults, const ClassProperties* base, const char* name)
        : ClassPropertiesBase(uid, version, defaults, name, false), m_factory(factory), m_base(base)
    {}

    /// The record of the serialisable base class, or null.
    const ClassProperties* GetBase() const noexcept { return m_base; }
    /// A default object; empty for an abstract class.
    Counted<Serialisable> CreateObject() const { return m_factory ? m_factory() : nullptr; }

private:
    Factory m_factory;
    const ClassProperties* m_base;
};

} // namespace Kernel
