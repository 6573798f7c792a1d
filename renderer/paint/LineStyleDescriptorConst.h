#pragma once

#include <utility>

#include <geometry/Curve.h>
#include <geometry/WindingOrderMode.h>
#include <kernel/Consolidated.h>
#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/Rect.h>
#include <raster/AffineTransform.h>
#include <renderer/Export.h>
#include <renderer/paint/FillDescriptorConst.h>
#include <renderer/paint/LineStyle.h>

namespace Geometry {
class PolyCurveDbl;
} // namespace Geometry

namespace Renderer {

/// A line style and how one object uses it. A small value: calls take it by const reference, who
/// keeps it copies it. Nobody makes a Counted to one that lives on the stack.
///
/// The outline of a stroke is built in logical units and then mapped, so that the pen follows the
/// current transform; that of a resolution-independent one is built in device pixels.
class RENDERER_EXPORT LineStyleDescriptorConst : public Kernel::Countable
{
public:
    using Transform = Raster::AffineTransform::Params;

    /// Where the stroke lies relative to the path; the numbers are saved in documents.
    enum StrokeAlignment
    {
        Centre = 0,
        Inside = 1,
        Outside = 2,
    };

    /// No line.
    LineStyleDescriptorConst();
    /// A solid line of the given weight.
    explicit LineStyleDescriptorConst(double weight, bool resIndependent = false);
    /// An empty style counts as no line.
    explicit LineStyleDescriptorConst(Kernel::Consolidated<LineStyle> lineStyle);
    LineStyleDescriptorConst(Kernel::Consolidated<LineStyle> lineStyle,
                             Kernel::Counted<const Geometry::CurveDbl> pressure, bool behind,
                             bool scale, StrokeAlignment alignment);
    LineStyleDescriptorConst(const LineStyleDescriptorConst&) = default;
    LineStyleDescriptorConst& operator=(const LineStyleDescriptorConst&) = default;
    ~LineStyleDescriptorConst() override;

    /// The shared descriptor without a line.
    static const LineStyleDescriptorConst& CreateNone();

    /// Never empty.
    const Kernel::Consolidated<LineStyle>& GetLineStyle() const noexcept { return m_lineStyle; }
    void SetLineStyle(Kernel::Consolidated<LineStyle> lineStyle);
    /// The factor of the weight along the path, over 0…1; empty for the constant 1.
    const Kernel::Counted<const Geometry::CurveDbl>& GetPressure() const noexcept
    {
        return m_pressure;
    }
    void SetPressure(Kernel::Counted<const Geometry::CurveDbl> pressure)
    {
        m_pressure = std::move(pressure);
    }
    /// Whether the stroke is drawn before the fill.
    bool GetBehind() const noexcept { return m_behind; }
    void SetBehind(bool behind) noexcept { m_behind = behind; }
    /// Whether the weight scales with the object.
    bool GetScale() const noexcept { return m_scale; }
    void SetScale(bool scale) noexcept { m_scale = scale; }
    StrokeAlignment GetStrokeAlignment() const noexcept { return m_alignment; }
    void SetStrokeAlignment(StrokeAlignment alignment) noexcept { m_alignment = alignment; }
    bool GetPreview() const noexcept { return m_preview; }
    void SetPreview(bool preview) noexcept { m_preview = preview; }

    bool IsLineStyleNone() const noexcept { return m_lineStyle->IsNone(); }
    /// Whether the type is not None and the weight differs from 0 by more than 1e-6.
    bool IsLineStyleVisible() const noexcept { return m_lineStyle->IsVisible(); }
    /// The same, and the stroke's fill paints something, or its brush needs none.
    bool IsLineStyleVisible(const FillDescriptorConst& lineFill) const
    {
        return IsLineStyleVisible() && (!lineFill.IsFillNone() || m_lineStyle->HasImplicitFill());
    }

    /// The weight in device pixels: weight × s(scalar, then logToDevice), or weight ×
    /// s(logToDevice) for lines that do not scale with their object, where s is
    /// AffineTransform::GetScale; the weight itself for resolution-independent lines. 0 for results
    /// that are not finite. \param current the current transform; the weight does not depend on it.
    /// \param scalar the current scalar transform. Callers that have no log-to-device transform at
    /// hand
    ///        give the scalar transform with it already applied, and leave \p logToDevice out:
    ///        lines that do not scale then keep their weight in device pixels.
    double GetEffectiveWeight(const Transform& current, const Transform& scalar,
                              const Transform& logToDevice = {}) const;

