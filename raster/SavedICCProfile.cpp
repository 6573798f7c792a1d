#include <raster/SavedICCProfile.h>

#include <kernel/FormatException.h>
#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>

namespace Raster {

Kernel::Consolidated<SavedICCProfile>
SavedICCProfile::Create(const Kernel::Counted<const ICCProfile>& profile)
{
    const auto fresh = Kernel::MakeCounted<SavedICCProfile>();
    fresh->m_profile = profile;
    return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(fresh);
}

const Kernel::SharedClassProperties& SavedICCProfile::GetTypeSharedClassProperties()
{
    static const auto& record = *new Kernel::SharedClassProperties(
        "ICCP", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "ICCProfile");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = SavedICCProfile::GetTypeSharedClassProperties();

} // namespace

void SavedICCProfile::Save(Kernel::OutSerialiser& out) const
{
    const auto& bytes = m_profile->GetBytes();
    out.SaveRawStructI("Prof", bytes.data(), bytes.size());
}

bool SavedICCProfile::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    std::span<const unsigned char> bytes;
    if (!in.LoadRawStructI("Prof", bytes))
        return false;
    try {
        m_profile = ICCProfile::Create(bytes);
        return true;
    } catch (const Kernel::FormatException&) {
        return false; // a picture in assumed colours is better than none
    }
}

void SavedICCProfile::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.AddAddress(m_profile.Get());
}

bool SavedICCProfile::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return m_profile == static_cast<const SavedICCProfile&>(other).m_profile;
}

} // namespace Raster
