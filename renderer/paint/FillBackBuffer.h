#pragma once

#include <renderer/paint/Fill.h>

namespace Renderer {

/// Paint that is taken from the target's back buffer, pixel for pixel.
class RENDERER_EXPORT FillBackBuffer final : public FillOf<FillBackBuffer>
{
public:
    /// The one consolidated instance.
    static const Kernel::Consolidated<FillBackBuffer>& Create();

    FillBackBuffer() = default;

    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Kind GetKind() const override { return Kind::BackBuffer; }
    bool IsSpatiallyInvariant() const override { return false; }
    bool HasNonFullAlpha() const override { return true; }
    bool IsFlatAlpha() const override { return false; }
    double GetMeanAlpha() const override { return 1.0; }
    Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const override;

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;
};

} // namespace Renderer
