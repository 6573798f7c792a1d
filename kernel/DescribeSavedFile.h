#pragma once

#include <kernel/FileStore.h>
#include <kernel/OutStream.h>

namespace Kernel {

/// Writes what a file of saved values holds as text: a tree of objects, with a line for each item
/// and payload. Objects need not be of known classes.
/// \param store may be damaged; all that can be understood is written.
/// \throws FormatException when the file is damaged, after what lies before the damage was written;
///         where the objects end early because the file is cut off, it names the place of the cut.
///         OutStream::WriteException
KERNEL_EXPORT void DescribeSavedFile(const FileStore& store, OutStream& out);

} // namespace Kernel
