#include <renderer/paint/FillDescriptor.h>

#include <cmath>

#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>
#include <raster/SavedTransform.h>

namespace Renderer {

namespace {

/// Whether any element differs from the identity's by more than 1e-6, or is not a number.
bool DiffersFromIdentity(const Raster::AffineTransform::Params& t)
{
    const auto differs = [](double a, double b) { return !(std::abs(a - b) <= 1e-6); };
    return differs(t.m00, 1.0) || differs(t.m01, 0.0) || differs(t.m02, 0.0) ||
           differs(t.m10, 0.0) || differs(t.m11, 1.0) || differs(t.m12, 0.0);
}

[[maybe_unused]] const auto& registration = FillDescriptor::GetTypeClassProperties();

} // namespace

const Kernel::ClassProperties& FillDescriptor::GetTypeClassProperties()
{
    static const auto& record = *new Kernel::ClassProperties(
        "FDsc", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "FillDescriptor");
    return record;
}

void FillDescriptor::Save(Kernel::OutSerialiser& out) const
{
    out.SaveSharedObject("FDeF", GetFill());
    if (GetFill() && !GetFill()->IsSpatiallyInvariant() && DiffersFromIdentity(GetTransform()))
        out.SaveTypeI("FDeX", GetTransform());
}

bool FillDescriptor::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    Kernel::Consolidated<Fill> fill;
    Raster::AffineTransform::Params transform;
    in.LoadSharedObjectI("FDeF", fill);
    in.LoadTypeI("FDeX", transform);
    m_value = FillDescriptorConst(fill, transform);
    return !!fill;
}

FillDescriptor::~FillDescriptor() = default;

Kernel::Counted<FillDescriptor> FillDescriptor::Clone() const
{
    return Kernel::MakeCounted<FillDescriptor>(*this);
}

void FillDescriptor::SetFill(const Kernel::Consolidated<Fill>& fill)
{
    m_value = FillDescriptorConst(fill, GetTransform());
}

void FillDescriptor::SetTransform(const Raster::AffineTransform::Params& transform)
{
    m_value = FillDescriptorConst(m_value, transform);
}

} // namespace Renderer
