#include <raster/ICCTransforms.h>

#include <array>
#include <cmath>
#include <optional>

#include <raster/ICCLcms.h>
#include <raster/ICCToneCurve.h>

namespace Raster {

namespace {

using Matrix = std::array<std::array<double, 3>, 3>;
using Curves = std::array<std::shared_ptr<const ICCToneCurve>, 3>;

/// An RGB profile as curves to linear light (or, for a destination, from it) and the matrix from
/// linear light to XYZ.
struct Shaper
{
    Curves curves;
    Matrix toXYZ{};
};

/// Tables take precedence over curves and matrix where a profile has both.
bool HasTables(cmsHPROFILE profile)
{
    for (const auto tag : {cmsSigAToB0Tag, cmsSigAToB1Tag, cmsSigBToA0Tag, cmsSigBToA1Tag,
                           cmsSigDToB0Tag, cmsSigDToB1Tag, cmsSigBToD0Tag, cmsSigBToD1Tag}) {
        if (cmsIsTag(profile, tag))
            return true;
    }
    return false;
}

std::optional<Curves> ReadCurves(cmsHPROFILE profile, bool inverse)
{
    constexpr std::array tags{cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    Curves curves;
    std::array<const cmsToneCurve*, 3> read{};
    for (std::size_t i = 0; i < tags.size(); ++i) {
        read[i] = static_cast<const cmsToneCurve*>(cmsReadTag(profile, tags[i]));
        if (!read[i])
            return std::nullopt;
        const bool isShared = i > 0 && AreCurvesEqual(*read[0], *read[i]);
        curves[i] = isShared ? curves[0] : ICCToneCurve::Make(*read[i], inverse);
        if (!curves[i])
            return std::nullopt;
    }
    return curves;
}

std::optional<Matrix> ReadMatrix(cmsHPROFILE profile)
{
    constexpr std::array tags{cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
    Matrix matrix{};
    for (std::size_t column = 0; column < tags.size(); ++column) {
        const auto* xyz = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, tags[column]));
        if (!xyz)
            return std::nullopt;
        matrix[0][column] = xyz->X;
        matrix[1][column] = xyz->Y;
        matrix[2][column] = xyz->Z;
    }
    return matrix;
}

std::optional<Shaper> ReadShaper(const ICCProfile& profile, bool inverse)
{
    const LcmsOpenedProfile opened = OpenLcmsProfile(profile.GetBytes());
    if (!opened || cmsGetPCS(opened.profile.get()) != cmsSigXYZData ||
        HasTables(opened.profile.get()))
        return std::nullopt;
    const auto matrix = ReadMatrix(opened.profile.get());
    const auto curves = ReadCurves(opened.profile.get(), inverse);
    if (!matrix || !curves)
        return std::nullopt;
    return Shaper{*curves, *matrix};
}

/// inverse(\p to) × \p from, by Cramer's rule; none for coplanar primaries.
std::optional<Matrix> Combine(const Matrix& to, const Matrix& from)
{
    Matrix adjugate{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            const std::size_t r = (j + 1) % 3, s = (j + 2) % 3, t = (i + 1) % 3, u = (i + 2) % 3;
            adjugate[i][j] = to[r][t] * to[s][u] - to[r][u] * to[s][t];
        }
    }
    double determinant = 0;
    for (std::size_t j = 0; j < 3; ++j)
        determinant += to[0][j] * adjugate[j][0];
    if (!(std::abs(determinant) > 1e-9))
        return std::nullopt;
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k)
                result[i][j] += adjugate[i][k] * from[k][j] / determinant;
    return result;
}

/// The black points of such profiles are all zero light, so black point compensation changes
/// nothing.
class ShaperTransform final : public ICCBlockTransform
{
public:
    ShaperTransform(ICCLayout from, ICCLayout to, Curves decode, const Matrix& matrix,
                    Curves encode)
        : ICCBlockTransform(from, to), m_decode(std::move(decode)), m_encode(std::move(encode))
    {
        for (std::size_t i = 0; i < 9; ++i)
            m_matrix[i] = static_cast<float>(matrix[i / 3][i % 3]);
    }

private:
    void Process(float* source, float* destination, std::size_t count) const noexcept override
    {
        const auto& m = m_matrix;
        for (std::size_t i = 0; i < count; ++i, source += 4, destination += 4) {
            const float r = m_decode[0]->Evaluate(source[0]);
            const float g = m_decode[1]->Evaluate(source[1]);
            const float b = m_decode[2]->Evaluate(source[2]);
            destination[0] = m_encode[0]->Evaluate(m[0] * r + m[1] * g + m[2] * b);
            destination[1] = m_encode[1]->Evaluate(m[3] * r + m[4] * g + m[5] * b);
            destination[2] = m_encode[2]->Evaluate(m[6] * r + m[7] * g + m[8] * b);
            destination[3] = source[3];
        }
    }

    Curves m_decode;
    Curves m_encode;
    std::array<float, 9> m_matrix{};
};

} // namespace

Kernel::Counted<const ICCTransform> MakeICCShaperTransform(const ICCSide& from, const ICCSide& to)
{
    if (from.layout.space != ColourSpace::RGB || to.layout.space != ColourSpace::RGB)
        return nullptr;
    const auto source = ReadShaper(*from.profile, false);
    const auto destination = ReadShaper(*to.profile, true);
    if (!source || !destination)
        return nullptr;
    const auto matrix = Combine(destination->toXYZ, source->toXYZ);
    if (!matrix)
        return nullptr;
    return new ShaperTransform(from.layout, to.layout, source->curves, *matrix,
                               destination->curves);
}

} // namespace Raster
