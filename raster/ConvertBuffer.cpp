#include <raster/Convert.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include <kernel/Dispatch.h>
#include <raster/ICCLayout.h>
#include <raster/Pixel.h>

namespace Raster {

namespace {

/// Pixels that are converted at once; their intermediate forms stay in the first-level cache.
constexpr std::size_t BlockSize = 256;
constexpr std::size_t MaxChannels = 5;
constexpr std::size_t MaxPixelSize = 16;

using Profile = Kernel::Counted<const ICCProfile>;
using ProfileSet = ICCManager::ICCProfileSet;

/// What a conversion has to know of a format.
struct Layout
{
    Format format;
    std::optional<ColourSpace> space; ///< none for masks
    ICCDepth depth;
    std::size_t channels;

    explicit Layout(Format f) : format(f)
    {
        if (const auto layout = GetICCLayout(f))
            space = layout->space;
        WithPixelOfFormat(f, false, [&](auto pixel) {
            constexpr std::size_t Size = sizeof(typename decltype(pixel)::ChannelType);
            depth = Size == 1 ? ICCDepth::U8 : Size == 2 ? ICCDepth::U16 : ICCDepth::Float;
            channels = pixel.ChannelCount;
            return true;
        });
    }
};

/// Converts blocks of premultiplied pixels. One object serves many threads.
class BlockConverter
{
public:
    virtual ~BlockConverter() = default;
    /// \p count ≤ BlockSize.
    virtual void Convert(const unsigned char* source, unsigned char* target,
                         std::size_t count) const = 0;
};

/// Between pixels of which the ICC manager has a transform.
class ProfileConverter final : public BlockConverter
{
public:
    ProfileConverter(Format source, Format target, Kernel::Counted<const ICCTransform> transform)
        : m_source(source), m_target(target), m_transform(std::move(transform))
    {}

    void Convert(const unsigned char* source, unsigned char* target,
                 std::size_t count) const override
    {
        alignas(16) std::array<unsigned char, BlockSize * MaxPixelSize> plain;
        std::memcpy(plain.data(), source, count * GetPixelSize(m_source));
        Unpremultiply(m_source, plain.data(), count);
        m_transform->Apply(plain.data(), target, count);
        Premultiply(m_target, target, count);
    }

private:
    Format m_source;
    Format m_target;
    Kernel::Counted<const ICCTransform> m_transform;
};

/// By the fixed formulas, in float. Within one space only the depth changes, and pixels stay
/// premultiplied throughout.
class FormulaConverter final : public BlockConverter
{
public:
    FormulaConverter(const Layout& source, const Layout& target)
        : m_source(source), m_target(target), m_clampsColour(target.depth != ICCDepth::Float)
    {}

    void Convert(const unsigned char* source, unsigned char* target,
                 std::size_t count) const override
    {
        std::array<float, BlockSize * MaxChannels> in;
        std::array<float, BlockSize * MaxChannels> out;
        LoadICCChannels(m_source.depth, source, in.data(), count * m_source.channels);
        for (std::size_t i = 0; i < count; ++i)
            ConvertPixel(&in[i * m_source.channels], &out[i * m_target.channels]);
        StoreICCChannels(m_target.depth, out.data(), target, count * m_target.channels);
    }

private:
    void ConvertPixel(const float* in, float* out) const
    {
        const float alpha = std::clamp(in[m_source.channels - 1], 0.0f, 1.0f);
        if (!m_target.space)
            *out = alpha;
        else if (m_source.space == m_target.space)
            CopyColour(in, alpha, out);
        else
            ConvertColour(in, alpha, out);
    }

    void CopyColour(const float* in, float alpha, float* out) const
    {
        for (std::size_t c = 0; c + 1 < m_target.channels; ++c)
            out[c] = m_clampsColour ? std::clamp(in[c], 0.0f, alpha) : in[c];
        out[m_target.channels - 1] = alpha;
    }

