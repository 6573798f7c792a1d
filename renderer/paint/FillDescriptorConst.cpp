#include <renderer/paint/FillDescriptorConst.h>

#include <kernel/SavedItems.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/ColourVisitor.h>
#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillNone.h>
#include <renderer/paint/FillSolid.h>

namespace Renderer {

FillDescriptorConst::~FillDescriptorConst() = default;

const FillDescriptorConst& FillDescriptorConst::CreateNone()
{
    // Retained for good, so that even a Counted to it does no harm.
    static const auto& none = *new Kernel::Counted<const FillDescriptorConst>(
        new FillDescriptorConst(FillNone::Create()));
    return *none;
}

FillDescriptorConst FillDescriptorConst::CreateSolid(const Raster::PixelRGBA8& colour)
{
    return FillDescriptorConst(FillSolid::Create(ColourRGB::Create(colour)));
}

FillDescriptorConst
FillDescriptorConst::CreateBitmap(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
                                  Raster::ExtendType extend, Raster::ResamplerType upSampler)
{
    return FillDescriptorConst(FillBitmap::Create(bitmap, extend, upSampler));
}

Kernel::String FillDescriptorConst::GetCSSAttributes() const
{
    return m_fill ? m_fill->GetCSSAttributes(m_transform) : Kernel::String();
}

FillDescriptorConst FillDescriptorConst::Accept(ColourVisitor& visitor) const
{
    if (!m_fill)
        return *this;
    return FillDescriptorConst(Fill::Consolidate(m_fill->Accept(visitor)), m_transform);
}

namespace {

/// As numbers that may be not-a-number.
bool AreSame(const Raster::AffineTransform::Params& a, const Raster::AffineTransform::Params& b)
{
    const auto areSame = [&](auto... member) {
        return (Kernel::SavedItems::AreSame(a.*member, b.*member) && ...);
    };
    using Params = Raster::AffineTransform::Params;
    return areSame(&Params::m00, &Params::m01, &Params::m02, &Params::m10, &Params::m11,
                   &Params::m12);
}

} // namespace

bool operator==(const FillDescriptorConst& a, const FillDescriptorConst& b)
{
    if (a.m_fill != b.m_fill)
        return false;
    return !a.m_fill || a.m_fill->IsSpatiallyInvariant() || AreSame(a.m_transform, b.m_transform);
}

} // namespace Renderer
