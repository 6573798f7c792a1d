#include <renderer/paint/FillMulti.h>

#include <algorithm>

#include <kernel/InSerialiser.h>
#include <kernel/OutSerialiser.h>
#include <renderer/paint/ColourVisitor.h>
#include <renderer/paint/FillDescriptor.h>

namespace Renderer {

void FillMulti::Summary::Add(const FillDescriptorConst& descriptor)
{
    const Fill* const fill = descriptor.GetFill().Get();
    if (fill && fill->GetKind() == Kind::Multi) {
        const Summary& inner = static_cast<const FillMulti&>(*fill).m_summary;
        depth = std::max(depth, inner.depth + 1);
        leaves += std::max(1U, inner.leaves);
    } else {
        ++leaves;
    }
    if (descriptor.IsFillNone())
        return;
    isNone = false;
    isInvariant &= fill->IsSpatiallyInvariant();
    hasNoise |= fill->HasNoise();
    hasOpaque |= !fill->HasNonFullAlpha();
    isFlat &= fill->IsFlatAlpha();
}

Kernel::Consolidated<FillMulti> FillMulti::Create(const Descriptors& descriptors)
{
    const auto fill = Kernel::MakeCounted<FillMulti>();
    for (const auto& descriptor : descriptors) {
        if (descriptor)
            fill->AddFillDescriptor(*descriptor);
    }
    return Share(fill);
}

bool FillMulti::AddFillDescriptor(const FillDescriptorConst& descriptor)
{
    Summary summary = m_summary;
    summary.Add(descriptor);
    if (summary.depth > MaxDepth || summary.leaves > MaxLeaves)
        return false;
    m_summary = summary;
    m_descriptors.emplace_back(new FillDescriptorConst(descriptor));
    return true;
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
    m_summary = {};
    return std::ranges::all_of(entries,
                               [this](const auto& entry) { return AddFillDescriptor(*entry); });
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
    m_summary = {};
    for (auto& descriptor : m_descriptors) {
        if (!descriptor->IsEmpty())
            descriptor = Kernel::Counted<const FillDescriptorConst>(
                new FillDescriptorConst(WithChangedColours(*descriptor->GetFill(), change, value),
                                        descriptor->GetTransform()));
        m_summary.Add(*descriptor);
    }
}

} // namespace Renderer
