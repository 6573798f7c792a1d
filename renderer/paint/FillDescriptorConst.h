#pragma once

#include <type_traits>
#include <utility>

#include <kernel/Consolidated.h>
#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <raster/AffineTransform.h>
#include <raster/DynamicBitmap.h>
#include <raster/Format.h>
#include <raster/Pixel.h>
#include <renderer/Export.h>
#include <renderer/paint/Fill.h>

namespace Renderer {

/// A fill and the affine map that places its unit frame. A small value: calls take it by const
/// reference, who keeps it copies it. Nobody makes a Counted to one that lives on the stack.
class RENDERER_EXPORT FillDescriptorConst : public Kernel::Countable
{
public:
    /// Empty: no fill object at all.
    FillDescriptorConst() = default;
    /// A fill, in the identity's frame unless a transform is given.
    FillDescriptorConst(Kernel::Consolidated<Fill> fill,
                        const Raster::AffineTransform::Params& transform = {})
        : m_fill(std::move(fill)), m_transform(transform)
    {}
    template<class T>
    requires std::is_base_of_v<Fill, T>
    FillDescriptorConst(const Kernel::Consolidated<T>& fill,
                        const Raster::AffineTransform::Params& transform = {})
        : m_fill(fill), m_transform(transform)
    {}
    /// The fill of \p other in another frame.
    FillDescriptorConst(const FillDescriptorConst& other,
                        const Raster::AffineTransform::Params& transform)
        : m_fill(other.m_fill), m_transform(transform)
    {}
    FillDescriptorConst(const FillDescriptorConst&) = default;
    FillDescriptorConst& operator=(const FillDescriptorConst&) = default;
    ~FillDescriptorConst() override;

    /// The shared descriptor of FillNone.
    static const FillDescriptorConst& CreateNone();
    /// A solid fill of a colour that is not premultiplied.
    static FillDescriptorConst CreateSolid(const Raster::PixelRGBA8& colour);
    /// A bitmap fill on the unit square.
    static FillDescriptorConst
    CreateBitmap(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
                 Raster::ExtendType extend, Raster::ResamplerType upSampler);

    /// Whether there is no fill object.
    bool IsEmpty() const noexcept { return !m_fill; }
    /// Whether nothing is painted: no fill object, or one that paints nothing.
    bool IsFillNone() const { return !m_fill || m_fill->IsFillNone(); }
    /// May be empty.
    const Kernel::Consolidated<Fill>& GetFill() const noexcept { return m_fill; }
    const Raster::AffineTransform::Params& GetTransform() const noexcept { return m_transform; }

    /// The fill's CSS declarations under the transform; empty without a fill.
    Kernel::String GetCSSAttributes() const;

    /// The descriptor with every colour of its fill replaced by the visitor's answer.
    FillDescriptorConst Accept(ColourVisitor& visitor) const;

    /// Whether both have the same fill and exactly the same transform, which does not count for
    /// fills that are the same everywhere.
    friend RENDERER_EXPORT bool operator==(const FillDescriptorConst& a,
                                           const FillDescriptorConst& b);

private:
    Kernel::Consolidated<Fill> m_fill;
    Raster::AffineTransform::Params m_transform;
};

} // namespace Renderer
