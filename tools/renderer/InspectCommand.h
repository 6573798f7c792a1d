#pragma once

#include <string>

namespace Command {

/// Prints a file of saved values as a tree. \throws FileException
void Inspect(const std::string& path);

} // namespace Command
