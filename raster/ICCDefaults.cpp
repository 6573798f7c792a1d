#include <raster/ICCTransforms.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <raster/ICCLcms.h>

namespace Raster {

namespace {

/// The curve of IEC 61966-2-1 as the ICC's parametric type 3: (ax + b)^g from d on, cx below.
LcmsToneCurve MakeSRGBCurve(cmsContext context)
{
    const cmsFloat64Number parameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return LcmsToneCurve(cmsBuildParametricToneCurve(context, 4, parameters));
}

LcmsProfile MakeProfile(cmsContext context, ColourSpace space)
{
    switch (space) {
    case ColourSpace::RGB:
        return LcmsProfile(cmsCreate_sRGBProfileTHR(context));
    case ColourSpace::Grey: {
        const LcmsToneCurve curve = MakeSRGBCurve(context);
        return LcmsProfile(cmsCreateGrayProfileTHR(context, cmsD50_xyY(), curve.get()));
    }
    case ColourSpace::LAB:
        return LcmsProfile(cmsCreateLab4ProfileTHR(context, nullptr));
    case ColourSpace::CMYK:
    case ColourSpace::HSL:
        break;
    }
    return nullptr;
}

/// The time of making is the only part that varies; profiles are compared by their bytes.
void FixDate(std::vector<unsigned char>& bytes)
{
    constexpr std::size_t offset = 24; // dateTimeNumber, six big-endian words (ICC.1:2010, 7.2.8)
    constexpr std::array<unsigned char, 12> date{0x07, 0xd0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};
    std::ranges::copy(date, bytes.begin() + offset);
}

/// The bytes of a profile, or nothing when there is none.
std::vector<unsigned char> Save(const LcmsProfile& profile)
{
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size))
        return {};
    std::vector<unsigned char> bytes(size);
    if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size))
        return {};
    FixDate(bytes);
    return bytes;
}

} // namespace

std::vector<unsigned char> MakeDefaultICCProfile(ColourSpace space)
{
    const LcmsContext context(cmsCreateContext(nullptr, nullptr));
    return Save(MakeProfile(context.get(), space));
}

std::vector<unsigned char> MakeLinearICCProfile(const ICCChromaticities& chromaticities)
{
    const auto& c = chromaticities;
    const auto isPositive = [](double value) { return std::isfinite(value) && value > 0; };
    if (!isPositive(c[1]) || !isPositive(c[3]) || !isPositive(c[5]) || !isPositive(c[7]))
        return {};
    const LcmsContext context(cmsCreateContext(nullptr, nullptr));
    const LcmsToneCurve line(cmsBuildGamma(context.get(), 1.0));
    cmsToneCurve* const curves[] = {line.get(), line.get(), line.get()};
    const cmsCIExyYTRIPLE primaries{{c[0], c[1], 1}, {c[2], c[3], 1}, {c[4], c[5], 1}};
    const cmsCIExyY white{c[6], c[7], 1};
    return Save(LcmsProfile(cmsCreateRGBProfileTHR(context.get(), &white, &primaries, curves)));
}

double EstimateICCGamma(const ICCProfile& profile)
{
    const LcmsOpenedProfile opened = OpenLcmsProfile(profile.GetBytes());
    if (!opened)
        return 2.2;
    const auto tag =
        profile.GetColourSpace() == ColourSpace::Grey ? cmsSigGrayTRCTag : cmsSigGreenTRCTag;
    const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(opened.profile.get(), tag));
    // Any spread is accepted: the sRGB curve is no pure power either.
    const double gamma = curve ? cmsEstimateGamma(curve, 1e6) : -1;
    return gamma > 0 ? gamma : 2.2;
}

} // namespace Raster
