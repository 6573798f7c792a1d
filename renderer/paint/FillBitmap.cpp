#include <renderer/paint/FillBitmap.h>

#include <kernel/DelayLoadHolder.h>
#include <kernel/SavedItems.h>
#include <raster/EnumSerialisers.h>
#include <renderer/paint/ColourVisitor.h>
#include <renderer/paint/FillPixels.h>

namespace Renderer {

FillBitmap::FillBitmap(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
                       Raster::ExtendType extend, Raster::ResamplerType upSampler, bool ignoreAlpha,
                       const Kernel::Counted<const Raster::CompressedRasterData>& original)
    : m_bitmap(bitmap),
      m_extend(extend),
      m_upSampler(upSampler),
      m_ignoreAlpha(ignoreAlpha),
      m_original(original)
{}

Kernel::Consolidated<FillBitmap>
FillBitmap::Create(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
                   Raster::ExtendType extend, Raster::ResamplerType upSampler, bool ignoreAlpha,
                   const Kernel::Counted<const Raster::CompressedRasterData>& original)
{
    return Share(Kernel::MakeCounted<FillBitmap>(bitmap, extend, upSampler, ignoreAlpha, original));
}

Kernel::Consolidated<FillBitmap>
FillBitmap::WithBitmap(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
                       bool isSame) const
{
    return Create(bitmap, m_extend, m_upSampler, m_ignoreAlpha, isSame ? m_original : nullptr);
}

const Kernel::SharedClassProperties& FillBitmap::GetTypeSharedClassProperties()
{
    static const auto& record =
        *new Kernel::SharedClassProperties("FilB", &CreateObject, 1, __GetDefaultSerialisation(),
                                           &Fill::GetTypeSharedClassProperties(), "FillBitmap");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = FillBitmap::GetTypeSharedClassProperties();

/// Tells sources apart: by their bytes, of which copies share the identity.
const void* GetIdentity(const Kernel::Counted<const Raster::CompressedRasterData>& data)
{
    return data ? data->GetBytes().GetIdentity() : nullptr;
}

} // namespace

template<class Self, class Items>
void FillBitmap::ListItems(Self& self, Items&& items)
{
    items.OptionalObject("Bitm", self.m_bitmap);
    items.Enum("ExtT", Raster::ExtendTypeEnumSerialiser::GetInstance(), self.m_extend);
    items.Enum("ResT", Raster::ResamplerTypeEnumSerialiser::GetInstance(), self.m_upSampler);
    items.Always("IgnA", self.m_ignoreAlpha);
}

void FillBitmap::Save(Kernel::OutSerialiser& out) const
{
    ListItems(*this, Kernel::SavedItems::Writer(out));
    if (m_original)
        out.SaveDelayLoadObject("Orig", m_original->GetBytes());
}

bool FillBitmap::Load(const Kernel::InSerialiser& in, Kernel::FileStore& store, unsigned short)
{
    ListItems(*this, Kernel::SavedItems::Reader(in));
    Kernel::DelayLoadHolder original;
    if (in.LoadDelayLoadObject("Orig", store, original) && !original.IsEmpty())
        m_original = Kernel::MakeCounted<const Raster::CompressedRasterData>(std::move(original));
    return true;
}

Kernel::Counted<const Raster::CompressedRasterData> FillBitmap::GetOriginalData() const
{
    if (m_original || !m_bitmap)
        return m_original;
    return m_bitmap->GetCompressedData();
}

void FillBitmap::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.AddAddress(m_bitmap.Get());
    hash.Add(m_extend);
    hash.Add(m_upSampler);
    hash.Add(m_ignoreAlpha);
    hash.AddAddress(GetIdentity(m_original));
}

bool FillBitmap::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    const auto& fill = static_cast<const FillBitmap&>(other);
    return m_bitmap == fill.m_bitmap && m_extend == fill.m_extend &&
           m_upSampler == fill.m_upSampler && m_ignoreAlpha == fill.m_ignoreAlpha &&
           GetIdentity(m_original) == GetIdentity(fill.m_original);
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
