#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/EnumSerialiser.h>
#include <kernel/FlagSerialiser.h>
#include <kernel/FourCharCode.h>
#include <kernel/PropStruct.h>
#include <kernel/PropType.h>
#include <kernel/Serialisable.h>
#include <kernel/SharedSerialisable.h>
#include <kernel/String.h>

namespace Kernel {

class DelayLoadHolder;
class FileStore;
class SavedReader;

/// Gives the items of one object that is loaded, in any order. Each call answers false when the
/// item is absent or its content is of another kind, and then leaves the destination untouched.
class KERNEL_EXPORT InSerialiser
{
public:
    InSerialiser(const InSerialiser&) = delete;
    InSerialiser& operator=(const InSerialiser&) = delete;

    /// Whether the object has an item of this tag.
    bool HasItem(IDTag tag) const noexcept;

    /// \name Values
    /// @{
    bool LoadType(IDTag tag, bool& value) const;
    bool LoadType(IDTag tag, StringT<TEncUtf8>& value) const;

    /// A value of a type that PropTypeOf knows. An integer out of the type's range is no content.
    template<class T>
    bool LoadTypeI(IDTag tag, T& value) const
    {
        constexpr PropType type = PropTypeOf<T>::value;
        if constexpr (type == PropType::Double) {
            return LoadDouble(tag, value);
        } else if constexpr (type == PropType::AffineTransform) {
            static_assert(sizeof(T) == 48 && std::is_trivially_copyable_v<T>);
            return LoadDoubles(tag, &value, 6);
        } else {
            std::int64_t number = 0;
            if (!LoadInteger(tag, number) || !std::in_range<T>(number))
                return false;
            value = static_cast<T>(number);
            return true;
        }
    }

    /// An array of doubles of any length.
    bool LoadTypeArrayI(IDTag tag, std::vector<double>& values) const;

    /// Exactly \p size bytes.
    bool LoadRawStructI(IDTag tag, void* data, std::size_t size) const;
    /// Bytes of any number. \param data refers to the file's bytes; valid during Load.
    bool LoadRawStructI(IDTag tag, std::span<const unsigned char>& data) const;
    template<class T>
    requires std::is_trivially_copyable_v<T>
    bool LoadRawStructI(IDTag tag, T& value) const
    {
        return LoadRawStructI(tag, &value, sizeof value);
    }

    /// A property structure of exactly these fields.
    template<class... Fields>
    bool LoadPropStructI(IDTag tag, Fields&... fields) const
    {
        std::array<unsigned char, PropStruct::Size<Fields...>> bytes;
        if (!LoadRawStructI(tag, bytes.data(), bytes.size()))
            return false;
        PropStruct::Unpack(bytes.data(), fields...);
        return true;
    }

    /// The number of an enum's value; one in no registered set is no content.
    bool LoadEnumI(IDTag tag, const EnumSerialiser& serialiser, int& value) const;
    template<class Enum>
    requires std::is_enum_v<Enum>
    bool LoadEnumI(IDTag tag, const EnumSerialiser& serialiser, Enum& value) const
    {
        int number = 0;
        if (!LoadEnumI(tag, serialiser, number))
            return false;
        value = static_cast<Enum>(number);
        return true;
    }
    /// Flags; a set with bits that are not registered is no content.
    bool LoadFlagsI(IDTag tag, const FlagSerialiser& serialiser, std::uint32_t& flags) const;
    /// @}

    /// \name Objects
    /// Null is content: the reference becomes empty and the answer is true. An object of a class
    /// that is not known, not a T, or that failed to load, is no content.
    /// @{
    template<class T>
    bool LoadSharedObjectI(IDTag tag, Consolidated<T>& object) const
    {
        const SharedSerialisable* found = nullptr;
        return FindShared(tag, found) && Take(found, object);
    }
    template<class T>
    bool LoadObjectI(IDTag tag, Counted<T>& object) const
    {
        Serialisable* found = nullptr;
        return FindObject(tag, found) && Take(found, object);
    }

