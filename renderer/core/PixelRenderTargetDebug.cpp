#include <algorithm>
#include <cstring>

#include <renderer/core/CallScope.h>
#include <renderer/core/DevicePixels.h>
#include <renderer/core/PixelRenderTarget.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/FillSolid.h>

namespace Renderer {

using Kernel::RectT;

void PixelRenderTarget::DebugShowDeviceRectangle(RectT<int> rect)
{
    constexpr unsigned dash = 4; // pixels of one colour
    const RectT<int> part = CommonPart(rect, GetVisibleRect());
    if (!m_current || rect.IsEmpty() || part.IsEmpty())
        return;
    const CallScope scope(*this);
    unsigned char colours[2][SpanBlend::LargestPixel];
    for (const int i : {0, 1}) {
        const auto level = static_cast<unsigned char>(255 * i);
        const auto fill =
            FillSolid::Create(ColourRGB::Create(Raster::PixelRGBA8{{level, level, level, 255}}));
        SpanPopulator populator;
        if (!MakeFillPopulator(*fill, {}, PopulatorRole::Colour, populator))
            return;
        populator.function(populator.context, colours[i], 0, 0, 1);
    }
    Touch(part);
    const WriteScope write(*this, part);
    const auto plot = [&](int x, int y) {
        const unsigned along = (unsigned(x) + unsigned(y)) / dash % 2;
        std::memcpy(m_rasterizer.GetRow(y) + std::size_t(x - m_currentOrigin.x) * m_pixelSize,
                    colours[along], m_pixelSize);
    };
    for (const int y : {rect.top, rect.bottom - 1})
        for (int x = part.left; x < part.right && y >= part.top && y < part.bottom; ++x)
            plot(x, y);
    for (const int x : {rect.left, rect.right - 1})
        for (int y = part.top; y < part.bottom && x >= part.left && x < part.right; ++y)
            plot(x, y);
}

} // namespace Renderer
