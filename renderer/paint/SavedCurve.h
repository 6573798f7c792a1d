#pragma once

#include <geometry/Curve.h>
#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>

namespace Renderer::SavedCurve {

/// An optional curve as a nested class item. Full saves tell that there is none; others say
/// nothing then.
inline void Save(Kernel::OutSerialiser& out, Kernel::IDTag tag,
                 const Kernel::Counted<const Geometry::CurveDbl>& curve)
{
    if (curve)
        out.SavePropClassI(tag, *curve);
    else if (out.IsFullSave())
        out.SaveNullPropClassI(tag);
}

/// \return the curve; empty when there is none or it is damaged.
inline Kernel::Counted<const Geometry::CurveDbl> Load(const Kernel::InSerialiser& in,
                                                      Kernel::IDTag tag)
{
    const auto curve = Kernel::MakeCounted<Geometry::CurveDbl>();
    const bool isLoaded = in.LoadPropClassI(
        tag, [&](const Kernel::InSerialiser& items, Kernel::ClassUID uid, unsigned short version) {
            return curve->Load(items, uid, version);
        });
    return isLoaded ? curve : nullptr;
}

} // namespace Renderer::SavedCurve
