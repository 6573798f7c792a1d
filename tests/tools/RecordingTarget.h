#pragma once

#include <string>
#include <vector>

#include <renderer/core/NullRenderTarget.h>

/// A target that remembers what it is told: drawn shapes with all that they are drawn with, and the
/// order of pushes and pops as a text.
class RecordingTarget : public Renderer::NullRenderTarget
{
public:
    using Params = Raster::AffineTransform::Params;
    using Fill = Renderer::FillDescriptorConst;
    using Line = Renderer::LineStyleDescriptorConst;
    using Mode = Renderer::FillBlendMode::BlendMode;
    using Options = Renderer::BlendOptions;
    using Winding = Geometry::WindingOrderMode;
    using Rect = Kernel::RectT<double>;

    struct Shape
    {
        Kernel::Counted<const Geometry::PolyCurveDbl> curve;
        Params transform;
        float opacity;
        Fill fill;
        Fill lineFill;
        Line line;
        Winding winding;
    };
    struct Image
    {
        Rect rect;
        Params transform;
        float opacity;
    };

    std::vector<Shape> shapes;
    std::vector<Image> images;
    std::vector<Rect> clips; ///< boxes of pushed clip curves on the device
    std::string trace; ///< D draw, I image, C clip, c its pop, U and u clip group, G and g group

    /// The box of a drawn shape on the device.
    Rect GetBox(std::size_t index) const
    {
        return GetBox(*shapes.at(index).curve, shapes.at(index).transform);
    }

    void DrawPolyCurve(Kernel::Counted<const Geometry::PolyCurveDbl> curve, float opacity, Mode,
                       const Options&, const Fill& fill, const Fill&, const Fill& lineFill,
                       const Line& line, Winding winding, bool, bool) override
    {
        trace += 'D';
        shapes.push_back({curve, GetCurrentTransform(), opacity, fill, lineFill, line, winding});
    }
    void DrawBitmap(const Rect& rect, Kernel::Counted<const Raster::DynamicBitmap>, float opacity,
                    Mode, const Options&, bool) override
    {
        trace += 'I';
        images.push_back({rect, GetCurrentTransform(), opacity});
    }
    void PushComposite(CompositeInit, Mode, const Options&, float) override { trace += 'G'; }
    void PopCompositeAsFill(const Fill&, const Fill&) override { trace += 'g'; }
    void PushClipPath(Kernel::Counted<const Renderer::PolyPolygon> polygons, Winding) override
    {
        Clip(Raster::AffineTransform::MapRect(GetCurrentTransform(),
                                              polygons->GetBoundingBox().GetRect()));
    }
    void PushClipCurvesPath(Kernel::Counted<const Geometry::PolyCurveDbl> curve, Winding) override
    {
        Clip(GetBox(*curve, GetCurrentTransform()));
    }
    void PushClipPolyCurvesPath(Kernel::Counted<const Renderer::ConstPolyPolyCurve>,
                                Winding) override
    {
        Clip({});
    }
    void PopClipPath() override { trace += 'c'; }
    void PushClipPathGroup() override { trace += 'U'; }
    void PopClipPathGroup() override { trace += 'u'; }

private:
    static Rect GetBox(const Geometry::PolyCurveDbl& curve, const Params& transform)
    {
        const auto mapped = curve.Clone();
        mapped->Transform([&](Geometry::Point p) { return transform.Map(p); });
        return mapped->GetBoundingBox().GetRect();
    }
    void Clip(const Rect& box)
    {
        trace += 'C';
        clips.push_back(box);
    }
};