    /// By how much the rectangles below are larger than what a stroke covers, in device pixels: for
    /// what flattening at the default tolerance, rounding to fixed point and moving to pixel
    /// middles.
    static constexpr double InflationMargin = 0.5;

    /// The box of a path in logical units, grown by all that its stroke can touch there. The
    /// transforms are those of GetEffectiveWeight.
    ///
    /// A stroke of the effective weight w reaches r = w·a·p·LineStyle::GetReachPerWeight beyond the
    /// path: a is 2 for Outside, else 1 (inside, closed runs reach nowhere, but open runs are
    /// centred); p is the largest pressure, or 1 if that is less; and w counts as a quarter pixel
    /// at least, as hairlines are drawn that wide. It is built in logical units, r over s(current)
    /// (1 where that is 0), and the margin of half a pixel is taken back by the inverse of the
    /// current transform M: each side moves by r/s + ½·|row of M⁻¹|. Resolution-independent strokes
    /// are circles on the device: (r + ½)·|row of M⁻¹|. Where there is no inverse, nothing of the
    /// path shows and the terms with it are left out. Sides move by 1e100 at most: a reach that is
    /// infinite or not known is that. \return \p rect itself for invisible lines, and where it is
    /// unset.
    Kernel::RectT<double> InflateBaseRect(const Kernel::RectT<double>& rect,
                                          const Transform& current, const Transform& scalar,
                                          const Transform& logToDevice = {}) const;

    /// The same for a box that is already mapped by the current transform, to the device: each side
    /// moves by r/s·|row of M| + ½; by r + ½ for resolution-independent strokes.
    Kernel::RectT<double> InflateSpreadRect(const Kernel::RectT<double>& rect,
                                            const Transform& current, const Transform& scalar,
                                            const Transform& logToDevice = {}) const;

    /// Whether a pressure profile changes nothing: it is empty or the constant 1.
    static bool
    IsPressureProfileRedundant(const Kernel::Counted<const Geometry::CurveDbl>& pressure);

    /// Drops a pressure profile that is redundant, and from others the points that change nothing
    /// by more than 1e-6.
    void OptimisePressureProfile();

    /// Whether the stroke can be given as an outline of curves: that of every visible line but
    /// those of raster brushes.
    bool CanProvidePolyCurveOutline() const noexcept
    {
        return IsLineStyleVisible() && m_lineStyle->GetType() != LineStyle::RasterBrush;
    }

    /// The stroke of a path as closed runs of lines and cubics, to be filled non-zero, in the units
    /// of the path: dashes, caps, joins and pressure included.
    /// \param current,scalar,logToDevice the transforms of GetEffectiveWeight
    /// \param tolerance largest distance from the exact stroke, in device pixels
    /// \param winding what is inside of the path, for strokes that are aligned inside or outside
    /// \return empty where CanProvidePolyCurveOutline is false, and where nothing would be drawn.
    Kernel::Counted<const Geometry::PolyCurveDbl> GetPolyCurveOutline(
        const Geometry::PolyCurveDbl& path, const Transform& current, const Transform& scalar,
        const Transform& logToDevice = {}, double tolerance = 0.1,
        Geometry::WindingOrderMode winding = Geometry::WindingOrderMode::EvenOdd) const;

    /// Whether both draw the same: the curves are compared point by point, the preview flag is not.
    friend RENDERER_EXPORT bool operator==(const LineStyleDescriptorConst& a,
                                           const LineStyleDescriptorConst& b);

private:
    Kernel::Consolidated<LineStyle> m_lineStyle;
    Kernel::Counted<const Geometry::CurveDbl> m_pressure;
    bool m_behind = false;
    bool m_scale = true;
    bool m_preview = false;
    StrokeAlignment m_alignment = Centre;
};

/// LineStyleDescriptorConst::InflateBaseRect as a free function.
RENDERER_EXPORT Kernel::RectT<double> InflateRect(const Kernel::RectT<double>& rect,
                                                  const LineStyleDescriptorConst& lineStyle,
                                                  const Raster::AffineTransform::Params& current,
                                                  const Raster::AffineTransform::Params& scalar);

} // namespace Renderer
