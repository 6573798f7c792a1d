// Clipping masks of PixelRenderTarget.
//
// The masks in force are kept as one: each push makes the product with those below in the
// resolution of the device, so that drawing looks at a single byte per pixel. Like clip paths they
// are out of force inside a composite group, whose result they scale as a whole.

#include <algorithm>

#include <renderer/core/DevicePixels.h>
#include <renderer/core/MakeRoom.h>
#include <renderer/core/PixelRenderTarget.h>

namespace Renderer {

using Kernel::Counted;
using Kernel::RectT;
using Raster::DynamicBuffer;

std::size_t PixelRenderTarget::GetFirstMask() const
{
    return m_groups.empty() ? 0 : m_groups.back().masks;
}

const ClippingMask& PixelRenderTarget::GetMask() const
{
    static const ClippingMask everything;
    return m_masks.size() > GetFirstMask() ? m_masks.back() : everything;
}

RectT<int> PixelRenderTarget::GetUnmaskedRect() const
{
    return CommonPart(GetVisibleRect(), GetMask().rect);
}

void PixelRenderTarget::PushClippingMask(const RectT<double>& bounds,
                                         Counted<const DynamicBuffer> mask)
{
    MakeRoomForOne(m_masks);
    const RectT<int> visible = m_current ? UpdateClipRasterizer().window : RectT<int>{};
    m_masks.push_back(MakeClippingMask(
        mask, {bounds, GetCurrentTransform(), GetUpResamplerType(), GetDownResamplerType()},
        GetMask(), CommonPart(visible, GetVisibleRect()), m_rasterizer.GetStore()));
}

void PixelRenderTarget::PopClippingMask()
{
    if (m_masks.size() > GetFirstMask())
        m_masks.pop_back();
}

Counted<DynamicBuffer> PixelRenderTarget::GetCurrentMaskBuffer() const
{
    if (!m_current || m_masks.size() == GetFirstMask())
        return {};
    auto result =
        DynamicBuffer::Create(Raster::Format::M8, m_current->GetWidth(), m_current->GetHeight());
    const ClippingMask& mask = GetMask();
    if (!result || !mask.buffer)
        return result;
    const RectT<int> part = CommonPart(mask.rect, m_rasterizer.GetDestinationRect());
    for (int y = part.top; y < part.bottom; ++y)
        std::copy_n(mask.buffer->GetRow(unsigned(y - mask.origin.y)) + (part.left - mask.origin.x),
                    part.Width(),
                    result->GetRow(unsigned(y - m_currentOrigin.y)) +
                        (part.left - m_currentOrigin.x));
    return result;
}

} // namespace Renderer
