#include <array>
#include <cmath>
#include <numbers>

#include <kernel/Format.h>
#include <renderer/paint/FillGradient.h>

namespace Renderer {

namespace {

/// One rule of a gradient function. Browsers take the last one that they know.
struct Rule
{
    const char* format; ///< "%1" is the function's name, "%2" its arguments
    bool standard;
};

constexpr std::array<Rule, 5> Rules{{
    {"background-image: -webkit-%1(%2);", false},
    {"background-image:    -moz-%1(%2);", false},
    {"background-image:     -ms-%1(%2);", false},
    {"background-image:      -o-%1(%2);", false},
    {"background-image:         %1(%2);", true},
}};

/// The stops as CSS lists them, joined by ", ".
Kernel::String ListStops(const Gradient& gradient)
{
    Kernel::String text;
    for (const auto& stop : gradient.GetColours()) {
        if (!text.IsEmpty())
            text += ", ";
        Kernel::AppendFormatVT(text, "%1 %2%%", stop.colour->GetCSSAttributes(),
                               Kernel::ToString(stop.position * 100.0));
    }
    return text;
}

double ToWholeTurn(double degrees)
{
    const double turn = std::fmod(degrees, 360.0);
    return turn < 0.0 ? turn + 360.0 : turn;
}

/// The angle of a direction on a page whose y grows downwards. The standard counts clockwise from
/// upwards, the vendors' older functions count anticlockwise from the right.
Kernel::String GetAngle(Kernel::PointT<double> direction, bool standard)
{
    const double fromRight = std::atan2(-direction.y, direction.x) * 180.0 / std::numbers::pi;
    return Kernel::FormatVT("%1deg",
                            Kernel::ToString(ToWholeTurn(standard ? 90.0 - fromRight : fromRight)));
}

} // namespace

Kernel::String
FillGradient::GetCSSAttributes(const Raster::AffineTransform::Params& transform) const
{
    if (m_type == Conical || IsFillNone())
        return {};
    const auto linear = GetWithLinearMapping({}, Raster::Format::RGBA8);
    const Kernel::String stops = ListStops(*linear->GetGradient());
    Kernel::PointT<double> p0, p1;
    GetLinearPoints(transform, p0, p1);

    Kernel::String text;
    for (const Rule& rule : Rules) {
        Kernel::String arguments = stops;
        if (m_type == Linear)
            arguments = Kernel::FormatVT("%1, %2", GetAngle(p1 - p0, rule.standard), stops);
        if (!text.IsEmpty())
            text += "\n";
        Kernel::AppendFormatVT(text, rule.format,
                               m_type == Linear ? "linear-gradient" : "radial-gradient", arguments);
    }
    return text;
}

} // namespace Renderer
