#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include <kernel/DescribeSavedFile.h>
#include <kernel/FormatException.h>
#include <kernel/FutureVersionException.h>
#include <kernel/MemoryOutStream.h>
#include <kernel/SerialiseFile.h>

/// What a file of saved values may do whatever its bytes are: load, or be refused as damaged or
/// newer. What loads must save, load again and save to the same bytes, and can be described.
namespace SavedCheck {

using Bytes = std::vector<unsigned char>;
using Object = Kernel::InSerialiserFile::Object;

inline void Check(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

inline Bytes Save(const Object& object)
{
    Kernel::MemoryOutStream out;
    if (object.shared)
        Kernel::SerialiseToStream(out, object.shared);
    else
        Kernel::SerialiseToStream(out, *object.plain);
    return out.TakeData();
}

/// \return whether the file can be described to its end.
inline bool Describe(const Bytes& bytes)
{
    Kernel::MemoryOutStream text;
    try {
        Kernel::DescribeSavedFile(
            *Kernel::FileStore::FromMemory(std::make_shared<const Bytes>(bytes),
                                           Kernel::FileStore::Damaged::Kept),
            text);
        return true;
    } catch (const Kernel::FormatException& error) {
        Check(error.GetOffset().value_or(bytes.size() + 1) <= bytes.size(), "damage has no place");
        return false;
    }
}

/// \param settles how often an object is saved and loaded before its bytes stay: once more where
///        values that lie near a default become it, since equal ones are one object from then on.
/// \param use is called with what was loaded.
template<class Use>
void CheckFile(const Bytes& bytes, int settles, const Use& use)
{
    const bool isWhole = Describe(bytes);
    try {
        Object object = Kernel::InSerialiserFile(bytes).ParseWithChecks();
        Check(isWhole, "a damaged file was loaded");
        use(object);
        Bytes saved = Save(object);
        for (int i = 0; i < settles; ++i) {
            object = Kernel::InSerialiserFile(saved).ParseWithChecks();
            saved = Save(object);
        }
        Check(Save(Kernel::InSerialiserFile(saved).ParseWithChecks()) == saved,
              "saving again gives other bytes");
    } catch (const Kernel::FormatException&) {
    } catch (const Kernel::FutureVersionException&) {
    } catch (const Kernel::OutStream::WriteException&) { // null items that are saved nest deeper
    }
}

} // namespace SavedCheck
