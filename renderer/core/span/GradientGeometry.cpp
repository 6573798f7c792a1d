#include <renderer/core/span/GradientGeometry.h>

#include <array>
#include <cstddef>
#include <type_traits>

#include <renderer/core/span/CirclePositions.h>
#include <renderer/core/span/ConicalPositions.h>
#include <renderer/core/span/FocalPositions.h>
#include <renderer/core/span/GradientSpread.h>
#include <renderer/core/span/LinearPositions.h>

namespace Renderer {

namespace {

/// 0, 1, 2, …: loading them takes less than counting and converting.
constexpr auto Offsets = [] {
    std::array<double, GradientGeometry::BlockLength> offsets{};
    for (std::size_t i = 0; i < offsets.size(); ++i)
        offsets[i] = static_cast<double>(i);
    return offsets;
}();

/// Calls \p store(index, x) for every pixel of a row, x being a double: in whole groups, so that
/// vector loops need no tails.
template<class Store>
void ForPixels(int x, unsigned count, Store store)
{
    constexpr unsigned Group = GradientGeometry::GroupLength;
    const unsigned padded = (count + Group - 1) / Group * Group;
    const double first = x;
    for (unsigned i = 0; i < padded; ++i)
        store(i, first + Offsets[i]);
}

template<class Positions, FillGradient::Spread spread>
struct FindParameters
{
    static void Apply(const void* positions, int x, int y, unsigned count, double* __restrict t)
    {
        const auto row = static_cast<const Positions*>(positions)->template GetRow<double>(y, 1.0);
        ForPixels(x, count, [=](unsigned i, double column) {
            t[i] = GradientSpread::Fold<spread>(row.GetParameter(column));
        });
    }
};

template<class Positions, FillGradient::Spread spread>
struct FindCells
{
    static constexpr bool IsPad = spread == FillGradient::Pad;
    /// Far out, only Pad forgives what float rounds away.
    using Real = std::conditional_t<Positions::IsFloatEnough && IsPad, float, double>;

    static void Apply(const void* positions, int x, int y, unsigned count, int cellsPerUnit,
                      std::int32_t* __restrict cells)
    {
        const auto row = static_cast<const Positions*>(positions)->template GetRow<Real>(
            y, IsPad ? cellsPerUnit : 1.0);
        const Real scale = static_cast<Real>(cellsPerUnit);
        const Real lowest = scale - scale; // 0; the compiler knows no maximum with a constant
        const Real last = scale + Real(2 * GradientGeometry::OuterCells - 1);
        ForPixels(x, count, [=](unsigned i, double column) {
            Real cell = row.GetParameter(column);
            if constexpr (!IsPad)
                cell = GradientSpread::Fold<spread>(cell) * scale;
            cell += Real(GradientGeometry::OuterCells);
            cell = lowest < cell ? cell : lowest;
            cell = cell < last ? cell : last;
            cells[i] = static_cast<std::int32_t>(cell);
        });
    }
};

template<class Code, class Positions, FillGradient::Spread spread>
constexpr GradientGeometry::Functions FunctionsOf{
    &Code::template Call<FindParameters<Positions, spread>, const void*, int, int, unsigned,
                         double*>,
    &Code::template Call<FindCells<Positions, spread>, const void*, int, int, unsigned, int,
                         std::int32_t*>};

template<class Code, class Positions>
const GradientGeometry::Functions& GetFunctions(FillGradient::Spread spread)
{
    // A turn never leaves 0…1.
    if constexpr (!std::is_same_v<Positions, ConicalPositions>) {
        if (spread == FillGradient::Reflect)
            return FunctionsOf<Code, Positions, FillGradient::Reflect>;
        if (spread == FillGradient::Repeat)
            return FunctionsOf<Code, Positions, FillGradient::Repeat>;
    }
    return FunctionsOf<Code, Positions, FillGradient::Pad>;
}

/// The similarity that shares a map's centre, x axis and handedness: radial gradients stay true
/// circles of radius |T(1, 0) − T(0, 0)|, and their focus follows this map.
GradientGeometry::Params GetSimilarity(const GradientGeometry::Params& map)
{
    const double hand = map.Determinant() < 0.0 ? -1.0 : 1.0;
    return {map.m00, -hand * map.m10, map.m02, map.m10, hand * map.m00, map.m12};
}

} // namespace

template<class Positions>
std::optional<GradientGeometry> GradientGeometry::Finish(const std::optional<Positions>& positions,
                                                         FillGradient::Spread spread,
                                                         PopulatorStore& store, bool useWideCode)
{
    if (!positions)
        return std::nullopt;
    return GradientGeometry(&store.Emplace<Positions>(*positions),
                            useWideCode ? GetFunctions<Blending::WideCode, Positions>(spread)
                                        : GetFunctions<Blending::BaselineCode, Positions>(spread),
                            positions->IsConstantAlongRows());
}

std::optional<GradientGeometry> GradientGeometry::Make(const FillGradient& fill,
                                                       const Params& fillToDevice,
                                                       PopulatorStore& store, bool useWideCode)
{
    const FillGradient::Spread spread = fill.GetSpread();
    switch (fill.GetType()) {
    case FillGradient::Linear: {
        Kernel::PointT<double> p0;
        Kernel::PointT<double> p1;
        fill.GetLinearPoints(fillToDevice, p0, p1);
        return Finish(LinearPositions::Make(p0, p1), spread, store, useWideCode);
    }
    case FillGradient::Radial:
    case FillGradient::Elliptical: {
        const bool isCircle =
            fill.GetType() == FillGradient::Radial && !fill.TreatRadialAsElliptical();
        const Params map = isCircle ? GetSimilarity(fillToDevice) : fillToDevice;
        if (fill.GetFocus() == Kernel::PointT<double>{})
            return Finish(CirclePositions::Make(map), spread, store, useWideCode);
        return Finish(FocalPositions::Make(map, fill.GetFocus()), spread, store, useWideCode);
    }
    case FillGradient::Conical:
        return Finish(fill.IsTransformCorrected() ? ConicalPositions::MakeCorrected(fillToDevice)
                                                  : ConicalPositions::MakeUncorrected(fillToDevice),
                      spread, store, useWideCode);
    }
    return std::nullopt;
}

} // namespace Renderer
