#pragma once

#include <stdexcept>

#include <kernel/Export.h>
#include <kernel/FourCharCode.h>

namespace Kernel {

/// Thrown when a file holds an object of a newer class version than the program knows.
class KERNEL_EXPORT FutureVersionException : public std::runtime_error
{
public:
    /// \param name the class's name.
    /// \param found the version in the file.
    /// \param known the newest version that can be read.
    FutureVersionException(ClassUID uid, const char* name, unsigned found, unsigned known);
    ~FutureVersionException() override;

    ClassUID GetClassUID() const noexcept { return m_uid; }
    unsigned GetFoundVersion() const noexcept { return m_found; }
    unsigned GetKnownVersion() const noexcept { return m_known; }

private:
    ClassUID m_uid;
    unsigned m_found;
    unsigned m_known;
};

} // namespace Kernel
