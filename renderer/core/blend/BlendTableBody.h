#pragma once

#include <tuple>
#include <type_traits>
#include <utility>

#include <renderer/core/blend/AlphaOnlyKernel.h>
#include <renderer/core/blend/BlendTable.h>
#include <renderer/core/blend/FlatKernel.h>
#include <renderer/core/blend/InterpolationKernel.h>
#include <renderer/core/blend/Processor.h>
#include <renderer/core/blend/SolidNormal.h>
#include <renderer/core/blend/SpanLoop.h>
#include <renderer/core/blend/WordNormal.h>

/// \file
/// The bodies behind BlendTable.h; included by the files that instantiate it and by nothing else.

namespace Renderer::Blending {

/// Mode 32 has no formula of its own.
constexpr BlendMode GetFormulaMode(BlendMode mode)
{
    return mode == FillBlendMode::Nameless ? FillBlendMode::Normal : mode;
}

/// Whether all channels of a pixel go the same way, alpha included.
constexpr bool IsFlat(BlendMode mode)
{
    return mode == FillBlendMode::Normal || mode == FillBlendMode::Erase ||
           mode == FillBlendMode::Mask;
}

/// What composites blocks of pixels by a mode.
/// \tparam Code the processor to compile for.
template<class PixelT, BlendMode mode, class Code>
using KernelOf =
    std::conditional_t<IsFlat(mode) && !IsUnbounded<PixelT>, FlatKernel<PixelT, mode, Code>,
                       PlaneKernel<PixelT, mode, Code>>;

/// The blend functions of one kernel.
template<class KernelT>
struct SpanFunctions
{
    using Pixel = typename KernelT::Pixel;

    /// Flat kernels do without words where coverage bytes are the weights.
    static constexpr bool HasFlatWeights = std::is_same_v<typename KernelT::Weight, std::uint16_t>;
    static constexpr bool TakesBytes = HasFlatWeights && sizeof(typename Pixel::ChannelType) == 1;

    template<class Covers>
    static void Composite(void* destination, const unsigned char* mask, const void* scratch,
                          Covers covers, double gammaRatio, unsigned length)
    {
        const auto d = static_cast<Pixel*>(destination);
        const auto s = static_cast<const Pixel*>(scratch);
        if constexpr (HasFlatWeights && std::is_same_v<Covers, OneCover>) {
            if (covers.cover == 255 && !mask)
                return CompositeSpan<KernelT, FullWeight>(d, mask, s, covers, nullptr, length);
        }
        const CoverageGamma* gamma = gammaRatio == 1.0 ? nullptr : &GetCoverageGamma(gammaRatio);
        if constexpr (TakesBytes) {
            if (!gamma && !mask)
                return CompositeSpan<KernelT, std::uint8_t>(d, mask, s, covers, gamma, length);
        }
        CompositeSpan<KernelT, typename KernelT::Weight>(d, mask, s, covers, gamma, length);
    }

    static void Run(void* destination, const unsigned char* mask, const void* scratch,
                    unsigned char cover, double gammaRatio, unsigned length)
    {
        if (cover != 0)
            Composite(destination, mask, scratch, OneCover{cover}, gammaRatio, length);
    }

    static void Mask(void* destination, const unsigned char* mask, const void* scratch,
                     const unsigned char* covers, double gammaRatio, unsigned length)
    {
        Composite(destination, mask, scratch, covers, gammaRatio, length);
    }

    static constexpr SpanBlend Entry{&Run, &Mask};
};

/// Normal for pixels that are words: fused roads where there is neither gamma nor mask.
template<class PixelT, class Code>
struct WordFunctions
{
    using General = SpanFunctions<FlatKernel<PixelT, FillBlendMode::Normal, Code>>;

    static void Run(void* destination, const unsigned char* mask, const void* scratch,
                    unsigned char cover, double gammaRatio, unsigned length)
    {
        if (mask || gammaRatio != 1.0)
            return General::Run(destination, mask, scratch, cover, gammaRatio, length);
        Code::template Call<SpanRun<PixelT, Code>>(destination, scratch, cover, length);
    }

