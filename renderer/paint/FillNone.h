#pragma once

#include <renderer/paint/Fill.h>

namespace Renderer {

/// No paint.
class RENDERER_EXPORT FillNone final : public FillOf<FillNone>
{
public:
    /// The one consolidated instance.
    static const Kernel::Consolidated<FillNone>& Create();

    FillNone() = default;

    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Kind GetKind() const override { return Kind::None; }
    bool IsFillNone() const override { return true; }
    bool IsSpatiallyInvariant() const override { return true; }
    /// 0.
    double GetAlpha() const override { return 0.0; }
    bool HasNonFullAlpha() const override { return true; }
    bool IsFlatAlpha() const override { return true; }
    double GetMeanAlpha() const override { return 0.0; }
    Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const override;

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;
};

} // namespace Renderer
