#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace Raster {

/// Makes rows of pixels easier to compress: the bytes of a channel's values are put beside those of
/// equal significance, and each is replaced by its difference from what its neighbours promise, by
/// the one of PNG's filters that leaves least (PNG Specification, 9.2 and 12.7).
///
/// Rows are filtered and restored from the top; the row above the first one is all zero.
class RowFilters
{
public:
    /// \param pixelSize bytes of a pixel; \param channelSize bytes of a channel, 1, 2 or 4.
    RowFilters(std::size_t rowSize, std::size_t pixelSize, std::size_t channelSize);

    /// Appends the number of the filter and the filtered bytes.
    void Filter(const unsigned char* row, std::vector<unsigned char>& out);

    /// \param filtered the number of the filter and the row's bytes.
    /// \return false for a filter that does not exist.
    bool Restore(std::span<const unsigned char> filtered, unsigned char* row);

private:
    using Bytes = std::vector<unsigned char>;

    void ToPlanes(const unsigned char* row);
    void FromPlanes(unsigned char* row) const;
    /// Filters the current row into the candidate. \return the sum of what is left.
    std::size_t TryFilter(int filter);

    std::size_t m_step; // from a byte to the one of the pixel on its left
    std::size_t m_channelSize;
    Bytes m_current, m_above; // in planes, behind m_step zeros
    Bytes m_candidate, m_best;
};

} // namespace Raster