    static void Mask(void* destination, const unsigned char* mask, const void* scratch,
                     const unsigned char* covers, double gammaRatio, unsigned length)
    {
        if (mask || gammaRatio != 1.0)
            return General::Mask(destination, mask, scratch, covers, gammaRatio, length);
        Code::template Call<SpanMask<PixelT, Code>>(destination, scratch, covers, length);
    }

    static constexpr SpanBlend Entry{
        &Run, &Mask,
        &Code::template Call<SolidRun<PixelT, Code>, void*, std::ptrdiff_t, unsigned, const void*,
                             unsigned char, unsigned>,
        &Code::template Call<SolidMask<PixelT, Code>, void*, std::ptrdiff_t, unsigned, const void*,
                             const unsigned char*, unsigned>,
        true};
};

template<class PixelT, BlendMode mode, class Code>
constexpr SpanBlend MakeEntry()
{
    if constexpr (mode == FillBlendMode::Normal && HasWordNormal<PixelT>) {
        return WordFunctions<PixelT, Code>::Entry;
    } else {
        using Functions = SpanFunctions<KernelOf<PixelT, mode, Code>>;
        SpanBlend entry = Functions::Entry;
        if constexpr (mode == FillBlendMode::Normal) {
            using Solid = SolidFlatFunctions<Functions, Code>;
            entry.solidRun = &Solid::Run;
            entry.solidMask = &Solid::Mask;
            entry.opaqueReplaces = true;
        }
        return entry;
    }
}

/// The entry of a mode for drawing alpha alone. Whatever a mode does to colour, it adds up alphas
/// like Normal, but for the two that scale the backdrop.
template<class PixelT, BlendMode mode, class Code>
constexpr SpanBlend MakeAlphaEntry()
{
    constexpr BlendMode rule = IsFlat(mode) ? mode : FillBlendMode::Normal;
    return SpanFunctions<AlphaOnlyKernel<KernelOf<PixelT, rule, Code>>>::Entry;
}

template<class PixelT, class Code, bool alphaOnly, std::size_t... modes>
constexpr SpanBlendSet MakeSpanBlendSet(std::index_sequence<modes...>)
{
    if constexpr (alphaOnly)
        return {{MakeAlphaEntry<PixelT, GetFormulaMode(static_cast<BlendMode>(modes)), Code>()...},
                InterpolationFunctions<AlphaOnlyKernel<InterpolationKernel<PixelT, Code>>>::Entry};
    else
        return {{MakeEntry<PixelT, GetFormulaMode(static_cast<BlendMode>(modes)), Code>()...},
                InterpolationFunctions<InterpolationKernel<PixelT, Code>>::Entry};
}

/// The functions for one kind of processor.
template<class PixelT, class Code, bool alphaOnly>
inline constexpr SpanBlendSet SpanBlendSetOf = MakeSpanBlendSet<PixelT, Code, alphaOnly>(
    std::make_index_sequence<FillBlendMode::Nameless + 1>{});

static_assert(std::tuple_size_v<SpanBlendTable> == FillBlendMode::Nameless + 1,
              "one entry per blend mode");

} // namespace Renderer::Blending

template<class PixelT>
const Renderer::SpanBlendSet&
Renderer::RenderTargetBlender<PixelT>::GetBaselineBlends(bool alphaOnly)
{
    using Code = Blending::BaselineCode;
    return alphaOnly ? Blending::SpanBlendSetOf<PixelT, Code, true>
                     : Blending::SpanBlendSetOf<PixelT, Code, false>;
}

template<class PixelT>
const Renderer::SpanBlendSet* Renderer::RenderTargetBlender<PixelT>::GetWideBlends(bool alphaOnly)
{
    using Code = Blending::WideCode;
    if (!Blending::HasWideCode())
        return nullptr;
    return alphaOnly ? &Blending::SpanBlendSetOf<PixelT, Code, true>
                     : &Blending::SpanBlendSetOf<PixelT, Code, false>;
}

template<class PixelT>
const Renderer::SpanBlendSet& Renderer::RenderTargetBlender<PixelT>::GetBlends(bool alphaOnly)
{
    static const bool isWide = Blending::HasWideCode();
    return isWide ? *GetWideBlends(alphaOnly) : GetBaselineBlends(alphaOnly);
}
