#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include <renderer/core/formats/PixProcessor.h>
#include <renderer/paint/FillGradient.h>

namespace Renderer {

/// Slow gradients in double precision, by other roads than the populators take.
class GradientOracle
{
public:
    /// The parameter of one device point before spreading.
    static double GetParameter(const FillGradient& fill, const Raster::AffineTransform::Params& map,
                               Kernel::PointT<double> point)
    {
        const Kernel::PointT<double> centre = map.Map({0, 0});
        const Kernel::PointT<double> axis = map.MapVector({1, 0});
        const Kernel::PointT<double> d = point - centre;
        switch (fill.GetType()) {
        case FillGradient::Linear:
            if (fill.IsTransformCorrected())
                return ToUnit(map, point).x;
            return (d.x * axis.x + d.y * axis.y) / (axis.x * axis.x + axis.y * axis.y);
        case FillGradient::Radial:
            if (!fill.TreatRadialAsElliptical())
                return GetTrueRadius(fill, map, d, axis);
            [[fallthrough]];
        case FillGradient::Elliptical:
            return FindCircle(ToUnit(map, point), fill.GetFocus());
        case FillGradient::Conical: {
            if (fill.IsTransformCorrected())
                return GetTurn(ToUnit(map, point), {1, 0});
            return GetTurn(d, axis);
        }
        }
        return NAN;
    }

    static double Spread(FillGradient::Spread spread, double t)
    {
        switch (spread) {
        case FillGradient::Reflect: {
            const double phase = std::fmod(std::abs(t), 2.0);
            return phase > 1 ? 2 - phase : phase;
        }
        case FillGradient::Repeat:
            return t - std::floor(t);
        default:
            return t;
        }
    }

    /// The premultiplied channels, as fractions of Max, at a spread parameter.
    template<class P>
    static std::array<double, P::ChannelCount> GetColour(const Gradient& gradient, double t)
    {
        const auto& stops = gradient.GetColours();
        std::size_t i = 0; // the stop after t
        while (i < stops.size() && stops[i].position <= t)
            ++i;
        const auto& before = stops[i == 0 ? 0 : i - 1];
        const auto& after = stops[i == stops.size() ? i - 1 : i];
        const double length = after.position - before.position;
        const double mix = length > 0 ? Mix(before, (t - before.position) / length) : 0.0;
        const auto from = GetPixel<P>(*before.colour);
        const auto to = GetPixel<P>(*after.colour);
        std::array<double, P::ChannelCount> result;
        for (std::size_t c = 0; c < result.size(); ++c)
            result[c] = ((1 - mix) * double(from[c]) + mix * double(to[c])) / double(P::Max);
        for (std::size_t c = 0; c < P::ColourCount; ++c)
            result[c] *= result.back();
        return result;
    }

private:
    template<class P>
    static P GetPixel(const Colour& colour)
    {
        P pixel;
        colour.GetColour(pixel, true, {});
        return pixel;
    }

    static double Mix(const Gradient::ColourPosition& stop, double u)
    {
        const double m = stop.midpoint;
        const double bent = u < m ? u / (2 * m) : 0.5 + (u - m) / (2 * (1 - m));
        const double smooth = bent * bent * (3 - 2 * bent);
        return (1 - stop.smoothness) * bent + stop.smoothness * smooth;
    }

    static Kernel::PointT<double> ToUnit(const Raster::AffineTransform::Params& map,
                                         Kernel::PointT<double> p)
    {
        const double x = p.x - map.m02;
        const double y = p.y - map.m12;
        const double det = map.m00 * map.m11 - map.m01 * map.m10; // Cramer's rule
        return {(x * map.m11 - y * map.m01) / det, (y * map.m00 - x * map.m10) / det};
    }

    static double GetTurn(Kernel::PointT<double> p, Kernel::PointT<double> axis)
    {
        const double turn =
            (std::atan2(p.y, p.x) - std::atan2(axis.y, axis.x)) / (2 * std::numbers::pi);
        return turn - std::floor(turn);
    }

    /// In the frame of the true circle the focus keeps its place by angle and side.
    static double GetTrueRadius(const FillGradient& fill,
                                const Raster::AffineTransform::Params& map,
                                Kernel::PointT<double> d, Kernel::PointT<double> axis)
    {
        const double square = axis.x * axis.x + axis.y * axis.y;
        const double side = map.Determinant() < 0 ? -1 : 1;
        return FindCircle(
            {(d.x * axis.x + d.y * axis.y) / square, side * (d.y * axis.x - d.x * axis.y) / square},
            fill.GetFocus());
    }

    /// The t whose circle, about focus·(1 − t) with radius t, passes through \p p: by bisection,
    /// since the distance to the circle falls all the way while the focus is inside.
    static double FindCircle(Kernel::PointT<double> p, Kernel::PointT<double> focus)
    {
        const double far = std::hypot(focus.x, focus.y);
        if (far > 0.999)
            focus = focus * (0.999 / far);
        const auto isOutside = [&](double t) {
            return std::hypot(p.x - focus.x * (1 - t), p.y - focus.y * (1 - t)) > t;
        };
        double low = 0;
        double high = 1;
        while (isOutside(high))
            high *= 2;
        for (int i = 0; i < 60; ++i) {
            const double middle = 0.5 * (low + high);
            (isOutside(middle) ? low : high) = middle;
        }
        return 0.5 * (low + high);
    }
};

} // namespace Renderer
