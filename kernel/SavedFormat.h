#pragma once

#include <cstddef>
#include <cstdint>

/// The numbers of the container, which docs/saved-values.md describes.
namespace Kernel::SavedFormat {

constexpr unsigned char Version = 1;
/// Marks the file; the last byte is the version of the format.
constexpr unsigned char Magic[8] = {0x8b, 'R', 'S', 'V', '\r', '\n', 0x1a, Version};

/// The magic and the length of the object section: an unsigned integer of always 9 bytes.
constexpr std::size_t HeaderSize = sizeof Magic + 9;
/// Offsets in the object section have 32 bits.
constexpr std::uint64_t MaxObjectsEnd = 0xffffffffU;

constexpr unsigned MaxDepth = 256; // of arrays, maps and unknown tags

constexpr std::uint64_t ObjectTag = 28;
constexpr std::uint64_t ReferenceTag = 29;
constexpr std::uint64_t DoublesTag = 86;
constexpr std::uint64_t PayloadTag = 0x5041594c; // "PAYL"

/// The least that an item takes: a key of five bytes and a value.
constexpr std::size_t MinItemSize = 6;

} // namespace Kernel::SavedFormat
