#pragma once

#include <raster/CompressedRasterData.h>
#include <raster/DynamicBitmap.h>
#include <raster/Format.h>
#include <renderer/paint/Fill.h>

namespace Renderer {

/// A bitmap on the unit square of its descriptor's frame, whatever its size in pixels.
///
/// It may keep the data that the bitmap was made from. Loading it reads neither these nor pixels:
/// both stay in the document's file until they are asked for.
class RENDERER_EXPORT FillBitmap final : public FillOf<FillBitmap>
{
public:
    /// The consolidated fill. See the constructor.
    static Kernel::Consolidated<FillBitmap>
    Create(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap, Raster::ExtendType extend,
           Raster::ResamplerType upSampler, bool ignoreAlpha = false,
           const Kernel::Counted<const Raster::CompressedRasterData>& original = {});

    FillBitmap() = default;
    /// \param bitmap may be empty: the fill then paints nothing.
    /// \param extend what lies outside the unit square.
    /// \param upSampler how the bitmap is magnified.
    /// \param ignoreAlpha paints the bitmap's colours as opaque.
    /// \param original what the bitmap was made from, if the fill is to keep it.
    FillBitmap(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap,
               Raster::ExtendType extend, Raster::ResamplerType upSampler, bool ignoreAlpha = false,
               const Kernel::Counted<const Raster::CompressedRasterData>& original = {});

    void Save(Kernel::OutSerialiser& out) const override;
    /// Without a bitmap the fill paints nothing.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Kind GetKind() const override { return Kind::Bitmap; }
    bool IsFillNone() const override { return !m_bitmap; }
    bool IsSpatiallyInvariant() const override { return false; }
    /// True unless the alpha is ignored: the pixels are not looked at.
    bool HasNonFullAlpha() const override { return !IsOpaque(); }
    bool IsFlatAlpha() const override { return IsOpaque(); }
    /// Reads every pixel.
    double GetMeanAlpha() const override;
    Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const override;

    const Kernel::Counted<const Raster::DynamicBitmap>& GetBitmap() const noexcept
    {
        return m_bitmap;
    }
    Raster::ExtendType GetExtendType() const noexcept { return m_extend; }
    Raster::ResamplerType GetUpSampler() const noexcept { return m_upSampler; }
    bool GetIgnoreAlpha() const noexcept { return m_ignoreAlpha; }
    /// The source data in compressed form: what the fill was given, otherwise what its bitmap is
    /// saved as; empty without a bitmap. \throws std::bad_alloc
    Kernel::Counted<const Raster::CompressedRasterData> GetOriginalData() const;

    /// The fill with another bitmap.
    /// \param isSame whether its pixels are those of the present one, so that the source stays
    /// true.
    Kernel::Consolidated<FillBitmap>
    WithBitmap(const Kernel::Counted<const Raster::DynamicBitmap>& bitmap, bool isSame) const;

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    template<class Self, class Items>
    static void ListItems(Self& self, Items&& items);
    bool IsOpaque() const noexcept
    {
        return m_bitmap && m_ignoreAlpha && m_extend != Raster::ExtendType::Transparent;
    }

    Kernel::Counted<const Raster::DynamicBitmap> m_bitmap;
    Raster::ExtendType m_extend = Raster::ExtendType::Clamp;
    Raster::ResamplerType m_upSampler = Raster::ResamplerType::Bilinear;
    bool m_ignoreAlpha = false;
    Kernel::Counted<const Raster::CompressedRasterData> m_original;
};

} // namespace Renderer
