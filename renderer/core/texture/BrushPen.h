#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <geometry/Stroker.h>
#include <geometry/WidthProfile.h>
#include <kernel/Rect.h>
#include <raster/AffineTransform.h>
#include <raster/RasterBrush.h>
#include <renderer/core/texture/BrushPath.h>
#include <renderer/core/texture/TexturedPolygon.h>

namespace Renderer::Texture {

/// How a brush is moved along a path.
struct BrushLine
{
    const Raster::RasterBrush& brush; ///< with a tip
    double weight;                    ///< in the units of the path
    Geometry::StrokeJoin join;        ///< of bent tips
    double mitreLimit;
    const Geometry::WidthProfile* pressure;   ///< null for the constant 1
    Raster::AffineTransform::Params toDevice; ///< from the path to the page's pixels
    Kernel::RectT<int> visible;               ///< pieces elsewhere are left out
    const bool* abort = nullptr;              ///< ends the work when it becomes true; may be null
};

/// Turns runs of a path into the pieces of a brush stroke: stamps, or slices of a bent tip. Where
/// they lie depends on the path and the line alone, not on what is visible.
class BrushPen
{
public:
    using Transform = Raster::AffineTransform::Params;
    using Settings = Raster::BrushSettings;
    using Point = Geometry::Point;

    /// Pieces that a stroke consists of, seen or not, more or less at most: beyond it they lie
    /// further apart, or stand for more stamps.
    static constexpr double MostPieces = 262144.0;
    /// Sizes of the texture: level 2·k per axis stands for 2⁻ᵏ of the tip's own size.
    static constexpr std::uint32_t MostLevel = 32;

    /// \param totalLength of all runs that will be drawn. \param out gets the pieces, their level
    ///        the code of MakeLevel.
    BrushPen(const BrushLine& line, double totalLength, std::vector<TexturedPolygon>& out);

    /// Adds the pieces of a run.
    void Draw(const BrushPath& run);

    /// Levels along both axes as one number.
    static constexpr std::uint32_t MakeLevel(std::uint32_t u, std::uint32_t v) noexcept
    {
        return u | v << 8;
    }
    /// A side of the texture at a level, of \p side texels at level 0.
    static unsigned GetSide(unsigned side, std::uint32_t level) noexcept;

private:
    using Corners = std::array<CVertex, 4>;

    /// The line across the path at a place of it.
    struct Section
    {
        Point centre;
        Point side; ///< half of the line, to the right of the path
        double u;
        double size; ///< the factor of the weight
        float opacity;
        double length;
    };

    /// Where stamps lie: one, or 2^doublings at equal steps about a place.
    struct StampPlace
    {
        double length; ///< from the start of the run
        std::uint8_t doublings;
    };

    void DrawStamps(const BrushPath& run);
    void DrawStamp(const BrushPath::Sample& place, std::uint32_t index, std::uint8_t doublings);
    double GetAngle(const BrushPath::Sample& place) const noexcept;
    Corners MakeStamp(Point centre, double angle, double size, double opacity) const noexcept;

    void PlaceStamps(const BrushPath& run);
    /// Finds the places of a run next to which stamps are taken one by one: its ends, and corners.
    void FindBreaks(const BrushPath& run);
    double GetStep(double share) const;
    /// How many stamps, as a power of two, may be painted as one from a place on.
    /// \param most the answer at most.
    int GetDoublings(const BrushPath& run, double place, double step, int most);
    /// The corners of a stamp without jitter. \param hint of BrushPath::At.
    Corners FindStamp(const BrushPath& run, double place, std::size_t hint) const noexcept;

    void DrawSlices(const BrushPath& run);
    Section MakeSection(Point centre, Point direction, double length) const;
    void DrawSlice(const Section& from, const Section& to);
    void AddSlice(const Section& from, double end, const Corners& corners);
    void DrawJoin(const BrushPath::Sample& before, const BrushPath::Sample& after, double length);
    void DrawFan(const Section& section, Point from, Point to, bool isRight, int parts);

    /// Of a share of the run's length.
    bool IsAborting() const noexcept;
    double GetPressure(double share) const noexcept;
    double GetSize(double share) const noexcept;
    double GetOpacity(double share) const noexcept;
    std::uint32_t GetLevel(double deviceLength, double deviceHeight) const noexcept;
    /// A corner on the page; \p side the place across the path, −1 … 1.
    CVertex MakeCorner(const Section& section, Point offset, double side) const;
    void Add(const Corners& corners, std::uint32_t level, double width, double begin, double end,
             std::uint8_t doublings = 0);

    const BrushLine& m_line;
    const Settings& m_settings;
    std::vector<TexturedPolygon>& m_out;
    double m_scale;     // from lengths of the path to the device's, on average
    double m_tipLength; // where the pressure is 1, in the units of the path
    double m_shortest;  // distance of pieces
    std::uint32_t m_run = 0;
    double m_runStart = 0.0; // along the stroke, in weights
    double m_loop = 0.0;     // the run's length if it is closed; likewise
    double m_runLength = 0.0;
    double m_tileLength = 1.0; // of the bent tip along the path
    std::vector<StampPlace> m_places;
    std::vector<double> m_breaks; // with the ends of the run
    std::size_t m_nextBreak = 0;  // behind the present place
    std::size_t m_sample = 0;     // of the run, at the present place
    bool m_hasGroups;             // of stamps that are painted as one
};

} // namespace Renderer::Texture
