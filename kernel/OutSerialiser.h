#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <span>
#include <type_traits>

#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/EnumSerialiser.h>
#include <kernel/FlagSerialiser.h>
#include <kernel/FourCharCode.h>
#include <kernel/NonCounted.h>
#include <kernel/PropStruct.h>
#include <kernel/PropType.h>
#include <kernel/Serialisable.h>
#include <kernel/SharedSerialisable.h>
#include <kernel/String.h>

namespace Kernel {

class DelayLoadHolder;
class SavedWriter;

/// Takes the items of the objects that are saved. A class's Save gets one and writes each member
/// under a tag of its own; a tag that is written twice makes a file that cannot be read.
///
/// Calls throw OutStream::WriteException when objects are nested deeper than files may be or a
/// shared object is part of itself, and std::bad_alloc.
class KERNEL_EXPORT OutSerialiser
{
public:
    OutSerialiser(const OutSerialiser&) = delete;
    OutSerialiser& operator=(const OutSerialiser&) = delete;

    /// Whether everything is written, or what can be found again may be left out.
    bool IsFullSave() const noexcept;

    /// \name Values
    /// @{
    void SaveType(IDTag tag, const bool& value);
    /// Text of valid UTF-8 is kept as such, any other as bytes.
    void SaveType(IDTag tag, const StringT<TEncUtf8>& value);
    template<class T>
    void SaveType(IDTag tag, const T& value) = delete; // nothing turns into a bool unnoticed

    /// A value of a type that PropTypeOf knows: an integer of 8, 16 or 32 bits, a double with its
    /// bits kept, a structure of six doubles.
    template<class T>
    void SaveTypeI(IDTag tag, const T& value)
    {
        constexpr PropType type = PropTypeOf<T>::value;
        if constexpr (type == PropType::Double) {
            SaveDouble(tag, value);
        } else if constexpr (type == PropType::AffineTransform) {
            static_assert(sizeof(T) == 48 && std::is_trivially_copyable_v<T>);
            SaveDoubles(tag, &value, 6);
        } else {
            SaveInteger(tag, std::int64_t{value});
        }
    }

    /// An array of doubles.
    void SaveTypeArrayI(IDTag tag, std::span<const double> values)
    {
        SaveDoubles(tag, values.data(), values.size());
    }

    /// Bytes of any number, such as pixels.
    void SaveRawStructI(IDTag tag, const void* data, std::size_t size);
    /// A structure without padding and pointers, as its bytes in memory.
    template<class T>
    requires std::is_trivially_copyable_v<T>
    void SaveRawStructI(IDTag tag, const T& value)
    {
        static_assert(!std::is_pointer_v<T>);
        SaveRawStructI(tag, &value, sizeof value);
    }

    /// A property structure: the fields one after another, without padding. Enums are given as
    /// integers of the size that they take; a bool is a byte.
    template<class... Fields>
    void SavePropStructI(IDTag tag, const Fields&... fields)
    {
        const auto bytes = PropStruct::Pack(fields...);
        SaveRawStructI(tag, bytes.data(), bytes.size());
    }

    /// The number of an enum's value. An illegal value is left out.
    void SaveEnumI(IDTag tag, const EnumSerialiser& serialiser, int value);
    /// Flags; a set with illegal bits is left out.
    void SaveFlagsI(IDTag tag, const FlagSerialiser& serialiser, std::uint32_t flags);
    /// @}

    /// \name Objects
    /// @{
    /// A consolidated object or null. It is written once per file and referred to from then on.
    void SaveSharedObject(IDTag tag, const Consolidated<SharedSerialisable>& object);
    /// A plain object, written in full each time.
    void SaveObject(IDTag tag, NonCounted<const Serialisable> object);
    /// A plain object or null.
    template<class T>
    requires std::is_convertible_v<const T*, const Serialisable*>
    void SaveObject(IDTag tag, const Counted<T>& object)
    {
        if (object)
            SaveObject(tag, NonCounted<const Serialisable>(object.Get()));
        else
            SaveNull(tag);
    }

    /// Consolidated objects in order, as many as \p objects has elements.
    /// \param get gives the Consolidated of an element.
    template<class Range, class Get = std::identity>
    void SaveSharedObjectArrayI(IDTag tag, const Range& objects, const Get& get = {})
    {
        BeginArray(tag, std::size(objects));
        for (const auto& element : objects)
            AddShared(Consolidated<SharedSerialisable>(std::invoke(get, element)).Get());
        EndArray();
    }
    /// Plain objects in order.
    /// \param get gives a `const Serialisable&` of an element.
    template<class Range, class Get = std::identity>
    void SaveObjectArrayI(IDTag tag, const Range& objects, const Get& get = {})
    {
        BeginArray(tag, std::size(objects));
        for (const auto& element : objects)
            AddObject(std::invoke(get, element));
        EndArray();
    }

    /// A nested class item: items of a structure that is not a Serialisable and has no identity.
    /// \param save is called with this serialiser to write them.
    template<class Save>
    requires std::is_invocable_v<const Save&, OutSerialiser&>
    void SavePropClassI(IDTag tag, ClassUID uid, unsigned short version, const Save& save)
    {
        BeginClass(tag, uid, version);
        save(*this);
        EndClass();
    }
    /// The same for a structure with `GetClassUID`, `GetSchemaVersion` and `Save(OutSerialiser&)`.
    template<class T>
    void SavePropClassI(IDTag tag, const T& value)
    {
        SavePropClassI(tag, value.GetClassUID(), value.GetSchemaVersion(),
                       [&](OutSerialiser& out) { value.Save(out); });
    }
    /// A nested class item that is absent.
    void SaveNullPropClassI(IDTag tag) { SaveNull(tag); }

    /// A payload that stays out of memory until it is asked for; an empty holder is null.
    void SaveDelayLoadObject(IDTag tag, const DelayLoadHolder& payload);
    /// @}

private:
    friend class SavedWriter;
    explicit OutSerialiser(SavedWriter& writer) noexcept : m_writer(writer) {}

    void SaveInteger(IDTag tag, std::int64_t value);
    void SaveDouble(IDTag tag, double value);
    void SaveDoubles(IDTag tag, const void* values, std::size_t count);
    void SaveNull(IDTag tag);
    void BeginArray(IDTag tag, std::size_t count);
    void AddShared(const SharedSerialisable* object);
    void AddObject(const Serialisable& object);
    void EndArray();
    void BeginClass(IDTag tag, ClassUID uid, unsigned short version);
    void EndClass();

    SavedWriter& m_writer;
};

} // namespace Kernel
