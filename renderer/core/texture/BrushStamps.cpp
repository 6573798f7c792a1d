// Brushes that are stamped along a path.

#include <algorithm>
#include <cmath>
#include <numbers>

#include <renderer/core/texture/BrushPen.h>

namespace Renderer::Texture {

namespace {

/// What jitters, each with random numbers of its own.
enum class Jitter : std::uint32_t
{
    Distance,
    Bearing,
    Angle,
    Size,
    Opacity,
};

/// A number in 0 … 1 that looks random, the same for the same stamp: the finaliser of SplitMix64
/// (Steele, Lea and Flood, 2014), once over the seed and the run and once over the stamp.
double GetRandom(std::uint32_t seed, std::uint32_t run, std::uint32_t stamp, Jitter jitter) noexcept
{
    const auto mix = [](std::uint64_t z) {
        z += 0x9e3779b97f4a7c15U;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
        return z ^ (z >> 31);
    };
    const std::uint64_t place = std::uint64_t{stamp} << 8 | static_cast<std::uint64_t>(jitter);
    return double(mix(mix(std::uint64_t{seed} << 32 | run) ^ place) >> 11) * 0x1p-53;
}

} // namespace

void BrushPen::DrawStamps(const BrushPath& run)
{
    if (m_runLength > 0.0)
        PlaceStamps(run);
    else
        m_places.assign(1, {0.0, 0});
    std::size_t hint = 0;
    for (std::size_t i = 0; i < m_places.size() && !IsAborting(); ++i)
        DrawStamp(run.At(m_places[i].length, hint), static_cast<std::uint32_t>(i),
                  m_places[i].doublings);
}

void BrushPen::DrawStamp(const BrushPath::Sample& place, std::uint32_t index,
                         std::uint8_t doublings)
{
    const auto random = [&](Jitter jitter) {
        return GetRandom(m_settings.seed, m_run, index, jitter);
    };
    const double share = m_runLength > 0.0 ? place.length / m_runLength : 0.0;
    const double size = GetSize(share) * (1.0 - m_settings.sizeJitter * random(Jitter::Size));
    const double opacity =
        GetOpacity(share) * (1.0 - m_settings.opacityJitter * random(Jitter::Opacity));
    if (!(size > 0.0) || !(opacity > 0.0))
        return;
    const double turn = m_settings.angleJitter * (2.0 * random(Jitter::Angle) - 1.0);
    const double distance =
        m_settings.positionJitter * m_line.weight * std::sqrt(random(Jitter::Distance));
    const double bearing = 2.0 * std::numbers::pi * random(Jitter::Bearing);
    const Point centre = place.point + distance * Point{std::cos(bearing), std::sin(bearing)};
    const Corners corners = MakeStamp(centre, GetAngle(place) + turn, size, opacity);
    const auto length = [&](const CVertex& from, const CVertex& to) {
        return std::hypot(to.x - from.x, to.y - from.y);
    };
    const double across = length(corners[0], corners[3]);
    Add(corners, GetLevel(length(corners[0], corners[1]), across), across, place.length,
        place.length, doublings);
}

double BrushPen::GetAngle(const BrushPath::Sample& place) const noexcept
{
    return m_settings.rotation +
           (m_settings.followsPath ? std::atan2(place.direction.y, place.direction.x) : 0.0);
}

BrushPen::Corners BrushPen::MakeStamp(Point centre, double angle, double size,
                                      double opacity) const noexcept
{
    const double c = 0.5 * size * std::cos(angle), s = 0.5 * size * std::sin(angle);
    const Point along = m_tipLength * Point{c, s};
    const Point across = m_line.weight * Point{-s, c};
    const auto corner = [&](double u, double v) {
        const Point p =
            m_line.toDevice.Map(centre + (2.0 * u - 1.0) * along + (2.0 * v - 1.0) * across);
        return CVertex{p.x, p.y, float(u), float(v), float(opacity)};
    };
    return {corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 1)};
}

} // namespace Renderer::Texture
