#include "Oracle.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace BlendTests {

using Raster::ChannelRole;
using Renderer::FillBlendMode;
using Mode = FillBlendMode::BlendMode;

namespace {

double ColorDodge(double b, double s)
{
    if (b == 0)
        return 0;
    return s == 1 ? 1 : std::min(1.0, b / (1 - s));
}

double ColorBurn(double b, double s)
{
    if (b == 1)
        return 1;
    return s == 0 ? 0 : 1 - std::min(1.0, (1 - b) / s);
}

double HardLight(double b, double s)
{
    return s <= 0.5 ? b * 2 * s : b + (2 * s - 1) - b * (2 * s - 1);
}

double SoftLight(double b, double s)
{
    if (s <= 0.5)
        return b - (1 - 2 * s) * b * (1 - b);
    const double d = b <= 0.25 ? ((16 * b - 12) * b + 4) * b : std::sqrt(b);
    return b + (2 * s - 1) * (d - b);
}

double Reflect(double b, double s)
{
    return s == 1 ? 1 : std::min(1.0, b * b / (1 - s));
}

double BlendChannel(Mode mode, double b, double s, bool unbounded)
{
    switch (mode) {
    case FillBlendMode::Normal:
    case FillBlendMode::Nameless:
        return s;
    case FillBlendMode::Multiply:
        return b * s;
    case FillBlendMode::Screen:
        return b + s - b * s;
    case FillBlendMode::Darken:
        return std::min(b, s);
    case FillBlendMode::Lighten:
        return std::max(b, s);
    case FillBlendMode::Difference:
        return std::abs(b - s);
    case FillBlendMode::Exclusion:
        return b + s - 2 * b * s;
    case FillBlendMode::Average:
        return (b + s) / 2;
    case FillBlendMode::Add:
        return unbounded ? b + s : std::min(1.0, b + s);
    case FillBlendMode::Subtract:
        return unbounded ? b - s : std::max(0.0, b - s);
    default:
        break;
    }
    b = std::clamp(b, 0.0, 1.0);
    s = std::clamp(s, 0.0, 1.0);
    switch (mode) {
    case FillBlendMode::ColorDodge:
        return ColorDodge(b, s);
    case FillBlendMode::ColorBurn:
        return ColorBurn(b, s);
    case FillBlendMode::HardLight:
        return HardLight(b, s);
    case FillBlendMode::Overlay:
        return HardLight(s, b);
    case FillBlendMode::SoftLight:
        return SoftLight(b, s);
    case FillBlendMode::LinearBurn:
        return std::max(0.0, b + s - 1);
    case FillBlendMode::VividLight:
        return s <= 0.5 ? ColorBurn(b, 2 * s) : ColorDodge(b, 2 * s - 1);
    case FillBlendMode::PinLight:
        return s <= 0.5 ? std::min(b, 2 * s) : std::max(b, 2 * s - 1);
    case FillBlendMode::LinearLight:
        return std::clamp(b + 2 * s - 1, 0.0, 1.0);
    case FillBlendMode::HardMix:
        return b + s >= 1 ? 1 : 0;
    case FillBlendMode::Negation:
        return 1 - std::abs(1 - b - s);
    case FillBlendMode::Reflect:
        return Reflect(b, s);
    case FillBlendMode::Glow:
        return Reflect(s, b);
    case FillBlendMode::ContrastInvert:
        return b + s * ((b < 0.5 ? 1 : 0) - b);
    default:
        return std::numeric_limits<double>::quiet_NaN();
    }
}

using Colour = std::array<double, 4>;

double Lum(const Colour& c)
{
    return 0.30 * c[0] + 0.59 * c[1] + 0.11 * c[2];
}

double Sat(const Colour& c)
{
    return std::max({c[0], c[1], c[2]}) - std::min({c[0], c[1], c[2]});
}

Colour SetSat(Colour c, double saturation)
{
    std::size_t low = 0, middle = 1, high = 2;
    if (c[low] > c[middle])
        std::swap(low, middle);
    if (c[middle] > c[high])
        std::swap(middle, high);
    if (c[low] > c[middle])
        std::swap(low, middle);
    if (c[high] > c[low]) {
        c[middle] = (c[middle] - c[low]) * saturation / (c[high] - c[low]);
        c[high] = saturation;
    } else {
        c[middle] = c[high] = 0;
    }
    c[low] = 0;
    return c;
}

Colour ClipColor(Colour c)
{
    const double l = Lum(c);
    const double n = std::min({c[0], c[1], c[2]});
    const double x = std::max({c[0], c[1], c[2]});
    for (std::size_t i = 0; i < 3; ++i) {
        double& channel = c[i];
        if (n < 0)
            channel = l + (channel - l) * l / (l - n);
        if (x > 1)
            channel = l + (channel - l) * (1 - l) / (x - l);
    }
    return c;
}

Colour SetLum(Colour c, double luminosity)
{
    const double d = luminosity - Lum(c);
    for (std::size_t i = 0; i < 3; ++i)
        c[i] += d;
    return ClipColor(c);
}

Colour BlendRGB(Mode mode, const Colour& b, const Colour& s)
{
    switch (mode) {
    case FillBlendMode::Hue:
        return SetLum(SetSat(s, Sat(b)), Lum(b));
    case FillBlendMode::Saturation:
        return SetLum(SetSat(b, Sat(s)), Lum(b));
    case FillBlendMode::Color:
        return SetLum(s, Lum(b));
    default:
        return SetLum(b, Lum(s));
    }
}

constexpr double labZero = 128.0 / 255.0;

/// Lab in cylinder coordinates.
Colour BlendLCh(Mode mode, const Colour& b, const Colour& s)
{
    const double chromaB = std::hypot(b[1] - labZero, b[2] - labZero);
    const double chromaS = std::hypot(s[1] - labZero, s[2] - labZero);
    const bool hueOfSource = mode == FillBlendMode::Hue || mode == FillBlendMode::Color;
    const bool chromaOfSource = mode == FillBlendMode::Saturation || mode == FillBlendMode::Color;
    const Colour& hue = hueOfSource ? s : b;
    const double chromaOfHue = hueOfSource ? chromaS : chromaB;
    const double chroma = chromaOfSource ? chromaS : chromaB;
    // A neutral colour has no hue to give; doubles are not exact about which ones are.
    const double scale = chromaOfHue > 1e-12 ? chroma / chromaOfHue : 0.0;
    const auto stored = [&](double opponent) {
        return std::clamp(labZero + (opponent - labZero) * scale, 0.0, 1.0);
    };
    return {mode == FillBlendMode::Luminosity ? s[0] : b[0], stored(hue[1]), stored(hue[2])};
}

double WholeLuminosity(const OracleFormat& format, const Colour& c)
{
    if (format.roles[0] == ChannelRole::Additive && format.colours == 3)
        return Lum(c);
    if (format.roles[0] == ChannelRole::Subtractive)
        return 1 - Lum(c) - c[3];
    return c[0];
}

Colour BlendWhole(const OracleFormat& format, Mode mode, const Colour& b, const Colour& s)
{
    if (mode == FillBlendMode::DarkerColor)
        return WholeLuminosity(format, s) < WholeLuminosity(format, b) ? s : b;
    if (mode == FillBlendMode::LighterColor)
        return WholeLuminosity(format, s) > WholeLuminosity(format, b) ? s : b;
    const bool luminosity = mode == FillBlendMode::Luminosity;
    if (format.roles[0] == ChannelRole::Lightness)
        return BlendLCh(mode, b, s);
    if (format.colours == 1)
        return luminosity ? s : b;
    if (format.colours == 3)
        return BlendRGB(mode, b, s);
    Colour rgb = BlendRGB(mode, {1 - b[0], 1 - b[1], 1 - b[2]}, {1 - s[0], 1 - s[1], 1 - s[2]});
    return {1 - rgb[0], 1 - rgb[1], 1 - rgb[2], luminosity ? s[3] : b[3]};
}

Colour BlendChannels(const OracleFormat& format, Mode mode, const Colour& b, const Colour& s)
{
    Colour result{};
    for (std::size_t c = 0; c < format.colours; ++c) {
        if (format.roles[c] == ChannelRole::Opponent)
            result[c] = s[c];
        else if (format.roles[c] == ChannelRole::Subtractive)
            result[c] = 1 - BlendChannel(mode, 1 - b[c], 1 - s[c], false);
        else
            result[c] = BlendChannel(mode, b[c], s[c], format.unbounded);
    }
    return result;
}

Colour Unpremultiply(const OracleFormat& format, const RealPixel& pixel)
{
    const double alpha = pixel[format.colours];
    Colour colour{};
    for (std::size_t c = 0; c < format.colours; ++c)
        colour[c] = alpha > 0 ? pixel[c] / alpha : 0.0;
    return colour;
}

Colour Clamped(Colour colour)
{
    for (double& channel : colour)
        channel = std::clamp(channel, 0.0, 1.0);
    return colour;
}

} // namespace

