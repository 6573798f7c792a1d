// What stamps and slices have in common.

#include <renderer/core/texture/BrushPen.h>

#include <algorithm>
#include <cmath>
#include <ranges>

#include <renderer/core/AbortFlag.h>
#include <renderer/core/texture/CPolygon.h>
#include <renderer/core/texture/TextureCanvas.h>

namespace Renderer::Texture {

BrushPen::BrushPen(const BrushLine& line, double totalLength, std::vector<TexturedPolygon>& out)
    : m_line(line),
      m_settings(line.brush.GetSettings()),
      m_out(out),
      m_scale(std::sqrt(std::abs(line.toDevice.Determinant()))),
      m_tipLength(line.weight * line.brush.GetTipLength()),
      m_shortest(totalLength / MostPieces),
      m_hasGroups(m_settings.positionJitter == 0.0 && m_settings.angleJitter == 0.0 &&
                  m_settings.sizeJitter == 0.0 && m_settings.opacityJitter == 0.0)
{}

void BrushPen::Draw(const BrushPath& run)
{
    m_runLength = run.GetLength();
    const double inWeights = m_runLength / m_line.weight;
    m_loop = run.IsClosed() ? inWeights : 0.0;
    if (m_settings.mode == Settings::Mode::Stamped)
        DrawStamps(run);
    else if (m_runLength > 0.0)
        DrawSlices(run);
    m_runStart += inWeights + 4.0 * double(JoinReach); // runs never join each other
    ++m_run;
}

unsigned BrushPen::GetSide(unsigned side, std::uint32_t level) noexcept
{
    const double reduced = std::round(double(side) * std::exp2(-0.5 * double(level)));
    return std::max(1U, static_cast<unsigned>(reduced));
}

bool BrushPen::IsAborting() const noexcept
{
    return IsAbortSet(m_line.abort);
}

double BrushPen::GetPressure(double share) const noexcept
{
    const Geometry::WidthProfile* const profile = m_line.pressure;
    if (!profile)
        return 1.0;
    const auto spans = std::views::iota(std::size_t{0}, profile->GetSpanCount() - 1);
    const auto getEnd = [profile](std::size_t span) { return profile->GetSpanEnd(span); };
    const auto found = std::ranges::lower_bound(spans, share, {}, getEnd);
    return profile->Evaluate(static_cast<std::size_t>(found - spans.begin()), share).factor;
}

double BrushPen::GetSize(double share) const noexcept
{
    return 1.0 + m_settings.sizeByPressure * (GetPressure(share) - 1.0);
}

double BrushPen::GetOpacity(double share) const noexcept
{
    const double byPressure = 1.0 + m_settings.opacityByPressure * (GetPressure(share) - 1.0);
    return m_settings.opacity * std::min(byPressure, 1.0);
}

/// The sizes at which a pixel covers at most one texel per axis, and more than 0.7.
std::uint32_t BrushPen::GetLevel(double deviceLength, double deviceHeight) const noexcept
{
    const auto find = [](unsigned texels, double pixels) {
        const double level = std::ceil(2.0 * std::log2(double(texels) / pixels) - 1e-6);
        // Not a number, where there are no pixels, is the smallest.
        return level <= 0.0                ? 0U
               : level < double(MostLevel) ? static_cast<std::uint32_t>(level)
                                           : MostLevel;
    };
    const Raster::DynamicBitmap& tip = *m_line.brush.GetTip();
    return MakeLevel(find(tip.GetWidth(), deviceLength), find(tip.GetHeight(), deviceHeight));
}

void BrushPen::Add(const Corners& corners, std::uint32_t level, double width, double begin,
                   double end, std::uint8_t doublings)
{
    for (const CVertex& corner : corners)
        if (!(std::abs(corner.x) <= CPolygon::MaxCoordinate &&
              std::abs(corner.y) <= CPolygon::MaxCoordinate))
            return;
    const Kernel::RectT<int> bounds = CPolygon(corners).GetBounds();
    if (bounds.Intersect(m_line.visible).IsEmpty())
        return;
    TexturedPolygon& piece = m_out.emplace_back();
    std::ranges::copy(corners, piece.corners.begin());
    piece.width = static_cast<float>(width);
    piece.level = level;
    piece.doublings = doublings;
    piece.begin = static_cast<float>(m_runStart + begin / m_line.weight);
    piece.end = static_cast<float>(m_runStart + end / m_line.weight);
    piece.runStart = static_cast<float>(m_runStart);
    piece.loop = static_cast<float>(m_loop);
    piece.bounds = bounds;
}

} // namespace Renderer::Texture
