#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Renderer {

/// Whether \p size bytes are all zero.
inline bool IsZero(const unsigned char* bytes, std::size_t size) noexcept
{
    using Words = std::uint64_t __attribute__((vector_size(16)));
    Words any{};
    std::size_t i = 0;
    for (; i + sizeof(Words) <= size; i += sizeof(Words)) {
        Words words;
        std::memcpy(&words, bytes + i, sizeof(words));
        any |= words;
    }
    unsigned char rest = 0;
    for (; i < size; ++i)
        rest = static_cast<unsigned char>(rest | bytes[i]);
    return (any[0] | any[1] | rest) == 0;
}

/// Finds what was drawn in a row of a buffer that began transparent, in blocks of pixels: those
/// left out are all zero.
/// \param span is called with the first pixel and the end of each stretch, from left to right.
template<class Span>
void ForEachContentSpan(const unsigned char* row, std::size_t pixelSize, unsigned length,
                        Span&& span)
{
    constexpr unsigned block = 16; // whole vectors, whatever the pixel's size
    unsigned begin = 0;            // of the stretch up to i
    for (unsigned i = 0; i < length; i += block) {
        const unsigned end = length - i < block ? length : i + block;
        if (!IsZero(row + i * pixelSize, (end - i) * pixelSize))
            continue;
        if (begin < i)
            span(begin, i);
        begin = end;
    }
    if (begin < length)
        span(begin, length);
}

} // namespace Renderer
