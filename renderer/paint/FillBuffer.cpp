#include <renderer/paint/FillBuffer.h>

#include <renderer/paint/FillPixels.h>

namespace Renderer {

FillBuffer::FillBuffer(const Kernel::Counted<const Raster::DynamicBuffer>& buffer,
                       Raster::ExtendType extend, Raster::ResamplerType upSampler)
    : m_buffer(buffer), m_extend(extend), m_upSampler(upSampler)
{}

Kernel::Consolidated<FillBuffer>
FillBuffer::Create(const Kernel::Counted<const Raster::DynamicBuffer>& buffer,
                   Raster::ExtendType extend, Raster::ResamplerType upSampler)
{
    return Share(Kernel::MakeCounted<FillBuffer>(buffer, extend, upSampler));
}

const Kernel::SharedClassProperties& FillBuffer::GetTypeSharedClassProperties()
{
    static const auto& record = *new Kernel::SharedClassProperties;
    return record;
}

void FillBuffer::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.AddAddress(m_buffer.Get());
    hash.Add(m_extend);
    hash.Add(m_upSampler);
}

bool FillBuffer::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    const auto& fill = static_cast<const FillBuffer&>(other);
    return m_buffer == fill.m_buffer && m_extend == fill.m_extend &&
           m_upSampler == fill.m_upSampler;
}

double FillBuffer::GetMeanAlpha() const
{
    return m_buffer ? GetMeanAlphaOfPixels(*m_buffer) : 0.0;
}

Kernel::Counted<const Fill> FillBuffer::Accept(ColourVisitor&) const
{
    return Kernel::Counted<const Fill>(this);
}

} // namespace Renderer