    /// Consolidated objects in order. An element that is null or no T makes the array no content.
    template<class T>
    bool LoadSharedObjectArrayI(IDTag tag, std::vector<Consolidated<T>>& objects) const
    {
        std::vector<const SharedSerialisable*> found;
        return FindSharedArray(tag, found) && TakeAll(found, objects);
    }
    /// The same where every object stands for itself: elements that are null or no T are left out.
    template<class T>
    bool LoadSharedObjectsI(IDTag tag, std::vector<Consolidated<T>>& objects) const
    {
        std::vector<const SharedSerialisable*> found;
        if (!FindSharedArray(tag, found))
            return false;
        objects.clear();
        for (const SharedSerialisable* const element : found) {
            Consolidated<T> object;
            if (element && Take(element, object))
                objects.push_back(std::move(object));
        }
        return true;
    }
    /// Plain objects in order. An element that is null or no T makes the array no content.
    template<class T>
    bool LoadObjectArrayI(IDTag tag, std::vector<Counted<T>>& objects) const
    {
        std::vector<Serialisable*> found;
        return FindObjectArray(tag, found) && TakeAll(found, objects);
    }

    /// A nested class item.
    /// \param load `bool(const InSerialiser&, ClassUID, unsigned short version)`: reads its items;
    ///        what it answers is the answer. It is not called for null.
    template<class Load>
    bool LoadPropClassI(IDTag tag, const Load& load) const
    {
        const auto call = [](const void* context, const InSerialiser& in, ClassUID uid,
                             unsigned short version) -> bool {
            return (*static_cast<const Load*>(context))(in, uid, version);
        };
        return LoadClass(tag, call, &load);
    }
    /// Whether the item is the null of SaveNullPropClassI.
    bool LoadNullPropClassI(IDTag tag) const noexcept;

    /// A payload, which stays where it is; null gives an empty holder.
    /// \param store the one that Load was given.
    bool LoadDelayLoadObject(IDTag tag, FileStore& store, DelayLoadHolder& payload) const;
    /// @}

private:
    friend class SavedReader;
    using ClassLoader = bool (*)(const void* context, const InSerialiser& in, ClassUID uid,
                                 unsigned short version);

    InSerialiser(SavedReader& reader, std::size_t first, std::size_t count) noexcept
        : m_reader(reader), m_first(first), m_count(count)
    {}

    bool LoadInteger(IDTag tag, std::int64_t& value) const;
    bool LoadDouble(IDTag tag, double& value) const;
    bool LoadDoubles(IDTag tag, void* values, std::size_t count) const;
    bool FindShared(IDTag tag, const SharedSerialisable*& object) const;
    bool FindObject(IDTag tag, Serialisable*& object) const;
    bool FindSharedArray(IDTag tag, std::vector<const SharedSerialisable*>& objects) const;
    bool FindObjectArray(IDTag tag, std::vector<Serialisable*>& objects) const;
    bool LoadClass(IDTag tag, ClassLoader load, const void* context) const;

    template<class T>
    static bool Take(const SharedSerialisable* found, Consolidated<T>& object)
    {
        const T* const typed = dynamic_cast<const T*>(found);
        if (found && !typed)
            return false;
        object = Consolidated<T>(Counted<const T>(typed));
        return true;
    }
    template<class T>
    static bool Take(Serialisable* found, Counted<T>& object)
    {
        T* const typed = dynamic_cast<T*>(found);
        if (found && !typed)
            return false;
        object = Counted<T>(typed);
        return true;
    }
    template<class Found, class Reference>
    static bool TakeAll(const std::vector<Found*>& found, std::vector<Reference>& objects)
    {
        std::vector<Reference> taken(found.size());
        for (std::size_t i = 0; i < found.size(); ++i)
            if (!found[i] || !Take(found[i], taken[i]))
                return false;
        objects = std::move(taken);
        return true;
    }

    SavedReader& m_reader;
    std::size_t m_first; // of this object's entries in the reader's table
    std::size_t m_count;
    mutable std::size_t m_next = 0; // where the next tag is looked for first
};

} // namespace Kernel
