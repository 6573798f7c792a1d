#pragma once

#include <filesystem>

#include <kernel/Consolidated.h>
#include <kernel/InSerialiserFile.h>
#include <kernel/NonCounted.h>
#include <kernel/OutStream.h>
#include <kernel/Serialisable.h>
#include <kernel/SharedSerialisable.h>

namespace Kernel {

/// How much is saved.
enum class SaveMode
{
    Full,    ///< everything: files that stand alone
    Partial, ///< without what can be found again
};

/// \name Stand-alone files
/// A file that is replaced stays whole until the new one is complete.
/// \throws OutStream::WriteException when the file cannot be written or an object cannot be saved,
///         FormatException when a payload to be copied cannot be read.
/// @{
/// \pre \p object is not empty.
KERNEL_EXPORT void SerialiseToFile(const std::filesystem::path& path,
                                   const Consolidated<SharedSerialisable>& object,
                                   SaveMode mode = SaveMode::Full);
KERNEL_EXPORT void SerialiseToFile(const std::filesystem::path& path,
                                   NonCounted<const Serialisable> object,
                                   SaveMode mode = SaveMode::Full);

/// The same file into any stream, which is not closed.
KERNEL_EXPORT void SerialiseToStream(OutStream& out, const Consolidated<SharedSerialisable>& object,
                                     SaveMode mode = SaveMode::Full);
KERNEL_EXPORT void SerialiseToStream(OutStream& out, NonCounted<const Serialisable> object,
                                     SaveMode mode = SaveMode::Full);
/// @}

/// Reads the object that a file holds.
/// \tparam T the class that is expected, or a base of it.
/// \return a Consolidated<T> for a shared class, a Counted<T> for a plain one; empty when the file
///         cannot be read, is damaged, was written by a newer program, or holds something else.
template<class T>
SavedReference<T> SerialiseFromFile(const std::filesystem::path& path) noexcept
{
    try {
        return InSerialiserFile(path).ParseWithChecks<T>();
    } catch (...) {
        return {};
    }
}

} // namespace Kernel
