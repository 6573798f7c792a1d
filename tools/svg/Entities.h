#pragma once

#include <string>
#include <string_view>

namespace Svg {

/// Replaces the entities that a document declares in its internal subset (`<!ENTITY name "text">`)
/// wherever it refers to them, as XML 1.0, 4.4 says: not in comments, CDATA sections and processing
/// instructions. Parameter entities and external ones are left out; predefined and unknown
/// references stay as they are. \param xml the document in UTF-8. \throws Kernel::FormatException
/// when an entity contains itself or the replacements would add more
///         than 16 MiB.
std::string ExpandEntities(std::string xml);

} // namespace Svg
