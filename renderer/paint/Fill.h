#pragma once

#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/SavedClass.h>
#include <kernel/SharedClassProperties.h>
#include <kernel/SharedSerialisable.h>
#include <kernel/String.h>
#include <raster/AffineTransform.h>
#include <renderer/Export.h>
#include <renderer/paint/Colour.h>

namespace Renderer {

class ColourVisitor;

/// The paint of an area. An immutable shared value: setters serve while a fresh object is built;
/// they act on every colour that the fill holds, and do nothing for fills without colours.
class RENDERER_EXPORT Fill : public Kernel::SharedSerialisable
{
public:
    /// The concrete class, so that drawing code need not try casts.
    enum class Kind
    {
        None,
        Solid,
        Gradient,
        Bitmap,
        Buffer,
        BackBuffer,
        Multi,
    };

    /// The record of the family, which has no objects of its own.
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    ~Fill() override;
    /// A copy that is not consolidated.
    virtual Kernel::Counted<Fill> Clone() const = 0;

    virtual Kind GetKind() const = 0;
    /// Whether nothing is painted.
    virtual bool IsFillNone() const;
    /// Whether the paint is the same everywhere.
    virtual bool IsSpatiallyInvariant() const = 0;

    /// \name Attributes of the representative colour; without one, alpha, tint and intensity are 1
    /// and noise is 0.
    /// @{
    virtual double GetAlpha() const;
    virtual void SetAlpha(double alpha);
    virtual double GetTint() const;
    virtual void SetTint(double tint);
    virtual double GetNoise() const;
    virtual void SetNoise(double noise);
    /// Whether any colour has noise.
    virtual bool HasNoise() const;
    virtual double GetIntensity() const;
    virtual void SetIntensity(double intensity);
    /// @}

    /// Whether the paint may be less than opaque somewhere; false promises that it is opaque
    /// everywhere.
    virtual bool HasNonFullAlpha() const = 0;
    /// Whether the alpha is surely the same everywhere.
    virtual bool IsFlatAlpha() const = 0;
    /// The mean alpha over the fill's unit frame; 1 where it can't be known.
    virtual double GetMeanAlpha() const = 0;

    /// A colour that stands for the fill: the only or first one; empty for fills without colours.
    virtual Kernel::Consolidated<Colour> GetColour() const;

    /// The paint as CSS declarations; empty where CSS has none.
    /// \param transform the placement of the fill's frame on a page whose y grows downwards.
    virtual Kernel::String GetCSSAttributes(const Raster::AffineTransform::Params& transform) const;

    /// The fill with every colour replaced by the visitor's answer; the fill itself when nothing
    /// changes.
    virtual Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const = 0;

    /// The canonical instance of a fill's value. The object itself is not changed.
    static Kernel::Consolidated<Fill> Consolidate(const Kernel::Counted<const Fill>& fill);

protected:
    Fill() = default;
    Fill(const Fill& other) = default;

    using ColourChange = void (*)(Colour& colour, double value);
    /// The canonical instance of a fill with all its colours changed.
    static Kernel::Consolidated<Fill> WithChangedColours(const Fill& fill, ColourChange change,
                                                         double value);

private:
    /// Applies a change to every colour that the fill holds.
    virtual void ChangeColours(ColourChange change, double value);
};

/// What every concrete fill class does alike.
template<class Derived>
class FillOf : public Kernel::SharedSavedClass<Derived, Fill>
{
public:
    Kernel::Counted<Fill> Clone() const override
    {
        return Kernel::Counted<Fill>(new Derived(static_cast<const Derived&>(*this)));
    }

protected:
    FillOf() = default;
    FillOf(const FillOf& other) = default;

    /// The canonical instance of a fresh object.
    static Kernel::Consolidated<Derived> Share(const Kernel::Counted<Derived>& fresh)
    {
        return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(fresh);
    }
};

} // namespace Renderer
