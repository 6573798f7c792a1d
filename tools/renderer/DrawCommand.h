#pragma once

#include <stdexcept>

#include "DrawOptions.h"

namespace Command {

/// Thrown for options that make no sense or are not built.
class UsageException : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Thrown for what goes wrong with a file.
class FileException : public std::runtime_error
{
public:
    FileException(const std::string& file, const std::string& what)
        : std::runtime_error(file + ": " + what)
    {}
};

/// Draws an SVG file into a picture file. What was left out of the drawing goes to the standard
/// error stream, a line per kind. \throws UsageException, FileException
void Draw(const DrawOptions& options);

} // namespace Command
