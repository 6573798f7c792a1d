#include <renderer/paint/FillBitmap.h>

#include <renderer/paint/ColourVisitor.h>
#include <renderer/paint/FillPixels.h>

namespace Renderer {

FillBitmap::FillBitmap(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
                       Raster::ExtendType extend, Raster::ResamplerType upSampler, bool ignoreAlpha)
    : m_bitmap(bitmap), m_extend(extend), m_upSampler(upSampler), m_ignoreAlpha(ignoreAlpha)
{}

Kernel::Consolidated<FillBitmap>
FillBitmap::Create(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
                   Raster::ExtendType extend, Raster::ResamplerType upSampler, bool ignoreAlpha)
{
    return Share(Kernel::MakeCounted<FillBitmap>(bitmap, extend, upSampler, ignoreAlpha));
}

const Kernel::SharedClassProperties& FillBitmap::GetTypeSharedClassProperties()
{
    static const auto& record = *new Kernel::SharedClassProperties;
    return record;
}

void FillBitmap::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.AddAddress(m_bitmap.Get());
    hash.Add(m_extend);
    hash.Add(m_upSampler);
    hash.Add(m_ignoreAlpha);
}

bool FillBitmap::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    const auto& fill = static_cast<const FillBitmap&>(other);
    return m_bitmap == fill.m_bitmap && m_extend == fill.m_extend &&
           m_upSampler == fill.m_upSampler && m_ignoreAlpha == fill.m_ignoreAlpha;
}

double FillBitmap::GetMeanAlpha() const
{
    if (!m_bitmap || !m_bitmap->GetBuffer())
        return 0.0;
    return m_ignoreAlpha ? 1.0 : GetMeanAlphaOfPixels(*m_bitmap->GetBuffer());
}

Kernel::Counted<const Fill> FillBitmap::Accept(ColourVisitor& visitor) const
{
    const Kernel::Counted<const FillBitmap> self(this);
    const auto answer = visitor.Visit(self);
    return answer ? answer : self;
}

} // namespace Renderer
