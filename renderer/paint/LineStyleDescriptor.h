#pragma once

#include <kernel/EnumSerialiserOf.h>
#include <kernel/SavedClass.h>
#include <renderer/paint/LineStyleDescriptorConst.h>

namespace Renderer {

/// The mutable holder of a line style and its use that an object of the document owns. Converts to
/// LineStyleDescriptorConst, the value that drawing calls take; what is not repeated here is asked
/// of that value.
class RENDERER_EXPORT LineStyleDescriptor : public Kernel::PlainSavedClass<LineStyleDescriptor>
{
public:
    using StrokeAlignment = LineStyleDescriptorConst::StrokeAlignment;
    static constexpr StrokeAlignment Centre = LineStyleDescriptorConst::Centre;
    static constexpr StrokeAlignment Inside = LineStyleDescriptorConst::Inside;
    static constexpr StrokeAlignment Outside = LineStyleDescriptorConst::Outside;

    /// The values of StrokeAlignment in files.
    class RENDERER_EXPORT StrokeAlignmentEnumSerialiser final
        : public Kernel::EnumSerialiserOf<StrokeAlignmentEnumSerialiser>
    {
        friend class Kernel::EnumSerialiserOf<StrokeAlignmentEnumSerialiser>;
        StrokeAlignmentEnumSerialiser() { RegisterCount(3); }
    };

    LineStyleDescriptor() = default;
    LineStyleDescriptor(LineStyleDescriptorConst value) : m_value(std::move(value)) {}
    explicit LineStyleDescriptor(double weight, bool resIndependent = false)
        : m_value(weight, resIndependent)
    {}
    explicit LineStyleDescriptor(Kernel::Consolidated<LineStyle> lineStyle)
        : m_value(std::move(lineStyle))
    {}
    LineStyleDescriptor(Kernel::Consolidated<LineStyle> lineStyle,
                        Kernel::Counted<const Geometry::CurveDbl> pressure, bool behind, bool scale,
                        StrokeAlignment alignment)
        : m_value(std::move(lineStyle), std::move(pressure), behind, scale, alignment)
    {}
    LineStyleDescriptor(const LineStyleDescriptor&) = default;
    LineStyleDescriptor& operator=(const LineStyleDescriptor&) = default;

    /// The preview flag is not kept.
    void Save(Kernel::OutSerialiser& out) const override;
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    static const Kernel::ClassProperties& GetTypeClassProperties();

    ~LineStyleDescriptor() override;
    virtual Kernel::Counted<LineStyleDescriptor> Clone() const;

    /// The shared descriptor without a line.
    static const LineStyleDescriptorConst& CreateNone()
    {
        return LineStyleDescriptorConst::CreateNone();
    }

    operator const LineStyleDescriptorConst&() const noexcept { return m_value; }
    const LineStyleDescriptorConst* operator->() const noexcept { return &m_value; }

    const Kernel::Consolidated<LineStyle>& GetLineStyle() const noexcept
    {
        return m_value.GetLineStyle();
    }
    void SetLineStyle(Kernel::Consolidated<LineStyle> lineStyle)
    {
        m_value.SetLineStyle(std::move(lineStyle));
    }
    const Kernel::Counted<const Geometry::CurveDbl>& GetPressure() const noexcept
    {
        return m_value.GetPressure();
    }
    void SetPressure(Kernel::Counted<const Geometry::CurveDbl> pressure)
    {
        m_value.SetPressure(std::move(pressure));
    }
    bool GetBehind() const noexcept { return m_value.GetBehind(); }
    void SetBehind(bool behind) noexcept { m_value.SetBehind(behind); }
    bool GetScale() const noexcept { return m_value.GetScale(); }
    void SetScale(bool scale) noexcept { m_value.SetScale(scale); }
    StrokeAlignment GetStrokeAlignment() const noexcept { return m_value.GetStrokeAlignment(); }
    void SetStrokeAlignment(StrokeAlignment alignment) noexcept
    {
        m_value.SetStrokeAlignment(alignment);
    }
    bool GetPreview() const noexcept { return m_value.GetPreview(); }
    void SetPreview(bool preview) noexcept { m_value.SetPreview(preview); }
    void OptimisePressureProfile() { m_value.OptimisePressureProfile(); }
    bool IsLineStyleNone() const noexcept { return m_value.IsLineStyleNone(); }
    bool IsLineStyleVisible() const noexcept { return m_value.IsLineStyleVisible(); }

private:
    LineStyleDescriptorConst m_value;
};

} // namespace Renderer
