#include <raster/ICCManager.h>

#include <kernel/HashAccumulator.h>

namespace Raster {

namespace {

using Profile = Kernel::Counted<const ICCProfile>;

void SetSlot(Profile& slot, Profile profile, ColourSpace space)
{
    if (!profile || profile->GetColourSpace() == space)
        slot = std::move(profile);
}

std::uint64_t GetIdentity(const Profile& profile) noexcept
{
    return profile ? profile->GetIdentity() : 0;
}

/// Equal bytes give one object, so addresses decide.
bool IsSame(const Profile& a, const Profile& b) noexcept
{
    return a.Get() == b.Get();
}

} // namespace

void ICCManager::ICCProfileSet::SetRGB(Profile profile)
{
    SetSlot(m_rgb, std::move(profile), ColourSpace::RGB);
}

void ICCManager::ICCProfileSet::SetAlternativeRGB(Profile profile)
{
    SetSlot(m_alternativeRGB, std::move(profile), ColourSpace::RGB);
}

void ICCManager::ICCProfileSet::SetGrey(Profile profile)
{
    SetSlot(m_grey, std::move(profile), ColourSpace::Grey);
}

void ICCManager::ICCProfileSet::SetCMYK(Profile profile)
{
    SetSlot(m_cmyk, std::move(profile), ColourSpace::CMYK);
}

void ICCManager::ICCProfileSet::SetLAB(Profile profile)
{
    SetSlot(m_lab, std::move(profile), ColourSpace::LAB);
}

Profile ICCManager::ICCProfileSet::GetProfile(Format format) const
{
    switch (format) {
    case Format::RGBA8:
    case Format::RGBA16:
        return m_rgb;
    case Format::RGBAUF:
        return m_alternativeRGB;
    case Format::IA8:
    case Format::IA16:
        return m_grey;
    case Format::CMYKA8:
        return m_cmyk;
    case Format::LABA16:
        return m_lab;
    case Format::M8:
    case Format::M16:
    case Format::MF:
    case Format::None:
        break;
    }
    return nullptr;
}

void ICCManager::ICCProfileSet::SetProfile(Format format, Profile profile)
{
    switch (format) {
    case Format::RGBA8:
    case Format::RGBA16:
        return SetRGB(std::move(profile));
    case Format::RGBAUF:
        return SetAlternativeRGB(std::move(profile));
    case Format::IA8:
    case Format::IA16:
        return SetGrey(std::move(profile));
    case Format::CMYKA8:
        return SetCMYK(std::move(profile));
    case Format::LABA16:
        return SetLAB(std::move(profile));
    case Format::M8:
    case Format::M16:
    case Format::MF:
    case Format::None:
        break;
    }
}

bool operator==(const ICCManager::ICCProfileSet& a, const ICCManager::ICCProfileSet& b) noexcept
{
    return IsSame(a.m_rgb, b.m_rgb) && IsSame(a.m_alternativeRGB, b.m_alternativeRGB) &&
           IsSame(a.m_grey, b.m_grey) && IsSame(a.m_cmyk, b.m_cmyk) && IsSame(a.m_lab, b.m_lab);
}

std::uint64_t ICCManager::ICCProfileSet::GetHash() const noexcept
{
    Kernel::HashAccumulator hash;
    for (const Profile* profile : {&m_rgb, &m_alternativeRGB, &m_grey, &m_cmyk, &m_lab})
        hash.Add(GetIdentity(*profile));
    return hash.GetHash();
}

} // namespace Raster
