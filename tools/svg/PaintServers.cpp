#include "PaintServers.h"

#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillSolid.h>

namespace Svg {

using Renderer::FillDescriptorConst;

Kernel::Consolidated<Renderer::Colour> MakeColour(const ColourValue& colour, double opacity)
{
    return Renderer::ColourRGB::Create(Raster::PixelRGBAUF{
        {static_cast<float>(colour.red), static_cast<float>(colour.green),
         static_cast<float>(colour.blue), static_cast<float>(colour.alpha * opacity)}});
}

FillDescriptorConst MakeSolidFill(const ColourValue& colour, double opacity)
{
    return {Renderer::FillSolid::Create(MakeColour(colour, opacity))};
}

FillDescriptorConst PaintServers::MakeFill(const Paint& paint, double opacity,
                                           const ColourValue& current,
                                           const Geometry::PolyCurveDbl& shape,
                                           const LengthContext& context) const
{
    if (!paint.server.empty())
        return MakeServerFill(paint, opacity, current, shape, context);
    return MakeFallback(paint, opacity, current);
}

FillDescriptorConst PaintServers::MakeFallback(const Paint& paint, double opacity,
                                               const ColourValue& current) const
{
    return paint.colour ? MakeSolidFill(paint.colour->Resolve(current), opacity)
                        : FillDescriptorConst();
}

FillDescriptorConst PaintServers::MakeServerFill(const Paint& paint, double opacity,
                                                 const ColourValue& current,
                                                 const Geometry::PolyCurveDbl& shape,
                                                 const LengthContext& context) const
{
    const FillDescriptorConst fallback = MakeFallback(paint, opacity, current);
    const Element* server = m_document.FindByReference(paint.server);
    if (!server || (server->tag != Tag::LinearGradient && server->tag != Tag::RadialGradient)) {
        m_notices.Add("a paint server is missing; its fallback is painted");
        return fallback;
    }
    const GradientSource gradient(*server, m_document, m_notices);
    Kernel::RectT<double> box{};
    if (gradient.UsesBoundingBox()) {
        const auto bounds = shape.GetBoundingBox();
        box = bounds.GetRect();
        if (!bounds.IsValid() || box.IsEmpty())
            return fallback; // SVG 1.1, 7.11: without an extent there is nothing to refer to
    }
    LengthContext lengths = context;
    lengths.fontSize = m_styles.ResolveInPlace(*server).fontSize;
    return gradient.MakeFill(m_stops, opacity, box, lengths);
}

} // namespace Svg
