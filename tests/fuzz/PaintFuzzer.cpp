// Loads, draws and saves every class that the library saves.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>

#include <geometry/PolyCurve.h>
#include <renderer/core/BitmapRenderTarget.h>
#include <renderer/paint/FillDescriptor.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillSolid.h>
#include <renderer/paint/ForceColourVisitor.h>
#include <renderer/paint/LineStyleDescriptor.h>
#include <renderer/paint/Palette.h>

#include "SavedCheck.h"

namespace {

using namespace Renderer;
using Kernel::Counted;

const Counted<BitmapRenderTarget>& GetTarget()
{
    static const Counted<BitmapRenderTarget> target = [] {
        Counted<BitmapRenderTarget> made(BitmapRenderTarget::Create(Raster::Format::RGBA8, {}));
        SavedCheck::Check(made->CreateBuffer(24, 16), "no buffer");
        return made;
    }();
    return target;
}

/// Whether a line only takes time: has dashes without number around the page, or parts of huge
/// width that are to be cut off along the path. A million pieces say nothing that thousands do not.
bool TakesLong(const LineStyleDescriptorConst& line)
{
    const auto& style = line.GetLineStyle();
    if (!style)
        return false;
    const auto& dashes = style->GetDashPattern();
    const double period = std::accumulate(dashes.begin(), dashes.end(), 0.0);
    if (70.0 * double(dashes.size()) > 4000.0 * period)
        return true;
    if (line.GetStrokeAlignment() == LineStyleDescriptorConst::Centre)
        return false;
    const auto isHuge = [&](Geometry::Point p) { return std::abs(p.y) * style->GetWeight() > 1e4; };
    const auto& pressure = line.GetPressure();
    return style->GetWeight() > 1e4 ||
           (pressure && std::ranges::any_of(pressure->GetPoints(), isHuge));
}

void Paint(const FillDescriptorConst& fill, const LineStyleDescriptorConst& line = {})
{
    if (!TakesLong(line))
        GetTarget()->DrawRectangle({2.25, 1.5, 20, 14.75}, 0.75F, fill, fill, line);
}

/// Asks for all that a fill tells and makes of itself; the unit square of it is half of the page.
void PaintFill(const Kernel::Consolidated<Fill>& fill)
{
    fill->GetCSSAttributes({});
    fill->GetMeanAlpha();
    fill->Clone();
    ForceColourVisitor force(Raster::ColourSpace::CMYK, {});
    fill->Accept(force);
    Paint(FillDescriptorConst(fill, {12, 1, 3, -1, 9, 4}));
}

void PaintColour(const Kernel::Consolidated<Colour>& colour)
{
    colour->GetDefaultName();
    colour->GetCSSAttributes();
    PaintFill(FillSolid::Create(colour));
}

void PaintShared(const Kernel::Consolidated<Kernel::SharedSerialisable>& object)
{
    const Counted<const Kernel::SharedSerialisable>& value = object.GetCounted();
    if (const auto* fill = dynamic_cast<const Fill*>(value.Get()))
        PaintFill(Kernel::Consolidated<Fill>(Counted<const Fill>(fill)));
    else if (const auto* colour = dynamic_cast<const Colour*>(value.Get()))
        PaintColour(Kernel::Consolidated<Colour>(Counted<const Colour>(colour)));
    else if (const auto* gradient = dynamic_cast<const Gradient*>(value.Get()))
        PaintFill(FillGradient::Create(
            FillGradient::Conical,
            Kernel::Consolidated<Gradient>(Counted<const Gradient>(gradient))));
    else if (const auto* palette = dynamic_cast<const Palette*>(value.Get()))
        for (const auto& entry : palette->GetColours())
            PaintColour(entry);
    else if (const auto* style = dynamic_cast<const LineStyle*>(value.Get()))
        Paint(FillDescriptorConst::CreateSolid({{9, 8, 7, 200}}),
              LineStyleDescriptorConst(
                  Kernel::Consolidated<LineStyle>(Counted<const LineStyle>(style))));
}

void PaintPlain(const Counted<Kernel::Serialisable>& object)
{
    if (const auto* fill = dynamic_cast<const FillDescriptor*>(object.Get()))
        Paint(*fill);
    else if (const auto* line = dynamic_cast<const LineStyleDescriptor*>(object.Get()))
        Paint(FillDescriptorConst::CreateSolid({{9, 8, 7, 200}}), *line);
    else if (auto* bitmap = dynamic_cast<Raster::DynamicBitmap*>(object.Get()))
        GetTarget()->DrawBitmap({1, 2, 20.5, 12}, Counted<const Raster::DynamicBitmap>(bitmap),
                                1.0F, FillBlendMode::Normal, BlendOptions::Identity(), false);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SavedCheck::CheckFile({data, data + size}, 1, [](const SavedCheck::Object& object) {
        if (object.shared)
            PaintShared(object.shared);
        else
            PaintPlain(object.plain);
    });
    return 0;
}
