#pragma once

#include <vector>

#include <kernel/Counted.h>
#include <kernel/Rect.h>
#include <raster/DynamicBuffer.h>
#include <renderer/core/RenderTarget.h>
#include <renderer/Export.h>

namespace Renderer {

/// Which buffers a bitmap target has attached and what is open over them, so that one target can
/// serve several in turn, also from within groups. Pixels belong to the buffers, not to the state.
struct BufferState
{
    Kernel::Counted<Raster::DynamicBuffer> buffer; ///< empty when none is attached
    Kernel::RectT<int> rect{};                     ///< the part of the page that it shows
    Kernel::RectT<int> deviceClip{};
    /// The clips, masks and groups that are open over the buffer, with the buffers of the groups;
    /// empty when there are none. Only targets look into it.
    Kernel::Counted<const Kernel::Countable> nesting{};
};

/// The target that draws pixels into a buffer.
///
/// Device coordinates are the page's: a pixel (x, y) covers [x, x+1) × [y, y+1). Pixels further
/// than 2²¹ from its origin stay blank.
class RENDERER_EXPORT BitmapRenderTarget : public RenderTarget
{
public:
    /// Makes a target without a buffer for one of the formats RGBA8, RGBA16, IA8, IA16, CMYKA8,
    /// LABA16, RGBAUF.
    /// \return null for other formats. The raw pointer goes straight into a Counted.
    static BitmapRenderTarget* Create(Raster::Format format,
                                      Raster::ICCManager::ICCProfileSet profiles);

    ~BitmapRenderTarget() override;

    /// Makes a transparent buffer of the target's format and attaches it at (0, 0).
    /// \return false, with the target as it was, when the buffer cannot be had.
    virtual bool CreateBuffer(unsigned width, unsigned height) = 0;
    /// Ends all clips, masks and groups and draws into a caller's buffer from now on, limited to \p
    /// rect of the page, which becomes the device clip. A buffer that holds the rectangle at its
    /// own coordinates shows the page from (0, 0); any other buffer of at least the rectangle's
    /// size shows the page from the rectangle's left top corner. \return false, with the target as
    /// it was, for a buffer of another format or too small a one.
    virtual bool AttachBuffer(Kernel::Counted<Raster::DynamicBuffer> buffer,
                              Kernel::RectT<int> rect) = 0;
    /// Releases every attached buffer; the device clip becomes (0, 0, 0, 0).
    virtual void DetachBuffer() = 0;
    /// The destination buffer; empty when none is attached.
    virtual Kernel::Counted<Raster::DynamicBuffer> GetBuffer() const = 0;
    /// The buffer that drawing goes to at present: the destination or that of the innermost group.
    virtual Kernel::Counted<Raster::DynamicBuffer> GetCurrentBuffer() const = 0;
    /// A copy (M8) of the product of all masks in force, pixel for pixel that of
    /// GetCurrentBuffer(); empty when there are none.
    virtual Kernel::Counted<Raster::DynamicBuffer> GetCurrentMaskBuffer() const = 0;
    virtual BufferState GetBufferState() const = 0;
    /// Attaches what a state says and opens again what was open when it was taken, from this target
    /// or another one of the format; what is open now ends. Transforms and colour transforms stay
    /// as they are. \return false, with the target as it was, when the buffer has another format,
    /// is too small or not the one that the nesting belongs to.
    virtual bool SetBufferState(BufferState state) = 0;
    /// The gamma of coverage: a pixel covered by c gets c^gamma. 1 by default.
    virtual void SetGamma(double gamma) = 0;
    /// Registers a rectangle that a filter of the host shows live; overlapping ones are merged.
    virtual void PushLiveFilters(Kernel::RectT<int> rect) = 0;
    virtual void PopLiveFilters() = 0;
    /// Gives a buffer that nobody needs any more to the spare ones that groups are drawn into. Its
    /// pixels are cleared.
    /// \param buffer handed over with std::move: a buffer that others hold is not taken.
    /// \return whether it was taken; buffers of other formats are not.
    virtual bool TransferBitmapToSpareComposites(Kernel::Counted<Raster::DynamicBuffer> buffer) = 0;

    Kernel::Counted<RenderTarget>
    PushSubRender(const Kernel::RectT<double>& bounds, Raster::Format format,
                  const Raster::ICCManager::ICCProfileSet& profiles) override;
    void PopSubRender(Kernel::Consolidated<Colour> matte) override;

protected:
    BitmapRenderTarget();

private:
    std::vector<Kernel::Counted<BitmapRenderTarget>> m_subRenders; // the innermost last
};

} // namespace Renderer
