#include <kernel/SerialiseFile.h>

#include <kernel/FileOutStream.h>

#include <kernel/SavedWriter.h>

namespace Kernel {
namespace {

void Add(SavedWriter& writer, const Consolidated<SharedSerialisable>& object)
{
    if (!object)
        throw OutStream::WriteException("cannot write: there is nothing to save");
    writer.Shared(object.Get());
}

void Add(SavedWriter& writer, NonCounted<const Serialisable> object)
{
    writer.Plain(*object);
}

template<class Object>
void Write(OutStream& out, const Object& object, SaveMode mode)
{
    SavedWriter writer(mode == SaveMode::Full);
    Add(writer, object);
    writer.WriteTo(out);
}

template<class Object>
void WriteFile(const std::filesystem::path& path, const Object& object, SaveMode mode)
{
    SavedWriter writer(mode == SaveMode::Full);
    Add(writer, object); // what cannot be saved does not touch the file
    FileOutStream file(path, FileOutStream::Durability::Synced);
    writer.WriteTo(file);
    file.Close();
}

} // namespace

void SerialiseToFile(const std::filesystem::path& path,
                     const Consolidated<SharedSerialisable>& object, SaveMode mode)
{
    WriteFile(path, object, mode);
}

void SerialiseToFile(const std::filesystem::path& path, NonCounted<const Serialisable> object,
                     SaveMode mode)
{
    WriteFile(path, object, mode);
}

void SerialiseToStream(OutStream& out, const Consolidated<SharedSerialisable>& object,
                       SaveMode mode)
{
    Write(out, object, mode);
}

void SerialiseToStream(OutStream& out, NonCounted<const Serialisable> object, SaveMode mode)
{
    Write(out, object, mode);
}

} // namespace Kernel
