// Where stamps lie on a path.
//
// Stamps that follow each other at small fractions of a pixel are painted as one in their middle,
// laid over itself as often as there are stamps: n of alpha a give 1 − (1 − a)ⁿ, pixel by pixel,
// with the texture and the area that they have there. That differs from painting each of them where
// the area does not change evenly with the place, which is where an edge of the tip comes to the
// border of a pixel: by h²/8 over the step of the stamps, in the exponent n·a of the pixel, for
// each such place and stamps that cover the way h. Next to what a whole pass of the tip gives, that
// is little. But pixels that stamps just reach, at the ends of a run and at corners, get no more
// than that; so there h is a share of the distance from these.

#include <algorithm>
#include <cmath>

#include <renderer/core/texture/BrushPen.h>

namespace Renderer::Texture {

namespace {

/// Device pixels that any corner of stamps which are painted as one moves at most, where each lies
/// over the others.
constexpr double MostWay = 1.0 / 12.0;
/// The same where the one of largest opacity is seen, which is that much off its place.
constexpr double MostWayOfLargest = 1.0 / 32.0;
/// The way of a tip that is narrower than a pixel: this times the root of its width, so that h²/8
/// is a small share of the width; yet a fortieth of a pixel, of which even tips without width meet
/// enough.
constexpr double WayOfNarrow = 0.2;
constexpr double LeastWay = 1.0 / 40.0;
/// The same as a share of the distance from the nearest break.
constexpr double ShareOfDistance = 1.0 / 8.0;
/// More stamps in one place than two to the power of this are no more.
constexpr int MostDoublings = 24;

double GetDistance(const CVertex& a, const CVertex& b) noexcept
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// How far the corners of two stamps lie from each other at most.
double GetDistance(const std::array<CVertex, 4>& a, const std::array<CVertex, 4>& b) noexcept
{
    double most = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        most = std::max(most, GetDistance(a[i], b[i]));
    return most;
}

/// The lesser width of a stamp.
double GetWidth(const std::array<CVertex, 4>& c) noexcept
{
    const double cross =
        (c[1].x - c[0].x) * (c[3].y - c[0].y) - (c[1].y - c[0].y) * (c[3].x - c[0].x);
    const double longest = std::max(GetDistance(c[0], c[1]), GetDistance(c[0], c[3]));
    return longest > 0.0 ? std::abs(cross) / longest : 0.0;
}

/// The largest whole number whose power of two is no larger than \p count, at least 0.
int FloorLog2(double count) noexcept
{
    return count >= 2.0 ? std::min(std::ilogb(count), MostDoublings) : 0;
}

} // namespace

/// From a stamp to the next one: less where the tip is smaller, but never next to nothing.
double BrushPen::GetStep(double share) const
{
    constexpr double SmallestSize = 1.0 / 16.0;
    const double least = m_hasGroups ? std::ldexp(m_shortest, -MostDoublings) : m_shortest;
    return std::max(m_settings.spacing * m_tipLength * std::max(GetSize(share), SmallestSize),
                    least);
}

void BrushPen::PlaceStamps(const BrushPath& run)
{
    m_places.clear();
    FindBreaks(run);
    double place = 0.0;
    int doublings = 0;
    while (place < m_runLength && !IsAborting()) {
        const double step = GetStep(place / m_runLength);
        doublings = m_hasGroups ? GetDoublings(run, place, step, doublings + 1) : 0;
        const double length = std::ldexp(step, doublings);
        m_places.push_back({place + 0.5 * (length - step), static_cast<std::uint8_t>(doublings)});
        place += length;
    }
    if (!run.IsClosed()) {
        if (place <= m_runLength * (1.0 + 1e-9))
            m_places.push_back({place, 0});
        return;
    }
    // A closed run gets a whole number of steps, of nearly the same length.
    const StampPlace last = m_places.back();
    if (m_places.size() > 1 && last.doublings == 0 &&
        m_runLength - last.length < place - m_runLength) {
        place = last.length;
        m_places.pop_back();
    }
    for (StampPlace& each : m_places)
        each.length *= m_runLength / place;
}

void BrushPen::FindBreaks(const BrushPath& run)
{
    const double reach = 0.5 * m_scale * std::hypot(m_tipLength, m_line.weight);
    const double turn = m_settings.followsPath ? std::min(MostWay / reach, BrushPath::MostTurn)
                                               : BrushPath::MostTurn;
    const double cosine = std::cos(0.999 * turn);
    const auto& samples = run.GetSamples();
    m_breaks.assign(1, 0.0);
    for (std::size_t i = 0; i + 1 < samples.size(); ++i) {
        const Point a = samples[i].direction, b = samples[i + 1].direction;
        if (samples[i].length == samples[i + 1].length && a.x * b.x + a.y * b.y < cosine)
            m_breaks.push_back(samples[i].length);
    }
    m_breaks.push_back(m_runLength);
    m_nextBreak = 1;
    m_sample = 0;
}

BrushPen::Corners BrushPen::FindStamp(const BrushPath& run, double place,
                                      std::size_t hint) const noexcept
{
    const BrushPath::Sample at = run.At(place, hint);
    return MakeStamp(at.point, GetAngle(at), GetSize(place / m_runLength), 1.0);
}

int BrushPen::GetDoublings(const BrushPath& run, double place, double step, int most)
{
    while (m_nextBreak + 1 < m_breaks.size() && m_breaks[m_nextBreak] <= place)
        ++m_nextBreak;
    const double distance =
        std::min(place - m_breaks[m_nextBreak - 1], m_breaks[m_nextBreak] - place);
    const int ofRun = FloorLog2((m_runLength - place) / step);
    const int least = std::min(FloorLog2(2.0 * m_shortest / step), ofRun);
    int doublings = std::min({FloorLog2(ShareOfDistance * distance / step), most, ofRun});
    if (doublings <= least)
        return least;
    run.At(place, m_sample);
    const Corners first = FindStamp(run, place, m_sample);
    const double way =
        m_settings.overlap == Settings::Overlap::MaxOpacity
            ? MostWayOfLargest
            : std::clamp(WayOfNarrow * std::sqrt(GetWidth(first)), LeastWay, MostWay);
    const auto getWay = [&] {
        const double last = place + std::ldexp(step, doublings) - step;
        return GetDistance(first, FindStamp(run, last, m_sample));
    };
    while (doublings > least && !(getWay() <= way))
        --doublings;
    return doublings;
}

} // namespace Renderer::Texture
