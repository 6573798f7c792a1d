#pragma once

#include <vector>

#include <renderer/paint/Fill.h>
#include <renderer/paint/FillDescriptorConst.h>

namespace Renderer {

/// A stack of fills, each in a frame of its own within the stack's frame; the first one is painted
/// first, the others over it. Files keep the entries that have a fill.
class RENDERER_EXPORT FillMulti final : public FillOf<FillMulti>
{
public:
    using Descriptors = std::vector<Kernel::Counted<const FillDescriptorConst>>;

    /// The consolidated stack.
    static Kernel::Consolidated<FillMulti> Create(const Descriptors& descriptors);

    FillMulti() = default;

    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Kind GetKind() const override { return Kind::Multi; }
    /// True when every entry paints nothing.
    bool IsFillNone() const override;
    bool IsSpatiallyInvariant() const override;
    bool HasNoise() const override;
    /// False when one of the entries is opaque everywhere.
    bool HasNonFullAlpha() const override;
    bool IsFlatAlpha() const override;
    /// 1 − Π(1 − mean alpha of each entry): exact where at most one entry is not flat.
    double GetMeanAlpha() const override;
    /// That of the first entry that has one.
    Kernel::Consolidated<Colour> GetColour() const override;
    Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const override;

    /// Puts a copy of the descriptor on top of the stack.
    void AddFillDescriptor(const FillDescriptorConst& descriptor);
    /// From the bottom up; none is null.
    const Descriptors& GetDescriptors() const noexcept { return m_descriptors; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    void ChangeColours(ColourChange change, double value) override;

    Descriptors m_descriptors;
};

} // namespace Renderer
