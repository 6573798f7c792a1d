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

/// From a stamp to the next one: less where the tip is smaller, but never next to nothing.
double BrushPen::GetStep(double share) const
{
    constexpr double SmallestSize = 1.0 / 16.0;
    return std::max(m_settings.spacing * m_tipLength * std::max(GetSize(share), SmallestSize),
                    m_shortest);
}

void BrushPen::PlaceStamps(const BrushPath& run)
{
    m_places.assign(1, 0.0);
    double place = 0.0;
    while (place < m_runLength) {
        place += GetStep(place / m_runLength);
        m_places.push_back(place);
    }
    // The next stamp would lie beyond the end.
    if (place > m_runLength * (1.0 + 1e-9) || run.IsClosed())
        m_places.pop_back();
    if (!run.IsClosed() || m_places.empty())
        return;
    // A closed run gets a whole number of steps, of nearly the same length.
    const bool endsEarly =
        m_places.size() > 1 && m_runLength - m_places.back() < place - m_runLength;
    if (endsEarly) {
        place = m_places.back();
        m_places.pop_back();
    }
    for (double& each : m_places)
        each *= m_runLength / place;
}

void BrushPen::DrawStamps(const BrushPath& run)
{
    if (m_runLength > 0.0)
        PlaceStamps(run);
    else
        m_places.assign(1, 0.0);
    std::size_t hint = 0;
    for (std::size_t i = 0; i < m_places.size(); ++i)
        DrawStamp(run.At(m_places[i], hint), static_cast<std::uint32_t>(i), m_runLength);
}

void BrushPen::DrawStamp(const BrushPath::Sample& place, std::uint32_t index, double runLength)
{
    const auto random = [&](Jitter jitter) {
        return GetRandom(m_settings.seed, m_run, index, jitter);
    };
    const double share = runLength > 0.0 ? place.length / runLength : 0.0;
    const double size = GetSize(share) * (1.0 - m_settings.sizeJitter * random(Jitter::Size));
    const double opacity =
        GetOpacity(share) * (1.0 - m_settings.opacityJitter * random(Jitter::Opacity));
    if (!(size > 0.0) || !(opacity > 0.0))
        return;
    double angle =
        m_settings.rotation + m_settings.angleJitter * (2.0 * random(Jitter::Angle) - 1.0);
    if (m_settings.followsPath)
        angle += std::atan2(place.direction.y, place.direction.x);
    const double distance =
        m_settings.positionJitter * m_line.weight * std::sqrt(random(Jitter::Distance));
    const double bearing = 2.0 * std::numbers::pi * random(Jitter::Bearing);
    const Point centre = place.point + distance * Point{std::cos(bearing), std::sin(bearing)};
    const Point along = (0.5 * m_tipLength * size) * Point{std::cos(angle), std::sin(angle)};
    const Point across = (0.5 * m_line.weight * size) * Point{-std::sin(angle), std::cos(angle)};
    const auto corner = [&](double u, double v) {
        const Point p =
            m_line.toDevice.Map(centre + (2.0 * u - 1.0) * along + (2.0 * v - 1.0) * across);
        return CVertex{p.x, p.y, float(u), float(v), float(opacity)};
    };
    const Corners corners{corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 1)};
    const auto length = [&](Point v) {
        const Point mapped = m_line.toDevice.MapVector(v);
        return 2.0 * std::hypot(mapped.x, mapped.y);
    };
    Add(corners, GetLevel(length(along), length(across)), length(across), place.length,
        place.length);
}

} // namespace Renderer::Texture