    void ConvertColour(const float* in, float alpha, float* out) const
    {
        // A mask is an opaque grey.
        std::array<float, MaxChannels> plain{alpha, 1};
        if (m_source.space) {
            for (std::size_t c = 0; c + 1 < m_source.channels; ++c)
                plain[c] = alpha > 0 ? in[c] / alpha : 0;
            plain[m_source.channels - 1] = alpha;
        }
        ConvertFloatPixel(m_source.space.value_or(ColourSpace::Grey), plain.data(), *m_target.space,
                          out);
        const float targetAlpha = out[m_target.channels - 1];
        for (std::size_t c = 0; c + 1 < m_target.channels; ++c)
            out[c] = targetAlpha * (m_clampsColour ? std::clamp(out[c], 0.0f, 1.0f) : out[c]);
    }

    Layout m_source;
    Layout m_target;
    bool m_clampsColour;
};

void ConvertRow(const BlockConverter& converter, const DynamicBuffer& source, DynamicBuffer& target,
                unsigned y)
{
    const std::size_t width = source.GetWidth();
    for (std::size_t x = 0; x < width; x += BlockSize)
        converter.Convert(source.GetRow(y) + x * source.GetPixelSize(),
                          target.GetRow(y) + x * target.GetPixelSize(),
                          std::min(BlockSize, width - x));
}

Kernel::Counted<const DynamicBuffer> ConvertRows(const BlockConverter& converter,
                                                 const DynamicBuffer& source, Format format)
{
    const auto target = DynamicBuffer::Create(format, source.GetWidth(), source.GetHeight());
    if (!target)
        return {};
    constexpr std::size_t PixelsPerBand = 1 << 14;
    const unsigned height = source.GetHeight();
    const auto band =
        unsigned(std::clamp<std::size_t>(PixelsPerBand / source.GetWidth(), 1, height));
    Kernel::Dispatch::DispatchParallelFor(
        [&](unsigned index) {
            for (unsigned y = index * band; y < std::min((index + 1) * band, height); ++y)
                ConvertRow(converter, source, *target, y);
        },
        (height - 1) / band + 1);
    return target;
}

/// What the pixels of a format are taken to be in: a format of RGB is never without profile.
Profile GetEffectiveProfile(const Layout& layout, const ProfileSet& profiles)
{
    auto profile = profiles.GetProfile(layout.format);
    if (!profile && layout.space == ColourSpace::RGB)
        profile = ICCManager::GetInstance().GetDefaultProfileForFormat(layout.format);
    return profile;
}

bool IsSameEncoding(const Layout& from, const ProfileSet& fromSet, const Layout& to,
                    const ProfileSet& toSet)
{
    if (from.space != to.space)
        return false;
    // Profiles of the same bytes are one object.
    return GetEffectiveProfile(from, fromSet) == GetEffectiveProfile(to, toSet);
}

} // namespace

Kernel::Counted<const DynamicBuffer>
ConvertBuffer(const Kernel::Counted<const DynamicBuffer>& source, const Profile& profile,
              Format target, const ProfileSet& targetProfiles)
{
    if (!source || GetPixelSize(target) == 0)
        return {};
    source->SyncHostCache();
    const Layout from(source->GetFormat());
    const Layout to(target);
    ProfileSet sourceProfiles = targetProfiles;
    if (profile)
        sourceProfiles.SetProfile(from.format, profile);

    if (from.space && to.space && !IsSameEncoding(from, sourceProfiles, to, targetProfiles)) {
        auto transform = ICCManager::GetInstance().GetTransform(from.format, sourceProfiles, target,
                                                                targetProfiles);
        if (transform)
            return ConvertRows(ProfileConverter(from.format, target, std::move(transform)), *source,
                               target);
    }
    if (from.format == target)
        return source;
    return ConvertRows(FormulaConverter(from, to), *source, target);
}

} // namespace Raster
