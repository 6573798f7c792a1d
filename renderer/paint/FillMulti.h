#pragma once

#include <vector>

#include <renderer/paint/Fill.h>
#include <renderer/paint/FillDescriptorConst.h>

namespace Renderer {

/// A stack of fills, each in a frame of its own within the stack's frame; the first one is painted
/// first, the others over it. Files keep the entries that have a fill.
///
/// Stacks may hold stacks, and one object may be an entry of many: their depth and size are
/// bounded, so that neither questions nor drawing take unbounded time.
class RENDERER_EXPORT FillMulti final : public FillOf<FillMulti>
{
public:
    using Descriptors = std::vector<Kernel::Counted<const FillDescriptorConst>>;

    /// Stacks within stacks, the outermost included.
    static constexpr unsigned MaxDepth = 16;
    /// Entries that are no stacks or empty ones, where those of inner stacks count each time.
    static constexpr unsigned MaxLeaves = 65536;

    /// The consolidated stack; entries that would exceed the bounds are left out.
    static Kernel::Consolidated<FillMulti> Create(const Descriptors& descriptors);

    FillMulti() = default;

    void Save(Kernel::OutSerialiser& out) const override;
    /// Fails beyond the bounds.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Kind GetKind() const override { return Kind::Multi; }
    /// True when every entry paints nothing.
    bool IsFillNone() const override { return m_summary.isNone; }
    bool IsSpatiallyInvariant() const override { return m_summary.isInvariant; }
    bool HasNoise() const override { return m_summary.hasNoise; }
    /// False when one of the entries is opaque everywhere.
    bool HasNonFullAlpha() const override { return !m_summary.hasOpaque; }
    bool IsFlatAlpha() const override { return m_summary.hasOpaque || m_summary.isFlat; }
    /// 1 − Π(1 − mean alpha of each entry): exact where at most one entry is not flat.
    double GetMeanAlpha() const override;
    /// That of the first entry that has one.
    Kernel::Consolidated<Colour> GetColour() const override;
    Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const override;

    /// Puts a copy of the descriptor on top of the stack. False when that would exceed the bounds;
    /// the stack stays as it is then.
    bool AddFillDescriptor(const FillDescriptorConst& descriptor);
    /// From the bottom up; none is null.
    const Descriptors& GetDescriptors() const noexcept { return m_descriptors; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    /// What the entries say together, so that nested stacks are not walked again and again. Those
    /// that paint nothing count for depth and leaves alone.
    struct Summary
    {
        void Add(const FillDescriptorConst& descriptor);

        bool isNone = true;
        bool isInvariant = true;
        bool hasNoise = false;
        bool hasOpaque = false;
        bool isFlat = true;
        unsigned depth = 1;
        unsigned leaves = 0;
    };

    void ChangeColours(ColourChange change, double value) override;

    Descriptors m_descriptors;
    Summary m_summary;
};

} // namespace Renderer
