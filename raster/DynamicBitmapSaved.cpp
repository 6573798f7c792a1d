#include <raster/DynamicBitmap.h>

#include <kernel/ClassProperties.h>
#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>
#include <raster/CodecSupport.h>
#include <raster/CompressedRasterData.h>
#include <raster/EnumSerialisers.h>
#include <raster/SavedICCProfile.h>

namespace Raster {

const Kernel::ClassProperties& DynamicBitmap::GetTypeClassProperties()
{
    static constexpr Kernel::ClassPropertiesBase::DefaultItem NoDefaults[] = {{}};
    static const auto& record = *new Kernel::ClassProperties("DBmp", &CreateObject, 1, NoDefaults,
                                                             nullptr, "DynamicBitmap");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = DynamicBitmap::GetTypeClassProperties();

} // namespace

const Kernel::ClassProperties& DynamicBitmap::GetObjectClassProperties() const
{
    return GetTypeClassProperties();
}

Kernel::Counted<Kernel::Serialisable> DynamicBitmap::CreateObject()
{
    return Kernel::Counted<Kernel::Serialisable>(new DynamicBitmap);
}

void DynamicBitmap::Save(Kernel::OutSerialiser& out) const
{
    out.SaveEnumI("Frmt", FormatEnumSerialiser::GetInstance(), static_cast<int>(m_format));
    out.SaveTypeI("Widt", static_cast<std::int32_t>(m_width));
    out.SaveTypeI("Heig", static_cast<std::int32_t>(m_height));
    if (m_profile)
        out.SaveSharedObject("Prof", SavedICCProfile::Create(m_profile));
    out.SaveDelayLoadObject("Data", GetCompressedData()->GetBytes());
}

bool DynamicBitmap::Load(const Kernel::InSerialiser& in, Kernel::FileStore& store, unsigned short)
{
    std::int32_t width = 0, height = 0;
    Kernel::DelayLoadHolder data;
    if (!in.LoadEnumI("Frmt", FormatEnumSerialiser::GetInstance(), m_format) ||
        !in.LoadTypeI("Widt", width) || !in.LoadTypeI("Heig", height) || width <= 0 ||
        height <= 0 || !in.LoadDelayLoadObject("Data", store, data) || data.IsEmpty())
        return false;
    m_width = static_cast<unsigned>(width);
    m_height = static_cast<unsigned>(height);
    Kernel::Consolidated<SavedICCProfile> profile;
    if (in.LoadSharedObjectI("Prof", profile) && profile &&
        IsOfFormat(*profile->GetProfile(), m_format))
        m_profile = profile->GetProfile();
    m_pixels->data = Kernel::MakeCounted<const CompressedRasterData>(std::move(data));
    m_pixels->isDecoded.store(false, std::memory_order_relaxed); // nobody else knows the object yet
    return true;
}

} // namespace Raster
