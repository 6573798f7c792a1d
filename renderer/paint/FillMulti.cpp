#include <renderer/paint/FillMulti.h>

#include <algorithm>

#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>
#include <renderer/paint/ColourVisitor.h>
#include <renderer/paint/FillDescriptor.h>

namespace Renderer {

namespace {

/// Whether a quality of the fill of some, or of every, entry holds; entries that paint nothing are
/// left out.
template<class Predicate>
bool Any(const FillMulti::Descriptors& descriptors, Predicate predicate)
{
    return std::ranges::any_of(descriptors, [&](const auto& descriptor) {
        return !descriptor->IsFillNone() && predicate(*descriptor->GetFill());
    });
}

template<class Predicate>
bool All(const FillMulti::Descriptors& descriptors, Predicate predicate)
{
    return !Any(descriptors, [&](const Fill& fill) { return !predicate(fill); });
}

} // namespace

Kernel::Consolidated<FillMulti> FillMulti::Create(const Descriptors& descriptors)
{
    const auto fill = Kernel::MakeCounted<FillMulti>();
    for (const auto& descriptor : descriptors) {
        if (descriptor)
            fill->AddFillDescriptor(*descriptor);
    }
    return Share(fill);
}

void FillMulti::AddFillDescriptor(const FillDescriptorConst& descriptor)
{
    m_descriptors.emplace_back(new FillDescriptorConst(descriptor));
}

const Kernel::SharedClassProperties& FillMulti::GetTypeSharedClassProperties()
{
    static const auto& record =
        *new Kernel::SharedClassProperties("MulF", &CreateObject, 1, __GetDefaultSerialisation(),
                                           &Fill::GetTypeSharedClassProperties(), "FillMulti");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = FillMulti::GetTypeSharedClassProperties();

} // namespace

void FillMulti::Save(Kernel::OutSerialiser& out) const
{
    std::vector<Kernel::Counted<FillDescriptor>> entries;
    for (const auto& descriptor : m_descriptors) {
        if (!descriptor->IsEmpty())
            entries.emplace_back(new FillDescriptor(*descriptor));
    }
    out.SaveObjectArrayI("Desc", entries,
                         [](const auto& entry) -> const FillDescriptor& { return *entry; });
}

bool FillMulti::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    std::vector<Kernel::Counted<FillDescriptor>> entries;
    in.LoadObjectArrayI("Desc", entries);
    m_descriptors.clear();
    for (const auto& entry : entries)
        AddFillDescriptor(*entry);
    return true;
}

void FillMulti::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(m_descriptors.size());
    for (const auto& descriptor : m_descriptors) {
        hash.AddAddress(descriptor->GetFill().Get());
        if (descriptor->IsEmpty() || descriptor->GetFill()->IsSpatiallyInvariant())
            continue; // the transform does not count
        const auto& transform = descriptor->GetTransform();
        for (const double value : {transform.m00, transform.m01, transform.m02, transform.m10,
                                   transform.m11, transform.m12})
            hash.Add(value);
    }
}

bool FillMulti::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return std::ranges::equal(m_descriptors, static_cast<const FillMulti&>(other).m_descriptors,
                              [](const auto& a, const auto& b) { return *a == *b; });
}

bool FillMulti::IsFillNone() const
{
    return !Any(m_descriptors, [](const Fill&) { return true; });
}

bool FillMulti::IsSpatiallyInvariant() const
{
    return All(m_descriptors, [](const Fill& fill) { return fill.IsSpatiallyInvariant(); });
}

bool FillMulti::HasNoise() const
{
    return Any(m_descriptors, [](const Fill& fill) { return fill.HasNoise(); });
}

bool FillMulti::HasNonFullAlpha() const
{
    return !Any(m_descriptors, [](const Fill& fill) { return !fill.HasNonFullAlpha(); });
}

bool FillMulti::IsFlatAlpha() const
{
    return !HasNonFullAlpha() ||
           All(m_descriptors, [](const Fill& fill) { return fill.IsFlatAlpha(); });
}

double FillMulti::GetMeanAlpha() const
{
    double transparency = 1.0;
    for (const auto& descriptor : m_descriptors) {
        if (!descriptor->IsFillNone())
            transparency *= 1.0 - descriptor->GetFill()->GetMeanAlpha();
    }
    return 1.0 - transparency;
}

Kernel::Consolidated<Colour> FillMulti::GetColour() const
{
    for (const auto& descriptor : m_descriptors) {
        if (descriptor->IsEmpty())
            continue;
        if (auto colour = descriptor->GetFill()->GetColour())
            return colour;
    }
    return {};
}

Kernel::Counted<const Fill> FillMulti::Accept(ColourVisitor& visitor) const
{
    const auto result = Kernel::MakeCounted<FillMulti>();
    for (const auto& descriptor : m_descriptors)
        result->AddFillDescriptor(descriptor->Accept(visitor));
    if (CompareMembers(*result))
        return Kernel::Counted<const Fill>(this);
    return Share(result).GetCounted();
}

void FillMulti::ChangeColours(ColourChange change, double value)
{
    for (auto& descriptor : m_descriptors) {
        if (!descriptor->IsEmpty())
            descriptor = Kernel::Counted<const FillDescriptorConst>(
                new FillDescriptorConst(WithChangedColours(*descriptor->GetFill(), change, value),
                                        descriptor->GetTransform()));
    }
}

} // namespace Renderer
