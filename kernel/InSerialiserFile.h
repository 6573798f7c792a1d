#pragma once

#include <filesystem>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/FileStore.h>
#include <kernel/Serialisable.h>
#include <kernel/SharedSerialisable.h>

namespace Kernel {

/// How an object of a saved class is held.
template<class T>
using SavedReference =
    std::conditional_t<std::is_base_of_v<SharedSerialisable, T>, Consolidated<T>, Counted<T>>;

/// Reads a file of saved values.
class KERNEL_EXPORT InSerialiserFile
{
public:
    /// What a file holds: one of the two is not empty.
    struct Object
    {
        Consolidated<SharedSerialisable> shared;
        Counted<Serialisable> plain;
    };

    /// A file on disk; opened by ParseWithChecks.
    explicit InSerialiserFile(std::filesystem::path path) : m_source(std::move(path)) {}
    /// A file in memory.
    explicit InSerialiserFile(std::vector<unsigned char> bytes)
        : m_source(std::make_shared<const std::vector<unsigned char>>(std::move(bytes)))
    {}

    /// Reads the file's object.
    /// \throws FormatException when the file is damaged or its object is of no known class or lacks
    ///         what it cannot exist without; FutureVersionException when it holds an object of a
    ///         newer version; std::system_error when it cannot be opened or read.
    Object ParseWithChecks() const;

    /// The same where a T is expected. \throws FormatException for an object of another class, too.
    template<class T>
    SavedReference<T> ParseWithChecks() const
    {
        const Object object = ParseWithChecks();
        if constexpr (std::is_base_of_v<SharedSerialisable, T>) {
            if (const auto* typed = dynamic_cast<const T*>(object.shared.Get()))
                return Consolidated<T>(Counted<const T>(typed));
        } else {
            if (auto* typed = dynamic_cast<T*>(object.plain.Get()))
                return Counted<T>(typed);
        }
        FailOtherClass();
    }

private:
    [[noreturn]] static void FailOtherClass();

    std::variant<std::filesystem::path, FileStore::Memory> m_source;
};

} // namespace Kernel
