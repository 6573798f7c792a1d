#pragma once

#include <cstddef>
#include <cstring>

#include <renderer/core/blend/CoverageWeights.h>
#include <renderer/core/blend/IntegerArithmetic.h>
#include <renderer/core/blend/PixelPlanes.h>

namespace Renderer::Blending {

/// Weights where there is nothing to compute.
template<class Covers>
void FillWeights(FullWeight*, Covers, const unsigned char*, const CoverageGamma*, unsigned)
{}

/// Composites a block of any length up to BlockLength. Vector code wants whole groups of pixels: a
/// block that has none is worked on in a copy.
template<class Kernel, class Pixel, class Weight>
void CompositeBlock(Pixel* destination, const Pixel* source, Weight* weights, unsigned count)
{
    const auto padded = static_cast<unsigned>(WholeGroups(count + GroupLength - 1));
    if (count == padded)
        return Kernel::Block(destination, source, weights, count);
    // Bytes, because pixels would be set to 0 first.
    alignas(32) std::byte destinationCopy[BlockLength * sizeof(Pixel)];
    alignas(32) std::byte sourceCopy[BlockLength * sizeof(Pixel)];
    const std::size_t size = count * sizeof(Pixel);
    const std::size_t padding = padded * sizeof(Pixel) - size;
    std::memcpy(destinationCopy, destination, size);
    std::memset(destinationCopy + size, 0, padding);
    std::memcpy(sourceCopy, source, size);
    std::memset(sourceCopy + size, 0, padding);
    for (unsigned i = count; i < padded; ++i)
        weights[i] = Weight{};
    Kernel::Block(reinterpret_cast<Pixel*>(destinationCopy),
                  reinterpret_cast<const Pixel*>(sourceCopy), weights, padded);
    std::memcpy(destination, destinationCopy, size);
}

/// The span loop: every blend function is an instance of it.
/// \tparam Weight what the kernel takes as weights here.
/// \tparam Covers OneCover or coverage bytes.
template<class Kernel, class Weight, class Covers>
void CompositeSpan(typename Kernel::Pixel* destination, const unsigned char* mask,
                   const typename Kernel::Pixel* source, Covers covers, const CoverageGamma* gamma,
                   unsigned length)
{
    alignas(32) Weight weights[BlockLength];
    for (unsigned begin = 0; begin < length; begin += BlockLength) {
        const unsigned count = length - begin < BlockLength ? length - begin : BlockLength;
        FillWeights(weights, covers + begin, mask ? mask + begin : nullptr, gamma, count);
        CompositeBlock<Kernel>(destination + begin, source + begin, weights, count);
    }
}

} // namespace Renderer::Blending
