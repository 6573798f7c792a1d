#pragma once

#include <cstdint>
#include <cstring>

namespace Renderer::Coverage {

/// a·b/255 rounded to nearest; exact for bytes.
inline unsigned char MultiplyBytes(unsigned a, unsigned b) noexcept
{
    return static_cast<unsigned char>(((a * b + 128) * 257) >> 16);
}

/// MultiplyBytes of as many bytes as a vector of 16-bit numbers has lanes.
/// \tparam Lanes vector of 16-bit numbers.
/// \tparam Bytes vector of as many bytes.
template<class Lanes, class Bytes>
inline void MultiplyLanes(unsigned char* out, const unsigned char* a, const Lanes& b) noexcept
{
    Bytes bytes;
    std::memcpy(&bytes, a, sizeof(bytes));
    // With t = a·b + 128, (t·257) >> 16 is (t + (t >> 8)) >> 8, which 16 bits hold.
    const Lanes product = __builtin_convertvector(bytes, Lanes) * b + 128;
    bytes = __builtin_convertvector((product + (product >> 8)) >> 8, Bytes);
    std::memcpy(out, &bytes, sizeof(bytes));
}

/// Cuts [0, length) into pieces of eight, four and one.
template<class Eight, class Four, class One>
inline void ForEachOctet(unsigned length, Eight&& eight, Four&& four, One&& one)
{
    unsigned i = 0;
    for (; i + 8 <= length; i += 8)
        eight(i);
    if (i + 4 <= length) {
        four(i);
        i += 4;
    }
    for (; i < length; ++i)
        one(i);
}

using EightCovers = std::uint8_t __attribute__((vector_size(8)));
using FourCovers = std::uint8_t __attribute__((vector_size(4)));
using EightLanes = std::uint16_t __attribute__((vector_size(16)));
using FourLanes = std::uint16_t __attribute__((vector_size(8)));

/// Writes a[i]·b/255, rounded. \param out must not overlap the operand.
inline void MultiplyCovers(unsigned char* out, const unsigned char* a, unsigned char b,
                           unsigned length) noexcept
{
    const EightLanes eight = EightLanes{} + b;
    const FourLanes four = FourLanes{} + b;
    ForEachOctet(
        length, [&](unsigned i) { MultiplyLanes<EightLanes, EightCovers>(out + i, a + i, eight); },
        [&](unsigned i) { MultiplyLanes<FourLanes, FourCovers>(out + i, a + i, four); },
        [&](unsigned i) { out[i] = MultiplyBytes(a[i], b); });
}

/// Writes a[i]·b[i]/255, rounded. \param out must not overlap the operands.
inline void MultiplyCovers(unsigned char* out, const unsigned char* a, const unsigned char* b,
                           unsigned length) noexcept
{
    const auto load = [&]<class Bytes, class Lanes>(unsigned i, Bytes bytes, Lanes) {
        std::memcpy(&bytes, b + i, sizeof(bytes));
        MultiplyLanes<Lanes, Bytes>(out + i, a + i, __builtin_convertvector(bytes, Lanes));
    };
    ForEachOctet(
        length, [&](unsigned i) { load(i, EightCovers{}, EightLanes{}); },
        [&](unsigned i) { load(i, FourCovers{}, FourLanes{}); },
        [&](unsigned i) { out[i] = MultiplyBytes(a[i], b[i]); });
}

} // namespace Renderer::Coverage
