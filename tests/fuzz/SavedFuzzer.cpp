// What a file of saved values may do whatever its bytes are: load, or be refused as damaged or
// newer. What loads must save, load again and save to the same bytes, and can be described.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include <kernel/DescribeSavedFile.h>
#include <kernel/FormatException.h>
#include <kernel/FutureVersionException.h>
#include <kernel/MemoryOutStream.h>
#include <kernel/SerialiseFile.h>

#include <kernel/saved/SavedSamples.h>

namespace {

using Bytes = std::vector<unsigned char>;
using Object = Kernel::InSerialiserFile::Object;

void Check(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

Bytes Save(const Object& object)
{
    Kernel::MemoryOutStream out;
    if (object.shared)
        Kernel::SerialiseToStream(out, object.shared);
    else
        Kernel::SerialiseToStream(out, *object.plain);
    return out.TakeData();
}

/// \return whether the file can be described to its end.
bool Describe(const Bytes& bytes)
{
    Kernel::MemoryOutStream text;
    try {
        Kernel::DescribeSavedFile(
            *Kernel::FileStore::FromMemory(std::make_shared<const Bytes>(bytes)), text);
        return true;
    } catch (const Kernel::FormatException& error) {
        Check(error.GetOffset().value_or(bytes.size() + 1) <= bytes.size(), "damage has no place");
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Bytes bytes(data, data + size);
    const bool isWhole = Describe(bytes);
    try {
        const Object object = Kernel::InSerialiserFile(bytes).ParseWithChecks();
        Check(isWhole, "a damaged file was loaded");
        const Bytes saved = Save(object);
        const Object again = Kernel::InSerialiserFile(saved).ParseWithChecks();
        Check(Save(again) == saved, "saving again gives other bytes");
    } catch (const Kernel::FormatException&) {
    } catch (const Kernel::FutureVersionException&) {
    } catch (const Kernel::OutStream::WriteException&) { // null items that are saved nest deeper
    }
    return 0;
}
