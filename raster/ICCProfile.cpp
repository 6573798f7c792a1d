#include <raster/ICCProfile.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <string_view>
#include <unordered_map>

#include <kernel/FormatException.h>
#include <kernel/HashAccumulator.h>
#include <raster/ICCLayout.h>
#include <raster/ICCLcms.h>

namespace Raster {

namespace {

constexpr std::size_t HeaderSize = 128;

/// The living profiles by identity, so that equal bytes give one object. Owns nothing; never
/// destroyed, since profiles may live in other static objects.
struct ProfileTable
{
    std::mutex mutex;
    std::unordered_multimap<std::uint64_t, const ICCProfile*> profiles;

    static ProfileTable& Get()
    {
        static ProfileTable& table = *new ProfileTable;
        return table;
    }

    /// The living profile of these bytes, or null. \pre the mutex is held.
    Kernel::Counted<const ICCProfile> Find(std::uint64_t identity,
                                           std::span<const unsigned char> bytes)
    {
        const auto [first, last] = profiles.equal_range(identity);
        for (auto entry = first; entry != last; ++entry) {
            // A dying profile waits for the mutex before its members go, so its bytes can be read.
            if (std::ranges::equal(entry->second->GetBytes(), bytes) && entry->second->TryRetain())
                return Kernel::Counted<const ICCProfile>::Adopt(entry->second);
        }
        return nullptr;
    }
};

std::uint64_t HashBytes(std::span<const unsigned char> bytes)
{
    Kernel::HashAccumulator hash;
    hash.Add(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    return hash.GetHash();
}

/// The part of the bytes that the header's size field names (ICC.1:2010, 7.2.2).
std::span<const unsigned char> TrimToHeader(std::span<const unsigned char> bytes)
{
    if (bytes.size() < HeaderSize)
        throw Kernel::FormatException("the colour profile is shorter than its header",
                                      bytes.size());
    const std::size_t size = std::size_t(bytes[0]) << 24 | std::size_t(bytes[1]) << 16 |
                             std::size_t(bytes[2]) << 8 | std::size_t(bytes[3]);
    if (size < HeaderSize || size > bytes.size())
        throw Kernel::FormatException("the colour profile is truncated", bytes.size());
    return bytes.first(size);
}

std::optional<ColourSpace> GetSupportedSpace(cmsHPROFILE profile)
{
    switch (cmsGetColorSpace(profile)) {
    case cmsSigRgbData:
        return ColourSpace::RGB;
    case cmsSigGrayData:
        return ColourSpace::Grey;
    case cmsSigCmykData:
        return ColourSpace::CMYK;
    case cmsSigLabData:
        return ColourSpace::LAB;
    default:
        return std::nullopt;
    }
}

/// Device links and named colours are no spaces. Lab itself is commonly described by an abstract
/// profile.
bool IsSupportedClass(cmsHPROFILE profile, ColourSpace space)
{
    switch (cmsGetDeviceClass(profile)) {
    case cmsSigInputClass:
    case cmsSigDisplayClass:
    case cmsSigOutputClass:
    case cmsSigColorSpaceClass:
        return true;
    case cmsSigAbstractClass:
        return space == ColourSpace::LAB && cmsGetPCS(profile) == cmsSigLabData;
    default:
        return false;
    }
}

/// Makes a transform to Lab, which reads every tag that a source profile needs.
bool CanBeSource(const LcmsOpenedProfile& opened, ColourSpace space)
{
    const LcmsProfile lab(cmsCreateLab4ProfileTHR(opened.context.get(), nullptr));
    if (!lab)
        return false;
    const LcmsTransform transform(cmsCreateTransformTHR(
        opened.context.get(), opened.profile.get(), GetLcmsPixelType({space, ICCDepth::U16}),
        lab.get(), GetLcmsPixelType({ColourSpace::LAB, ICCDepth::U16}),
        INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE));
    return static_cast<bool>(transform);
}

/// \throws Kernel::FormatException
ColourSpace Validate(const std::vector<unsigned char>& bytes)
{
    const LcmsOpenedProfile opened = OpenLcmsProfile(bytes);
    if (!opened)
        throw Kernel::FormatException("this is not a colour profile");
    const auto space = GetSupportedSpace(opened.profile.get());
    if (!space)
        throw Kernel::FormatException("the colour profile is of an unsupported colour space");
    if (!IsSupportedClass(opened.profile.get(), *space))
        throw Kernel::FormatException("the colour profile does not describe a colour space");
    if (!CanBeSource(opened, *space))
        throw Kernel::FormatException("the colour profile is damaged");
    return *space;
}

} // namespace

Kernel::Counted<const ICCProfile> ICCProfile::Create(std::span<const unsigned char> bytes)
{
    bytes = TrimToHeader(bytes);
    const std::uint64_t identity = HashBytes(bytes);
    ProfileTable& table = ProfileTable::Get();
    {
        const std::scoped_lock lock(table.mutex);
        if (auto known = table.Find(identity, bytes))
            return known;
    }

    std::vector<unsigned char> copy(bytes.begin(), bytes.end());
    const ColourSpace space = Validate(copy);
    // Made before the lock: if another thread was faster, this one dies after the lock is released.
    const Kernel::Counted<const ICCProfile> profile(new ICCProfile(std::move(copy), space));
    const std::scoped_lock lock(table.mutex);
    if (auto known = table.Find(identity, bytes))
        return known;
    table.profiles.emplace(identity, profile.Get());
    return profile;
}

ICCProfile::ICCProfile(std::vector<unsigned char> bytes, ColourSpace space)
    : m_bytes(std::move(bytes)), m_space(space), m_identity(HashBytes(m_bytes))
{}

ICCProfile::~ICCProfile()
{
    ProfileTable& table = ProfileTable::Get();
    const std::scoped_lock lock(table.mutex);
    const auto [first, last] = table.profiles.equal_range(m_identity);
    const auto entry =
        std::find_if(first, last, [this](const auto& e) { return e.second == this; });
    if (entry != last)
        table.profiles.erase(entry);
}

} // namespace Raster
