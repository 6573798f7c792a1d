#pragma once

#include <vector>

#include <kernel/Export.h>
#include <kernel/FourCharCode.h>

namespace Kernel {

/// What the records of saved classes have in common: identifier, version, base and name, and the
/// registry that finds a record by its identifier.
///
/// A record is made on first use, by a static initialiser of its class at the latest, and never
/// destroyed, so that values in static storage may be released at any time of the program's end:
///
///     const SharedClassProperties& Dot::GetTypeSharedClassProperties()
///     {
///         static const auto& record = *new SharedClassProperties(
///             "Dot_", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "Dot");
///         return record;
///     }
///     [[maybe_unused]] const auto& registration = Dot::GetTypeSharedClassProperties();
class KERNEL_EXPORT ClassPropertiesBase
{
public:
    /// An element of a class's table of defaults, which ends with an item without tag. Classes
    /// handle their defaults in Save and Load, so that tables hold the end alone.
    struct DefaultItem
    {
        IDTag tag;
    };

    ClassPropertiesBase(const ClassPropertiesBase&) = delete;
    ClassPropertiesBase& operator=(const ClassPropertiesBase&) = delete;

    ClassUID GetClassUID() const noexcept { return m_uid; }
    /// The version that the class writes and the newest that it reads; 0 for abstract classes.
    unsigned short GetVersion() const noexcept { return m_version; }
    /// The class's name, for messages.
    const char* GetName() const noexcept { return m_name; }
    /// The table of defaults, or null.
    const DefaultItem* GetDefaults() const noexcept { return m_defaults; }
    /// Whether this is the record of a SharedSerialisable.
    bool IsShared() const noexcept { return m_shared; }

    /// The record with an identifier, or null. Safe from many threads.
    static const ClassPropertiesBase* Find(ClassUID uid);
    /// All records, by ascending identifier. Safe from many threads.
    static std::vector<const ClassPropertiesBase*> GetAll();

protected:
    /// Enters the record into the registry. \throws std::logic_error when the identifier is taken.
    ClassPropertiesBase(ClassUID uid, unsigned short version, const DefaultItem* defaults,
                        const char* name, bool shared);
    /// A record without identifier is not in the registry: its class is not saved.
    ClassPropertiesBase() noexcept = default;
    ~ClassPropertiesBase() = default;

private:
    ClassUID m_uid;
    unsigned short m_version = 0;
    bool m_shared = true; // plain classes are always registered
    const DefaultItem* m_defaults = nullptr;
    const char* m_name = "";
};

} // namespace Kernel
