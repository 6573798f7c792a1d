#pragma once

#include <array>
#include <span>

#include <kernel/Rect.h>
#include <renderer/core/texture/CCoverage.h>
#include <renderer/core/texture/CVertex.h>
#include <renderer/core/texture/QuadrangleMap.h>

namespace Renderer::Texture {

/// A textured polygon on the page: the exact area of it in each pixel, and the texture's place at
/// each pixel.
///
/// Corners are rounded to 2⁻²⁰ pixels. The area of a pixel is the sum of what its edges give, each
/// of them rounded for itself from its upper end to its lower one, whichever way the polygon runs:
/// an edge that two polygons share gives the one what it takes from the other. So the areas of
/// polygons that tile a plane add up to Whole in each pixel, with no rest.
///
/// Polygons may be bent in or cross themselves: a pixel's area is then the amount of the signed
/// sum, Whole at most.
class CPolygon
{
public:
    static constexpr std::size_t MaxVertices = 8;
    /// Coordinates are to be within ± this.
    static constexpr double MaxCoordinate = 1073741824.0;

    /// \pre at most MaxVertices, their coordinates finite and within MaxCoordinate.
    explicit CPolygon(std::span<const CVertex> vertices) noexcept;
    CPolygon(const CPolygon&) = delete;
    CPolygon& operator=(const CPolygon&) = delete;

    /// The pixels that the polygon reaches into.
    const Kernel::RectT<int>& GetBounds() const noexcept { return m_bounds; }

    /// Finds the areas of row \p y within the columns from \p left to \p right, and prepares MapX
    /// for the row. The areas do not depend on the columns that are asked for.
    void ComputeCoverages(int y, int left, int right, CCoverage& row);

    /// Leaves what of the row lies between two columns.
    static void ClipCoverages(int left, int right, CCoverage& row) noexcept;

    /// The texture's place at the middle of pixel \p x of the row, or the nearest one that the
    /// polygon has: that of QuadrangleMap for polygons of four corners, for others that of the
    /// first corner.
    TexturePlace MapX(int x) const noexcept { return m_map.At(double(x) + 0.5); }
    /// The same of some pixels from \p x on, but for their opacities.
    void MapEach(int x, std::size_t count, float* u, float* v) const noexcept
    {
        m_map.AtEach(double(x) + 0.5, count, u, v);
    }

private:
    /// An edge from its upper end to its lower one.
    struct Edge
    {
        double x0, y0, x1, y1;
        double slope; // x per y
        int sign;     // 1 where the polygon runs down along it

        double XAt(double y) const noexcept;
    };
    /// The part of an edge in a row: heights in 2⁻²⁰ pixels below the row's upper border.
    struct Piece
    {
        double x0, x1;
        std::int32_t height;
        int sign;
    };

    using Point = Kernel::PointT<double>;

    void AddEdge(Point from, Point to) noexcept;
    static void AddPiece(const Piece& piece, int begin, int end, CCoverage& row) noexcept;
    static void PrepareEntryBlock(CCoverage& row) noexcept;
    static void PrepareExitBlock(CCoverage& row) noexcept;
    static void ClipEntryPixels(int left, CCoverage& row) noexcept;
    static void ClipExitPixels(int right, CCoverage& row) noexcept;

    std::array<Edge, MaxVertices> m_edges;
    std::size_t m_edgeCount = 0; // of edges that are not level
    Kernel::RectT<int> m_bounds{};
    QuadrangleMap m_map;
};

} // namespace Renderer::Texture
