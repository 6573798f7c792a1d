#include <renderer/paint/FillBuffer.h>

#include <kernel/SavedItems.h>
#include <raster/EnumSerialisers.h>
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
    static const auto& record =
        *new Kernel::SharedClassProperties("FlBu", &CreateObject, 1, __GetDefaultSerialisation(),
                                           &Fill::GetTypeSharedClassProperties(), "FillBuffer");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = FillBuffer::GetTypeSharedClassProperties();

} // namespace

template<class Self, class Items>
void FillBuffer::ListItems(Self& self, Items&& items)
{
    items.Enum("ExtT", Raster::ExtendTypeEnumSerialiser::GetInstance(), self.m_extend);
    items.Enum("ResT", Raster::ResamplerTypeEnumSerialiser::GetInstance(), self.m_upSampler);
}

void FillBuffer::Save(Kernel::OutSerialiser& out) const
{
    // Buffers change: what is deflated now must not be taken for their pixels later.
    const auto bitmap =
        m_buffer ? Kernel::MakeCounted<const Raster::DynamicBitmap>(m_buffer) : m_saved;
    if (bitmap)
        out.SaveObject("Bitm", bitmap);
    ListItems(*this, Kernel::SavedItems::Writer(out));
}

bool FillBuffer::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    Kernel::SavedItems::Reader items(in);
    items.OptionalObject("Bitm", m_saved);
    ListItems(*this, items);
    return true;
}

void FillBuffer::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.AddAddress(m_buffer.Get());
    hash.AddAddress(m_saved.Get());
    hash.Add(m_extend);
    hash.Add(m_upSampler);
}

bool FillBuffer::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    const auto& fill = static_cast<const FillBuffer&>(other);
    return m_buffer == fill.m_buffer && m_saved == fill.m_saved && m_extend == fill.m_extend &&
           m_upSampler == fill.m_upSampler;
}

double FillBuffer::GetMeanAlpha() const
{
    return GetBuffer() ? GetMeanAlphaOfPixels(*GetBuffer()) : 0.0;
}

Kernel::Counted<const Fill> FillBuffer::Accept(ColourVisitor&) const
{
    return Kernel::Counted<const Fill>(this);
}

} // namespace Renderer
