#include <raster/adjustments/WhiteBalanceAdjustment.h>

namespace Raster {

namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;

constexpr double Neutral = WhiteBalanceSettings::NeutralTemperature;

/// Linear RGB of sRGB's primaries to XYZ (IEC 61966-2-1).
constexpr Matrix RGBToXYZ{
    {{0.4124, 0.3576, 0.1805}, {0.2126, 0.7152, 0.0722}, {0.0193, 0.1192, 0.9505}}};

/// XYZ to the sharpened cone responses of the Bradford transform.
constexpr Matrix Bradford{
    {{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};

Vector Multiply(const Matrix& m, const Vector& v)
{
    Vector result;
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return result;
}

Matrix Multiply(const Matrix& a, const Matrix& b)
{
    Matrix result;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            result[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
    return result;
}

/// By the cofactors.
Matrix Invert(const Matrix& m)
{
    Matrix result;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            const std::size_t r = (j + 1) % 3, s = (j + 2) % 3, c = (i + 1) % 3, d = (i + 2) % 3;
            result[i][j] = m[r][c] * m[s][d] - m[r][d] * m[s][c];
        }
    }
    const double determinant =
        m[0][0] * result[0][0] + m[0][1] * result[1][0] + m[0][2] * result[2][0];
    for (Vector& row : result)
        for (double& value : row)
            value /= determinant;
    return result;
}

/// A chromaticity in CIE 1960 u v.
struct Chromaticity
{
    double u;
    double v;
};

/// Of the black body of \p t kelvin.
Chromaticity GetPlanckian(double t)
{
    return {(0.860117757 + 1.54118254e-4 * t + 1.28641212e-7 * t * t) /
                (1 + 8.42420235e-4 * t + 7.08145163e-7 * t * t),
            (0.317398726 + 4.22806245e-5 * t + 4.20481691e-8 * t * t) /
                (1 - 2.89741816e-5 * t + 1.61456053e-7 * t * t)};
}

/// The white of a light, of luminance 1, in XYZ.
Vector GetWhite(double temperature, double tint)
{
    constexpr double maxDistance = 0.05;
    Chromaticity white = GetPlanckian(temperature);
    // At a right angle to the locus, towards green.
    const Chromaticity below = GetPlanckian(temperature - 1), above = GetPlanckian(temperature + 1);
    const double du = above.u - below.u, dv = above.v - below.v;
    const double distance = tint * maxDistance / std::sqrt(du * du + dv * dv);
    white.u += dv * distance;
    white.v -= du * distance;
    const double denominator = 2 * white.u - 8 * white.v + 4;
    const double x = 3 * white.u / denominator, y = 2 * white.v / denominator;
    return {x / y, 1, (1 - x - y) / y};
}

/// On linear RGB: brings the light's white to the neutral one.
Matrix MakeAdaptation(const WhiteBalanceSettings& light)
{
    const Vector from = Multiply(Bradford, GetWhite(light.temperature, 0));
    const Vector tint = Multiply(Bradford, GetWhite(Neutral, light.tint));
    const Vector to = Multiply(Bradford, GetWhite(Neutral, 0));
    Matrix scale{};
    for (std::size_t i = 0; i < 3; ++i)
        scale[i][i] = to[i] / from[i] * (to[i] / tint[i]);
    const Matrix responses = Multiply(Bradford, RGBToXYZ);
    return Multiply(Invert(responses), Multiply(scale, responses));
}

} // namespace

void WhiteBalanceSettings::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(temperature);
    hash.Add(tint);
}

WhiteBalanceAdjustment::WhiteBalanceAdjustment(const WhiteBalanceSettings& settings)
    : AdjustmentOf({LimitSetting(settings.temperature, 2000, 15000,
                                 WhiteBalanceSettings::NeutralTemperature),
                    LimitSetting(settings.tint, -1, 1, 0)})
{
    const Matrix adaptation = MakeAdaptation(GetSettings());
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            m_matrix[i][j] = float(adaptation[i][j]);
}

void WhiteBalanceAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                                   const ICCManager::ICCProfileSet& profiles) const
{
    if (IsIdentity())
        return;
    ICCManager& manager = ICCManager::GetInstance();
    ICCManager::ICCProfileSet encoded, linear;
    encoded.SetRGB(profiles.GetRGB());
    linear.SetRGB(manager.GetLinearRGBProfile());
    const auto forth =
        manager.GetFloatTransform(ColourSpace::RGB, encoded, ColourSpace::RGB, linear);
    const auto back =
        manager.GetFloatTransform(ColourSpace::RGB, linear, ColourSpace::RGB, encoded);

    if (forth)
        forth->Apply(pixels, pixels, count);
    for (PixelRGBAF* pixel = pixels; pixel != pixels + count; ++pixel) {
        const float r = (*pixel)[0], g = (*pixel)[1], b = (*pixel)[2];
        for (std::size_t c = 0; c < 3; ++c)
            (*pixel)[c] = m_matrix[c][0] * r + m_matrix[c][1] * g + m_matrix[c][2] * b;
    }
    if (back)
        back->Apply(pixels, pixels, count);
}

bool WhiteBalanceAdjustment::IsIdentity() const
{
    return GetSettings() == WhiteBalanceSettings{};
}

} // namespace Raster
