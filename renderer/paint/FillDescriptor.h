#pragma once

#include <kernel/SavedClass.h>
#include <renderer/paint/FillDescriptorConst.h>

namespace Renderer {

/// The mutable holder of a fill and its transform that an object of the document owns. Converts to
/// FillDescriptorConst, the value that drawing calls take.
class RENDERER_EXPORT FillDescriptor : public Kernel::PlainSavedClass<FillDescriptor>
{
public:
    FillDescriptor() = default;
    FillDescriptor(FillDescriptorConst value) : m_value(std::move(value)) {}
    FillDescriptor(const Kernel::Consolidated<Fill>& fill,
                   const Raster::AffineTransform::Params& transform = {})
        : m_value(fill, transform)
    {}
    /// The fill of \p other in another frame.
    FillDescriptor(const FillDescriptor& other, const Raster::AffineTransform::Params& transform)
        : m_value(other.m_value, transform)
    {}
    FillDescriptor(const FillDescriptor&) = default;
    FillDescriptor& operator=(const FillDescriptor&) = default;

    /// The transform is written where it shows: not of fills that are the same everywhere.
    void Save(Kernel::OutSerialiser& out) const override;
    /// False without a fill.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    static const Kernel::ClassProperties& GetTypeClassProperties();

    ~FillDescriptor() override;
    virtual Kernel::Counted<FillDescriptor> Clone() const;

    /// \name The factories of FillDescriptorConst.
    /// @{
    static const FillDescriptorConst& CreateNone() { return FillDescriptorConst::CreateNone(); }
    static FillDescriptorConst CreateSolid(const Raster::PixelRGBA8& colour)
    {
        return FillDescriptorConst::CreateSolid(colour);
    }
    static FillDescriptorConst
    CreateBitmap(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
                 Raster::ExtendType extend, Raster::ResamplerType upSampler)
    {
        return FillDescriptorConst::CreateBitmap(bitmap, extend, upSampler);
    }
    /// @}

    operator const FillDescriptorConst&() const noexcept { return m_value; }

    bool IsEmpty() const noexcept { return m_value.IsEmpty(); }
    bool IsFillNone() const { return m_value.IsFillNone(); }
    const Kernel::Consolidated<Fill>& GetFill() const noexcept { return m_value.GetFill(); }
    void SetFill(const Kernel::Consolidated<Fill>& fill);
    const Raster::AffineTransform::Params& GetTransform() const noexcept
    {
        return m_value.GetTransform();
    }
    void SetTransform(const Raster::AffineTransform::Params& transform);
    Kernel::String GetCSSAttributes() const { return m_value.GetCSSAttributes(); }
    /// Replaces every colour of the fill by the visitor's answer.
    void Accept(ColourVisitor& visitor) { m_value = m_value.Accept(visitor); }

private:
    FillDescriptorConst m_value;
};

} // namespace Renderer
