#include <raster/Codecs.h>

#include <algorithm>
#include <new>

#include <kernel/FormatException.h>
#include <raster/CodecSupport.h>
#include <raster/ICCLayout.h>
#include <raster/ICCManager.h>

namespace Raster {

namespace {

bool IsOfFormat(const ICCProfile& profile, Format format)
{
    const auto layout = GetICCLayout(format);
    return layout && layout->space == profile.GetColourSpace();
}

} // namespace

Kernel::Counted<DynamicBuffer> MakeDecodedBuffer(Format format, std::uint64_t width,
                                                 std::uint64_t height)
{
    if (width == 0 || height == 0)
        throw Kernel::FormatException("the picture has no pixels");
    if (width > MaxDecodedPixels / height)
        throw Kernel::FormatException("the picture is too large");
    auto buffer = DynamicBuffer::Create(format, unsigned(width), unsigned(height));
    if (!buffer)
        throw std::bad_alloc();
    return buffer;
}

Kernel::Counted<const ICCProfile> ReadEmbeddedProfile(std::span<const unsigned char> bytes,
                                                      Format format)
{
    if (bytes.empty())
        return nullptr;
    try {
        auto profile = ICCProfile::Create(bytes);
        return IsOfFormat(*profile, format) ? profile : nullptr;
    } catch (const Kernel::FormatException&) {
        return nullptr; // a picture in assumed colours is better than none
    }
}

Kernel::Counted<const ICCProfile>
GetProfileToEmbed(Format format, const Kernel::Counted<const ICCProfile>& profile)
{
    const bool isDefault = profile == ICCManager::GetInstance().GetDefaultProfileForFormat(format);
    return profile && !isDefault && IsOfFormat(*profile, format) ? profile : nullptr;
}

Kernel::Counted<const DynamicBitmap> ReadImage(std::span<const unsigned char> bytes)
{
    constexpr unsigned char png[] = {0x89, 'P', 'N', 'G'};
    constexpr unsigned char jpeg[] = {0xff, 0xd8, 0xff};
    const auto startsWith = [&](std::span<const unsigned char> mark) {
        return bytes.size() >= mark.size() && std::ranges::equal(bytes.first(mark.size()), mark);
    };
    if (startsWith(png))
        return ReadPNG(bytes);
    if (startsWith(jpeg))
        return ReadJPEG(bytes);
    throw Kernel::FormatException("this is not a picture in a known format", 0);
}

} // namespace Raster
