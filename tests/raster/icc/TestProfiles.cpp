#include "TestProfiles.h"

#include <algorithm>
#include <cmath>

namespace RasterTest {

namespace {

Bytes Save(cmsHPROFILE profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

double FromWord(cmsUInt16Number word)
{
    return word / 65535.0;
}

cmsUInt16Number ToWord(double fraction)
{
    return cmsUInt16Number(std::clamp(fraction, 0.0, 1.0) * 65535 + 0.5);
}

/// Ink amounts to Lab in the version-2 encoding of a 16-bit table.
cmsInt32Number InkToLab(const cmsUInt16Number in[], cmsUInt16Number out[], void*)
{
    const double c = FromWord(in[0]), m = FromWord(in[1]), y = FromWord(in[2]), k = FromWord(in[3]);
    const double light = (1 - 0.55 * c) * (1 - 0.5 * m) * (1 - 0.1 * y) * (1 - 0.9 * k);
    const cmsCIELab lab{8 + 87 * light, (70 * m - 35 * c) * (1 - k), (80 * y - 45 * c) * (1 - k)};
    cmsFloat2LabEncodedV2(out, &lab);
    return 1;
}

/// Some inks for a colour; it need not be the inverse of the above.
cmsInt32Number LabToInk(const cmsUInt16Number in[], cmsUInt16Number out[], void*)
{
    cmsCIELab lab;
    cmsLabEncoded2FloatV2(&lab, in);
    const double dark = 1 - std::clamp((lab.L - 8) / 87, 0.0, 1.0);
    out[0] = ToWord(0.7 * dark - lab.a / 200 - lab.b / 300);
    out[1] = ToWord(0.7 * dark + lab.a / 150);
    out[2] = ToWord(0.6 * dark + lab.b / 120);
    out[3] = ToWord(dark * dark);
    return 1;
}

void WriteTable(cmsHPROFILE profile, cmsTagSignature tag, unsigned inputs, unsigned outputs,
                cmsSAMPLER16 sampler)
{
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, inputs, outputs);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 9, inputs, outputs, nullptr);
    cmsStageSampleCLut16bit(table, sampler, nullptr, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_BEGIN,
                           cmsStageAllocToneCurves(nullptr, inputs, nullptr));
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, outputs, nullptr));
    cmsWriteTag(profile, tag, pipeline);
    cmsPipelineFree(pipeline);
}

Bytes MakeRGBBytes(const cmsCIExyYTRIPLE& primaries, cmsToneCurve* curve)
{
    const cmsCIExyY d65{0.3127, 0.3290, 1};
    cmsToneCurve* const curves[3] = {curve, curve, curve};
    const Bytes bytes = Save(cmsCreateRGBProfile(&d65, &primaries, curves));
    cmsFreeToneCurve(curve);
    return bytes;
}

} // namespace

Bytes MakeWideRGBBytes(double gamma)
{
    return MakeRGBBytes({{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}},
                        cmsBuildGamma(nullptr, gamma));
}

Bytes MakeSampledRGBBytes()
{
    std::vector<cmsUInt16Number> samples;
    for (int i = 0; i < 1024; ++i) {
        const double v = i / 1023.0;
        samples.push_back(ToWord(v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4)));
    }
    return MakeRGBBytes({{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}},
                        cmsBuildTabulatedToneCurve16(nullptr, 1024, samples.data()));
}

Bytes MakeGreyBytes(double gamma)
{
    cmsToneCurve* curve = cmsBuildGamma(nullptr, gamma);
    const Bytes bytes = Save(cmsCreateGrayProfile(cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    return bytes;
}

Bytes MakeCMYKBytes()
{
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    WriteTable(profile, cmsSigAToB0Tag, 4, 3, InkToLab);
    WriteTable(profile, cmsSigBToA0Tag, 3, 4, LabToInk);
    cmsWriteTag(profile, cmsSigMediaWhitePointTag, cmsD50_XYZ());
    return Save(profile);
}

Profile MakeProfile(const Bytes& bytes)
{
    return Raster::ICCProfile::Create(bytes);
}

Raster::ICCManager::ICCProfileSet MakeFullSet()
{
    static const Bytes rgb = MakeWideRGBBytes(2.2), linear = MakeWideRGBBytes(1.0),
                       grey = MakeGreyBytes(1.8), cmyk = MakeCMYKBytes();
    Raster::ICCManager::ICCProfileSet set;
    set.SetRGB(MakeProfile(rgb));
    set.SetAlternativeRGB(MakeProfile(linear));
    set.SetGrey(MakeProfile(grey));
    set.SetCMYK(MakeProfile(cmyk));
    set.SetLAB(
        Raster::ICCManager::GetInstance().GetDefaultProfileForFormat(Raster::Format::LABA16));
    return set;
}

} // namespace RasterTest
