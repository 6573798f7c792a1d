#pragma once

#include <algorithm>

#include <renderer/core/span/NoiseField.h>

namespace Renderer {

/// Paints one colour everywhere.
template<class ProcessorT, bool HasNoise>
class SolidPopulator;

template<class ProcessorT>
class SolidPopulator<ProcessorT, false>
{
public:
    using Processor = ProcessorT;
    using Pixel = typename Processor::Pixel;

    /// \param pixel premultiplied.
    explicit SolidPopulator(const Pixel& pixel) noexcept : m_pixel(pixel) {}

    const Pixel& GetUniformPixel() const noexcept { return m_pixel; }
    bool IsOpaque() const noexcept { return m_pixel.Alpha() == Pixel::Max; }

    void Populate(int, int, unsigned length, Pixel* out) const noexcept
    {
        std::fill_n(out, length, m_pixel);
    }

private:
    Pixel m_pixel;
};

/// The colour with its grain.
template<class ProcessorT>
class SolidPopulator<ProcessorT, true>
{
public:
    using Processor = ProcessorT;
    using Pixel = typename Processor::Pixel;

    /// \param pixel premultiplied.
    SolidPopulator(const Pixel& pixel, double noise) noexcept : m_pixel(pixel), m_shader(noise) {}

    bool IsOpaque() const noexcept { return m_pixel.Alpha() == Pixel::Max; }

    void Populate(int x, int y, unsigned length, Pixel* out) const noexcept
    {
        std::fill_n(out, length, m_pixel);
        m_shader.Apply(x, y, length, out);
    }

private:
    Pixel m_pixel;
    NoiseShader<Processor> m_shader;
};

} // namespace Renderer
