#pragma once

#include <vector>

#include <kernel/Counted.h>
#include <kernel/Point.h>
#include <raster/AffineTransform.h>
#include <raster/ColourTransform.h>
#include <raster/DynamicBuffer.h>
#include <raster/Format.h>
#include <raster/ICCManager.h>
#include <renderer/core/formats/PixProcessor.h>
#include <renderer/core/span/BitmapCache.h>
#include <renderer/core/span/GradientCache.h>
#include <renderer/core/span/PopulatorForms.h>
#include <renderer/core/span/PopulatorStore.h>
#include <renderer/core/span/SpanPopulator.h>
#include <renderer/paint/Fill.h>

namespace Renderer {

class FillBitmap;
class FillBuffer;
class FillGradient;
class FillSolid;
class GradientGeometry;

/// What populators need to know about the target that they paint for.
struct PopulatorContext
{
    const Raster::ICCManager::ICCProfileSet& profiles;
    /// How bitmaps are minified.
    Raster::ResamplerType downResampler;
    /// The target's own pixels, for fills that paint with them; null when there are none.
    const Raster::DynamicBuffer* backBuffer;
    /// The device pixel of the back buffer's left top corner.
    Kernel::PointT<int> backBufferOrigin;
    BitmapCache& bitmaps;
    GradientCache& gradients;
    /// Whether paint that is known to more than 8 bits is dithered into formats of 8 bits.
    bool dithers = false;
    /// Whether bitmaps are resampled one step more cheaply.
    bool degradesBitmaps = false;
    /// Whether the back buffer's colour is not premultiplied where spans are asked for.
    bool isBackBufferPlain = false;
};

/// Makes populators of one pixel format. Use it through the functions below.
template<class Processor>
class PopulatorFactory
{
public:
    using Pixel = typename Processor::Pixel;
    using Params = Raster::AffineTransform::Params;
    using Transforms = std::vector<Kernel::Counted<const Raster::ColourTransform>>;

    /// See MakePopulator.
    static bool Make(const Fill& fill, const Params& fillToDevice, PopulatorRole role,
                     const PopulatorContext& context, PopulatorStore& store, SpanPopulator& out);
    /// See GetSolidPixel.
    static bool GetSolid(const Fill& fill, const typename Processor::Profiles& profiles,
                         Pixel& pixel);
    /// See MakeColourTransformPopulator.
    static bool MakeColourTransform(const Transforms& transforms,
                                    const typename Processor::Profiles& profiles,
                                    PopulatorStore& store, SpanPopulator& out);

private:
    /// One call's arguments.
    struct Call;

    static bool MakeSolid(const FillSolid& fill, const Call& call);
    static bool MakeBackBuffer(const Call& call);
    static bool MakeBitmap(const FillBitmap& fill, const Call& call);
    static bool MakeBuffer(const FillBuffer& fill, const Call& call);
    template<class FillT, class GetPixels>
    static bool MakeFromPixels(const FillT& fill, const Raster::DynamicBuffer& buffer,
                               const Kernel::Counted<const Raster::ICCProfile>& profile,
                               const GetPixels& getPixels, const Call& call);
    template<class Source, class FillT, class GetPixels>
    static bool MakeFromDeepPixels(const FillT& fill,
                                   const Kernel::Counted<const Raster::ICCProfile>& profile,
                                   const GetPixels& getPixels, const Call& call);
    template<class Populator, class FillT, class GetPixels, class... Args>
    static bool MakeSampled(const FillT& fill, Raster::Format format,
                            const typename Processor::Profiles& profiles,
                            const GetPixels& getPixels, const Call& call, Args&&... args);
    static bool MakeGradient(const FillGradient& fill, const Call& call);
    template<bool IsDithered>
    static bool MakeGradientOf(const FillGradient& fill, const GradientGeometry& geometry,
                               const Call& call);
    static bool MakeLastStop(const FillGradient& fill, const Call& call);
    template<class Populator, class... Args>
    static bool Finish(const Call& call, Args&&... args);
};

/// Makes the populator of a fill: solid, gradient, bitmap, buffer or back buffer. Stacks of fills
/// and fills that paint nothing are the caller's to take apart.
///
/// Transparency populators compute alpha alone, whatever \p Processor does.
/// \param fillToDevice the placement of the fill's frame on the device.
/// \param store owns the populator's context; \p out is valid until its Reset, and as long as what
///        \p context refers to.
/// \return false, with \p out untouched, when the fill cannot be drawn: it has no pixels or stops,
///         its map is singular (bitmaps) or not finite, or memory is short.
template<class Processor>
bool MakePopulator(const Fill& fill, const Raster::AffineTransform::Params& fillToDevice,
                   PopulatorRole role, const PopulatorContext& context, PopulatorStore& store,
                   SpanPopulator& out)
{
    return PopulatorFactory<Processor>::Make(fill, fillToDevice, role, context, store, out);
}

/// The premultiplied pixel of a solid fill without noise, which needs no populator.
/// \return false, with \p pixel untouched, for every other fill.
template<class PixelT>
bool GetSolidPixel(const Fill& fill, const Raster::ICCManager::ICCProfileSet& profiles,
                   PixelT& pixel)
{
    return PopulatorFactory<PixProcessor<PixelT, false>>::GetSolid(fill, profiles, pixel);
}

/// Makes the populator that applies colour transforms, in order, to what the populators before it
/// have written.
/// \param transforms, profiles are referred to, not copied.
/// \return false, with \p out untouched, when there is nothing to change: no transform but
/// identities,
///         or a processor of alpha alone.
template<class Processor>
bool MakeColourTransformPopulator(
    const std::vector<Kernel::Counted<const Raster::ColourTransform>>& transforms,
    const Raster::ICCManager::ICCProfileSet& profiles, PopulatorStore& store, SpanPopulator& out)
{
    return PopulatorFactory<Processor>::MakeColourTransform(transforms, profiles, store, out);
}

/// \name The instantiations, one file of renderer/core/formats each
/// @{
extern template class PopulatorFactory<PixProcessor_RGBA>;
extern template class PopulatorFactory<PixProcessor_RGBA_Alpha>;
extern template class PopulatorFactory<PixProcessor_RGBA16>;
extern template class PopulatorFactory<PixProcessor_RGBA16_Alpha>;
extern template class PopulatorFactory<PixProcessor_IA>;
extern template class PopulatorFactory<PixProcessor_IA_Alpha>;
extern template class PopulatorFactory<PixProcessor_IA16>;
extern template class PopulatorFactory<PixProcessor_IA16_Alpha>;
extern template class PopulatorFactory<PixProcessor_CMYKA>;
extern template class PopulatorFactory<PixProcessor_CMYKA_Alpha>;
extern template class PopulatorFactory<PixProcessor_LABA16>;
extern template class PopulatorFactory<PixProcessor_LABA16_Alpha>;
extern template class PopulatorFactory<PixProcessor_RGBAUF>;
extern template class PopulatorFactory<PixProcessor_RGBAUF_Alpha>;
/// @}

} // namespace Renderer
