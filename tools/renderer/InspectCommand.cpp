#include "InspectCommand.h"

#include <system_error>

#include <kernel/DescribeSavedFile.h>
#include <kernel/FileOutStream.h>
#include <kernel/FileStore.h>
#include <kernel/FormatException.h>

#include "DrawCommand.h"

namespace Command {

namespace {

std::string DescribeDamage(const Kernel::FormatException& error)
{
    const auto offset = error.GetOffset();
    return offset ? "byte " + std::to_string(*offset) + ": " + error.what() : error.what();
}

} // namespace

void Inspect(const std::string& path)
{
    try {
        Kernel::FileOutStream out("/dev/stdout");
        try {
            Kernel::DescribeSavedFile(
                *Kernel::FileStore::Open(path, Kernel::FileStore::Damaged::Kept), out);
            out.Close();
        } catch (const Kernel::FormatException&) {
            out.Close(); // what lies before the damage
            throw;
        }
    } catch (const Kernel::FormatException& error) {
        throw FileException(path, DescribeDamage(error));
    } catch (const Kernel::OutStream::WriteException& error) {
        throw FileException("standard output", error.what());
    } catch (const std::system_error& error) {
        throw FileException(path, error.code().message());
    }
}

} // namespace Command
