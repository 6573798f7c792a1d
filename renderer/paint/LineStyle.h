#pragma once

#include <utility>
#include <vector>

#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/SavedClass.h>
#include <raster/RasterBrush.h>
#include <renderer/Export.h>

namespace Renderer {

/// How outlines are stroked. An immutable shared value: the setters serve while a fresh object is
/// built, before it is consolidated.
///
/// Lengths are in the units of the document, or in device pixels at 96 per inch for styles that are
/// resolution-independent.
class RENDERER_EXPORT LineStyle final : public Kernel::SharedSavedClass<LineStyle>
{
public:
    /// \name The numbers are saved in documents.
    /// @{
    enum LineCap
    {
        ButtCap = 0,
        SquareCap = 1,
        RoundCap = 2,
    };
    enum LineJoin
    {
        NoJoin = 0,
        MitreJoin = 1,
        RoundJoin = 2,
        BevelJoin = 3,
    };
    enum LineType
    {
        None = 0,
        Solid = 1,
        Dashed = 2,
        VectorBrush = 3, ///< always written as an outline
        RasterBrush = 4, ///< painted with the brush; without one like Solid
    };
    /// @}

    /// √2: a mitre is kept down to right angles. Every new style starts with it.
    static constexpr double DefaultMiterLimit = 1.4142135623730951;

    /// No line.
    LineStyle() = default;
    /// A solid line.
    explicit LineStyle(double weight, bool resIndependent = false);

    /// The canonical instance of a style's value. The object itself is not changed.
    static Kernel::Consolidated<LineStyle> Consolidate(const LineStyle& style);

    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

public:
    LineStyle(const LineStyle& other) = default;
    ~LineStyle() override;
    /// A copy that is not consolidated.
    Kernel::Counted<LineStyle> Clone() const;

    LineCap GetCap() const noexcept { return m_cap; }
    void SetCap(LineCap cap) noexcept { m_cap = cap; }
    LineJoin GetJoin() const noexcept { return m_join; }
    void SetJoin(LineJoin join) noexcept { m_join = join; }
    LineType GetType() const noexcept { return m_type; }
    void SetType(LineType type) noexcept { m_type = type; }
    bool IsNone() const noexcept { return m_type == None; }
    /// The width of the line. Zero and less draws nothing.
    double GetWeight() const noexcept { return m_weight; }
    void SetWeight(double weight) noexcept { m_weight = weight; }
    /// Mitre length over weight; longer mitres become bevels.
    double GetMiterLimit() const noexcept { return m_miterLimit; }
    void SetMiterLimit(double limit) noexcept { m_miterLimit = limit; }
    /// Where in the dash pattern a path begins.
    double GetDashPhase() const noexcept { return m_dashPhase; }
    void SetDashPhase(double phase) noexcept { m_dashPhase = phase; }
    /// Lengths of dashes and gaps in turn; applies with type Dashed only.
    const std::vector<double>& GetDashPattern() const noexcept { return m_dashPattern; }
    /// A pattern that is not empty turns a Solid line into a Dashed one.
    void SetDashPattern(std::vector<double> pattern);
    /// Whether lengths are in device pixels at 96 per inch, whatever the transforms.
    bool GetResIndependent() const noexcept { return m_resIndependent; }
    void SetResIndependent(bool resIndependent) noexcept { m_resIndependent = resIndependent; }

    /// What a line of type RasterBrush is painted with; empty for none. Such lines are centred on
    /// their paths, whatever their alignment. A brush without a tip paints nothing, and is saved as
    /// none.
    const Kernel::Counted<const Raster::RasterBrush>& GetBrush() const noexcept { return m_brush; }
    void SetBrush(Kernel::Counted<const Raster::RasterBrush> brush) { m_brush = std::move(brush); }
    /// Whether the line is painted with its brush: its type is RasterBrush, and the brush has a
    /// tip.
    bool PaintsWithBrush() const noexcept
    {
        return m_type == RasterBrush && m_brush && m_brush->GetTip();
    }
    /// Whether the line needs no fill, since it is painted with a brush of its own colours.
    bool HasImplicitFill() const noexcept { return PaintsWithBrush() && m_brush->HasOwnColours(); }

    /// Whether the line is drawn: its type is not None and its weight differs from 0 by more than
    /// 1e-6.
    bool IsVisible() const noexcept;

    /// The PostScript number of a cap (0 butt, 1 round, 2 square). \return false, with nothing
    /// written, where there is none.
    static bool GetPostScriptCap(LineCap cap, int& number) noexcept;
    /// The PostScript number of a join (0 mitre, 1 round, 2 bevel); likewise.
    static bool GetPostScriptJoin(LineJoin join, int& number) noexcept;

    /// How far a centred stroke of width 1 can reach beyond its path: ½, × √2 with square caps,
    /// × max(1, mitre limit) with mitre joins, whichever is larger; with a brush its reach, if that
    /// is larger yet.
    double GetReachPerWeight() const noexcept;

    /// How far a centred stroke can reach beyond its path, in the units of the weight (pixels at 96
    /// per inch when nothing is scaled): weight × GetReachPerWeight; 0 for invisible lines.
    double GetLineInflationPixels96() const noexcept;

private:
    LineCap m_cap = ButtCap;
    LineJoin m_join = RoundJoin;
    LineType m_type = None;
    double m_weight = 0.0;
    double m_miterLimit = DefaultMiterLimit;
    double m_dashPhase = 0.0;
    std::vector<double> m_dashPattern;
    bool m_resIndependent = false;
    Kernel::Counted<const Raster::RasterBrush> m_brush;
};

} // namespace Renderer
