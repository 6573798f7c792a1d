#include <renderer/paint/LineStyleDescriptor.h>

#include <renderer/paint/SavedCurve.h>

namespace Renderer {

namespace {

[[maybe_unused]] const auto& registration = LineStyleDescriptor::GetTypeClassProperties();

} // namespace

const Kernel::ClassProperties& LineStyleDescriptor::GetTypeClassProperties()
{
    static const auto& record = *new Kernel::ClassProperties(
        "LDsc", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "LineStyleDescriptor");
    return record;
}

void LineStyleDescriptor::Save(Kernel::OutSerialiser& out) const
{
    out.SaveSharedObject("LDeL", GetLineStyle());
    out.SaveType("LDBe", GetBehind());
    out.SaveType("LDSc", GetScale());
    SavedCurve::Save(out, "LDeP", GetPressure());
    out.SaveTypeI("LDSa", static_cast<std::int32_t>(GetStrokeAlignment()));
}

bool LineStyleDescriptor::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    const LineStyleDescriptorConst standard;
    Kernel::Consolidated<LineStyle> style;
    bool behind = standard.GetBehind(), scale = standard.GetScale();
    StrokeAlignment alignment = standard.GetStrokeAlignment();
    in.LoadSharedObjectI("LDeL", style);
    in.LoadType("LDBe", behind);
    in.LoadType("LDSc", scale);
    in.LoadEnumI("LDSa", StrokeAlignmentEnumSerialiser::GetInstance(), alignment);
    m_value =
        LineStyleDescriptorConst(style, SavedCurve::Load(in, "LDeP"), behind, scale, alignment);
    return true;
}

LineStyleDescriptor::~LineStyleDescriptor() = default;

Kernel::Counted<LineStyleDescriptor> LineStyleDescriptor::Clone() const
{
    return Kernel::MakeCounted<LineStyleDescriptor>(*this);
}

} // namespace Renderer
