#include "Cases.h"

#include <cmath>

#include "Paints.h"
#include "Random.h"
#include "Shapes.h"

namespace Benchmarks {

namespace {

constexpr unsigned PageSide = 600;
constexpr unsigned Sizes[] = {8, 32, 128, 256, 512};
constexpr int Places = 16;

Scene MakePage()
{
    Scene scene;
    scene.width = scene.height = PageSide;
    return scene;
}

/// A square of the given side somewhere on the page.
Kernel::RectT<double> MakePlace(double side, bool wholePixels, Random& random)
{
    double x = random.Below(PageSide - side);
    double y = random.Below(PageSide - side);
    if (wholePixels) {
        x = std::floor(x);
        y = std::floor(y);
    }
    return {x, y, x + side, y + side};
}

template<class Make>
Path PlaceShape(Make make, const Kernel::RectT<double>& place, Random& random)
{
    auto path = make(place.Width(), random).Clone();
    path->Transform([&](Geometry::Point p) {
        return Geometry::Point{p.x + place.left, p.y + place.top};
    });
    return path;
}

Scene MakeFillScene(const Shape& shape, unsigned side, const Paint& paint)
{
    Scene scene = MakePage();
    Random random(side);
    for (int i = 0; i < Places; ++i) {
        const auto place = MakePlace(side, shape.wholePixels, random);
        DrawPath draw;
        draw.path = PlaceShape(shape.make, place, random);
        draw.fill = paint.make(place);
        draw.winding = shape.winding;
        scene.commands.emplace_back(draw);
    }
    return scene;
}

Scene MakeStrokeScene(const StrokedShape& shape, unsigned side, const Paint& paint)
{
    Renderer::LineStyle style(shape.width);
    style.SetJoin(Renderer::LineStyle::MitreJoin);
    style.SetMiterLimit(4.0);
    const Renderer::LineStyleDescriptorConst line(Renderer::LineStyle::Consolidate(style));
    Scene scene = MakePage();
    Random random(side);
    for (int i = 0; i < Places; ++i) {
        const auto place = MakePlace(side, false, random);
        DrawPath draw;
        draw.path = PlaceShape(shape.make, place, random);
        draw.lineFill = paint.make(place);
        draw.lineStyle = line;
        scene.commands.emplace_back(draw);
    }
    return scene;
}

/// Where a bitmap is drawn.
struct Placement
{
    const char* name;
    bool wholePixels;
    double scale; ///< pixels of the page per pixel of the bitmap
    double angle; ///< radians, around the place's left top corner
};

constexpr Placement Placements[] = {
    {"whole", true, 1.0, 0.0},
    {"shifted", false, 1.0, 0.0},
    {"magnified", false, 1.6, 0.0},
    {"rotated", false, 1.0, 0.3},
};

struct NamedResampler
{
    const char* name;
    Raster::ResamplerType type;
};

constexpr NamedResampler Resamplers[] = {
    {"nearest", Raster::ResamplerType::NearestNeighbour},
    {"bilinear", Raster::ResamplerType::Bilinear},
};

Scene MakeBitmapScene(const Placement& placement, unsigned side, Raster::ResamplerType resampler)
{
    const auto pixels = unsigned(std::lround(side / placement.scale));
    const auto bitmap = MakeBitmap(pixels, pixels);
    Scene scene = MakePage();
    Random random(side);
    for (int i = 0; i < Places; ++i) {
        const auto place = MakePlace(side, placement.wholePixels, random);
        Transform transform = Raster::AffineTransform::Rotation(placement.angle);
        transform.m02 = place.left;
        transform.m12 = place.top;
        const double extent = pixels * placement.scale;
        scene.commands.emplace_back(PushTransform{transform});
        scene.commands.emplace_back(
            DrawBitmap{{0.0, 0.0, extent, extent}, bitmap, 1.0F, resampler});
        scene.commands.emplace_back(PopTransform{});
    }
    return scene;
}

/// Rasterisers differ along edges. In tiny shapes that cross themselves within pixels, a sum of
/// signed areas (the library, AGG) and samples (Cairo) are different things altogether.
double GetTolerance(unsigned size)
{
    return size < 32 ? 32.0 : 8.0;
}

std::string JoinName(const std::string& group, const char* shape, unsigned size, const char* paint)
{
    return group + '/' + shape + '/' + std::to_string(size) + '/' + paint;
}

} // namespace

std::vector<Case> MakeShapeCases()
{
    std::vector<Case> cases;
    for (const unsigned size : Sizes) {
        for (const Paint& paint : Paints) {
            for (const Shape& shape : FilledShapes)
                cases.push_back(
                    {JoinName("Fill", shape.name, size, paint.name),
                     [&shape, &paint, size] { return MakeFillScene(shape, size, paint); },
                     GetTolerance(size), Places, paint.inCairo});
            for (const StrokedShape& shape : StrokedShapes)
                cases.push_back(
                    {JoinName("Stroke", shape.name, size, paint.name),
                     [&shape, &paint, size] { return MakeStrokeScene(shape, size, paint); },
                     GetTolerance(size), Places, paint.inCairo});
        }
        for (const Placement& placement : Placements)
            for (const NamedResampler& resampler : Resamplers)
                cases.push_back({JoinName("Bitmap", placement.name, size, resampler.name),
                                 [&placement, &resampler, size] {
                                     return MakeBitmapScene(placement, size, resampler.type);
                                 },
                                 GetTolerance(size), Places});
    }
    return cases;
}

} // namespace Benchmarks
