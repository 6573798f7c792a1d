#include <raster/ColourClusters.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <raster/NearestColour.h>

namespace Raster {

namespace {

constexpr std::size_t Axes = 4;
using Vector = std::array<double, Axes>;

/// Weight, and weighted sum, of some colours.
struct Sum
{
    double weight = 0.0;
    Vector at{};

    void Add(const WeightedColour& colour) noexcept
    {
        weight += colour.weight;
        for (std::size_t i = 0; i < Axes; ++i)
            at[i] += colour.weight * double(colour.point[i]);
    }

    ColourPoint GetMean() const noexcept
    {
        ColourPoint mean;
        for (std::size_t i = 0; i < Axes; ++i)
            mean[i] = static_cast<float>(at[i] / weight);
        return mean;
    }
};

/// By how much the squared error drops when \p part is taken out of \p whole:
/// wp·wr/w·|mp − mr|², with the rest r, the weights w and the means m.
double GetGain(const Sum& part, const Sum& whole) noexcept
{
    const double rest = whole.weight - part.weight;
    double square = 0.0;
    for (std::size_t i = 0; i < Axes; ++i) {
        const double difference = part.at[i] / part.weight - (whole.at[i] - part.at[i]) / rest;
        square += double(GetWeight(i)) * difference * difference;
    }
    return part.weight * rest / whole.weight * square;
}

/// The direction in which the colours, seen from their mean, spread most: the first eigenvector of
/// their covariance, by power iteration. In the coordinates of ColourPoint, each axis with its
/// weight: its product with a point is the coordinate along it.
Vector FindPrincipalAxis(std::span<const WeightedColour> colours, const Sum& whole)
{
    std::array<Vector, Axes> covariance{};
    for (const WeightedColour& colour : colours) {
        Vector difference;
        for (std::size_t i = 0; i < Axes; ++i)
            difference[i] = double(colour.point[i]) - whole.at[i] / whole.weight;
        for (std::size_t i = 0; i < Axes; ++i)
            for (std::size_t j = 0; j < Axes; ++j)
                covariance[i][j] +=
                    colour.weight * double(GetWeight(i)) * difference[i] * difference[j];
    }
    std::size_t widest = 0;
    for (std::size_t i = 1; i < Axes; ++i)
        if (covariance[i][i] > covariance[widest][widest])
            widest = i;

    Vector axis{};
    axis[widest] = 1.0;
    constexpr int iterations = 12; // what is left after them hardly moves the cut
    for (int round = 0; round < iterations; ++round) {
        Vector next{};
        double largest = 0.0;
        for (std::size_t i = 0; i < Axes; ++i) {
            for (std::size_t j = 0; j < Axes; ++j)
                next[i] += covariance[i][j] * axis[j];
            largest = std::max(largest, std::abs(next[i]));
        }
        if (!(largest > 0.0))
            break;
        for (std::size_t i = 0; i < Axes; ++i)
            axis[i] = next[i] / largest;
    }
    return axis;
}

/// A stretch of the colours of a class, and where it is cut in two best.
struct Box
{
    std::size_t classIndex;
    std::span<WeightedColour> colours;
    Sum sum;
    std::size_t cut = 0;
    double gain = 0.0; ///< 0 when it cannot be cut
};

/// Sorts the colours along their principal axis and finds the cut of the largest gain.
Box MakeBox(std::size_t classIndex, std::span<WeightedColour> colours)
{
    Box box{classIndex, colours, {}};
    for (const WeightedColour& colour : colours)
        box.sum.Add(colour);
    if (colours.size() < 2)
        return box;
    const Vector axis = FindPrincipalAxis(colours, box.sum);
    const auto project = [&](const WeightedColour& colour) {
        double place = 0.0;
        for (std::size_t i = 0; i < Axes; ++i)
            place += axis[i] * double(colour.point[i]);
        return place;
    };
    // Sorts by the places, and by the colours where they are the same: whatever the order they came
    // in, it is the same afterwards.
    std::vector<std::pair<double, WeightedColour>> places;
    places.reserve(colours.size());
    for (const WeightedColour& colour : colours)
        places.emplace_back(project(colour), colour);
    std::ranges::sort(places, [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : a.second.point < b.second.point;
    });
    Sum left;
    for (std::size_t i = 0; i < places.size(); ++i) {
        colours[i] = places[i].second;
        left.Add(colours[i]);
        if (i + 1 == places.size())
            break;
        if (const double gain = GetGain(left, box.sum); gain > box.gain) {
            box.gain = gain;
            box.cut = i + 1;
        }
    }
    return box;
}

/// Cuts the box with the most to gain, again and again.
std::vector<Box> SplitBoxes(std::span<std::vector<WeightedColour>> classes, std::size_t count)
{
    std::vector<Box> boxes;
    for (std::size_t i = 0; i < classes.size(); ++i)
        boxes.push_back(MakeBox(i, classes[i]));
    while (!boxes.empty() && boxes.size() < count) {
        const auto best = std::ranges::max_element(boxes, {}, &Box::gain);
        if (!(best->gain > 0.0))
            break;
        const Box whole = *best;
        *best = MakeBox(whole.classIndex, whole.colours.first(whole.cut));
        boxes.push_back(MakeBox(whole.classIndex, whole.colours.subspan(whole.cut)));
    }
    return boxes;
}

/// Gives every colour to its nearest centre and moves the centres into the middle of what they got,
/// until that hardly helps.
class Refinement
{
public:
    Refinement(std::span<const WeightedColour> colours, std::vector<ColourPoint> centres)
        : m_colours(colours), m_centres(std::move(centres)), m_owners(colours.size())
    {}

