#include <raster/NearestColour.h>

#include <cmath>
#include <limits>
#include <vector>

#include <flann/general.h>

#include <flann/algorithms/kdtree_single_index.h>

namespace Raster {

namespace {

/// The distance of ColourPoints, in the form that FLANN asks for.
struct ColourDistance
{
    using is_kdtree_distance = bool;
    using ElementType = float;
    using ResultType = float;

    template<class Iterator1, class Iterator2>
    float operator()(Iterator1 a, Iterator2 b, std::size_t size, float = -1.0F) const
    {
        float sum = 0.0F;
        for (std::size_t i = 0; i < size; ++i)
            sum += accum_dist(a[i], b[i], i);
        return sum;
    }

    /// The part of one axis.
    template<class T, class U>
    float accum_dist(const T& a, const U& b, std::size_t axis) const
    {
        return GetWeight(axis) * (a - b) * (a - b);
    }
};

/// Keeps the nearest point, and of equally near ones that of the lowest index: the tree visits its
/// leaves in an order of its own.
class Nearest final : public flann::ResultSet<float>
{
public:
    bool full() const override { return m_distance < std::numeric_limits<float>::max(); }
    void addPoint(float distance, std::size_t index) override
    {
        if (distance > m_distance || (distance == m_distance && index > m_index))
            return;
        m_distance = distance;
        m_index = index;
    }
    /// The tree offers points that are nearer than this: the equally near ones are asked for, too.
    float worstDist() const override
    {
        return full() ? std::nextafter(m_distance, std::numeric_limits<float>::max()) : m_distance;
    }

    std::size_t GetIndex() const noexcept { return m_index; }

private:
    float m_distance = std::numeric_limits<float>::max();
    std::size_t m_index = 0;
};

} // namespace

struct NearestColour::Tree
{
    explicit Tree(std::span<const ColourPoint> colours)
        : points(colours.begin(), colours.end()),
          index(flann::Matrix<float>(points.front().data(), points.size(), points.front().size()),
                flann::KDTreeSingleIndexParams(LeafSize))
    {
        index.buildIndex();
    }

    static constexpr int LeafSize = 6;
    std::vector<ColourPoint> points;
    flann::KDTreeSingleIndex<ColourDistance> index;
};

NearestColour::NearestColour(std::span<const ColourPoint> colours)
    : m_tree(std::make_unique<Tree>(colours))
{}

NearestColour::~NearestColour() = default;
NearestColour::NearestColour(NearestColour&&) noexcept = default;
NearestColour& NearestColour::operator=(NearestColour&&) noexcept = default;

unsigned NearestColour::Find(const ColourPoint& point) const
{
    Nearest nearest;
    m_tree->index.findNeighbors(nearest, point.data(), flann::SearchParams(1, 0.0F));
    return static_cast<unsigned>(nearest.GetIndex());
}

} // namespace Raster
