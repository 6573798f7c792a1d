// Strokes in the pixels of a target.

#include <cmath>
#include <numbers>
#include <random>

#include <renderer/paint/LineStyleDescriptorConst.h>

#include "TargetFixture.h"

namespace Renderer {
namespace {

using Geometry::Point;
using Geometry::PolyCurveDbl;
using Kernel::Counted;
using Raster::AffineTransform;
using Transform = AffineTransform::Params;
using Rect = Kernel::RectT<double>;

class StrokeTest : public TargetTest
{
protected:
    double Uniform(double low, double high)
    {
        return low + (high - low) * (static_cast<double>(m_random()) / 4294967296.0);
    }
    int Choose(int count) { return static_cast<int>(Uniform(0, count)); }
    Point InSquare(double half) { return {Uniform(-half, half), Uniform(-half, half)}; }

    Counted<PolyCurveDbl> MakePath(Point centre, double size)
    {
        auto path = Kernel::MakeCounted<PolyCurveDbl>();
        for (int run = Choose(2); run >= 0; --run) {
            const auto point = [&] { return centre + InSquare(size); };
            path->MoveTo(point());
            for (int k = Choose(4); k >= 0; --k) {
                if (Choose(2))
                    path->LineTo(point());
                else
                    path->CurveTo(point(), point(), point());
            }
            if (Choose(2))
                path->Close();
        }
        return path;
    }

    LineStyleDescriptorConst MakeLine(double weight)
    {
        LineStyle style(weight, Choose(3) == 0);
        style.SetCap(static_cast<LineStyle::LineCap>(Choose(3)));
        style.SetJoin(static_cast<LineStyle::LineJoin>(Choose(4)));
        style.SetMiterLimit(Uniform(0.5, 4));
        if (Choose(3) == 0)
            style.SetDashPattern({Uniform(0, 5), Uniform(1, 5)});
        LineStyleDescriptorConst line(LineStyle::Consolidate(style));
        line.SetScale(Choose(2) == 0);
        return line;
    }

    Transform MakeMap()
    {
        const double scale = std::exp(Uniform(-1, 1));
        return {scale * Uniform(-1.5, 1.5), scale * Uniform(-1.5, 1.5), 0,
                scale * Uniform(-1.5, 1.5), scale * Uniform(-1.5, 1.5), 0};
    }

    std::mt19937 m_random{5};
};

/// The box of all pixels that are not transparent.
Rect GetTouched(const Counted<BitmapRenderTarget>& target)
{
    RGBA8Buffer view;
    EXPECT_TRUE(view.Attach(target->GetBuffer()));
    Geometry::BoundingBoxT<double> box;
    for (unsigned y = 0; y < view.GetHeight(); ++y)
        for (unsigned x = 0; x < view.GetWidth(); ++x)
            if (view.GetRow(y)[x] != PixelRGBA8{}) {
                box.Add({x + 0.0, y + 0.0});
                box.Add({x + 1.0, y + 1.0});
            }
    return box.IsValid() ? box.GetRect() : Rect{};
}

TEST_F(StrokeTest, InflatedRectanglesHoldEveryTouchedPixel)
{
    constexpr int size = 96;
    for (int round = 0; round < 1000; ++round) {
        const auto canvas = Make(size, size);
        Transform device = AffineTransform::Scaling(Uniform(0.5, 2), Uniform(0.5, 2));
        device.m02 = device.m12 = size / 2;
        canvas->SetLogToDevTransform(device);
        canvas->PushTransform(MakeMap(), static_cast<RenderTarget::TransformScalarMode>(Choose(3)));
        const Transform current = canvas->GetCurrentTransform();
        const Transform scalar = canvas->GetScalarTransform();
        const auto path = MakePath({}, 12);
        const auto line = MakeLine(std::exp(Uniform(-4, 2)));
        canvas->DrawPolyCurve(path, 1, FillBlendMode::Normal, BlendOptions::Identity(), {}, {},
                              Solid(Red), line, Geometry::WindingOrderMode::NonZero, true, true);
        const auto touched = GetTouched(canvas);
        if (touched.IsEmpty())
            continue;
        const Rect box = path->GetBoundingBox().GetRect();
        const auto holds = [&](const Rect& grown) {
            return Rect{std::floor(grown.left), std::floor(grown.top), std::ceil(grown.right),
                        std::ceil(grown.bottom)}
                .Contains(touched);
        };
        EXPECT_TRUE(holds(
            AffineTransform::MapRect(current, line.InflateBaseRect(box, current, scalar, device))))
            << round;
        EXPECT_TRUE(holds(line.InflateSpreadRect(AffineTransform::MapRect(current, box), current,
                                                 scalar, device)))
            << round;
    }
}

} // namespace
} // namespace Renderer
