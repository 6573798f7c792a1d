// Drawing alpha alone, in PixelRenderTarget.
//
// Storage is premultiplied, so colour that stays while alpha changes would be wrong for the new
// alpha, and colour whose alpha is 0 for a while would be lost. Where alpha alone is drawn the
// colour channels are therefore brought to plain colour first, which is then untouched, and
// multiplied by the new alpha when colour is needed again: before anything else is drawn into the
// buffer, before it is looked at, and, for the destination, when the last push is popped.
//
// Float colour needs none of that but where alpha is 0, since it can follow any alpha: there alone
// it is plain (see AlphaOnlyKernel).

#include <cstddef>

#include <kernel/Tiles.h>
#include <raster/Convert.h>
#include <raster/Pixel.h>
#include <renderer/core/DevicePixels.h>
#include <renderer/core/PixelRenderTarget.h>

namespace Renderer {

using Kernel::RectT;

namespace {

/// Calls \p work(left, right) for the parts of row \p y of \p rect that lie outside of \p box.
template<class Work>
void ForPartsOutside(const RectT<int>& rect, int y, const RectT<int>& box, const Work& work)
{
    const RectT<int> common = CommonPart(rect, box);
    if (common.IsEmpty() || y < common.top || y >= common.bottom)
        return work(rect.left, rect.right);
    if (rect.left < common.left)
        work(rect.left, common.left);
    if (common.right < rect.right)
        work(common.right, rect.right);
}

/// Whether colour is kept plain while alpha alone is drawn.
bool IsKeptPlain(Raster::Format format)
{
    return format != Raster::Format::RGBAUF;
}

/// Takes the colour from pixels without alpha.
void DropHiddenColour(void* pixels, std::size_t count)
{
    auto* const pixel = static_cast<Raster::PixelRGBAUF*>(pixels);
    for (std::size_t i = 0; i < count; ++i)
        if (!(pixel[i].Alpha() > 0.0F))
            pixel[i] = {};
}

/// Makes pixels of an area that may hold plain colour what they are everywhere else.
void SettlePixels(Raster::Format format, void* pixels, std::size_t count)
{
    if (IsKeptPlain(format))
        Raster::Premultiply(format, pixels, count);
    else
        DropHiddenColour(pixels, count);
}

/// Converts the pixels of \p rect that lie outside of \p known.
/// \param origin the page pixel of the buffer's first.
void ConvertColours(Raster::DynamicBuffer& buffer, Kernel::PointT<int> origin,
                    const RectT<int>& rect, const RectT<int>& known,
                    void (*convert)(Raster::Format, void*, std::size_t))
{
    const std::size_t pixelSize = buffer.GetPixelSize();
    buffer.SyncHostCache();
    Kernel::ForEachTile(rect, [&](const RectT<int>& tile) {
        for (int y = tile.top; y < tile.bottom; ++y) {
            unsigned char* const row = buffer.GetRow(unsigned(y - origin.y));
            ForPartsOutside(tile, y, known, [&](int left, int right) {
                convert(buffer.GetFormat(), row + std::size_t(left - origin.x) * pixelSize,
                        unsigned(right - left));
            });
        }
    });
    buffer.InvalidateHardwareCache(
        {rect.left - origin.x, rect.top - origin.y, rect.right - origin.x, rect.bottom - origin.y});
}

void Settle(const Kernel::Counted<Raster::DynamicBuffer>& buffer, Kernel::PointT<int> origin,
            AlphaOnlyState& state)
{
    if (!state.plain.IsEmpty())
        ConvertColours(*buffer, origin, state.plain, {}, SettlePixels);
    state.plain = {};
}

} // namespace

bool PixelRenderTarget::HasPlainColours() const
{
    return IsAlphaOnly() && IsKeptPlain(GetColourFormat());
}

void PixelRenderTarget::PushAlphaChannelOnly()
{
    ++m_alphaOnly.depth;
}

void PixelRenderTarget::PopAlphaChannelOnly()
{
    if (m_alphaOnly.depth == 0)
        return;
    --m_alphaOnly.depth;
    // Groups keep plain colour: that of pixels whose alpha is still 0 may be wanted again.
    if (m_alphaOnly.depth == 0 && m_groups.empty())
        SettleColours();
}

void PixelRenderTarget::PrepareColours(const RectT<int>& rect)
{
    if (!IsAlphaOnly())
        return SettleColours();
    if (rect.IsEmpty() || CommonPart(m_alphaOnly.plain, rect) == rect)
        return;
    const RectT<int> known = m_alphaOnly.plain;
    const RectT<int> all = known.IsEmpty() ? rect : known.Union(rect);
    if (HasPlainColours())
        ConvertColours(*m_current, m_currentOrigin, all, known, Raster::Unpremultiply);
    m_alphaOnly.plain = all;
}

void PixelRenderTarget::SettleColours() const
{
    Settle(m_current, m_currentOrigin, m_alphaOnly);
}

void PixelRenderTarget::SettleAllColours() const
{
    SettleColours();
    for (const CompositeGroup& group : m_groups)
        Settle(group.parent, group.parentOrigin, group.parentAlphaOnly);
}

void PixelRenderTarget::SettleBackdrop(int y, int left, int right, unsigned char* pixels) const
{
    const RectT<int> plain = CommonPart(m_alphaOnly.plain, {left, y, right, y + 1});
    if (!plain.IsEmpty())
        SettlePixels(GetColourFormat(), pixels + std::size_t(plain.left - left) * m_pixelSize,
                     unsigned(plain.Width()));
}

void PixelRenderTarget::KeepBackdropColour(int y, int left, int right, unsigned char* pixels) const
{
    const auto at = [&](int x) { return pixels + std::size_t(x - left) * m_pixelSize; };
    const auto makePlain = [this](void* part, unsigned count) {
        if (IsKeptPlain(GetColourFormat()))
            Raster::Unpremultiply(GetColourFormat(), part, count);
        else
            DropHiddenColour(part, count); // ClearAlpha does the rest
    };
    ForPartsOutside({left, y, right, y + 1}, y, m_alphaOnly.plain,
                    [&](int begin, int end) { makePlain(at(begin), unsigned(end - begin)); });
    ClearAlpha(pixels, unsigned(right - left));
}

void PixelRenderTarget::ClearAlpha(unsigned char* pixels, unsigned count) const
{
    Raster::WithPixelOfFormat(GetColourFormat(), false, [&]<class P>(P) {
        auto* const pixel = reinterpret_cast<P*>(pixels);
        for (unsigned i = 0; i < count; ++i) {
            if constexpr (std::is_floating_point_v<typename P::ChannelType>) {
                for (std::size_t c = 0; pixel[i].Alpha() > 0 && c < P::ColourCount; ++c)
                    pixel[i][c] /= pixel[i].Alpha();
            }
            pixel[i].Alpha() = {};
        }
        return true;
    });
}

} // namespace Renderer
