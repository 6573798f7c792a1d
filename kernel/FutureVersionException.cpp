#include <kernel/FutureVersionException.h>

#include <string>

namespace Kernel {

FutureVersionException::FutureVersionException(ClassUID uid, const char* name, unsigned found,
                                               unsigned known)
    : std::runtime_error("the file was written by a newer program: it holds version " +
                         std::to_string(found) + " of " + name + ", and version " +
                         std::to_string(known) + " is known"),
      m_uid(uid),
      m_found(found),
      m_known(known)
{}

FutureVersionException::~FutureVersionException() = default;

} // namespace Kernel
