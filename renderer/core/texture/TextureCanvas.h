#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <kernel/Counted.h>
#include <kernel/Point.h>
#include <kernel/Rect.h>
#include <raster/DynamicBuffer.h>
#include <raster/RasterBrush.h>
#include <renderer/core/texture/TexturedPolygon.h>

namespace Renderer::Texture {

/// The pieces of a brush stroke, in the order in which they are painted, and what they are painted
/// with.
struct TexturedPolygons
{
    std::vector<TexturedPolygon> polygons;
    /// The sizes of the texture that level stands for, all of one format: M16 or IA16 for masks,
    /// that of the target for colours.
    std::vector<Kernel::Counted<const Raster::DynamicBuffer>> textures;
    /// Whether the first channel of the textures is the mask.
    bool isIntensity = false;
    /// Whether pieces meet at common edges; otherwise each is a stamp of its own.
    bool areJoined = false;
    /// Whether the texture goes round along u.
    bool wraps = false;
    Raster::BrushSettings::Overlap overlap = Raster::BrushSettings::Overlap::BuildUp;
};

/// Joined pieces that are no further apart along their stroke, in weights, are summed up where they
/// share a pixel; others overlap. The inside of the tightest bend of a line is shorter.
inline constexpr float JoinReach = 2.0F;

/// Pixels a side of the cells that tiles are painted by: their float pixels fit a processor's
/// cache.
inline constexpr int CellSide = 64;

/// Which blocks of pixels a stroke touches.
class TouchedBlocks
{
public:
    /// Pixels a side; tiles consist of whole blocks.
    static constexpr int Side = 16;

    /// \param rect of the page, not empty.
    explicit TouchedBlocks(const Kernel::RectT<int>& rect);

    void Touch(int x, int y) noexcept { m_blocks[GetIndex(x, y)] = 1; }

    /// Calls \p use with disjoint rectangles of the page that make up the touched blocks, cut at
    /// the rectangle.
    template<class Use>
    void ForEachRect(const Use& use) const
    {
        for (int row = 0; row < m_rows; ++row)
            for (int column = 0; column < m_columns; ++column) {
                const int first = column;
                while (column < m_columns && IsTouched(column, row))
                    ++column;
                if (column > first)
                    use(GetRect(first, column, row));
            }
    }

private:
    static constexpr int Shift = 4;

    std::size_t GetIndex(int x, int y) const noexcept
    {
        return std::size_t((y >> Shift) - m_top) * std::size_t(m_columns) +
               std::size_t((x >> Shift) - m_left);
    }
    bool IsTouched(int column, int row) const noexcept
    {
        return m_blocks[std::size_t(row) * std::size_t(m_columns) + std::size_t(column)] != 0;
    }
    Kernel::RectT<int> GetRect(int firstColumn, int endColumn, int row) const noexcept;

    Kernel::RectT<int> m_rect;
    int m_left;
    int m_top;
    int m_columns;
    int m_rows;
    std::vector<unsigned char> m_blocks;
};

/// Paints what of a stroke lies in \p rect into a transparent buffer: colours, or alpha alone where
/// the textures are masks.
///
/// Goes tile by tile, on several threads. A pixel depends on the pieces that reach into it and
/// their order alone, so that the parts of a stroke agree however it is cut. \param target of the
/// format of the textures, or of any for masks; its first pixel is page pixel
///        (rect.left, rect.top).
/// \param abort tested before each piece; what is not complete then is left out.
/// \param touched of \p rect; gets the blocks that hold anything.
void PaintTexturedPolygons(const TexturedPolygons& stroke, const Kernel::RectT<int>& rect,
                           Raster::DynamicBuffer& target, const bool* abort,
                           TouchedBlocks& touched);

} // namespace Renderer::Texture
