#pragma once

#include <memory>
#include <type_traits>
#include <vector>

#include <lcms2.h>

namespace Raster {

struct LcmsCloser
{
    void operator()(cmsContext context) const noexcept { cmsDeleteContext(context); }
    void operator()(cmsToneCurve* curve) const noexcept { cmsFreeToneCurve(curve); }
};
struct LcmsProfileCloser
{
    void operator()(cmsHPROFILE profile) const noexcept { cmsCloseProfile(profile); }
};
struct LcmsTransformCloser
{
    void operator()(cmsHTRANSFORM transform) const noexcept { cmsDeleteTransform(transform); }
};

/// \name Owners of Little CMS objects. Each opened profile and each transform has a context of its
/// own, so that threads share no mutable state of the library; the context must outlive what it
/// made.
/// @{
using LcmsContext = std::unique_ptr<std::remove_pointer_t<cmsContext>, LcmsCloser>;
using LcmsToneCurve = std::unique_ptr<cmsToneCurve, LcmsCloser>;
using LcmsProfile = std::unique_ptr<void, LcmsProfileCloser>;
using LcmsTransform = std::unique_ptr<void, LcmsTransformCloser>;
/// @}

/// A profile together with its context.
struct LcmsOpenedProfile
{
    LcmsContext context;
    LcmsProfile profile;

    explicit operator bool() const noexcept { return static_cast<bool>(profile); }
};

/// Opens the bytes of a profile; empty when they cannot be read.
inline LcmsOpenedProfile OpenLcmsProfile(const std::vector<unsigned char>& bytes)
{
    LcmsOpenedProfile opened{LcmsContext(cmsCreateContext(nullptr, nullptr)), nullptr};
    if (opened.context)
        opened.profile.reset(cmsOpenProfileFromMemTHR(opened.context.get(), bytes.data(),
                                                      static_cast<cmsUInt32Number>(bytes.size())));
    return opened;
}

} // namespace Raster
