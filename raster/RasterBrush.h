#pragma once

#include <cstdint>

#include <kernel/Counted.h>
#include <kernel/SavedClass.h>
#include <raster/DynamicBitmap.h>
#include <raster/Export.h>

namespace Raster {

/// What the numbers of a RasterBrush say. Lengths count the weight of the line, which is the tip's
/// height: across the path the tip is as wide as the line.
struct BrushSettings
{
    /// The numbers of the enums are saved in documents.
    enum class Mode
    {
        Stamped = 0,   ///< the tip is set down again and again
        Repeated = 1,  ///< the tip is bent along the path, one after another
        Stretched = 2, ///< one tip is bent and stretched over the whole run
    };
    /// What of the tip's pixels paints. Masks hold one channel, which serves either way.
    enum class TipUse
    {
        Alpha = 0,      ///< its alpha lets the line's fill through
        Intensity = 1,  ///< so does its brightness times alpha: white paints, black does not
        OwnColours = 2, ///< its own colours, whatever the line's fill
    };
    /// What happens where parts of a line lie over each other.
    enum class Overlap
    {
        MaxOpacity = 0, ///< the part of largest opacity is seen alone
        BuildUp = 1,    ///< later parts lie over earlier ones
    };

    Mode mode = Mode::Stamped;
    TipUse tipUse = TipUse::Alpha;
    Overlap overlap = Overlap::BuildUp;
    /// From stamp to stamp, as a share of the tip's length along the path: 0.01 … 100. Where the
    /// tip is smaller they lie closer.
    double spacing = 0.25;
    /// By how much stamps are turned, in radians, within ±1000; positive from the path to its right
    /// where y grows downwards.
    double rotation = 0.0;
    /// Whether stamps turn with the path; otherwise the tip keeps its direction.
    bool followsPath = true;
    /// The opacity of each part, 0 … 1.
    double opacity = 1.0;

    /// \name Jitter, of stamps alone
    /// Random, but the same whenever a line is drawn.
    /// @{
    /// How far stamps lie from where they belong, at most, in weights: 0 … 100.
    double positionJitter = 0.0;
    /// How far they are turned either way, at most, in radians: 0 … π.
    double angleJitter = 0.0;
    /// By which share they are smaller, at most: 0 … 1.
    double sizeJitter = 0.0;
    /// By which share their opacity is smaller, at most: 0 … 1.
    double opacityJitter = 0.0;
    std::uint32_t seed = 0;
    /// @}

    /// \name Pressure
    /// How much size and opacity follow the line's pressure profile p, 0 … 1: factors of
    /// 1 + share·(p − 1), that of opacity at most 1.
    /// @{
    double sizeByPressure = 1.0;
    double opacityByPressure = 0.0;
    /// @}

    /// Whether all are the same, numbers within 1e-6.
    friend RASTER_EXPORT bool operator==(const BrushSettings& a, const BrushSettings& b) noexcept;
};

/// A picture that strokes paths: the tip of a brush and how it is moved. Immutable once it is made
/// or loaded.
///
/// The tip's x axis runs along the path, its y axis to the right of it (where y grows downwards).
class RASTER_EXPORT RasterBrush final : public Kernel::PlainSavedClass<RasterBrush>
{
public:
    using Settings = BrushSettings;

    /// A brush without tip: it paints nothing.
    RasterBrush() = default;
    /// Settings out of their range are brought to its nearer end, those that are not finite to
    /// their default. \param tip may be empty: the brush then paints nothing.
    explicit RasterBrush(Kernel::Counted<const DynamicBitmap> tip, const Settings& settings = {});

    /// \pre the brush has a tip: others do not load.
    void Save(Kernel::OutSerialiser& out) const override;
    /// Fails without a tip. What is out of its range is brought into it.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::ClassProperties& GetTypeClassProperties();
    ~RasterBrush() override;
    /// A copy, which shares the tip.
    Kernel::Counted<RasterBrush> Clone() const;

    const Kernel::Counted<const DynamicBitmap>& GetTip() const noexcept { return m_tip; }
    const Settings& GetSettings() const noexcept { return m_settings; }

    /// Whether the line needs no fill, since the brush brings its own colours.
    bool HasOwnColours() const noexcept
    {
        return m_settings.tipUse == Settings::TipUse::OwnColours;
    }
    /// The tip's length along the path, in weights: its width over its height.
    double GetTipLength() const noexcept;
    /// How far the brush reaches beyond the path where pressure is at most 1, in weights, but for
    /// the joins of bent tips.
    double GetReach() const noexcept;

    /// Whether both paint the same: equal settings, and tips of the same profile and compressed
    /// form. So a tip that came from a picture's file differs from its pixels.
    friend RASTER_EXPORT bool operator==(const RasterBrush& a, const RasterBrush& b);

private:
    /// Hands every item but the seed to \p items.
    template<class Self, class Items>
    static void ListItems(Self& self, Items&& items);

    Kernel::Counted<const DynamicBitmap> m_tip;
    Settings m_settings;
};

} // namespace Raster