bool IsDiscontinuous(Mode mode)
{
    switch (mode) {
    case FillBlendMode::ColorDodge:
    case FillBlendMode::ColorBurn:
    case FillBlendMode::VividLight:
    case FillBlendMode::HardMix:
    case FillBlendMode::Reflect:
    case FillBlendMode::Glow:
    case FillBlendMode::ContrastInvert:
    case FillBlendMode::DarkerColor:
    case FillBlendMode::LighterColor:
    case FillBlendMode::Hue:
    case FillBlendMode::Saturation:
        return true;
    default:
        return false;
    }
}

bool IsSeparable(Mode mode)
{
    return mode != FillBlendMode::DarkerColor && mode != FillBlendMode::LighterColor &&
           (mode < FillBlendMode::Hue || mode > FillBlendMode::Color);
}

RealPixel Composite(const OracleFormat& format, const OracleInput& input)
{
    const double coverage = input.cover == 0 ? 0.0 : std::pow(input.cover / 255.0, input.ratio);
    const double k = coverage * (input.mask < 0 ? 1.0 : input.mask / 255.0);
    const std::size_t alpha = format.colours;
    const double as = input.source[alpha] * k;
    const double ab = input.backdrop[alpha];
    RealPixel result{};
    if (input.mode == FillBlendMode::Erase || input.mode == FillBlendMode::Mask) {
        const double kept =
            input.mode == FillBlendMode::Erase ? 1 - as : 1 - k + k * input.source[alpha];
        for (std::size_t c = 0; c <= alpha; ++c)
            result[c] = input.backdrop[c] * kept;
        return result;
    }
    const Colour b = Unpremultiply(format, input.backdrop);
    const Colour s = Unpremultiply(format, input.source);
    const Colour blended = IsSeparable(input.mode)
                               ? BlendChannels(format, input.mode, b, s)
                               : BlendWhole(format, input.mode, Clamped(b), Clamped(s));
    for (std::size_t c = 0; c < alpha; ++c)
        result[c] = (1 - as) * ab * b[c] + (1 - ab) * as * s[c] + as * ab * blended[c];
    result[alpha] = as + ab - as * ab;
    return result;
}

} // namespace BlendTests
