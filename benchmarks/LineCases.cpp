#include "LineCases.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string_view>

#include <raster/RasterBrush.h>
#include <renderer/paint/LineStyle.h>

#include "Peer.h"
#include "Shapes.h"

namespace Benchmarks {

namespace {

using Renderer::LineStyle;
using Renderer::LineStyleDescriptorConst;
using Settings = Raster::BrushSettings;

/// A soft disc, or ellipse, of uneven colours.
Kernel::Counted<const Raster::DynamicBitmap> MakeTip(unsigned width, unsigned height)
{
    const auto buffer = Raster::DynamicBuffer::Create(Raster::Format::RGBA8, width, height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            const double u = 2.0 * (x + 0.5) / width - 1.0, v = 2.0 * (y + 0.5) / height - 1.0;
            const double alpha = 255.0 * std::max(0.0, 1.0 - u * u - v * v);
            unsigned char* const pixel = buffer->GetRow(y) + 4 * x;
            for (unsigned i = 0; i < 4; ++i)
                pixel[i] = static_cast<unsigned char>(alpha * (i == (x ^ y) % 3 ? 0.5 : 1.0));
        }
    return Kernel::MakeCounted<const Raster::DynamicBitmap>(buffer);
}

struct BrushTip
{
    const char* name;
    unsigned width, height; // of the picture
    double weight;
    double spacing;
};

constexpr BrushTip Tips[] = {
    {"small-sparse", 16, 16, 8.0, 0.5},    {"small-dense", 16, 16, 8.0, 0.05},
    {"large-sparse", 128, 128, 64.0, 0.5}, {"large-dense", 128, 128, 64.0, 0.05},
    {"narrow-dense", 1, 200, 100.0, 0.02},
};

struct BrushUse
{
    const char* name;
    Settings::Mode mode;
    Settings::TipUse tipUse;
    Settings::Overlap overlap;
};

constexpr BrushUse Uses[] = {
    {"stamped-mask", Settings::Mode::Stamped, Settings::TipUse::Alpha, Settings::Overlap::BuildUp},
    {"stamped-colours", Settings::Mode::Stamped, Settings::TipUse::OwnColours,
     Settings::Overlap::BuildUp},
    {"stamped-largest", Settings::Mode::Stamped, Settings::TipUse::Alpha,
     Settings::Overlap::MaxOpacity},
    {"repeated", Settings::Mode::Repeated, Settings::TipUse::OwnColours,
     Settings::Overlap::BuildUp},
    {"stretched", Settings::Mode::Stretched, Settings::TipUse::Alpha, Settings::Overlap::BuildUp},
};

LineStyleDescriptorConst MakeBrush(const BrushTip& tip, const BrushUse& use)
{
    Settings settings;
    settings.mode = use.mode;
    settings.tipUse = use.tipUse;
    settings.overlap = use.overlap;
    settings.spacing = tip.spacing;
    settings.opacity = 0.5;
    LineStyle style(tip.weight);
    style.SetType(LineStyle::RasterBrush);
    style.SetBrush(
        Kernel::MakeCounted<const Raster::RasterBrush>(MakeTip(tip.width, tip.height), settings));
    return LineStyleDescriptorConst(LineStyle::Consolidate(style));
}

void AddBrushes(std::vector<LineCase>& cases)
{
    const auto curve = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
    curve->MoveTo({60, 300});
    curve->CurveTo({220, -60}, {360, 660}, {540, 300});
    for (const BrushUse& use : Uses)
        for (const BrushTip& tip : Tips)
            // Bent tips have no density.
            if (use.mode == Settings::Mode::Stamped || tip.spacing == Tips[0].spacing)
                cases.push_back({std::string("Brush/") + use.name + '/' + tip.name, curve,
                                 MakeBrush(tip, use)});
}

void AddAligned(std::vector<LineCase>& cases)
{
    constexpr struct
    {
        const char* name;
        LineStyleDescriptorConst::StrokeAlignment alignment;
    } sides[] = {{"centre", LineStyleDescriptorConst::Centre},
                 {"inside", LineStyleDescriptorConst::Inside},
                 {"outside", LineStyleDescriptorConst::Outside}};
    for (const Shape& shape : FilledShapes) {
        if (shape.wholePixels || shape.winding != Geometry::WindingOrderMode::NonZero)
            continue;
        Random random(1);
        const auto path =
            Kernel::MakeCounted<Geometry::PolyCurveDbl>(shape.make(LinePage::Side, random));
        for (const auto& side : sides) {
            LineStyleDescriptorConst style(6.0);
            style.SetStrokeAlignment(side.alignment);
            cases.push_back({std::string("Align/") + side.name + '/' + shape.name, path, style});
        }
    }
}

} // namespace

std::vector<LineCase> MakeLineCases()
{
    std::vector<LineCase> cases;
    AddBrushes(cases);
    AddAligned(cases);
    return cases;
}

LinePage::LinePage(const LineCase& item)
    : m_case(item),
      m_target(Renderer::BitmapRenderTarget::Create(Raster::Format::RGBA8, {})),
      m_fill(Renderer::FillDescriptorConst::CreateSolid({{20, 60, 200, 255}}))
{
    if (!m_target->CreateBuffer(Side, Side))
        throw std::runtime_error("no memory for the page");
    m_target->SetDeviceExpansionTolerance(Tolerance);
}

void LinePage::Draw()
{
    m_target->DrawPolyCurve(m_case.path, 1.0F, Renderer::FillBlendMode::Normal,
                            Renderer::BlendOptions::Identity(), {}, {}, m_fill, m_case.style,
                            Geometry::WindingOrderMode::NonZero, true, true);
}

} // namespace Benchmarks
