#pragma once

#include <string>
#include <string_view>

namespace Svg {

/// Brings the bytes of an XML file to UTF-8 without a byte order mark: by the byte order mark, the
/// zeros of UTF-16 and UTF-32, or the encoding that the file declares (UTF-8 when it declares
/// none). Bytes that mean nothing in the encoding become U+FFFD; those of UTF-8 files stay as they
/// are. \throws Kernel::FormatException for an encoding that is not known.
std::string ConvertToUtf8(std::string_view bytes);

/// Unpacks a gzip file; anything else comes back as it is.
/// \throws Kernel::FormatException when the file is damaged or unpacks to more than 256 MiB.
std::string Gunzip(std::string bytes);

} // namespace Svg
