#include <cmath>
#include <numbers>

#include "Subjects.h"

namespace Gallery {

namespace {

Point OnCircle(Point centre, double radius, double turn)
{
    const double angle = turn * 2.0 * std::numbers::pi;
    return {centre.x + radius * std::sin(angle), centre.y - radius * std::cos(angle)};
}

} // namespace

Path Disc(Point centre, double radius)
{
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    path->AddEllipse(centre, radius, radius);
    return path;
}

Path Star(Point centre, double outer, double inner, int points, double turn)
{
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    for (int i = 0; i < 2 * points; ++i) {
        const Point corner = OnCircle(centre, i % 2 == 0 ? outer : inner, turn + 0.5 * i / points);
        if (i == 0)
            path->MoveTo(corner);
        else
            path->LineTo(corner);
    }
    path->Close();
    return path;
}

Path Flower(Point centre, double radius, int petals)
{
    const auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    const double spread = 0.5 / petals;
    for (int i = 0; i < petals; ++i) {
        const double turn = static_cast<double>(i) / petals;
        path->MoveTo(centre);
        path->CurveTo(OnCircle(centre, 0.7 * radius, turn - spread),
                      OnCircle(centre, 1.05 * radius, turn - spread),
                      OnCircle(centre, radius, turn));
        path->CurveTo(OnCircle(centre, 1.05 * radius, turn + spread),
                      OnCircle(centre, 0.7 * radius, turn + spread), centre);
        path->Close();
    }
    return path;
}

Path Sheet()
{
    return Kernel::MakeCounted<Geometry::PolyCurveDbl>(
        Kernel::RectT<double>{0, 0, PictureWidth, PictureHeight});
}

} // namespace Gallery
