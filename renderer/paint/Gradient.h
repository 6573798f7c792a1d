#pragma once

#include <vector>

#include <kernel/Consolidated.h>
#include <kernel/SavedClass.h>
#include <renderer/Export.h>
#include <renderer/paint/Colour.h>
#include <renderer/paint/GradientMapping.h>

namespace Renderer {

class ColourVisitor;

/// The stops of a gradient, in order. An immutable shared value.
class RENDERER_EXPORT Gradient final : public Kernel::SharedSavedClass<Gradient>
{
public:
    /// One stop, and the mapping from it to the next one.
    struct ColourPosition
    {
        /// Never empty within a Gradient.
        Kernel::Consolidated<Colour> colour;
        /// Along the gradient, 0…1.
        double position = 0.0;
        /// Where between this stop and the next the colours are half mixed, 0…1.
        double midpoint = 0.5;
        /// How far the mapping leans from piecewise linear (0) to smoothstep (1).
        double smoothness = 0.0;

        GradientMapping GetMapping() const noexcept { return {midpoint, smoothness}; }
    };

    /// Makes the consolidated gradient of the given stops, which see the constructor.
    static Kernel::Consolidated<Gradient> Create(std::vector<ColourPosition> stops);

    Gradient() = default;
    /// Keeps the stops in the order given. Stops without colour are left out; positions, midpoints
    /// and smoothness are clamped to 0…1 (not-a-number becomes the default), and a position smaller
    /// than the one before it becomes equal to it. Stops at one position make a hard edge.
    explicit Gradient(std::vector<ColourPosition> stops);

    /// The gradient of a fill of older files, which hold the items of the gradient in the fill's
    /// place. \param in the items of the fill. \return empty when there are no stops.
    static Kernel::Consolidated<Gradient>
    CreateLegacy(const Kernel::InSerialiser& in, Kernel::FileStore& store, unsigned short version);

    /// Positions and mappings are written by full saves only.
    void Save(Kernel::OutSerialiser& out) const override;
    /// Without positions the stops are spaced evenly and mapped linearly.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

public:
    ~Gradient() override;
    /// A copy that is not consolidated.
    Kernel::Counted<Gradient> Clone() const;

    /// The stops, by rising position.
    const std::vector<ColourPosition>& GetColours() const noexcept { return m_stops; }

    /// Whether some stop maps to the next one by more than a straight line.
    bool HasNonLinearMapping() const noexcept;

    /// The mean alpha over 0…1, exactly: the first and last alpha reach to the ends.
    double GetMeanAlpha() const;

    /// The gradient with every colour replaced by the visitor's answer.
    Kernel::Consolidated<Gradient> Accept(ColourVisitor& visitor) const;

    /// The gradient with \p change applied to a copy of every colour.
    template<class Function>
    Kernel::Consolidated<Gradient> ModifyColours(Function&& change) const
    {
        std::vector<ColourPosition> stops = m_stops;
        for (ColourPosition& stop : stops)
            stop.colour = Colour::Modify(*stop.colour, change);
        return Create(std::move(stops));
    }

private:
    std::vector<ColourPosition> m_stops;
};

} // namespace Renderer
