#include <kernel/InSerialiserFile.h>

#include <kernel/FormatException.h>

#include <kernel/SavedReader.h>

namespace Kernel {

InSerialiserFile::Object InSerialiserFile::ParseWithChecks() const
{
    const auto* const path = std::get_if<std::filesystem::path>(&m_source);
    const Counted<FileStore> store =
        path ? FileStore::Open(*path)
             : FileStore::FromMemory(std::get<FileStore::Memory>(m_source));
    std::vector<unsigned char> memory;
    const std::span<const unsigned char> objects = store->ReadObjects(memory);
    store->KeepPayloads(objects);
    SavedReader reader(objects, *store);
    reader.Read();
    Object object = {reader.GetSharedRoot(), reader.GetPlainRoot()};
    if (!object.shared && !object.plain)
        throw FormatException("the object of class " + reader.GetRootUID().ToString() +
                                  " is of no known class or lacks what it needs",
                              SavedFormat::HeaderSize);
    return object;
}

void InSerialiserFile::FailOtherClass()
{
    throw FormatException("the file holds an object of another class", SavedFormat::HeaderSize);
}

} // namespace Kernel
