#pragma once

#include <raster/DynamicBuffer.h>
#include <raster/Format.h>
#include <renderer/paint/Fill.h>

namespace Renderer {

/// A render buffer on the unit square of its descriptor's frame, read when the paint is drawn. Its
/// pixels are in the target's colours.
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

    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    Kind GetKind() const override { return Kind::Buffer; }
    bool IsFillNone() const override { return !m_buffer; }
    bool IsSpatiallyInvariant() const override { return false; }
    bool HasNonFullAlpha() const override { return true; }
    bool IsFlatAlpha() const override { return false; }
    /// Reads every pixel.
    double GetMeanAlpha() const override;
    Kernel::Counted<const Fill> Accept(ColourVisitor& visitor) const override;

    const Kernel::Counted<const Raster::DynamicBuffer>& GetBuffer() const noexcept
    {
        return m_buffer;
    }
    Raster::ExtendType GetExtendType() const noexcept { return m_extend; }
    Raster::ResamplerType GetUpSampler() const noexcept { return m_upSampler; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    Kernel::Counted<const Raster::DynamicBuffer> m_buffer;
    Raster::ExtendType m_extend = Raster::ExtendType::Clamp;
    Raster::ResamplerType m_upSampler = Raster::ResamplerType::Bilinear;
};

} // namespace Renderer
