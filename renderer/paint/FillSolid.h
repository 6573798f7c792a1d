#pragma once

#include <renderer/paint/Fill.h>

namespace Renderer {

/// One colour everywhere.
class RENDERER_EXPORT FillSolid final : public FillOf<FillSolid>
{
public:
    /// The consolidated fill of a colour. \pre \p colour is not empty.
    static Kernel::Consolidated<FillSolid> Create(const Kernel::Consolidated<Colour>& colour);

    /// Opaque black.
    FillSolid();
    /// An empty colour counts as opaque black.
    explicit FillSolid(const Kernel::Consolidated<Colour>& colour);

    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Kind GetKind() const override { return Kind::Solid; }
    bool IsSpatiallyInvariant() const override { return true; }
    bool HasNonFullAlpha() const override { return m_colour->GetAlphaF() < 1.0; }
    bool IsFlatAlpha() const override { return true; }
    double GetMeanAlpha() const override { return m_colour->GetAlphaF(); }
    /// Never empty.
    Kernel::Consolidated<Colour> GetColour() const override { return m_colour; }
    /// `background-color: …;`, or nothing for colours that CSS can't say.
    Kernel::String
    GetCSSAttributes(const Raster::AffineTransform::Params& transform) const override;
    Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const override;

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    template<class Self, class Items>
    static void ListItems(Self& self, Items&& items);

    void ChangeColours(ColourChange change, double value) override;

    Kernel::Consolidated<Colour> m_colour;
};

} // namespace Renderer
