#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <raster/PaletteMatcher.h>

namespace Raster {

/// Chooses palette entries row by row and hands the error of each pixel on to its neighbours that
/// are still to come: 7/16 to the next one, 3/16, 5/16 and 1/16 to those below it (Floyd and
/// Steinberg, 1976). Rows run from left to right and from right to left in turn, which leaves fewer
/// patterns. All in integers.
///
/// A pixel takes no more error than the distance of the palette's colours about its own: it needs
/// no more to get from one to the other. Where the palette has no colours around the one that is
/// wanted, the error would pile up without end and come out as specks of quite another colour.
class ErrorDiffusion
{
public:
    ErrorDiffusion(PaletteMatcher& matcher, unsigned width);

    /// \param row premultiplied pixels; rows come in order from the top.
    void ChooseRow(const PixelRGBA8* row, std::uint8_t* indices);

private:
    using Errors = std::array<int, 4>; ///< of the channels, in 256ths

    /// A pixel and the error that it has got, in 16ths.
    Errors AddError(const PixelRGBA8& pixel, const Errors& error);
    void ChoosePixel(const PixelRGBA8& pixel, std::uint8_t& index, std::size_t place, int step);

    PaletteMatcher& m_matcher;
    unsigned m_width;
    std::vector<int> m_maxErrors; ///< in 16ths, by the entry nearest to a pixel
    bool m_isBackward = false;
    std::vector<Errors> m_here;  ///< of this row; pixel x is at x + 1
    std::vector<Errors> m_below; ///< of the next row
};

} // namespace Raster
