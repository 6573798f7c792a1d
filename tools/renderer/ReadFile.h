#pragma once

#include <string>

namespace Command {

/// The bytes of a file. \throws FileException when it cannot be read or has more than 1 GiB.
std::string ReadFile(const std::string& path);

} // namespace Command
