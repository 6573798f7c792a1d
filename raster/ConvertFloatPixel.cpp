#include <raster/Convert.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <raster/Luminosity.h>

namespace Raster {

namespace {

using RGB = std::array<float, 3>;

constexpr float Third = 1.0f / 3;
constexpr float Sixth = 1.0f / 6;
constexpr float TwoThirds = 2.0f / 3;

/// Differences up to this count as none when the hue is sought.
constexpr float HueTolerance = 1e-6f;

RGB Clamp(const RGB& rgb)
{
    RGB result;
    std::transform(rgb.begin(), rgb.end(), result.begin(),
                   [](float value) { return std::clamp(value, 0.0f, 1.0f); });
    return result;
}

RGB FromCMYK(const float* cmyk)
{
    const float k = cmyk[3];
    const auto channel = [k](float ink) { return 1 - std::min(1.0f, ink * (1 - k) + k); };
    return {channel(cmyk[0]), channel(cmyk[1]), channel(cmyk[2])};
}

/// Black takes all that the three inks have in common.
void ToCMYK(const RGB& rgb, float* cmyk)
{
    const auto [r, g, b] = Clamp(rgb);
    const float k = std::min({1 - r, 1 - g, 1 - b});
    const auto ink = [k](float light) { return k < 1 ? (1 - light - k) / (1 - k) : 0.0f; };
    cmyk[0] = ink(r);
    cmyk[1] = ink(g);
    cmyk[2] = ink(b);
    cmyk[3] = k;
}

/// One channel of a colour of hue \p t, between the smallest channel \p p and the largest \p q.
float HueToChannel(float p, float q, float t)
{
    if (t < 0)
        t += 1;
    if (t > 1)
        t -= 1;
    if (t < Sixth)
        return p + (q - p) * 6 * t;
    if (t < 0.5f)
        return q;
    if (t < TwoThirds)
        return p + (q - p) * 6 * (TwoThirds - t);
    return p;
}

RGB FromHSL(const float* hsl)
{
    const float h = hsl[0];
    const float s = hsl[1];
    const float l = hsl[2];
    if (s == 0)
        return {l, l, l};
    const float q = l < 0.5f ? l * (1 + s) : l + s - l * s;
    const float p = 2 * l - q;
    return {HueToChannel(p, q, h + Third), HueToChannel(p, q, h), HueToChannel(p, q, h - Third)};
}

void ToHSL(const RGB& rgb, float* hsl)
{
    const auto [r, g, b] = Clamp(rgb);
    const float max = std::max({r, g, b});
    const float min = std::min({r, g, b});
    const float d = max - min;
    hsl[0] = 0;
    hsl[1] = 0;
    hsl[2] = (max + min) / 2;
    if (std::abs(d) <= HueTolerance)
        return;

    hsl[1] = hsl[2] < 0.5f ? d / (max + min) : d / (2 - max - min);
    float hue = (r - g) / d + 4;
    if (std::abs(max - r) <= HueTolerance)
        hue = (g - b) / d;
    else if (std::abs(max - g) <= HueTolerance)
        hue = (b - r) / d + 2;
    hue *= 60;
    hsl[0] = (hue < 0 ? hue + 360 : hue) / 360;
}

RGB FromLAB(const float* lab)
{
    PixelLABA16 encoded;
    for (std::size_t c = 0; c < 3; ++c)
        encoded[c] = static_cast<std::uint16_t>(std::clamp(lab[c], 0.0f, 1.0f) * 65535 + 0.5f);
    PixelRGBAF rgb;
    ICCManager::DoLABA16ToRGBAFTransform(encoded, rgb);
    return {rgb[0], rgb[1], rgb[2]};
}

void ToLAB(const RGB& rgb, float* lab)
{
    PixelLABA16 encoded;
    ICCManager::DoRGBAFToLABA16Transform({{rgb[0], rgb[1], rgb[2], 1}}, encoded);
    for (std::size_t c = 0; c < 3; ++c)
        lab[c] = static_cast<float>(encoded[c]) / 65535;
}

RGB ToRGB(ColourSpace space, const float* source)
{
    switch (space) {
    case ColourSpace::HSL:
        return FromHSL(source);
    case ColourSpace::Grey:
        return {source[0], source[0], source[0]};
    case ColourSpace::RGB:
        return {source[0], source[1], source[2]};
    case ColourSpace::CMYK:
        return FromCMYK(source);
    case ColourSpace::LAB:
        return FromLAB(source);
    }
    return {};
}

void FromRGB(const RGB& rgb, ColourSpace space, float* destination)
{
    switch (space) {
    case ColourSpace::HSL:
        return ToHSL(rgb, destination);
    case ColourSpace::Grey:
        *destination = GetLuminosity(rgb[0], rgb[1], rgb[2]);
        return;
    case ColourSpace::RGB:
        std::copy(rgb.begin(), rgb.end(), destination);
        return;
    case ColourSpace::CMYK:
        return ToCMYK(rgb, destination);
    case ColourSpace::LAB:
        return ToLAB(rgb, destination);
    }
}

std::size_t GetColourCount(ColourSpace space)
{
    switch (space) {
    case ColourSpace::Grey:
        return 1;
    case ColourSpace::CMYK:
        return 4;
    case ColourSpace::HSL:
    case ColourSpace::RGB:
    case ColourSpace::LAB:
        break;
    }
    return 3;
}

} // namespace

void ConvertFloatPixel(ColourSpace from, const float* source, ColourSpace to, float* destination)
{
    const float alpha = source[GetColourCount(from)];
    if (from == to)
        std::copy_n(source, GetColourCount(from), destination);
    else
        FromRGB(ToRGB(from, source), to, destination);
    destination[GetColourCount(to)] = alpha;
}

} // namespace Raster
