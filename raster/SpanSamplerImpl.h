#pragma once

// The definitions of SpanSampler, for the files that instantiate it.

#include <type_traits>
#include <utility>

#include <kernel/Processor.h>
#include <raster/CopyLoops.h>
#include <raster/FilterLoops.h>
#include <raster/Resample.h>
#include <raster/UnitStepLoops.h>

namespace Raster {

namespace Resampling {

template<class Loop, class P, class Code>
void RunLoop(const MappedPicture& picture, void* table, int x, int y, unsigned length, void* out)
{
    Code::template Call<Loop>(&picture, static_cast<ColumnTable<RealOf<P>>*>(table), x, y, length,
                              static_cast<P*>(out));
}

template<class P>
void WriteTransparent(const MappedPicture&, void*, int, int, unsigned length, void* out)
{
    std::fill_n(static_cast<P*>(out), length, P{});
}

template<class P, class Filter, class Code>
SpanFunction GetFilterLoop(MapKind kind) noexcept
{
    if constexpr (std::is_same_v<Filter, BilinearFilter>)
        if (kind == MapKind::UnitSteps)
            return &RunLoop<BilinearUnitSteps<P>, P, Code>;
    return kind == MapKind::Any ? &RunLoop<FilterAny<P, Filter>, P, Code>
                                : &RunLoop<FilterRows<P, Filter, Code>, P, Code>;
}

/// The loop for a map that is no whole-pixel translation.
template<class P, class Code>
SpanFunction GetLoop(ResamplerType up, MapKind kind) noexcept
{
    switch (up) {
    case ResamplerType::NearestNeighbour:
        if (kind == MapKind::UnitSteps)
            return &RunLoop<NearestUnitSteps<P>, P, Kernel::BaselineCode>;
        return kind == MapKind::Rows ? &RunLoop<NearestRows<P>, P, Code>
                                     : &RunLoop<NearestAny<P>, P, Code>;
    case ResamplerType::Bilinear:
        return GetFilterLoop<P, BilinearFilter, Code>(kind);
    case ResamplerType::Bicubic:
        return GetFilterLoop<P, CatmullRomFilter, Code>(kind);
    case ResamplerType::Lanczos3:
        return GetFilterLoop<P, Lanczos3Filter, Code>(kind);
    }
    return &WriteTransparent<P>;
}

} // namespace Resampling

template<class P>
SpanSampler<P>::SpanSampler(Kernel::Counted<const DynamicBuffer> source,
                            const AffineTransform::Params& deviceToUnit, ResamplerType up,
                            ResamplerType down, ExtendType extend, SamplerCode code)
    : m_source(std::move(source)), m_sample(&Resampling::WriteTransparent<P>)
{
    if (!m_source || m_source->GetFormat() != FormatOfPixel<P>)
        return;
    m_source->SyncHostCache();
    if (down != ResamplerType::NearestNeighbour) {
        const PictureSize size{m_source->GetWidth(), m_source->GetHeight()};
        const PictureSize reducedSize = GetReducedSize(size, deviceToUnit);
        // When the memory for it is missing, the unreduced picture still gives an answer.
        if (reducedSize != size)
            if (auto reduced = ReduceByArea(m_source, reducedSize.width, reducedSize.height))
                m_source = std::move(reduced);
    }
    m_picture.pixels = m_source->GetData();
    m_picture.stride = m_source->GetStride();
    m_picture.width = int(m_source->GetWidth());
    m_picture.height = int(m_source->GetHeight());
    m_picture.extend = extend;
    if (Resampling::SetMap(m_picture, deviceToUnit))
        ChooseLoop(up, code);
}

template<class P>
void SpanSampler<P>::ChooseLoop(ResamplerType up, SamplerCode code) noexcept
{
    using namespace Resampling;
    const bool isNearest = up == ResamplerType::NearestNeighbour;
    MapKind kind = ClassifyMap(m_picture, isNearest);
    m_isCopy = kind == MapKind::WholePixels;
    // Sums of float weights may miss 1 by their rounding.
    m_keepsOpacity = m_picture.extend != ExtendType::Transparent &&
                     (m_isCopy || isNearest || std::is_integral_v<typename P::ChannelType>);
    if (m_isCopy) {
        m_sample = &RunLoop<CopyWholePixels<P>, P, Kernel::BaselineCode>;
        return;
    }
    if (code == SamplerCode::General)
        kind = MapKind::Any;
    // The other loops read a ColumnTable.
    m_isConcurrent = kind == MapKind::Any ||
                     (kind == MapKind::UnitSteps && (isNearest || up == ResamplerType::Bilinear));
    static const bool hasWideCode = Kernel::HasWideCode();
    m_sample = hasWideCode && code != SamplerCode::Baseline
                   ? GetLoop<P, Kernel::WideCode>(up, kind)
                   : GetLoop<P, Kernel::BaselineCode>(up, kind);
}

} // namespace Raster
