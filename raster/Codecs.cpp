#include <raster/Codecs.h>

#include <algorithm>
#include <new>

#include <kernel/FormatException.h>
#include <raster/CodecSupport.h>
#include <raster/ICCLayout.h>
#include <raster/ICCManager.h>
#include <raster/Pixel.h>

namespace Raster {

bool IsOfFormat(const ICCProfile& profile, Format format)
{
    const auto layout = GetICCLayout(format);
    return layout && layout->space == profile.GetColourSpace();
}

Kernel::Counted<DynamicBuffer> MakeDecodedBuffer(Format format, std::uint64_t width,
                                                 std::uint64_t height, std::uint64_t maxPixels)
{
    if (width == 0 || height == 0)
        throw Kernel::FormatException("the picture has no pixels");
    if (width > maxPixels / height)
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

bool IsOpaque(const DynamicBuffer& buffer)
{
    return WithPixelOfFormat(buffer.GetFormat(), false, [&]<class P>(P) {
        for (unsigned y = 0; y < buffer.GetHeight(); ++y) {
            const P* row = reinterpret_cast<const P*>(buffer.GetRow(y));
            if (!std::all_of(row, row + buffer.GetWidth(),
                             [](const P& pixel) { return pixel.Alpha() >= P::Max; }))
                return false;
        }
        return true;
    });
}

Kernel::Counted<const DynamicBitmap> ReadImage(std::span<const unsigned char> bytes,
                                               std::uint64_t maxPixels)
{
    constexpr unsigned char png[] = {0x89, 'P', 'N', 'G'};
    constexpr unsigned char jpeg[] = {0xff, 0xd8, 0xff};
    constexpr unsigned char tiff[][4] = {
        {'I', 'I', 42, 0}, {'M', 'M', 0, 42}, {'I', 'I', 43, 0}, {'M', 'M', 0, 43}};
    constexpr unsigned char gif[] = {'G', 'I', 'F', '8'};
    constexpr unsigned char riff[] = {'R', 'I', 'F', 'F'};
    constexpr unsigned char webp[] = {'W', 'E', 'B', 'P'};
    constexpr unsigned char exr[] = {0x76, 0x2f, 0x31, 0x01};
    const auto startsWith = [&](std::span<const unsigned char> mark) {
        return bytes.size() >= mark.size() && std::ranges::equal(bytes.first(mark.size()), mark);
    };
    if (startsWith(png))
        return ReadPNG(bytes, maxPixels);
    if (startsWith(jpeg))
        return ReadJPEG(bytes, maxPixels);
    if (startsWith(gif))
        return ReadGIF(bytes, maxPixels);
    for (const auto& mark : tiff) {
        if (startsWith(mark))
            return ReadTIFF(bytes, maxPixels);
    }
    if (startsWith(riff) && bytes.size() >= 12 && std::ranges::equal(bytes.subspan(8, 4), webp))
        return ReadWebP(bytes, maxPixels);
    if (startsWith(exr))
        return ReadEXR(bytes, maxPixels);
    throw Kernel::FormatException("this is not a picture in a known format", 0);
}

} // namespace Raster
