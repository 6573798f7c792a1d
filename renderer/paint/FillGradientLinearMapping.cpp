#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/ColourConversion.h>
#include <renderer/paint/ColourGrayscale.h>
#include <renderer/paint/ColourLAB.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillGradient.h>

namespace Renderer {

namespace {

using ColourConversion::FloatPixel;
using Stop = Gradient::ColourPosition;

/// A colour of the model that a pixel format has, from its channels in units of 1.
Kernel::Counted<Colour> MakeColour(Raster::Format format, const FloatPixel& c)
{
    switch (format) {
    case Raster::Format::IA8:
    case Raster::Format::IA16:
        return ColourGrayscale::CreateFakeTemporary(c[0], c[1]);
    case Raster::Format::CMYKA8:
        return ColourCMYK::CreateFakeTemporary(Raster::PixelCMYKAF{c[0], c[1], c[2], c[3], c[4]});
    case Raster::Format::LABA16: {
        Raster::PixelLABA16 pixel;
        std::transform(c.begin(), c.begin() + 4, pixel.channels.begin(),
                       ColourConversion::FromFloat<std::uint16_t>);
        return ColourLAB::CreateFakeTemporary(pixel);
    }
    default:
        return ColourRGB::CreateFakeTemporary(Raster::PixelRGBAUF{c[0], c[1], c[2], c[3]});
    }
}

/// Two neighbouring stops as the pixels between which drawing interpolates, and the stops that
/// bring the mapping between them into straight pieces.
class Interval
{
public:
    Interval(const Stop& from, const Stop& to, Raster::Format format,
             const Colour::ICCProfileSet& profiles)
        : m_from(from),
          m_to(to),
          m_format(format),
          m_fromPixel(GetPixel(*from.colour, format, profiles)),
          m_toPixel(GetPixel(*to.colour, format, profiles))
    {}

    /// Adds the stops between the two ends.
    void AppendStops(std::vector<Stop>& stops) const
    {
        const double m = m_from.midpoint;
        const int pieces = GetPieceCount();
        for (int i = 1; i <= pieces && m > 0.0; ++i)
            AppendStop(stops, m * i / pieces, 0.5 * i / pieces);
        if (m <= 0.0)
            AppendStop(stops, 0.0, 0.5);
        for (int i = 1; i < pieces && m < 1.0; ++i)
            AppendStop(stops, m + (1.0 - m) * i / pieces, 0.5 + 0.5 * i / pieces);
    }

private:
    static FloatPixel GetPixel(const Colour& colour, Raster::Format format,
                               const Colour::ICCProfileSet& profiles)
    {
        return Raster::WithPixelOfFormat(format, FloatPixel{}, [&](auto pixel) {
            colour.GetColour(pixel, true, profiles);
            return ColourConversion::Load(pixel);
        });
    }

    /// How many straight pieces each side of the midpoint needs. Over the mapped position u, of
    /// which a side spans ½, the factor u + k(3u² − 2u³ − u) has a second derivative of at most 6k;
    /// n chords of length ½/n then stray from it by at most (½/n)²/8 · 6k, which times the largest
    /// difference of the ends, D steps, must not exceed half a step.
    int GetPieceCount() const
    {
        constexpr double MaxPieces = 256;
        double steps = 0.0;
        for (std::size_t c = 0; c < m_fromPixel.size(); ++c)
            steps = std::max(steps,
                             255.0 * std::abs(static_cast<double>(m_toPixel[c]) - m_fromPixel[c]));
        const double pieces = std::ceil(std::sqrt(0.375 * m_from.smoothness * steps));
        return static_cast<int>(std::clamp(pieces, 1.0, MaxPieces));
    }

    /// A stop at position \p t between the ends, where the mapping before the smoothing gives \p u.
    void AppendStop(std::vector<Stop>& stops, double t, double u) const
    {
        const double mix = GradientMapping{0.5, m_from.smoothness}.Mix(u);
        const auto lerp = [mix](double a, double b) { return a + mix * (b - a); };
        FloatPixel pixel;
        for (std::size_t c = 0; c < pixel.size(); ++c)
            pixel[c] = static_cast<float>(lerp(m_fromPixel[c], m_toPixel[c]));
        const Kernel::Counted<Colour> colour = MakeColour(m_format, pixel);
        colour->SetNoise(lerp(m_from.colour->GetNoise(), m_to.colour->GetNoise()));
        colour->SetIntensity(lerp(m_from.colour->GetIntensity(), m_to.colour->GetIntensity()));
        stops.push_back(
            {Colour::Consolidate(colour), m_from.position + t * (m_to.position - m_from.position)});
    }

    const Stop& m_from;
    const Stop& m_to;
    Raster::Format m_format;
    FloatPixel m_fromPixel;
    FloatPixel m_toPixel;
};

/// Masks and Format::None have no colours to interpolate; RGB stands for them.
Raster::Format GetColourFormat(Raster::Format format)
{
    return Raster::WithPixelOfFormat(format, Raster::Format::RGBA8, [&](auto pixel) {
        return ColourConversion::HasColour<decltype(pixel)> ? format : Raster::Format::RGBA8;
    });
}

} // namespace

Kernel::Consolidated<FillGradient>
FillGradient::GetWithLinearMapping(const Colour::ICCProfileSet& profiles,
                                   Raster::Format format) const
{
    if (!HasNonLinearMapping() && IsConsolidated())
        return Kernel::Consolidated<FillGradient>(Kernel::Counted<const FillGradient>(this));
    format = GetColourFormat(format);
    const std::vector<Stop>& stops = m_gradient->GetColours();
    std::vector<Stop> linear;
    for (std::size_t i = 0; i < stops.size(); ++i) {
        linear.push_back({stops[i].colour, stops[i].position});
        if (i + 1 < stops.size() && !stops[i].GetMapping().IsLinear())
            Interval(stops[i], stops[i + 1], format, profiles).AppendStops(linear);
    }
    return Create(m_type, Gradient::Create(std::move(linear)), m_transformCorrected, m_spread,
                  m_focus);
}

} // namespace Renderer
