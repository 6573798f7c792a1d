#include "FormatCases.h"

#include <stdexcept>

#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillGradient.h>

namespace Benchmarks {

namespace {

using Renderer::BlendOptions;
using Renderer::FillBlendMode;
using Renderer::FillDescriptorConst;

struct NamedFormat
{
    const char* name;
    Raster::Format format;
};

constexpr NamedFormat Formats[] = {
    {"RGBA8", Raster::Format::RGBA8},   {"RGBA16", Raster::Format::RGBA16},
    {"IA8", Raster::Format::IA8},       {"IA16", Raster::Format::IA16},
    {"CMYKA8", Raster::Format::CMYKA8}, {"LABA16", Raster::Format::LABA16},
    {"RGBAUF", Raster::Format::RGBAUF},
};

struct PaintedMode
{
    const char* name;
    FillBlendMode::BlendMode mode;
    bool isGradient;
};

constexpr PaintedMode PaintedModes[] = {
    {"Normal/solid", FillBlendMode::Normal, false},
    {"Normal/gradient", FillBlendMode::Normal, true},
    {"Multiply/solid", FillBlendMode::Multiply, false},
    {"Luminosity/solid", FillBlendMode::Luminosity, false},
};

FillDescriptorConst MakeFill(bool isGradient)
{
    const Raster::PixelRGBA8 first{{230, 120, 40, 150}};
    const Raster::PixelRGBA8 last{{20, 60, 200, 220}};
    if (!isGradient)
        return FillDescriptorConst::CreateSolid(first);
    using namespace Renderer;
    return FillDescriptorConst(
        FillGradient::Create(
            FillGradient::Linear,
            Gradient::Create({{ColourRGB::Create(first), 0.0}, {ColourRGB::Create(last), 1.0}})),
        {double(FormatPage::Width), -40.0, 0.0, 40.0, double(FormatPage::Width), 0.0});
}

} // namespace

std::vector<FormatCase> MakeFormatCases()
{
    std::vector<FormatCase> cases;
    for (const NamedFormat& format : Formats)
        for (const PaintedMode& painted : PaintedModes)
            cases.push_back({std::string("Format/") + format.name + '/' + painted.name,
                             format.format, painted.mode, painted.isGradient});
    return cases;
}

FormatPage::FormatPage(const FormatCase& item)
    : m_target(Renderer::BitmapRenderTarget::Create(item.format, {})),
      m_mode(item.mode),
      m_fill(MakeFill(item.isGradient)),
      m_page(Kernel::MakeCounted<Renderer::PolyPolygon>(
          Kernel::RectT<double>{0.0, 0.0, double(Width), double(Height)}))
{
    if (!m_target->CreateBuffer(Width, Height))
        throw std::runtime_error("no memory for the page");
    m_target->Blend(1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                    FillDescriptorConst::CreateSolid({{90, 200, 140, 255}}), {});
}

void FormatPage::Draw()
{
    m_target->DrawPolyPolygon(m_page, 1.0F, m_mode, BlendOptions::Identity(), m_fill, {},
                              Geometry::WindingOrderMode::NonZero, true, true);
}

} // namespace Benchmarks
