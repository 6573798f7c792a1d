#include <raster/ErrorDiffusion.h>

#include <algorithm>

namespace Raster {

ErrorDiffusion::ErrorDiffusion(PaletteMatcher& matcher, unsigned width)
    : m_matcher(matcher),
      m_width(width),
      m_maxErrors(matcher.FindSpacings()),
      m_here(width + 2),
      m_below(width + 2)
{
    for (int& error : m_maxErrors)
        error *= 16;
}

void ErrorDiffusion::ChooseRow(const PixelRGBA8* row, std::uint8_t* indices)
{
    const int step = m_isBackward ? -1 : 1;
    for (unsigned i = 0; i < m_width; ++i) {
        const unsigned x = m_isBackward ? m_width - 1 - i : i;
        ChoosePixel(row[x], indices[x], x + 1, step);
    }
    m_isBackward = !m_isBackward;
    m_here.swap(m_below);
    std::ranges::fill(m_below, Errors{});
}

ErrorDiffusion::Errors ErrorDiffusion::AddError(const PixelRGBA8& pixel, const Errors& error)
{
    const int maxError = m_maxErrors[m_matcher.Find(pixel)];
    Errors sum;
    for (std::size_t c = 0; c < sum.size(); ++c) {
        const int taken = std::clamp((error[c] + 8) >> 4, -maxError, maxError);
        sum[c] = std::clamp(16 * pixel[c] + taken, 0, 16 * 255);
    }
    // Opaque pixels stay opaque, translucent ones translucent.
    if (pixel.Alpha() == 255)
        sum[3] = 16 * 255;
    else
        sum[3] = std::clamp(sum[3], 16 * 1, 16 * 254);
    return sum;
}

void ErrorDiffusion::ChoosePixel(const PixelRGBA8& pixel, std::uint8_t& index, std::size_t place,
                                 int step)
{
    if (pixel.Alpha() == 0) {
        index = m_matcher.Find({});
        return;
    }
    const Errors wanted = AddError(pixel, m_here[place]);
    PixelRGBA8 nearest;
    for (std::size_t c = 0; c < wanted.size(); ++c)
        nearest[c] = static_cast<std::uint8_t>((wanted[c] + 8) >> 4);
    index = m_matcher.Find(nearest);
    const PixelRGBA8& chosen = m_matcher.GetColour(index);
    const std::size_t ahead = place + std::size_t(step);
    const std::size_t behind = place - std::size_t(step);
    for (std::size_t c = 0; c < wanted.size(); ++c) {
        const int error = wanted[c] - 16 * chosen[c];
        m_here[ahead][c] += 7 * error;
        m_below[behind][c] += 3 * error;
        m_below[place][c] += 5 * error;
        m_below[ahead][c] += error;
    }
}

} // namespace Raster