    std::vector<ColourPoint> Run()
    {
        constexpr int maxRounds = 16;
        constexpr double enough = 0.998; // of the error before
        double error = Assign();
        for (int round = 0; round < maxRounds; ++round) {
            MoveCentres();
            const double before = error;
            error = Assign();
            if (!(error < enough * before))
                break;
        }
        MoveCentres();
        KeepDominantColours();
        return std::move(m_centres);
    }

private:
    /// \return the sum of the squared distances, weighted.
    double Assign()
    {
        const NearestColour nearest(m_centres);
        double error = 0.0;
        for (std::size_t i = 0; i < m_colours.size(); ++i) {
            m_owners[i] = nearest.Find(m_colours[i].point);
            error += m_colours[i].weight *
                     double(GetSquaredDistance(m_colours[i].point, m_centres[m_owners[i]]));
        }
        return error;
    }

    void MoveCentres()
    {
        std::vector<Sum> sums(m_centres.size());
        for (std::size_t i = 0; i < m_colours.size(); ++i)
            sums[m_owners[i]].Add(m_colours[i]);
        for (std::size_t i = 0; i < m_centres.size(); ++i)
            if (sums[i].weight > 0.0) // a centre that got nothing stays
                m_centres[i] = sums[i].GetMean();
    }

    /// Flat areas keep their exact colour, which their shades along edges would pull away.
    void KeepDominantColours()
    {
        std::vector<double> weights(m_centres.size());
        std::vector<const WeightedColour*> heaviest(m_centres.size());
        for (std::size_t i = 0; i < m_colours.size(); ++i) {
            const WeightedColour*& best = heaviest[m_owners[i]];
            weights[m_owners[i]] += m_colours[i].weight;
            if (!best || m_colours[i].weight > best->weight)
                best = &m_colours[i];
        }
        for (std::size_t i = 0; i < m_centres.size(); ++i)
            if (heaviest[i] && heaviest[i]->weight > 0.5 * weights[i])
                m_centres[i] = heaviest[i]->point;
    }

    std::span<const WeightedColour> m_colours;
    std::vector<ColourPoint> m_centres;
    std::vector<unsigned> m_owners;
};

} // namespace

std::vector<std::vector<ColourPoint>>
FindColourClusters(std::span<const std::vector<WeightedColour>> classes, std::size_t count)
{
    std::vector<std::vector<WeightedColour>> sorted(classes.begin(), classes.end());
    std::vector<std::vector<ColourPoint>> centres(classes.size());
    for (const Box& box : SplitBoxes(sorted, count))
        centres[box.classIndex].push_back(box.sum.GetMean());
    for (std::size_t i = 0; i < sorted.size(); ++i)
        if (centres[i].size() < sorted[i].size()) // else each colour is its own centre
            centres[i] = Refinement(sorted[i], std::move(centres[i])).Run();
    return centres;
}

} // namespace Raster
