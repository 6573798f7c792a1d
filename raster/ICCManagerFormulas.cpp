#include <raster/ICCManager.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace Raster {

namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;

/// Linear sRGB to XYZ under D50: the primaries of IEC 61966-2-1 adapted from D65 by Bradford's
/// transform. Its rows add up to the white point.
constexpr Matrix LinearRGBToXYZ{{{0.4360747, 0.3850649, 0.1430804},
                                 {0.2225045, 0.7168786, 0.0606169},
                                 {0.0139322, 0.0971045, 0.7141733}}};

constexpr Vector Multiply(const Matrix& m, const Vector& v)
{
    Vector result{};
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return result;
}

/// By cofactors; the cyclic indices carry the signs.
constexpr Matrix Invert(const Matrix& m)
{
    Matrix inverse{};
    double determinant = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            const std::size_t r = (j + 1) % 3, s = (j + 2) % 3, t = (i + 1) % 3, u = (i + 2) % 3;
            inverse[i][j] = m[r][t] * m[s][u] - m[r][u] * m[s][t];
        }
    }
    for (std::size_t j = 0; j < 3; ++j)
        determinant += m[0][j] * inverse[j][0];
    for (Vector& row : inverse)
        for (double& value : row)
            value /= determinant;
    return inverse;
}

constexpr Matrix XYZToLinearRGB = Invert(LinearRGBToXYZ);
constexpr Vector White = Multiply(LinearRGBToXYZ, {1, 1, 1});

/// The sRGB curve of IEC 61966-2-1, odd around 0, unbounded.
double EncodeSRGB(double linear)
{
    const double v = std::abs(linear);
    const double encoded = v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
    return std::copysign(encoded, linear);
}

double DecodeSRGB(double encoded)
{
    const double v = std::abs(encoded);
    const double linear = v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    return std::copysign(linear, encoded);
}

/// The compression function of CIE L*a*b* (CIE 15:2004, 8.2.1.1) and its inverse.
constexpr double Delta = 6.0 / 29.0;

double Compress(double t)
{
    return t > Delta * Delta * Delta ? std::cbrt(t) : t / (3 * Delta * Delta) + 4.0 / 29.0;
}

double Expand(double f)
{
    return f > Delta ? f * f * f : 3 * Delta * Delta * (f - 4.0 / 29.0);
}

/// A fraction of the range as 16 bits, clamped, to nearest; NaN gives 0.
std::uint16_t ToWord(double fraction)
{
    return static_cast<std::uint16_t>(std::min(std::max(0.0, fraction), 1.0) * 65535 + 0.5);
}

} // namespace

void ICCManager::DoLABA16ToRGBAFTransform(const PixelLABA16& lab, PixelRGBAF& rgb) noexcept
{
    const double l = lab[0] / 65535.0 * 100;
    const double a = lab[1] / 65535.0 * 255 - 128;
    const double b = lab[2] / 65535.0 * 255 - 128;
    const double fy = (l + 16) / 116;
    const Vector xyz{White[0] * Expand(fy + a / 500), White[1] * Expand(fy),
                     White[2] * Expand(fy - b / 200)};
    const Vector linear = Multiply(XYZToLinearRGB, xyz);
    for (std::size_t i = 0; i < 3; ++i)
        rgb[i] = static_cast<float>(EncodeSRGB(linear[i]));
    rgb.Alpha() = static_cast<float>(lab.Alpha() / 65535.0);
}

void ICCManager::DoRGBAFToLABA16Transform(const PixelRGBAF& rgb, PixelLABA16& lab) noexcept
{
    const Vector linear{DecodeSRGB(rgb[0]), DecodeSRGB(rgb[1]), DecodeSRGB(rgb[2])};
    const Vector xyz = Multiply(LinearRGBToXYZ, linear);
    const double fx = Compress(xyz[0] / White[0]);
    const double fy = Compress(xyz[1] / White[1]);
    const double fz = Compress(xyz[2] / White[2]);
    lab[0] = ToWord((116 * fy - 16) / 100);
    lab[1] = ToWord((500 * (fx - fy) + 128) / 255);
    lab[2] = ToWord((200 * (fy - fz) + 128) / 255);
    lab.Alpha() = ToWord(rgb.Alpha());
}

} // namespace Raster
