#pragma once

#include <kernel/ClassProperties.h>
#include <kernel/SharedClassProperties.h>

namespace Kernel {

/// What every concrete class of shared values does alike for its record.
/// \tparam Derived the concrete class: default-constructible, with a static
///         GetTypeSharedClassProperties.
/// \tparam Base its base class, a SharedSerialisable.
template<class Derived, class Base = SharedSerialisable>
class SharedSavedClass : public Base
{
public:
    const SharedClassProperties& GetObjectSharedClassProperties() const override
    {
        return Derived::GetTypeSharedClassProperties();
    }
    /// A default object, for the loader.
    static Counted<SharedSerialisable> CreateObject() { return MakeCounted<Derived>(); }

protected:
    using Base::Base;

    static const ClassPropertiesBase::DefaultItem* __GetDefaultSerialisation()
    {
        static constexpr ClassPropertiesBase::DefaultItem End[] = {{}};
        return End;
    }
};

/// The same for classes of plain objects, with a static GetTypeClassProperties.
template<class Derived, class Base = Serialisable>
class PlainSavedClass : public Base
{
public:
    const ClassProperties& GetObjectClassProperties() const override
    {
        return Derived::GetTypeClassProperties();
    }
    /// A default object, for the loader.
    static Counted<Serialisable> CreateObject() { return MakeCounted<Derived>(); }

protected:
    using Base::Base;

    static const ClassPropertiesBase::DefaultItem* __GetDefaultSerialisation()
    {
        static constexpr ClassPropertiesBase::DefaultItem End[] = {{}};
        return End;
    }
};

} // namespace Kernel
