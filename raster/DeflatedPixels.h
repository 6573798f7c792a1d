#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <kernel/Counted.h>
#include <kernel/DelayLoadHolder.h>
#include <raster/DynamicBuffer.h>

/// Pixels of any format, compressed without loss. Numbers are little-endian, of 32 bits:
///
///     8 bytes   the signature 8B 'R' 'P' 'X' 0D 0A 1A 01
///     4 numbers the format, width, height, and rows of a band: 512 KiB of pixels, or one row
///     numbers   the bytes of each band
///     bands     zlib streams (RFC 1950) of the rows, as RowFilters makes them
///
/// The last band may have fewer rows. Bands know nothing of each other, so that threads share them.
namespace Raster::DeflatedPixels {

/// Compresses a buffer that nobody writes to meanwhile.
std::vector<unsigned char> Write(const DynamicBuffer& buffer);

/// Whether the payload begins with the signature. \throws Kernel::FormatException
bool IsHere(const Kernel::DelayLoadHolder& payload);

/// What the reader expects of the pixels.
struct Shape
{
    Format format = Format::None;
    std::uint32_t width = 0, height = 0;
};

/// Reads a band of the payload at a time. Memory is taken only for what the bytes that are there
/// can hold.
/// \param expected what is of another shape is refused before any memory is taken; none: anything
///        goes.
/// \throws Kernel::FormatException for damage; std::bad_alloc.
Kernel::Counted<const DynamicBuffer> Read(const Kernel::DelayLoadHolder& payload,
                                          const std::optional<Shape>& expected = {});

} // namespace Raster::DeflatedPixels
