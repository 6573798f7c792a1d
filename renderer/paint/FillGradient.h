#pragma once

#include <kernel/Point.h>
#include <raster/Format.h>
#include <renderer/paint/Fill.h>
#include <renderer/paint/Gradient.h>

namespace Renderer {

/// A gradient in the unit frame of its descriptor.
///
/// Linear runs from (0, 0) to (1, 0) of the frame, elliptical from the centre (0, 0) to the unit
/// circle under the whole affine map, radial to a true circle of radius |T(1,0) − T(0,0)|, conical
/// once around the centre from the direction of (1, 0).
class RENDERER_EXPORT FillGradient final : public FillOf<FillGradient>
{
public:
    /// The numbers are saved in documents.
    enum FillGradientType
    {
        Linear = 0,
        Elliptical = 1,
        Radial = 2,
        Conical = 3,
    };

    /// What lies beyond the ends of linear, elliptical and radial gradients.
    enum Spread
    {
        Pad = 0,     ///< the end colours
        Reflect = 1, ///< the gradient backwards and forwards in turn
        Repeat = 2,
    };

    /// The consolidated fill. See the constructor.
    static Kernel::Consolidated<FillGradient>
    Create(FillGradientType type, const Kernel::Consolidated<Gradient>& gradient,
           bool transformCorrected = true, Spread spread = Pad, Kernel::PointT<double> focus = {});

    /// A linear gradient without stops, which paints nothing.
    FillGradient();
    /// \param gradient an empty one counts as one without stops.
    /// \param transformCorrected whether the colour bands follow skews of the frame (see
    ///        IsTransformCorrected).
    /// \param focus see GetFocus; moved onto the unit circle when it lies outside.
    FillGradient(FillGradientType type, const Kernel::Consolidated<Gradient>& gradient,
                 bool transformCorrected = true, Spread spread = Pad,
                 Kernel::PointT<double> focus = {});

    void Save(Kernel::OutSerialiser& out) const override;
    /// False without a gradient, be it of the old form with its stops in the fill.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Kind GetKind() const override { return Kind::Gradient; }
    bool IsFillNone() const override { return m_gradient->GetColours().empty(); }
    bool IsSpatiallyInvariant() const override { return false; }
    bool HasNoise() const override;
    bool HasNonFullAlpha() const override;
    bool IsFlatAlpha() const override;
    double GetMeanAlpha() const override { return m_gradient->GetMeanAlpha(); }
    /// That of the first stop; empty without stops.
    Kernel::Consolidated<Colour> GetColour() const override;
    /// `background-image: …;`, standard form and vendor forms on a line each; empty for conical
    /// gradients. Stops with midpoints are expressed by more stops.
    Kernel::String
    GetCSSAttributes(const Raster::AffineTransform::Params& transform) const override;
    Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const override;

    FillGradientType GetType() const noexcept { return m_type; }
    /// Never empty.
    const Kernel::Consolidated<Gradient>& GetGradient() const noexcept { return m_gradient; }
    Spread GetSpread() const noexcept { return m_spread; }
    /// Where in the frame an elliptical or radial gradient begins: a point of the unit disc whose
    /// circle lies around (0, 0).
    Kernel::PointT<double> GetFocus() const noexcept { return m_focus; }
    /// The flag as it was given, whatever the type.
    bool GetTransformCorrected() const noexcept { return m_transformCorrected; }

    /// Whether the flag matters: true for all but elliptical, which follow the frame anyway.
    bool IsSubjectToTransformCorrection() const noexcept { return m_type != Elliptical; }
    /// Whether the paint follows the whole affine map: linear bands stay parallel to the image of
    /// the y axis, radial circles become ellipses, conical rays are mapped.
    bool IsTransformCorrected() const noexcept
    {
        return m_transformCorrected && IsSubjectToTransformCorrection();
    }
    /// Whether this radial gradient is painted as an elliptical one.
    bool TreatRadialAsElliptical() const noexcept
    {
        return m_transformCorrected && m_type == Radial;
    }

    /// The ends of a linear gradient on the page: T(0, 0) and T(1, 0); if the fill is transform-
    /// corrected and the frame is skewed, \p p1 moves along the image of the y axis so that p1 − p0
    /// is perpendicular to it. \return whether it was moved.
    bool GetLinearPoints(const Raster::AffineTransform::Params& transform,
                         Kernel::PointT<double>& p0, Kernel::PointT<double>& p1) const;

    /// Whether some stop maps to the next one by more than a straight line.
    bool HasNonLinearMapping() const noexcept { return m_gradient->HasNonLinearMapping(); }

    /// A fill that looks the same, made of stops that map linearly: as many as it takes to stay
    /// within half an 8-bit step of the mapped colours as pixels of \p format. The fill itself when
    /// all stops map linearly.
    Kernel::Consolidated<FillGradient> GetWithLinearMapping(const Colour::ICCProfileSet& profiles,
                                                            Raster::Format format) const;

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    template<class Self, class Items>
    static void ListItems(Self& self, Items&& items);
    void ChangeColours(ColourChange change, double value) override;

    FillGradientType m_type = Linear;
    Kernel::Consolidated<Gradient> m_gradient;
    bool m_transformCorrected = true;
    Spread m_spread = Pad;
    Kernel::PointT<double> m_focus;
};

} // namespace Renderer
