#include <raster/ICCTransforms.h>

#include <algorithm>

#include <raster/ICCLcms.h>

namespace Raster {

namespace {

/// A transform with the context that it lives in.
struct Engine
{
    LcmsContext context;
    LcmsTransform transform;

    Engine(const ICCSide& from, const ICCSide& to, ICCLayout fromLayout, ICCLayout toLayout)
    {
        context.reset(cmsCreateContext(nullptr, nullptr));
        if (!context)
            return;
        const LcmsProfile source = Open(*from.profile);
        const LcmsProfile destination = Open(*to.profile);
        if (!source || !destination)
            return;
        // Without the one-pixel cache the transform is read-only, and threads can share it.
        transform.reset(cmsCreateTransformTHR(
            context.get(), source.get(), GetLcmsPixelType(fromLayout), destination.get(),
            GetLcmsPixelType(toLayout), INTENT_RELATIVE_COLORIMETRIC,
            cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOCACHE | cmsFLAGS_COPY_ALPHA));
    }

private:
    LcmsProfile Open(const ICCProfile& profile) const
    {
        const auto& bytes = profile.GetBytes();
        return LcmsProfile(cmsOpenProfileFromMemTHR(context.get(), bytes.data(),
                                                    static_cast<cmsUInt32Number>(bytes.size())));
    }
};

/// Between 8-bit channels, by the tables that Little CMS prepares.
class ByteTransform final : public ICCTransform
{
public:
    ByteTransform(Engine engine, ICCLayout from, ICCLayout to)
        : m_engine(std::move(engine)), m_from(from), m_to(to)
    {}

    void Apply(const void* source, void* destination, std::size_t count) const override
    {
        const auto* from = static_cast<const unsigned char*>(source);
        auto* to = static_cast<unsigned char*>(destination);
        while (count > 0) {
            const std::size_t part = std::min(count, MaxAtOnce);
            cmsDoTransform(m_engine.transform.get(), from, to, static_cast<cmsUInt32Number>(part));
            from += part * GetICCPixelSize(m_from);
            to += part * GetICCPixelSize(m_to);
            count -= part;
        }
    }

private:
    /// Little CMS counts with 32 bits.
    static constexpr std::size_t MaxAtOnce = 1 << 20;

    Engine m_engine;
    ICCLayout m_from;
    ICCLayout m_to;
};

/// The unit of a channel in Little CMS's float pixels: value = fraction × scale + offset.
struct Unit
{
    float scale = 1;
    float offset = 0;
};

/// Inks are per cent there, and Lab is plain.
Unit GetUnit(ColourSpace space, unsigned channel)
{
    if (space == ColourSpace::CMYK && channel < 4)
        return {100, 0};
    if (space == ColourSpace::LAB && channel == 0)
        return {100, 0};
    if (space == ColourSpace::LAB && channel < 3)
        return {255, -128};
    return {};
}

/// Through Little CMS's float pipeline: exact and unbounded. Lab needs it too: its neutral axis
/// misses the nodes of the tables, so that white would not stay white.
class FloatTransform final : public ICCBlockTransform
{
public:
    FloatTransform(Engine engine, ICCLayout from, ICCLayout to)
        : ICCBlockTransform(from, to),
          m_engine(std::move(engine)),
          m_from(from.space),
          m_to(to.space)
    {}

private:
    void Process(float* source, float* destination, std::size_t count) const noexcept override
    {
        ForEachScaled(m_from, source, count,
                      [](float& value, Unit unit) { value = value * unit.scale + unit.offset; });
        cmsDoTransform(m_engine.transform.get(), source, destination,
                       static_cast<cmsUInt32Number>(count));
        ForEachScaled(m_to, destination, count,
                      [](float& value, Unit unit) { value = (value - unit.offset) / unit.scale; });
    }

    template<class Function>
    static void ForEachScaled(ColourSpace space, float* values, std::size_t count,
                              Function function)
    {
        if (space != ColourSpace::CMYK && space != ColourSpace::LAB)
            return;
        const unsigned channels = GetICCChannelCount(space);
        for (unsigned channel = 0; channel + 1 < channels; ++channel) {
            const Unit unit = GetUnit(space, channel);
            for (std::size_t i = 0; i < count; ++i)
                function(values[i * channels + channel], unit);
        }
    }

    Engine m_engine;
    ColourSpace m_from;
    ColourSpace m_to;
};

/// Tables are off by 0.3 of a byte's steps on average, but by up to 20 in the darkest inks
/// (measured with an offset press profile): enough for pictures of bytes, too coarse for deeper
/// ones.
bool NeedsFloat(ICCLayout layout)
{
    return layout.depth != ICCDepth::U8 || layout.space == ColourSpace::LAB;
}

} // namespace

Kernel::Counted<const ICCTransform> MakeICCLcmsTransform(const ICCSide& from, const ICCSide& to)
{
    const bool isFloat = NeedsFloat(from.layout) || NeedsFloat(to.layout);
    ICCLayout fromLayout = from.layout;
    ICCLayout toLayout = to.layout;
    if (isFloat)
        fromLayout.depth = toLayout.depth = ICCDepth::Float;
    Engine engine(from, to, fromLayout, toLayout);
    if (!engine.transform)
        return nullptr;
    if (isFloat)
        return new FloatTransform(std::move(engine), from.layout, to.layout);
    return new ByteTransform(std::move(engine), from.layout, to.layout);
}

} // namespace Raster
