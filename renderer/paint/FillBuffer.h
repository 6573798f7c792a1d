#pragma once

#include <raster/DynamicBitmap.h>
#include <raster/DynamicBuffer.h>
#include <raster/Format.h>
#include <renderer/paint/Fill.h>

namespace Renderer {

/// A render buffer on the unit square of its descriptor's frame, read when the paint is drawn. Its
/// pixels are in the target's colours.
///
/// It is saved with the pixels that the buffer has then. Loading it leaves them in the document's
/// file until they are asked for.
class RENDERER_EXPORT FillBuffer final : public FillOf<FillBuffer>
{
public:
    /// The consolidated fill. See the constructor.
    static Kernel::Consolidated<FillBuffer>
    Create(const Kernel::Counted<const Raster::DynamicBuffer>& buffer,
           Raster::ExtendType extend = Raster::ExtendType::Clamp,
           Raster::ResamplerType upSampler = Raster::ResamplerType::Bilinear);

    FillBuffer() = default;
    /// \param buffer may be empty: the fill then paints nothing.
    explicit FillBuffer(const Kernel::Counted<const Raster::DynamicBuffer>& buffer,
                        Raster::ExtendType extend = Raster::ExtendType::Clamp,
                        Raster::ResamplerType upSampler = Raster::ResamplerType::Bilinear);

    void Save(Kernel::OutSerialiser& out) const override;
    /// Without pixels the fill paints nothing.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Kind GetKind() const override { return Kind::Buffer; }
    bool IsFillNone() const override { return !m_buffer && !m_saved; }
    bool IsSpatiallyInvariant() const override { return false; }
    bool HasNonFullAlpha() const override { return true; }
    bool IsFlatAlpha() const override { return false; }
    /// Reads every pixel.
    double GetMeanAlpha() const override;
    Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const override;

    /// The buffer. That of a loaded fill is decoded by the first call; empty when that is not
    /// possible.
    const Kernel::Counted<const Raster::DynamicBuffer>& GetBuffer() const noexcept
    {
        return m_saved ? m_saved->GetBuffer() : m_buffer;
    }
    Raster::ExtendType GetExtendType() const noexcept { return m_extend; }
    Raster::ResamplerType GetUpSampler() const noexcept { return m_upSampler; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    template<class Self, class Items>
    static void ListItems(Self& self, Items&& items);

    Kernel::Counted<const Raster::DynamicBuffer> m_buffer;
    Kernel::Counted<const Raster::DynamicBitmap> m_saved; // what was loaded, in the buffer's place
    Raster::ExtendType m_extend = Raster::ExtendType::Clamp;
    Raster::ResamplerType m_upSampler = Raster::ResamplerType::Bilinear;
};

} // namespace Renderer
